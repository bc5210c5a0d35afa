#include "cli/messages.h"

#include <utility>

#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/system_message.h"

namespace permora {

ConsoleMessages::ConsoleMessages() : previous(thePresenters.messages.exchange(this)) {}

ConsoleMessages::~ConsoleMessages() {
    thePresenters.messages = previous;
}

void ConsoleMessages::SetSubject(std::string newSubject) {
    subject = std::move(newSubject);
    hasSpoken = false;
}

void ConsoleMessages::Say(std::string_view text) {
    hasSpoken = true;
    text = text.substr(0, text.find_last_not_of("\r\n ") + 1);
    std::string line = "permora-cli: ";
    if (!subject.empty()) line += PrintableText(subject) + ": ";
    PrintError(line + PrintableText(text) + '\n');
}

void ConsoleMessages::Say(const Outcome& outcome) {
    Say(LineText(outcome));
}

void ConsoleMessages::SayIfSilent(std::string_view text) {
    if (!hasSpoken) Say(text);
}

void ConsoleMessages::SaySystemError(DWORD code) {
    Say(SystemMessageLine(code));
}

int ConsoleMessages::Present(HWND /*owner*/, const char* text, const char* /*caption*/, UINT type) {
    Say(text);
    return SafestButton(type);
}

}  // namespace permora
