// Manual pages in the language of man(7).
#pragma once

#include <map>
#include <string>

#include "manual/grammar_facts.h"

namespace permora::manual {

struct PageFrame {
    std::string program;  // its name
    std::string version;
    std::string date;          // year, month and day
    std::string surroundings;  // sections in man(7) about what the program reads beside its arguments
    std::string related;       // the name of another program of which a page tells
};

// The pages by the names of their files: that of the program, and one for each of its commands.
std::map<std::string, std::string> MakePages(const CommandFacts& program, const PageFrame& frame);

}  // namespace permora::manual
