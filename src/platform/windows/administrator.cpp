#include "platform/administrator.h"

#include <windows.h>

#include <objbase.h>
#include <shellapi.h>

#include <string>
#include <string_view>

#include "platform/api/errors.h"
#include "platform/resources.h"
#include "platform/windows/code_page.h"

namespace permora {
namespace {

// The shell's functions need it on each thread.
class ShellThread {
  public:
    ShellThread() : result(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)) {}
    ~ShellThread() {
        if (SUCCEEDED(result)) CoUninitialize();
    }
    ShellThread(const ShellThread&) = delete;
    ShellThread& operator=(const ShellThread&) = delete;

  private:
    const HRESULT result;
};

std::wstring OwnPath() {
    constexpr std::size_t kRoom = 32'768;  // no path of the system is longer
    std::wstring path(kRoom, L'\0');
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    path.resize(length < kRoom ? length : 0);
    return path;
}

// As the C runtime takes arguments apart: backslashes count only before a quotation mark.
std::wstring Quoted(std::wstring_view argument) {
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t letter : argument) {
        if (letter == L'"') quoted.append(backslashes + 1, L'\\');
        backslashes = letter == L'\\' ? backslashes + 1 : 0;
        quoted += letter;
    }
    quoted.append(backslashes, L'\\');
    return quoted + L'"';
}

// Over which the system asks; without one its question may stay behind other windows.
HWND WindowInFront() {
    HWND window = GetForegroundWindow();
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return process == GetCurrentProcessId() ? window : nullptr;
}

AdministratorStart StartOf(DWORD error) {
    switch (error) {
        case ERROR_CANCELLED:
            return AdministratorStart::kDismissed;
        case ERROR_ACCESS_DENIED:
        case ERROR_ACCESS_DISABLED_BY_POLICY:
            return AdministratorStart::kRefused;
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            return AdministratorStart::kReplaced;
        default:
            return AdministratorStart::kFailed;
    }
}

// The event by which a process tells that it has started.
std::wstring StartEventOf(DWORD process) {
    return L"Local\\Permora.Start." + std::to_wstring(process);
}

// False: it has ended before.
bool HasStarted(HANDLE process) {
    constexpr DWORD kPause = 100;  // milliseconds
    const std::wstring name = StartEventOf(GetProcessId(process));
    while (WaitForSingleObject(process, kPause) == WAIT_TIMEOUT) {
        const UniqueHandle event(OpenEventW(SYNCHRONIZE, FALSE, name.c_str()));
        // That of another account may be closed to this one, but is there.
        if (event || GetLastError() == ERROR_ACCESS_DENIED) return true;
    }
    return false;
}

}  // namespace

bool IsAdministrator() {
    HANDLE opened = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened) == FALSE) return false;
    const UniqueHandle token(opened);
    TOKEN_ELEVATION elevation{};
    DWORD size = 0;
    return GetTokenInformation(token.get(), TokenElevation, &elevation, sizeof elevation, &size) != FALSE &&
           elevation.TokenIsElevated != 0;
}

// The system itself asks.
bool CanAskForAdministrator() {
    return !IsAdministrator();
}

AdministratorStart StartAsAdministrator(const std::vector<std::string>& arguments, AdministratorWait wait,
                                        int& exitCode) {
    std::wstring line;
    for (const std::string& argument : arguments) {
        std::wstring wide;
        if (!argument.empty() && ToWide(argument, wide) != ERROR_SUCCESS) return AdministratorStart::kNoPath;
        line += (line.empty() ? L"" : L" ") + Quoted(wide);
    }
    const std::wstring program = OwnPath();
    const ShellThread thread;
    SHELLEXECUTEINFOW start{};
    start.cbSize = sizeof start;
    start.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_NOASYNC | SEE_MASK_FLAG_NO_UI;
    start.hwnd = WindowInFront();
    start.lpVerb = L"runas";
    start.lpFile = program.c_str();
    start.lpParameters = line.c_str();
    start.nShow = SW_SHOWNORMAL;
    if (ShellExecuteExW(&start) == FALSE) return StartOf(GetLastError());
    const UniqueHandle process(start.hProcess);
    if (!process) return AdministratorStart::kFailed;
    if (wait == AdministratorWait::kForStart)
        return HasStarted(process.get()) ? AdministratorStart::kStarted : AdministratorStart::kFailed;
    DWORD code = 0;
    if (WaitForSingleObject(process.get(), INFINITE) != WAIT_OBJECT_0 ||
        GetExitCodeProcess(process.get(), &code) == FALSE)
        return AdministratorStart::kFailed;
    exitCode = static_cast<int>(code);
    return AdministratorStart::kStarted;
}

std::string DisplayForAdministrator() {
    return {};
}

// The system's question shows what is started, but not with which arguments; there are none here that could
// do harm.
bool IsStartedForUser() {
    return false;
}

bool UseDisplayOfUser(const std::string& /*path*/) {
    return false;
}

void TellOfStart() {
    // Open until the process ends.
    [[maybe_unused]] static const UniqueHandle kEvent(
        CreateEventW(nullptr, TRUE, TRUE, StartEventOf(GetCurrentProcessId()).c_str()));
}

}  // namespace permora
