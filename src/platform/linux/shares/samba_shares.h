// The shares of a Samba server on this machine, through Samba's own tools.
#pragma once

#include "platform/linux/shares/share_provider.h"

namespace permora::host {

// Where a share stands decides what can be changed: everything of one in Samba's registry; the list alone of
// one that is fixed in the configuration file (ERROR_FILE_READ_ONLY for the rest); what `net usershare` can
// say of one that a user made (else ERROR_NOT_SUPPORTED); nothing of "IPC$", configured or not
// (ERROR_NOT_SUPPORTED). Errors of the tools themselves are those of samba_tools.h.
class SambaShares : public ShareProvider {
  public:
    DWORD List(std::vector<Share>& shares) const override;
    DWORD ReadDescriptor(Share& share) const override;
    DWORD Change(std::string_view name, const ShareChange& change) const override;
    // In Samba's registry where the server reads it, else as a user's share; where users may make none,
    // ERROR_FILE_READ_ONLY.
    DWORD Add(const Share& share) const override;
    DWORD Remove(std::string_view name) const override;
};

}  // namespace permora::host
