// SearchAccounts, over the places where accounts come from.
#include <string>
#include <vector>

#include "platform/accounts.h"
#include "platform/found_rows.h"
#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/accounts/account_list.h"
#include "platform/linux/accounts/machine.h"
#include "platform/nt/well_known_sids.h"

namespace permora {
namespace {

void AddWellKnown(FoundRows& rows) {
    for (const nt::WellKnownSid& row : nt::WellKnownSids()) {
        // Domains and integrity levels are no accounts.
        if (row.use == nt::SidUse::kDomain || row.use == nt::SidUse::kLabel) continue;
        rows.Add({row.sid,
                  static_cast<SID_NAME_USE>(row.use),
                  std::string(row.name),
                  std::string(row.domain),
                  {}});
    }
}

DWORD AddThisMachines(host::AccountKind kind, const std::atomic<bool>& isStopped, FoundRows& rows) {
    std::vector<std::string> names;
    if (const DWORD error = host::ListAccountNames(kind, names); error != ERROR_SUCCESS) return error;
    for (const std::string& name : names) {
        if (isStopped) return ERROR_OPERATION_ABORTED;
        AccountRow row;
        AccountName account;
        // Accounts that vanish meanwhile are no failure.
        if (host::FindAccountSid(name, row.sid) != ERROR_SUCCESS ||
            host::FindAccountOfSid(row.sid, account) != ERROR_SUCCESS)
            continue;
        rows.Add({row.sid, account.use, account.name, account.domain, {}});
    }
    return ERROR_SUCCESS;
}

}  // namespace

SearchOutcome SearchAccounts(const std::string& filter, const std::atomic<bool>& isStopped,
                             const std::function<void(std::vector<AccountRow> rows)>& take) {
    FoundRows rows(filter, take);
    AddWellKnown(rows);
    for (const host::AccountKind kind : {host::AccountKind::kGroup, host::AccountKind::kUser}) {
        rows.HandOut();
        const DWORD error = AddThisMachines(kind, isStopped, rows);
        if (error == ERROR_OPERATION_ABORTED) return {error, {}};
        if (error != ERROR_SUCCESS) return {error, host::ThisMachine().name};
    }
    rows.HandOut();
    return {};
}

}  // namespace permora
