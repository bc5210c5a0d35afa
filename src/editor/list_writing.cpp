#include "editor/list_writing.h"

#include <string>

#include "framework/long_work.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

bool IsOutOfDate(const Outcomes& outcomes) {
    return !outcomes.empty() && outcomes.front().code == ERROR_REVISION_MISMATCH;
}

}  // namespace

bool MayOverwriteList(HWND owner, const std::string& item) {
    const std::string text = "The access control list of \"" + item +
                             "\" was changed by another program after it was shown here.\n"
                             "Click Yes to overwrite it with the list shown here\n"
                             "Click No to write nothing and show the new one";
    return MessageBoxA(owner, text.c_str(), "Changed meanwhile", MB_YESNO | MB_ICONQUESTION) == IDYES;
}

bool WriteListAsking(CWnd& page, const RememberedPlace& place, std::optional<DaclInheritance> inheritance,
                     const ListsByKind& lists, PSECURITY_DESCRIPTOR shown, ChangeRecorder& recorder) {
    Outcomes outcomes;
    // Where no list is expected, none is out of date.
    for (PSECURITY_DESCRIPTOR expected = shown;; expected = nullptr) {
        DoLongWork(page,
                   [&] { outcomes = WriteListToItems(place.items, inheritance, lists, expected, recorder); });
        if (!IsOutOfDate(outcomes)) break;
        if (!MayOverwriteList(page.GetSafeHwnd(), outcomes.front().object)) return false;
    }
    ShowOutcomes(page.GetSafeHwnd(), outcomes);
    return true;
}

}  // namespace permora
