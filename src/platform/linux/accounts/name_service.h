// The host's users and groups, as its name service knows them (files, LDAP, ...).
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/linux/accounts/account_names.h"

namespace permora::host {

// ERROR_NONE_MAPPED when there is no such account (or its name is not a plain one); another code when the
// name service failed. Outputs are stored on success only. In a domain the name service may have to ask it:
// kDomainOffline where that does not answer in time.
DWORD FindHostName(AccountKind kind, id_t id, std::string& name);
DWORD FindHostId(AccountKind kind, const std::string& name, id_t& id);

// Whether the host's own files (/etc/passwd, /etc/group) have the account, whoever else knows it.
bool IsInHostFiles(AccountKind kind, id_t id);

// The groups of a user, the primary one first. ERROR_NONE_MAPPED when there is no such user.
DWORD ListGroupsOf(uid_t user, std::vector<gid_t>& groups);

// The names of the users in a group, those whose primary group it is among them, as far as the name service
// enumerates its users. ERROR_NONE_MAPPED when there is no such group.
DWORD ListMembersOf(gid_t group, std::vector<std::string>& names);

struct HostAccount {
    std::string name;
    id_t id = 0;
};

// All accounts that the name service enumerates (a directory service may keep its own to itself), in its
// order; those without a plain name are left out. What it lists is believed for a few seconds, in which the
// functions above answer from it. While the domain is offline, those of the host's own files.
DWORD ListHostAccounts(AccountKind kind, std::vector<HostAccount>& accounts);

}  // namespace permora::host
