// What is printed of shares.
#pragma once

#include <string>

#include "cli/json_output.h"
#include "cli/messages.h"
#include "shares/share_security.h"

namespace permora {

// What a share is, beside its list. Texts are in the ANSI code page.
struct ShareFacts {
    std::string name;
    std::string type;
    std::string path;
    std::string remark;
    DWORD maxUses = 0;  // of users at the same time
};

ShareFacts FactsOf(const SHARE_INFO_2& record);
ShareFacts FactsOf(const SHARE_INFO_502& record);

std::string UsesText(DWORD maxUses);
Json FactsJson(const ShareFacts& facts);
// A share with its list.
std::string ShareText(ShareSecurity& share);

// Reads a share with its list; false after a message.
bool ReadShare(const std::string& name, ShareSecurity& share, ConsoleMessages& messages);

}  // namespace permora
