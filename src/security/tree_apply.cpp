#include "security/tree_apply.h"

#include "platform/api/errors.h"
#include "platform/resources.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

// A list without entries: what an object that only inherits has of its own. Null after an error box.
UniqueLocal<ACL> MakeEmptyList(HWND owner) {
    constexpr DWORD kSize = sizeof(ACL);
    UniqueLocal<ACL> list(static_cast<PACL>(LocalAlloc(LMEM_FIXED, kSize)));
    if (!list) ShowFatalErrorBox(owner, "Error: cannot allocate buffer");
    if (InitializeAcl(list.get(), kSize, ACL_REVISION) != FALSE) return list;
    ShowErrorBox(owner, "Error: cannot initialize object's access control list");
    return nullptr;
}

}  // namespace

TreeApplyResult ApplyToTrees(HWND owner, std::span<const char* const> folders, TreeListMode mode,
                             TreeObserver& observer, TreeCounts& counts) {
    const UniqueLocal<ACL> list = MakeEmptyList(owner);
    if (!list) return TreeApplyResult::kCannotStart;
    for (const char* folder : folders) {
        const DWORD error = SetListsBelow(folder, list.get(), mode, observer, counts);
        if (error == ERROR_OPERATION_ABORTED) return TreeApplyResult::kStopped;
        if (error == ERROR_SUCCESS) continue;
        ++counts.passedOver;
        observer.PassOver(folder, error);
    }
    return TreeApplyResult::kDone;
}

}  // namespace permora
