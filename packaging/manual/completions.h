// Completion of a program's arguments by shells.
#pragma once

#include <string>

#include "manual/grammar_facts.h"

namespace permora::manual {

// The part of a shell's completion that says what the program takes; the rest stands in completion.SHELL.in.
// `function` begins the names of all its functions.
std::string BashGrammar(const CommandFacts& program);
std::string ZshGrammar(const CommandFacts& program, const std::string& function);
std::string FishGrammar(const CommandFacts& program, const std::string& programName,
                        const std::string& function);

}  // namespace permora::manual
