#include "cli/value_kind.h"

#include <CLI/CLI.hpp>
#include <sstream>

namespace permora {
namespace {

// The parser has no place for remarks on an option but its checks: this one is never active.
constexpr const char* kCheckName = "value";

ValueKind KindOfWord(const std::string& word) {
    if (word == "PATH") return ValueKind::kPath;
    if (word == "FILE") return ValueKind::kFile;
    if (word == "FOLDER") return ValueKind::kFolder;
    return ValueKind::kText;
}

}  // namespace

void DescribeValue(CLI::Option& option, const ValueDescription& description) {
    std::string text = std::to_string(static_cast<int>(description.kind)) + '\n';
    for (const KnownValue& value : description.known)
        text += value.text + '\t' + value.description + '\n';
    option.check(CLI::Validator([](std::string&) { return std::string(); }, text, kCheckName).active(false));
}

ValueDescription DescriptionOf(CLI::Option& option) {
    ValueDescription description;
    try {
        CLI::Validator check = *option.get_validator(kCheckName);
        std::istringstream text(check.active(true).get_description());
        int kind = 0;
        text >> kind;
        text.ignore();
        description.kind = static_cast<ValueKind>(kind);
        KnownValue value;
        while (std::getline(text, value.text, '\t') && std::getline(text, value.description))
            description.known.push_back(value);
    } catch (const CLI::OptionNotFound&) {  // it was not described
        const std::string word = option.get_positional() ? option.get_name(true) : option.get_type_name();
        description.kind = KindOfWord(word);
    }
    return description;
}

}  // namespace permora
