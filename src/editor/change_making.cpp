#include "editor/change_making.h"

#include <string>

#include "framework/long_work.h"
#include "history/history_texts.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

bool MayGoOnWithout(HWND owner, DWORD error) {
    const std::string text = "The history of changes cannot be written. " + HistoryFailureText(error) +
                             "\nWithout it, this change cannot be undone.\n\n"
                             "Click Yes to go on without history until the program ends\n"
                             "Click No to leave everything as it is";
    return MessageBoxA(owner, text.c_str(), "No history", MB_YESNO | MB_ICONQUESTION) == IDYES;
}

}  // namespace

bool MakeChangeAsking(CWnd& page, ChangeSession& session, ChangeKind kind,
                      const std::function<void(ChangeRecorder& recorder)>& make) {
    DWORD error = ERROR_SUCCESS;
    DoLongWork(page, [&] { error = session.Begin(kind); });
    if (error != ERROR_SUCCESS) {
        if (!MayGoOnWithout(page.GetSafeHwnd(), error)) return false;
        session.GoOnWithout();
    }
    make(session.Recorder());
    const bool isWhole = session.Recorder().Error() == ERROR_SUCCESS;
    DoLongWork(page, [&] { error = session.End(); });
    ShowOutcome(page.GetSafeHwnd(), {error, Step::kEndChange});
    return isWhole;
}

}  // namespace permora
