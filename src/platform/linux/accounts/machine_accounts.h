// The accounts of this machine, its own and its file server's: a source.
#pragma once

#include "platform/linux/accounts/account_source.h"

namespace permora::host {

AccountSource& MachineAccounts();

}  // namespace permora::host
