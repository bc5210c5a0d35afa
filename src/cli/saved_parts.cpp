#include "cli/saved_parts.h"

#include <string>

#include "platform/api/errors.h"
#include "saved/own_form.h"

namespace permora {

Json PartsJson(SECURITY_INFORMATION parts) {
    Json words = Json::array();
    for (const auto& [part, word] : own_form::kPartWords)
        if ((parts & part) != 0) words.push_back(word);
    return words;
}

void SaySystemListsHidden(std::string_view consequence, ConsoleMessages& messages) {
    messages.Say(
        "system access lists (audits) cannot be read without a privilege: " + std::string(consequence),
        ERROR_PRIVILEGE_NOT_HELD);
}

}  // namespace permora
