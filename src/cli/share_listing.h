// What is printed of shares.
#pragma once

#include <string>

#include "cli/json_output.h"
#include "cli/messages.h"
#include "shares/share_list.h"
#include "shares/share_security.h"

namespace permora {

std::string ShareTypeText(DWORD type);
std::string UsesText(DWORD maxUses);
Json FactsJson(const ShareFacts& facts);
// A share with its list.
std::string ShareText(ShareSecurity& share);

}  // namespace permora
