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

// What becomes of the output of a program that fails.
enum class FailedOutput { kDropped, kKept };

// The absolute path of a program. Only the system's own folders are searched, never the caller's PATH: what
// is found is run with our rights. Nothing when no folder holds it or `name` is not a bare name.
std::optional<std::string> FindTool(const std::string& name);

// Runs a program to its end and hands over what it wrote to its standard output, which is text from outside:
// nothing in it may be trusted. No shell, empty input, no error output, an environment of our own and none of
// our open files.
//
// On failure `output` is as it was and no process is left behind: ERROR_FILE_NOT_FOUND without such a
// program, ERROR_TIMEOUT or ERROR_FILE_TOO_LARGE when it went over a limit and was killed for it,
// ERROR_OPERATION_ABORTED when it ended with a code other than 0 or by a signal. In that last case alone
// `output` is what the program wrote where it is to be kept.
DWORD RunTool(const std::string& name, const std::vector<std::string>& arguments, const ToolLimits& limits,
              std::string& output, FailedOutput failedOutput = FailedOutput::kDropped);

}  // namespace permora::host
