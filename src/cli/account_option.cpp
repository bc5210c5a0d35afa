#include "cli/account_option.h"

#include "platform/api/errors.h"
#include "platform/resources.h"
#include "platform/system_message.h"
#include "security/account_lookup.h"

namespace permora {
namespace {

// On failure `account` is untouched. Returns a system error code.
DWORD FindAccount(const std::string& text, AccountRecord& account) {
    // Not the two-letter abbreviations of SIDs, which could be names of users.
    if (!text.starts_with("S-") && !text.starts_with("s-")) return LookupAccountByName(text.c_str(), account);
    PSID found = nullptr;
    if (ConvertStringSidToSidA(text.c_str(), &found) == FALSE) return GetLastError();
    const UniqueLocal<void> sid(found);
    return account.SetSid(sid.get()) ? ERROR_SUCCESS : ERROR_INVALID_SID;
}

}  // namespace

std::string FindTypedAccount(const std::string& text, AccountRecord& account) {
    const DWORD error = FindAccount(text, account);
    if (error == ERROR_SUCCESS) return {};
    const std::string reason = NotLookedUpText(error);
    return text + ": " + (reason.empty() ? SystemMessageLine(error) : reason);
}

AccountOption::AccountOption(Command& command)
    : AccountOption(command, "--account", R"(The account: a name, DOMAIN\name or a SID like S-1-1-0)",
                    Presence::kRequired) {}

AccountOption::AccountOption(Command& command, const char* optionName, const char* description,
                             Presence presence)
    : TextOption(command, optionName, "NAME", description, presence), name(optionName) {}

std::string AccountOption::Interpret(const std::string& text) {
    return text.empty() ? std::string(name) + ": the name is empty" : FindTypedAccount(text, account);
}

}  // namespace permora
