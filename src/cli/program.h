// The terminal program as a whole: its help, how its arguments are read, and how it ends.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "cli/command.h"
#include "cli/messages.h"

namespace permora {

// All that the program understands: its commands with their options and help, as parsers below the program's
// own.
class Grammar {
  public:
    // `makers` make the commands, in the order of the help.
    explicit Grammar(std::span<MakeCommand* const> makers);
    ~Grammar();
    Grammar(const Grammar&) = delete;
    Grammar& operator=(const Grammar&) = delete;

    CLI::App& Parser() { return *parser; }
    // The command that was named in the arguments; null until they were parsed.
    Command* Chosen() { return chosen; }
    ConsoleMessages& Messages() { return messages; }

  private:
    std::unique_ptr<CLI::App> parser;
    ConsoleMessages messages;
    Command* chosen = nullptr;
    std::vector<std::unique_ptr<Command>> commands;
};

// Runs the command that the arguments name. Returns the exit code of the program.
int RunProgram(std::span<MakeCommand* const> commands, int argumentCount, const char* const* argumentTexts);

}  // namespace permora
