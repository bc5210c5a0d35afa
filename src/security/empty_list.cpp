#include "security/empty_list.h"

#include "security/message_boxes.h"

namespace permora {

UniqueLocal<ACL> MakeEmptyList(HWND owner) {
    constexpr DWORD kSize = sizeof(ACL);
    UniqueLocal<ACL> list(static_cast<PACL>(LocalAlloc(LMEM_FIXED, kSize)));
    if (!list) ShowFatalErrorBox(owner, "Error: cannot allocate buffer");
    if (InitializeAcl(list.get(), kSize, ACL_REVISION) != FALSE) return list;
    ShowErrorBox(owner, "Error: cannot initialize object's access control list");
    return nullptr;
}

}  // namespace permora
