// permora-cli, started by tests as a user starts it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/command.h"

namespace permora::test {

// The program file.
std::string CliPath();

CommandResult RunCli(const std::vector<std::string>& arguments);

// The results of the document in what a command has printed, behind messages; discarded when there is none.
nlohmann::json ResultsIn(const std::string& output);

// The rows of one object as `show --json` tells them: a line "Allow S-1-1-0 0x1f 3" for each entry, with its
// flags in decimal. What went wrong instead when the object cannot be shown.
std::string EntriesOf(const std::string& path);

// `show --sddl` of one object.
std::string SddlOf(const std::string& path);

// Why a folder cannot hold access lists here; empty when it can.
std::string CannotHoldListsReason(const std::string& folder);

}  // namespace permora::test
