#include "platform/linux/security/tree_change.h"

#include "platform/api/errors.h"
#include "platform/linux/files/name_mapping.h"

namespace permora::host {

DWORD TreeChange::Run(const ObjectHandle& top) {
    DWORD error = top.RequireFolder();
    if (error == ERROR_SUCCESS && !store.CanHold(top)) error = ERROR_NOT_SUPPORTED;
    if (error == ERROR_SUCCESS) error = Begin(top);
    if (error != ERROR_SUCCESS) return error;
    WalkTree(top, *this);
    return result;
}

WalkDecision TreeChange::Visit(const ObjectHandle& object, const char* hostName, std::size_t depth) {
    const std::string name = EncodeName(hostName);
    if (!observer.Begin(name.c_str())) {
        result = ERROR_OPERATION_ABORTED;
        return WalkDecision::kStop;
    }
    const DWORD error = ChangeAndCount(object, hostName, depth);
    if (error != ERROR_SUCCESS) PassOver(error, name, depth);
    // The holder of the turn on a folder is at work on what is in it too.
    if (error == ERROR_BUSY) return WalkDecision::kPassOver;
    if (object.IsFolder()) {
        Enter(object, error, depth + 1);
        names.Enter(name, depth);
    }
    return WalkDecision::kDescend;
}

DWORD TreeChange::ChangeAndCount(const ObjectHandle& object, const char* hostName, std::size_t depth) {
    if (!store.CanHold(object)) return ERROR_NOT_SUPPORTED;
    Outcome outcome = Outcome::kUnchanged;
    DWORD error = Allow(object, hostName);
    // Without a write no turn is needed, for which a file may have to be made.
    if (error == ERROR_SUCCESS && mode == TreeListMode::kWrite) error = turns.Take(object, depth);
    if (error == ERROR_SUCCESS) error = Change(object, depth, outcome);
    if (object.IsFolder() && error != ERROR_BUSY) turns.Keep();
    turns.Leave();
    if (error == ERROR_SUCCESS) ++(outcome == Outcome::kChanged ? counts.changed : counts.unchanged);
    return error;
}

void TreeChange::Fail(DWORD error, const char* hostName, std::size_t depth) {
    if (*hostName == '\0')
        result = error;
    else
        PassOver(error, EncodeName(hostName), depth);
}

// `depth` is that of the object.
void TreeChange::PassOver(DWORD error, const std::string& name, std::size_t depth) {
    // It vanished after it was opened.
    if (error == ERROR_FILE_NOT_FOUND) return;
    ++counts.passedOver;
    observer.PassOver(names.PathOf(name, depth), error);
}

}  // namespace permora::host
