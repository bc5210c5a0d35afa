#include "shares/share_permissions_page.h"

#include "framework/long_work.h"
#include "resources/resource_ids.h"

namespace permora {

CSharePage1::CSharePage1() : AccessListPage(IDD_SHARE_PERMISSIONS_PAGE, EditScopes::kThisObjectOnly) {}

// Nothing can be added to a list that could not be read.
bool CSharePage1::ReadItem(const char* name) {
    Enable({IDC_ADD_ENTRY}, false);
    if (!ReadShareDacl(GetSafeHwnd(), name, share)) return false;
    SetCheck(IDC_INHERIT_FROM_PARENT, false);
    return true;
}

// Shares before one that fails are written, those after it are not.
bool CSharePage1::WriteItems(PACL dacl) {
    bool isWritten = false;
    DoLongWork(*this, [this, &isWritten, window = GetSafeHwnd(), dacl] {
        isWritten = WriteShareDacl(window, names, dacl);
    });
    return isWritten;
}

}  // namespace permora
