#include "platform/linux/security/tree_change.h"

#include <utility>

#include "platform/api/errors.h"
#include "platform/linux/files/name_mapping.h"

namespace permora::host {
namespace {

const ChangedFolder& NotesOf(const FolderRef& folder) {
    return static_cast<const ChangedFolder&>(*folder->Notes());
}

}  // namespace

std::shared_ptr<const nt::Acl> ShareList(nt::Acl& list, const std::shared_ptr<const nt::Acl>& above) {
    return above && *above == list ? above : std::make_shared<const nt::Acl>(std::move(list));
}

DWORD TreeChange::Run(const ObjectHandle& top) {
    DWORD error = top.RequireFolder();
    if (error == ERROR_SUCCESS && !store.CanHold(top)) error = ERROR_NOT_SUPPORTED;
    auto notes = std::make_unique<ChangedFolder>();
    if (error == ERROR_SUCCESS) error = Begin(top, *notes);
    if (error != ERROR_SUCCESS) return error;
    // Without a write no turn is needed, for which a file may have to be made.
    if (mode == TreeListMode::kWrite) folderTurns = OpenLockFile();
    WalkTree(top, std::move(notes), *this);
    passedOver.Tell(observer);
    return result;
}

void TreeChange::Fail(DWORD error, const std::string& path) {
    if (!path.empty()) return PassOver(error, path);
    const std::lock_guard lock(guard);
    result = error;
}

bool TreeChange::BeginObject(const std::string& name) {
    const std::lock_guard lock(guard);
    // One that has been told to stop is not asked again.
    if (result == ERROR_OPERATION_ABORTED) return false;
    if (observer.Begin(name.c_str())) return true;
    result = ERROR_OPERATION_ABORTED;
    return false;
}

void TreeChange::PassOver(DWORD error, const std::string& path) {
    // It vanished after it was opened.
    if (error == ERROR_FILE_NOT_FOUND) return;
    const std::lock_guard lock(guard);
    ++counts.passedOver;
    passedOver.Add(path, error);
}

TreeChangeThread::~TreeChangeThread() {
    const std::lock_guard lock(change.guard);
    change.counts.changed += counts.changed;
    change.counts.unchanged += counts.unchanged;
}

WalkDecision TreeChangeThread::Visit(const VisitedObject& visited, std::unique_ptr<FolderNotes>& notes) {
    if (!change.BeginObject(EncodeName(visited.hostName))) return WalkDecision::kStop;
    const DWORD error = ChangeAndCount(visited);
    if (error != ERROR_SUCCESS) change.PassOver(error, visited.Path());
    // The holder of the turn on a folder is at work on what is in it too.
    if (!visited.object.IsFolder() || error == ERROR_BUSY) {
        turns.Leave();
        return WalkDecision::kPassOver;
    }
    auto remembered = std::make_unique<ChangedFolder>();
    remembered->turn = turns.Keep();
    Remember(visited.object, error, NotesOf(visited.place), *remembered);
    notes = std::move(remembered);
    return WalkDecision::kDescend;
}

DWORD TreeChangeThread::ChangeAndCount(const VisitedObject& visited) {
    if (!store.CanHold(visited.object)) return ERROR_NOT_SUPPORTED;
    Outcome outcome = Outcome::kUnchanged;
    DWORD error = Allow(visited);
    if (error == ERROR_SUCCESS && mode == TreeListMode::kWrite) error = turns.Take(visited.object);
    if (error == ERROR_SUCCESS) error = Change(visited.object, NotesOf(visited.place), outcome);
    if (error == ERROR_SUCCESS) ++(outcome == Outcome::kChanged ? counts.changed : counts.unchanged);
    return error;
}

}  // namespace permora::host
