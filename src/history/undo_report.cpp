#include "history/undo_report.h"

#include "history/history_texts.h"
#include "platform/api/errors.h"
#include "platform/system_message.h"
#include "platform/volume_loss.h"
#include "security/object_security.h"

namespace permora {
namespace {

// "1 object has", "3 objects have".
std::string ObjectsHave(std::uint64_t count) {
    return ObjectsText(count) + (count == 1 ? " has" : " have");
}

}  // namespace

std::string UndoQuestionText(const ChangeFacts& change) {
    return "Take back this change?\n\n" + ChangeText(change) + ",\nmade " + ChangeTimeText(change.began) +
           " by " + change.user + ".\n\n" + ObjectsText(change.objects) +
           " will get back what was there before it. What was changed since is left alone.";
}

std::string InterruptedText(const ChangeFacts& change, std::size_t others) {
    const bool isUndo = change.kind == ChangeKind::kUndo;
    std::string text = "The program ended in the middle of a change: " + ChangeText(change) + ", begun " +
                       ChangeTimeText(change.began) + ". " + ObjectsText(change.objects) +
                       " may have been changed. " + (isUndo ? "Go on with it?" : "Undo it?");
    if (others == 1) text += "\n\n1 change before it was cut off, too; see the history.";
    if (others > 1)
        text += "\n\n" + GroupedNumber(others) + " changes before it were cut off, too; see the history.";
    return text;
}

void UndoReport::AddLeft(const ChangedTop& top, const std::string& path, LeftAlone extent, DWORD reason) {
    if (leftCount++ >= kMostNamed) return;
    left.push_back(ChildPath(top.path, path) +
                   (extent == LeftAlone::kAllBelow ? " and everything below it: " : ": ") +
                   LeftAloneText(reason));
}

std::string UndoReport::Text() const {
    std::string text = ObjectsHave(counts.restored + counts.asBefore) + " what was there before the change";
    if (counts.asBefore != 0) text += "; " + GroupedNumber(counts.asBefore) + " of them had it already";
    text += '.';
    if (error == ERROR_OPERATION_ABORTED)
        text = "The undo was stopped. " + text +
               " The others were not touched; the change can be taken back again.";
    else if (error != ERROR_SUCCESS)
        text = "The undo has ended early: " +
               (IsVolumeLost(error) ? SystemMessageLine(error) : HistoryFailureText(error)) + "\n\n" + text;
    if (leftCount == 0) return text;
    text += "\n\nLeft alone:";
    for (const std::string& each : left)
        text += "\n" + each;
    if (leftCount > left.size()) text += "\nand " + GroupedNumber(leftCount - left.size()) + " more";
    return text;
}

}  // namespace permora
