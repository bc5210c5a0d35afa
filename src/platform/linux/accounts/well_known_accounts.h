// The accounts that are the same on every machine (nt/well_known_sids.h): a source.
#pragma once

#include "platform/linux/accounts/account_source.h"

namespace permora::host {

// Knows no groups: the machine decides who belongs to them.
AccountSource& WellKnownAccounts();

}  // namespace permora::host
