// Programs of the machine, run by tests as preparation and as judges.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace permora::test {

struct CommandResult {
    int exitCode = -1;   // -1: it did not start or was ended by a signal
    std::string output;  // standard output and standard error, in the order in which they were written
};

// Runs `arguments` (the first one is found on PATH) and waits for its end. `input` is what it reads; more
// than a pipe holds (64 KiB) is not meant to be handed over.
CommandResult RunCommand(const std::vector<std::string>& arguments, std::string_view input = {});

// The result of `work` in a process of its own; nothing when that process ends otherwise.
std::optional<std::string> InAnotherProcess(const std::function<std::string()>& work);

// The same in one that runs as an ordinary user ("nobody", no privileges). Needs root.
std::optional<std::string> AsOrdinaryUser(const std::function<std::string()>& work);

// Starts a program that goes on running; what it says goes to `logFile`. It is told to end (SIGTERM) when
// this process ends in whatever way. Its process id, or -1.
int StartService(const std::vector<std::string>& arguments, const std::string& logFile);

// Waits until the program has ended; one that still runs after ten seconds is killed.
void AwaitServiceEnd(int processId);

// Empty when `program` is on PATH, else a sentence that says it is missing.
std::string MissingProgram(const std::string& program);

// Empty when this process may mount, else a sentence that says why not.
std::string CannotMountReason();

std::string ReadWholeFile(const std::string& path);

}  // namespace permora::test
