#include "cli/consent.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/terminal.h"

namespace permora {

bool AskForConsent(const ConsentTexts& texts, const std::vector<Target>& targets, ConsoleMessages& messages) {
    std::vector<std::string> names;
    names.reserve(targets.size());
    for (const Target& target : targets)
        names.push_back(target.argument);
    return AskForConsent(texts, names, messages);
}

bool AskForConsent(const ConsentTexts& texts, const std::vector<std::string>& names,
                   ConsoleMessages& messages) {
    if (names.empty()) return true;
    messages.SetSubject("");
    if (TerminalColumns(stdin) == 0) {
        messages.Say(std::string(texts.warning) + ": it needs --yes where nobody can be asked");
        return false;
    }
    std::string question = std::string(texts.heading) + '\n';
    for (const std::string& name : names)
        question += "  " + PrintableText(name) + '\n';
    PrintError(question + "Go on (yes or no)? ");
    std::array<char, 16> answer{};
    if (std::fgets(answer.data(), answer.size(), stdin) != nullptr &&
        (std::strcmp(answer.data(), "yes\n") == 0 || std::strcmp(answer.data(), "y\n") == 0)) {
        return true;
    }
    messages.Say(texts.refused);
    return false;
}

}  // namespace permora
