#include "history/user_name.h"

#include <optional>
#include <vector>

#include "platform/accounts.h"
#include "platform/api/token.h"
#include "platform/raw_security.h"
#include "platform/resources.h"

namespace permora {

std::string OwnUserName() {
    HANDLE handle = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &handle) == FALSE) return {};
    const UniqueHandle token(handle);
    DWORD bytes = 0;
    GetTokenInformation(token.get(), TokenUser, nullptr, 0, &bytes);
    std::vector<BYTE> block(bytes);
    if (block.size() < sizeof(TOKEN_USER) ||
        GetTokenInformation(token.get(), TokenUser, block.data(), bytes, &bytes) == FALSE)
        return {};
    const std::optional<nt::Sid> sid = SidOf(reinterpret_cast<const TOKEN_USER*>(block.data())->User.Sid);
    if (!sid) return {};
    AccountName account;
    if (FindAccountName(*sid, kLookupTime, account) != NameAnswer::kKnown) return sid->ToText();
    return account.domain.empty() ? account.name : account.domain + '\\' + account.name;
}

}  // namespace permora
