// The host's users and groups, as its name service knows them (files, LDAP, ...).
#pragma once

#include <sys/types.h>

#include <string>

#include "platform/api/errors.h"
#include "platform/linux/accounts/account_names.h"

namespace permora::host {

// ERROR_NONE_MAPPED when there is no such account (or its name is not a plain one); another code when the
// name service failed. Outputs are stored on success only.
DWORD FindHostName(AccountKind kind, id_t id, std::string& name);
DWORD FindHostId(AccountKind kind, const std::string& name, id_t& id);

}  // namespace permora::host
