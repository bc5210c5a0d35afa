// What the host itself lets accounts do with an object, whatever its access list says
// (HeldObject::ReadHostPermissions). A file server opens objects as its users, so both count there.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/nt/sid.h"

namespace permora {

// The form of the list: <linux/posix_acl_xattr.h>.
struct HostPermissions {
    std::uint32_t owner = 0;  // numbers of the host
    std::uint32_t group = 0;
    std::uint32_t mode = 0;          // the nine bits
    std::vector<std::uint8_t> list;  // the POSIX access list as it is stored; empty: none
    bool isSticky = false;           // a folder: only its owner and those of what is in it remove that

    friend bool operator==(const HostPermissions&, const HostPermissions&) = default;
};

// The bits as ls(1) shows them: "rwxr-x---".
std::string ModeText(std::uint32_t mode);

// As whom the host knows an account.
struct HostAccount {
    std::optional<std::uint32_t> user;  // nothing: somebody who is not meant by name anywhere
    std::vector<std::uint32_t> groups;
};

// Bits as in one class of a mode.
inline constexpr std::uint32_t kHostRead = 4;
inline constexpr std::uint32_t kHostWrite = 2;
inline constexpr std::uint32_t kHostEnter = 1;  // a folder

// Whether the host gives the account all of these bits, by acl(5). Nothing for a damaged list. The superuser
// is let in everywhere, which is not looked at here.
std::optional<bool> HostAllows(const HostPermissions& permissions, const HostAccount& account,
                               std::uint32_t bits);

// As whom the host lets an account in, with all groups. ERROR_NONE_MAPPED when it is no user of the host, so
// that nobody can log on as it; kDomainOffline while its domain does not say; ERROR_NOT_FOUND when
// the groups of a user could not be found. ERROR_NOT_SUPPORTED on Windows. Any thread.
DWORD FindHostAccount(const nt::Sid& account, HostAccount& found);

// The accounts that a list would name for the owner and the group of an object.
nt::Sid HostOwnerSid(const HostPermissions& permissions);
nt::Sid HostGroupSid(const HostPermissions& permissions);

}  // namespace permora
