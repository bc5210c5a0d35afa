// What the value of an option or argument is, beyond the word that stands for it in the help. It is kept with
// the option in the grammar, for those who describe or complete the program's arguments.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace CLI {  // NOLINT(readability-identifier-naming): the parser names itself so
class Option;
}  // namespace CLI

namespace permora {

enum class ValueKind : std::uint8_t {
    kText,  // anything
    kPath,  // a file or folder
    kFile,
    kFolder,
    kAccount,
    kAccountPair,  // OLD=NEW
    kShare,
    kChange,     // the number of a change in the history
    kKnown,      // one of the known values, unless it is something else that the option understands
    kKnownList,  // the same, several of them separated by commas
};

struct KnownValue {
    std::string text;
    std::string description;  // may be empty
};

struct ValueDescription {
    ValueKind kind = ValueKind::kText;
    std::vector<KnownValue> known = {};  // of kKnown and kKnownList alone
};

// Neither texts nor descriptions may have control characters.
void DescribeValue(CLI::Option& option, const ValueDescription& description);
// Without a description, the words PATH, FILE and FOLDER in the help say what is meant.
ValueDescription DescriptionOf(CLI::Option& option);

}  // namespace permora
