// The machine's own table of shares, in its registry at the place where Windows keeps it.
//
// Below HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\LanmanServer\Shares each share is a value of
// type REG_MULTI_SZ, whose texts are "CSCFlags=0", "MaxUses=4294967295", "Path=C:\a", "Permissions=0",
// "Remark=" and "Type=0". The key "Security" below it has the descriptors under the same names, as
// REG_BINARY.
#pragma once

#include "platform/linux/shares/share_provider.h"

namespace permora::host {

// A share whose texts are damaged is left out of the list and cannot be changed (ERROR_BADDB), only removed.
// "IPC$" is there without being kept, and then cannot be changed or removed (ERROR_NOT_SUPPORTED).
class ShareTable : public ShareProvider {
  public:
    DWORD List(std::vector<Share>& shares) const override;
    DWORD ReadDescriptor(Share& share) const override;
    DWORD Change(std::string_view name, const ShareChange& change) const override;
    DWORD Add(const Share& share) const override;
    DWORD Remove(std::string_view name) const override;
};

}  // namespace permora::host
