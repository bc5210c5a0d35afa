// What manual pages and shell completion say of a program, taken from the parser that reads its arguments.
#pragma once

#include <string>
#include <vector>

#include "cli/value_kind.h"

namespace CLI {  // NOLINT(readability-identifier-naming): the parser names itself so
class App;
}  // namespace CLI

namespace permora::manual {

struct OptionFacts {
    std::vector<std::string>
        names;                // with their dashes; of an argument that is no option the word in the help
    std::string value;        // the word that stands for its value; empty: it takes none
    ValueDescription what;    // the value
    std::string description;  // lines, of which those that begin with blanks list values
    bool isRequired = false;
    bool takesMany = false;  // values
    bool isGreedy = false;   // takes all values that follow it
    std::vector<std::string> needs;
    std::vector<std::string> excludes;
    std::vector<std::string> choice;  // this option and others, of which exactly one is given
};

struct CommandFacts {
    std::string name;  // the words that lead to it, without the program's
    std::string description;
    std::string footer;
    std::vector<OptionFacts> options;
    std::vector<OptionFacts> arguments;
    std::vector<CommandFacts> commands;
};

// Without what the help hides.
CommandFacts FactsOf(CLI::App& parser);

// The first statement of a description, as one line.
std::string Summary(const std::string& description);

}  // namespace permora::manual
