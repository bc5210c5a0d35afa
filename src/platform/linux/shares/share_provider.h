// Who knows this machine's shares.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/shares.h"

namespace permora::host {

struct Share {
    std::string name;  // UTF-8, without control characters and backslashes
    DWORD type = STYPE_DISKTREE;
    std::string remark;  // bytes from outside, perhaps not UTF-8
    DWORD permissions = 0;
    DWORD maxUses = SHI_USES_UNLIMITED;
    DWORD currentUses = 0;
    std::string path;                      // "C:\a\b"; empty for what is no folder
    std::vector<std::uint8_t> descriptor;  // self-relative and whole; empty: it has none, or was not asked
};

// What is to become different; the rest stays as it is.
struct ShareChange {
    std::optional<std::string> remark;
    std::optional<DWORD> maxUses;
    std::optional<std::vector<std::uint8_t>> descriptor;  // empty: none
};

// All return 0 or an error code. Names have no letter case: a name need not be the share's own spelling.
// On failure outputs are as they were.
class ShareProvider {
  public:
    virtual ~ShareProvider() = default;

    // All shares, each name once, without their descriptors.
    virtual DWORD List(std::vector<Share>& shares) const = 0;
    // Fills in the descriptor of a share that was listed just now. One that is damaged is
    // ERROR_INVALID_SECURITY_DESCR, one whose share is gone meanwhile NERR_NetNameNotFound.
    virtual DWORD ReadDescriptor(Share& share) const = 0;
    virtual DWORD Change(std::string_view name, const ShareChange& change) const = 0;
    // The name has no fault (platform/share_name.h), the path is a folder with drive letter, and the
    // descriptor may be empty. NERR_DuplicateShare.
    virtual DWORD Add(const Share& share) const = 0;
    virtual DWORD Remove(std::string_view name) const = 0;
};

// Samba where it is set up on this machine, else the machine's own table.
std::unique_ptr<const ShareProvider> MakeShareProvider();

// Whether two names mean the same share.
bool IsSameShare(std::string_view one, std::string_view other);

// A name as it is compared with others.
std::u16string ShareKey(std::string_view name);

// "IPC$", through which a machine is asked about itself: every machine has it.
Share InterProcessShare();
bool IsInterProcess(const Share& share);

}  // namespace permora::host
