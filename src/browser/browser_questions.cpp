// What the window asks volumes, and what it does when they do not answer.
#include <optional>
#include <string>
#include <utility>

#include "browser/browser_view.h"
#include "framework/frame_window.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

std::string WaitingText(std::size_t done, bool canBeStopped) {
    const std::string what = done == 0 ? "Waiting for an answer." : std::to_string(done) + " read so far.";
    return canBeStopped ? what + " Escape stops it." : what;
}

}  // namespace

Outcome BrowserView::Ask(const std::string& volume, VolumeTask question) {
    std::optional<std::size_t> shown;
    const auto show = [&](std::size_t done) {
        if (std::exchange(shown, done) != done) ShowState(WaitingText(done, wait.CanBeStopped()).c_str());
    };
    Outcome outcome = AskVolume(wait, volume, std::move(question), show);
    if (shown) ShowState("Ready");
    return outcome;
}

Outcome BrowserView::VerifyRows() {
    return Ask(Rows().Volume(),
               [rows = SharedRows()](PatientWork::Running&) { return Outcome{rows->Verify()}; });
}

Outcome BrowserView::HoldRows(const std::vector<std::string>& names, Place& place) {
    Outcome outcome = AskFor<Place>(
        Rows().Volume(), place,
        [rows = SharedRows(), names](Place& held, PatientWork::Running&) { return rows->Hold(names, held); });
    if (!IsUnanswered(outcome)) MakeCurrent();
    return outcome;
}

Outcome BrowserView::FindPath(const std::string& name, std::string& path) {
    return AskFor<std::string>(Rows().VolumeOf(name), path,
                               [rows = SharedRows(), name](std::string& found, PatientWork::Running&) {
                                   return rows->FindPath(name, found);
                               });
}

void BrowserView::Tell(const Outcome& outcome) {
    if (outcome.code == ERROR_CANCELLED)
        ShowState("Stopped");
    else
        ShowOutcome(GetSafeHwnd(), outcome);
}

bool BrowserView::OnCmdMsg(Notification& notification) {
    const bool isCommand = notification.code == Notify::kCommand;
    const auto again = [this, id = notification.id] {
        if (CFrameWnd* frame = Frame()) frame->RunCommand(id);
    };
    return (isCommand && GiveUpFor(again)) || CWnd::OnCmdMsg(notification);
}

}  // namespace permora
