// SearchAccounts, over the places where accounts come from.
#include "platform/accounts.h"
#include "platform/found_rows.h"
#include "platform/linux/accounts/account_directory.h"

namespace permora {

SearchOutcome SearchAccounts(const std::string& filter, const std::atomic<bool>& isStopped,
                             const std::function<void(std::vector<AccountRow> rows)>& take) {
    FoundRows rows(filter, take);
    SearchOutcome outcome;
    // One that fails does not keep the others from being searched.
    for (host::AccountSource* source : host::AccountSources()) {
        const DWORD error = source->Search(isStopped, rows);
        rows.HandOut();
        if (error == ERROR_OPERATION_ABORTED) return {error, {}};
        if (error != ERROR_SUCCESS && outcome.error == ERROR_SUCCESS) outcome = {error, source->Name()};
    }
    return outcome;
}

}  // namespace permora
