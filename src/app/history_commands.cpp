#include "app/history_commands.h"

#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "app/settings_store.h"
#include "history/history_dialog.h"
#include "history/history_texts.h"
#include "history/undo_dialog.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "platform/utf8.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

// Names of files are in it: their ampersands are no mnemonics, and no character ends the text.
std::string TextInMenu(std::string_view text) {
    constexpr std::size_t kMostBytes = 60;
    std::string shown;
    while (!text.empty() && shown.size() < kMostBytes) {
        const std::size_t bytes = FirstUtf8Character(text).bytes;
        const bool isControl = static_cast<unsigned char>(text.front()) < ' ';
        shown += isControl ? " " : text.substr(0, bytes);
        if (text.front() == '&') shown += '&';
        text.remove_prefix(bytes);
    }
    return text.empty() ? shown : shown + "...";
}

// Whether the change began after the one that was told.
bool IsNews(const ChangeFacts& change, const ToldInterruption& told) {
    return std::pair(change.began, change.number) > std::pair(told.began, told.number);
}

}  // namespace

HistoryCommands::HistoryCommands(CWnd& ownerWindow, std::function<void()> showListAnew)
    : owner(ownerWindow), showAnew(std::move(showListAnew)), path(History::UsualPath()) {}

DWORD HistoryCommands::FindLast(ChangeFacts& change) const {
    std::unique_ptr<History> history;
    const DWORD error = History::OpenToRead(path, history);
    return error == ERROR_SUCCESS ? history->FindLast(change) : error;
}

std::string HistoryCommands::UndoEntry(bool& isEnabled) const {
    ChangeFacts change;
    isEnabled = FindLast(change) == ERROR_SUCCESS && change.state != ChangeState::kRunning;
    return (isEnabled ? "Undo " + TextInMenu(ShortChangeText(change)) : "Undo") + "\tCtrl+Z";
}

// The entry was enabled a moment ago.
void HistoryCommands::Undo() {
    ChangeFacts change;
    if (const DWORD error = FindLast(change); error != ERROR_SUCCESS)
        ShowErrorBox(owner.GetSafeHwnd(), HistoryFailureText(error).c_str());
    else if (TakeBack(owner, path, change, UndoQuestion::kAsk))
        showAnew();
}

void HistoryCommands::Show() {
    CHistoryDlg dialog(path, &owner);
    dialog.undone = showAnew;
    dialog.DoModal();
}

void HistoryCommands::TellOfInterruption() {
    std::unique_ptr<History> history;
    std::vector<ChangeFacts> changes;
    // What is wrong with the history is said where it is shown, and before the next change.
    if (History::OpenToRead(path, history) != ERROR_SUCCESS || history->List(changes) != ERROR_SUCCESS)
        return;
    ToldInterruption told;
    static_cast<void>(LoadToldInterruption(told));  // without one, none was told
    std::erase_if(changes, [&](const ChangeFacts& change) {
        return change.state != ChangeState::kInterrupted || !IsNews(change, told);
    });
    if (changes.empty()) return;
    const ChangeFacts last = changes.front();
    // An undo that was cut off is not taken back but run again.
    ChangeFacts undone = last;
    if (last.kind == ChangeKind::kUndo && history->Find(last.undoes, undone) != ERROR_SUCCESS) return;
    history.reset();
    // Before the question, since the program may end in the middle of it.
    if (const DWORD error = StoreToldInterruption({last.began, last.number}); error != ERROR_SUCCESS)
        ShowErrorWithSystemText(owner.GetSafeHwnd(), "saving settings", error);
    const std::string text = InterruptedText(last, changes.size() - 1);
    const int answer =
        MessageBoxA(owner.GetSafeHwnd(), text.c_str(), "Interrupted change", MB_YESNO | MB_ICONWARNING);
    if (answer == IDYES && TakeBack(owner, path, undone, UndoQuestion::kAnswered)) showAnew();
}

}  // namespace permora
