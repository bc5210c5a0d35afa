#include "platform/linux/shares/share_provider.h"

#include "platform/ascii.h"
#include "platform/linux/base/letter_case.h"
#include "platform/linux/base/wide_text.h"
#include "platform/linux/shares/samba_shares.h"
#include "platform/linux/shares/samba_tools.h"
#include "platform/linux/shares/share_table.h"

namespace permora::host {

std::unique_ptr<const ShareProvider> MakeShareProvider() {
    if (IsSambaSetUp()) return std::make_unique<SambaShares>();
    return std::make_unique<ShareTable>();
}

// Nearly all names are ASCII, and a name is compared with thousands of others.
bool IsSameShare(std::string_view one, std::string_view other) {
    if (IsAscii(one) && IsAscii(other)) return EqualsIgnoringCase(one, other);
    return ShareKey(one) == ShareKey(other);
}

std::u16string ShareKey(std::string_view name) {
    return ToWide(InSmallLetters(name));
}

Share InterProcessShare() {
    Share share;
    share.name = "IPC$";
    share.type = STYPE_IPC | STYPE_SPECIAL;
    share.remark = "Remote IPC";
    return share;
}

bool IsInterProcess(const Share& share) {
    return (share.type & STYPE_IPC) == STYPE_IPC;
}

}  // namespace permora::host
