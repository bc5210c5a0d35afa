#include "tests/app/shell_fakes.h"

#include <algorithm>

#include "platform/api/shell.h"

namespace {

permora::test::ShellFakes* shellFakes = nullptr;

constexpr std::uintptr_t kLastFailure = 32;

}  // namespace

extern "C" {

HINSTANCE __wrap_ShellExecuteA(HWND, LPCSTR operation, LPCSTR file, LPCSTR parameters, LPCSTR directory,
                               int showCommand) {
    const bool isPlain = parameters == nullptr && directory == nullptr && showCommand == SW_SHOW;
    const bool isServed = isPlain && shellFakes->Serve(std::string(operation) + ' ' + file);
    return reinterpret_cast<HINSTANCE>(isServed ? kLastFailure + 1 : kLastFailure);
}

UINT __wrap_WinExec(LPCSTR commandLine, UINT) {
    return shellFakes->Serve(commandLine) ? kLastFailure : kLastFailure - 1;
}

}  // extern "C"

namespace permora::test {

ShellFakes::ShellFakes() {
    shellFakes = this;
}

ShellFakes::~ShellFakes() {
    shellFakes = nullptr;
}

bool ShellFakes::Serve(const std::string& request) {
    requests.push_back(request);
    return std::none_of(refused.begin(), refused.end(),
                        [&](const std::string& start) { return request.starts_with(start); });
}

}  // namespace permora::test
