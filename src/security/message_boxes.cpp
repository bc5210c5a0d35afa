#include "security/message_boxes.h"

#include "platform/api/messages.h"
#include "platform/system_message.h"

namespace permora {
namespace {

UINT fatalExitCode = 0;

}  // namespace

void ShowErrorBox(HWND owner, LPCSTR text) {
    MessageBoxA(owner, text, kErrorCaption, MB_ICONERROR);
}

void ShowInfoBox(HWND owner, LPCSTR text) {
    MessageBoxA(owner, text, kInformationCaption, MB_ICONINFORMATION);
}

void ShowFatalErrorBox(HWND owner, LPCSTR text) {
    ShowErrorBox(owner, text);
    ExitProcess(fatalExitCode);
}

void ShowSystemErrorBox(HWND owner, DWORD code) {
    if (const std::string text = GetSystemMessageText(code); !text.empty()) ShowErrorBox(owner, text.c_str());
}

void ShowLastErrorBox(HWND owner) {
    ShowSystemErrorBox(owner, GetLastError());
}

void ShowFatalLastErrorBox(HWND owner) {
    ShowLastErrorBox(owner);
    ExitProcess(fatalExitCode);
}

void ShowErrorWithSystemText(HWND owner, LPCSTR text, DWORD code) {
    if (const std::string systemText = GetSystemMessageText(code); !systemText.empty())
        ShowErrorBox(owner, (text + (": " + systemText)).c_str());
}

void SetFatalExitCode(UINT code) {
    fatalExitCode = code;
}

}  // namespace permora
