#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/api/errors.h"
#include "platform/api/shell.h"
#include "platform/file_types.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/shell/desktop_opener.h"
#include "platform/linux/shell/object_type.h"
#include "platform/utf8.h"

namespace permora::host {
namespace {

// Any number above 32 means success.
constexpr std::uintptr_t kStarted = 42;

bool IsAddress(std::string_view text) {
    constexpr std::array<std::string_view, 3> kSchemes{"http://", "https://", "mailto:"};
    return std::any_of(kSchemes.begin(), kSchemes.end(),
                       [text](std::string_view scheme) { return text.starts_with(scheme); });
}

DWORD FindHostPath(const char* path, std::string& hostPath) {
    ObjectHandle object;
    const DWORD error = OpenObject(path, object);
    return error == ERROR_SUCCESS ? HostPathOf(object.Descriptor(), hostPath) : error;
}

constexpr std::string_view kHelpExtension = ".chm";

// The page of a help file that is stored beside it: "help/support.html" in the file's folder. Empty when
// there is none.
std::string PageBeside(const std::string& helpFile, std::string_view page) {
    const std::string path = helpFile.substr(0, helpFile.rfind('/')) + "/help/" + std::string(page);
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? path : "";
}

DWORD OpenFile(const char* file) {
    std::string target;
    DWORD error = IsAddress(file) ? ERROR_SUCCESS : FindHostPath(file, target);
    if (error != ERROR_SUCCESS) return error;
    error = OpenWithDesktop(target.empty() ? file : target);
    if (error != ERROR_NO_ASSOCIATION || !target.ends_with(kHelpExtension)) return error;
    // Few desktops have a viewer for help files, but all have one for their pages.
    const std::string page = PageBeside(target, "index.html");
    return page.empty() ? error : OpenWithDesktop(page);
}

// "C:\a\help.chm::/page.html". Viewers on Linux accept no page, so the page beside the file is tried first.
DWORD OpenHelp(std::string_view argument) {
    constexpr std::string_view kPageMark = "::/";
    const std::size_t mark = argument.find(kPageMark);
    const std::string file(argument.substr(0, mark));
    if (mark != argument.npos) {
        std::string hostPath;
        const DWORD error = FindHostPath(file.c_str(), hostPath);
        if (error != ERROR_SUCCESS) return error;
        const std::string_view page = argument.substr(mark + kPageMark.size());
        const bool isPlain = !page.empty() && page.find_first_of("/\\") == page.npos && page.front() != '.';
        const std::string beside = isPlain ? PageBeside(hostPath, page) : "";
        if (!beside.empty()) return OpenWithDesktop(beside);
    }
    return OpenFile(file.c_str());
}

// The file name of the system's wizard for new shares.
constexpr std::string_view kShareWizardName = "shrpubw";

DWORD RunShareWizard() {
    void (*const wizard)() = thePresenters.shareWizard;
    if (wizard == nullptr) return ERROR_FILE_NOT_FOUND;
    wizard();
    return ERROR_SUCCESS;
}

// The code of a shell service for a failure. Errors that have no code below 32 become "access denied".
std::uintptr_t ShellError(DWORD error) {
    SetLastError(error);
    return error < SE_ERR_NOASSOC ? error : SE_ERR_NOASSOC;
}

void CutText(const std::string& text, char* target, std::size_t size) {
    std::size_t end = 0;
    while (end < text.size()) {
        const std::size_t bytes = FirstUtf8Character(std::string_view(text).substr(end)).bytes;
        if (end + bytes >= size) break;
        end += bytes;
    }
    std::memcpy(target, text.data(), end);
    target[end] = '\0';
}

}  // namespace
}  // namespace permora::host

using namespace permora::host;

DWORD_PTR WINAPI SHGetFileInfoA(LPCSTR path, DWORD /*attributes*/, SHFILEINFOA* info, UINT infoSize,
                                UINT flags) {
    if (path == nullptr || info == nullptr || infoSize < sizeof *info || flags != SHGFI_TYPENAME) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    std::string type;
    const DWORD error = TypeOfObject(path, type);
    if (error != ERROR_SUCCESS) {
        SetLastError(error);
        return 0;
    }
    const permora::FileTypes* types = permora::thePresenters.fileTypes;
    const std::string text = types != nullptr ? types->TextOf(type) : "";
    if (text.empty()) {
        SetLastError(ERROR_NOT_FOUND);
        return 0;
    }
    CutText(text, info->szTypeName, sizeof info->szTypeName);
    return TRUE;
}

// A call with a window means the wizard. A file of its name in the current directory is never opened instead,
// since anyone may have put it there. Opening that file on purpose is a call without a window.
HINSTANCE WINAPI ShellExecuteA(HWND owner, LPCSTR operation, LPCSTR file, LPCSTR parameters, LPCSTR directory,
                               int /*showCommand*/) {
    const bool isOpen = operation == nullptr || std::string_view(operation) == "open";
    DWORD error = ERROR_NO_ASSOCIATION;
    if (isOpen && file != nullptr && parameters == nullptr && directory == nullptr)
        error = owner != nullptr && file == kShareWizardName ? RunShareWizard() : OpenFile(file);
    return reinterpret_cast<HINSTANCE>(error == ERROR_SUCCESS ? kStarted : ShellError(error));
}

UINT WINAPI WinExec(LPCSTR commandLine, UINT /*showCommand*/) {
    constexpr std::string_view kViewer = "hh ";
    const std::string_view command = commandLine;
    const DWORD error =
        command.starts_with(kViewer) ? OpenHelp(command.substr(kViewer.size())) : ERROR_FILE_NOT_FOUND;
    return static_cast<UINT>(error == ERROR_SUCCESS ? kStarted : ShellError(error));
}
