#include "security/message_boxes.h"

#include "platform/api/messages.h"
#include "platform/resources.h"

namespace permora {
namespace {

constexpr DWORD kFirstNetworkError = 2100;
constexpr DWORD kLastNetworkError = 2999;

}  // namespace

void ShowErrorBox(HWND owner, LPCSTR text) {
    MessageBoxA(owner, text, kErrorCaption, MB_ICONERROR);
}

void ShowInfoBox(HWND owner, LPCSTR text) {
    MessageBoxA(owner, text, kInformationCaption, MB_ICONINFORMATION);
}

void ShowFatalErrorBox(HWND owner, LPCSTR text) {
    ShowErrorBox(owner, text);
    ExitProcess(0);
}

void ShowSystemErrorBox(HWND owner, DWORD code) {
    if (const std::string text = GetSystemMessageText(code); !text.empty()) {
        ShowErrorBox(owner, text.c_str());
    }
}

void ShowLastErrorBox(HWND owner) {
    ShowSystemErrorBox(owner, GetLastError());
}

void ShowFatalLastErrorBox(HWND owner) {
    ShowLastErrorBox(owner);
    ExitProcess(0);
}

void ShowErrorWithSystemText(HWND owner, LPCSTR text, DWORD code) {
    if (const std::string systemText = GetSystemMessageText(code); !systemText.empty()) {
        ShowErrorBox(owner, (text + (": " + systemText)).c_str());
    }
}

std::string GetSystemMessageText(DWORD code) {
    DWORD flags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
    UniqueLibrary networkMessages;
    if (code >= kFirstNetworkError && code <= kLastNetworkError) {
        networkMessages.reset(LoadLibraryExA("netmsg.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE));
        if (networkMessages) {
            flags |= FORMAT_MESSAGE_FROM_HMODULE;
        }
    }
    // With FORMAT_MESSAGE_ALLOCATE_BUFFER the buffer argument is the address of a pointer in disguise.
    char* allocated = nullptr;
    FormatMessageA(flags, networkMessages.get(), code, LANG_USER_DEFAULT, reinterpret_cast<LPSTR>(&allocated),
                   0, nullptr);
    const UniqueLocal<char> text(allocated);
    return text ? text.get() : std::string();
}

}  // namespace permora
