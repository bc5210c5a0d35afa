#include "history/history_view.h"

#include <algorithm>
#include <utility>

#include "history/history_texts.h"
#include "platform/api/errors.h"
#include "security/object_security.h"

namespace permora {
namespace {

const char* KindText(const RecordedObject& object) {
    if (object.top.mark.empty()) return "Share";
    return object.change.isFolder ? "Folder" : "File";
}

}  // namespace

void HistoryView::Read() {
    const std::int64_t before = selected ? changes[*selected].number : 0;
    changes.clear();
    selected.reset();
    remark.clear();
    history.reset();
    DWORD error = History::OpenToRead(path, history);
    if (error == ERROR_SUCCESS) error = history->List(changes);
    if (error == ERROR_FILE_NOT_FOUND || (error == ERROR_SUCCESS && changes.empty()))
        remark = "Nothing has been recorded yet.";
    else if (error != ERROR_SUCCESS)
        remark = HistoryFailureText(error);
    const auto again = std::ranges::find(changes, before, &ChangeFacts::number);
    if (!changes.empty()) selected = again != changes.end() ? again - changes.begin() : 0;
    ReadObjects(0);
}

void HistoryView::Select(std::size_t change) {
    selected = change;
    remark.clear();
    ReadObjects(0);
}

void HistoryView::ReadObjects(std::uint64_t first) {
    objects.clear();
    firstObject = first;
    if (!selected) return;
    const DWORD error =
        history->VisitObjectsFrom(changes[*selected].number, first, [this](const RecordedObject& object) {
            objects.push_back(object);
            return objects.size() < kPageObjects;
        });
    if (error != ERROR_SUCCESS && error != ERROR_CANCELLED) remark = HistoryFailureText(error);
}

bool HistoryView::HasPageAfter() const {
    return selected && objects.size() == kPageObjects &&
           firstObject + objects.size() < changes[*selected].objects;
}

void HistoryView::ShowPageBefore() {
    if (HasPageBefore()) ReadObjects(firstObject - kPageObjects);
}

void HistoryView::ShowPageAfter() {
    if (HasPageAfter()) ReadObjects(firstObject + kPageObjects);
}

std::array<std::string, 6> HistoryView::ChangeRow(std::size_t change) const {
    const ChangeFacts& facts = changes[change];
    return {std::to_string(facts.number), ChangeTimeText(facts.began), facts.user, ChangeText(facts),
            GroupedNumber(facts.objects), ChangeStateText(facts.state)};
}

std::string HistoryView::ObjectsTitle() const {
    std::string title = "&Objects of the selected change";
    if (!objects.empty() && (HasPageBefore() || HasPageAfter()))
        title += " (" + GroupedNumber(firstObject + 1) + " to " +
                 GroupedNumber(firstObject + objects.size()) + " of " +
                 GroupedNumber(changes[*selected].objects) + ')';
    return title + ':';
}

std::array<std::string, 2> HistoryView::ObjectRow(std::size_t object) const {
    const RecordedObject& recorded = objects[object];
    return {ChildPath(recorded.top.path, recorded.change.path), KindText(recorded)};
}

std::vector<ComparedRow> HistoryView::RowsOf(std::size_t object, NameAccount* nameOf) const {
    if (object >= objects.size()) return {};
    const DescriptorChange& change = objects[object].change;
    return CompareStored(change.before, change.after,
                         change.isFolder ? ComparedObject::kFolder : ComparedObject::kFile, nameOf);
}

bool HistoryView::MayUndo() const {
    if (!selected || !remark.empty()) return false;
    const ChangeState state = changes[*selected].state;
    return state == ChangeState::kDone || state == ChangeState::kInterrupted ||
           state == ChangeState::kPartlyUndone;
}

}  // namespace permora
