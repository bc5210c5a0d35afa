#include "cli/messages.h"

#include <utility>

#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/system_message.h"

namespace permora {

void ConsoleMessages::SetSubject(std::string newSubject) {
    subject = std::move(newSubject);
}

void ConsoleMessages::Say(std::string_view text, DWORD code) {
    text = text.substr(0, text.find_last_not_of("\r\n ") + 1);
    std::string line = "permora-cli: ";
    if (!subject.empty()) line += PrintableText(subject) + ": ";
    PrintError(line + PrintableText(text) + '\n');
    if (listener != nullptr) listener->Hear(subject, std::string(text), code);
}

void ConsoleMessages::Tell(const std::string& text) {
    if (listener != nullptr)
        Say(text);
    else
        Print(PrintableText(text) + '\n');
}

void ConsoleMessages::PrintForPeople(std::string_view text) const {
    if (listener == nullptr) Print(text);
}

void ConsoleMessages::Say(const Outcome& outcome) {
    Say(LineText(outcome), outcome.code);
}

void ConsoleMessages::SaySystemError(DWORD code) {
    Say(SystemMessageLine(code), code);
}

bool ConsoleMessages::Check(const Outcome& outcome) {
    if (!outcome.IsDone()) Say(outcome);
    return outcome.IsDone();
}

}  // namespace permora
