#include "security/message_boxes.h"

#include <cstdlib>
#include <exception>
#include <new>

#include "framework/clipboard.h"
#include "platform/api/messages.h"
#include "platform/system_message.h"
#include "security/missing_rights.h"

namespace permora {
namespace {

bool LeavesNoWayOn(Step step) {
    return step == Step::kLoadLibrary || step == Step::kFindListFunctions || step == Step::kTakeBuffer ||
           step == Step::kCloseFile;
}

// An empty text shows no box.
void ShowOutcomeAs(HWND owner, const Outcome& outcome, const std::string& text) {
    NoteFailure(outcome.code);
    if (!text.empty()) (IsInformation(outcome.step) ? ShowInfoBox : ShowErrorBox)(owner, text.c_str());
    if (LeavesNoWayOn(outcome.step)) ExitProcess(0);
}

}  // namespace

int AskInBox(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
    int answer = 0;
    CallOnUiThread([&] { answer = MessageBoxA(owner, text, caption, type); });
    return answer;
}

void ShowErrorBox(HWND owner, LPCSTR text) {
    AskInBox(owner, text, kErrorCaption, MB_ICONERROR);
}

void ShowInfoBox(HWND owner, LPCSTR text) {
    AskInBox(owner, text, kInformationCaption, MB_ICONINFORMATION);
}

void ShowFatalErrorBox(HWND owner, LPCSTR text) {
    ShowErrorBox(owner, text);
    ExitProcess(0);
}

void ShowSystemErrorBox(HWND owner, DWORD code) {
    NoteFailure(code);
    if (const std::string text = GetSystemMessageText(code); !text.empty()) ShowErrorBox(owner, text.c_str());
}

void ShowLastErrorBox(HWND owner) {
    ShowSystemErrorBox(owner, GetLastError());
}

void ShowFatalLastErrorBox(HWND owner) {
    ShowLastErrorBox(owner);
    ExitProcess(0);
}

void ShowErrorWithSystemText(HWND owner, LPCSTR text, DWORD code) {
    if (const std::string systemText = GetSystemMessageText(code); !systemText.empty())
        ShowErrorBox(owner, (text + (": " + systemText)).c_str());
}

void ShowOutcome(HWND owner, const Outcome& outcome) {
    if (!outcome.IsDone()) ShowOutcomeAs(owner, outcome, BoxText(outcome));
}

void ShowNamedOutcome(HWND owner, const Outcome& outcome) {
    if (!outcome.IsDone()) ShowOutcomeAs(owner, outcome, NamedBoxText(outcome));
}

void ShowOutcomes(HWND owner, std::span<const Outcome> outcomes) {
    for (const Outcome& outcome : outcomes)
        ShowOutcome(owner, outcome);
}

void CopyTextOrTell(CWnd& owner, const std::string& text) {
    if (!CopyText(owner, text)) ShowErrorBox(owner.GetSafeHwnd(), "Error: cannot copy to the clipboard");
}

void ReportLackOfMemory() {
    std::set_terminate([] {
        try {
            if (const std::exception_ptr thrown = std::current_exception()) std::rethrow_exception(thrown);
        } catch (const std::bad_alloc&) {
            ShowOutcome(nullptr, {ERROR_NOT_ENOUGH_MEMORY, Step::kTakeBuffer});
        } catch (...) {  // a fault of the program
        }
        std::abort();
    });
}

}  // namespace permora
