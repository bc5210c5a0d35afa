// Programs of this machine that are asked a question, such as Samba's own tools.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "platform/api/errors.h"

namespace permora::host {

struct ToolLimits {
    std::chrono::milliseconds time{10'000};
    std::size_t outputBytes = std::size_t{4} << 20;
};

// What a program gets beside its arguments, which everybody on this machine can read.
struct ToolInput {
    std::string text;                      // its standard input, at most kLongestInput bytes
    std::vector<std::string> environment;  // "NAME=value", beside what all get
};
// A pipe takes so much before anybody reads.
inline constexpr std::size_t kLongestInput = 4096;

// What becomes of the output of a program that fails.
enum class FailedOutput { kDropped, kKept };

// The absolute path of a program. Only the system's own folders are searched, never the caller's PATH: what
// is found is run with our rights. Nothing when no folder holds it or `name` is not a bare name.
std::optional<std::string> FindTool(const std::string& name);

// Runs a program to its end and hands over what it wrote to its standard output, which is text from outside:
// nothing in it may be trusted. No shell, no error output, an environment of our own and none of our open
// files.
//
// On failure `output` is as it was and no process is left behind: ERROR_FILE_NOT_FOUND without such a
// program, ERROR_TIMEOUT or ERROR_FILE_TOO_LARGE when it went over a limit and was killed for it,
// ERROR_INVALID_PARAMETER when the input is too long, ERROR_OPERATION_ABORTED when it ended with a code other
// than 0 or by a signal. In that last case alone `output` is what the program wrote where it is to be kept.
DWORD RunTool(const std::string& name, const std::vector<std::string>& arguments, const ToolLimits& limits,
              std::string& output, FailedOutput failedOutput = FailedOutput::kDropped,
              const ToolInput& input = {});

}  // namespace permora::host
