#include "platform/linux/security/tree_change.h"

#include "platform/api/errors.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/path_text.h"
#include "platform/linux/files/paths.h"

namespace permora::host {

DWORD TreeChange::Run(LPCSTR folder) {
    ObjectHandle top;
    DWORD error = OpenObject(folder, top);
    if (error != ERROR_SUCCESS) return error;
    if (top.IsLink()) return ERROR_CANT_RESOLVE_FILENAME;
    if (!top.IsFolder()) return ERROR_DIRECTORY;
    if (!store.CanHold(top)) return ERROR_NOT_SUPPORTED;
    error = Begin(top);
    if (error != ERROR_SUCCESS) return error;
    folders = {folder};
    WalkTree(top, *this);
    return result;
}

WalkDecision TreeChange::Visit(const ObjectHandle& object, const char* hostName, std::size_t depth) {
    const std::string name = EncodeName(hostName);
    if (!observer.Begin(name.c_str())) {
        result = ERROR_OPERATION_ABORTED;
        return WalkDecision::kStop;
    }
    const DWORD error = ChangeAndCount(object, depth);
    if (error != ERROR_SUCCESS) PassOver(error, name, depth);
    if (object.IsFolder()) {
        Enter(object, error, depth + 1);
        folders.resize(depth + 1);
        folders.push_back(name);
    }
    return WalkDecision::kDescend;
}

DWORD TreeChange::ChangeAndCount(const ObjectHandle& object, std::size_t depth) {
    if (!store.CanHold(object)) return ERROR_NOT_SUPPORTED;
    Outcome outcome = Outcome::kUnchanged;
    const DWORD error = Change(object, depth, outcome);
    if (error == ERROR_SUCCESS) ++(outcome == Outcome::kChanged ? counts.changed : counts.unchanged);
    return error;
}

void TreeChange::Fail(DWORD error, const char* hostName, std::size_t depth) {
    if (*hostName == '\0') {
        result = error;
    } else {
        PassOver(error, EncodeName(hostName), depth);
    }
}

// `depth` is that of the object.
void TreeChange::PassOver(DWORD error, const std::string& name, std::size_t depth) {
    // It vanished after it was opened.
    if (error == ERROR_FILE_NOT_FOUND) return;
    ++counts.passedOver;
    std::string path;
    for (std::size_t i = 0; i <= depth; ++i) {
        path += folders[i];
        if (path.empty() || !IsSeparator(path.back())) path += '\\';
    }
    observer.PassOver(path + name, error);
}

}  // namespace permora::host
