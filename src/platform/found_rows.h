// What is common to both systems' searches for accounts (platform/accounts.h): the filter, and handing out
// rows in batches, each account once.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/accounts.h"
#include "platform/ascii.h"

namespace permora {

class FoundRows {
  public:
    using Take = std::function<void(std::vector<AccountRow> rows)>;

    // `receiver` must outlive this object.
    FoundRows(const std::string& filter, const Take& receiver)
        : wanted(InLowerCase(filter)), take(receiver) {}

    bool Wants(const AccountRow& row) const {
        return wanted.empty() || Holds(row.domain.empty() ? row.name : row.domain + '\\' + row.name) ||
               Holds(row.description) || Holds(row.sid.ToText());
    }

    // Keeps the row for the next batch, if it is wanted and new.
    void Add(AccountRow row) {
        if (!Wants(row) || !handedOut.insert(row.sid.ToText()).second) return;
        rows.push_back(std::move(row));
        if (rows.size() >= kBatch) HandOut();
    }

    // What waits. To be called whenever the next rows may take a while, and at the end.
    void HandOut() {
        if (!rows.empty()) take(std::exchange(rows, {}));
    }

  private:
    // Few enough to be shown at once, enough for their number to cost nothing.
    static constexpr std::size_t kBatch = 256;

    bool Holds(const std::string& text) const { return InLowerCase(text).find(wanted) != std::string::npos; }

    std::string wanted;
    const Take& take;
    std::vector<AccountRow> rows;
    std::set<std::string> handedOut;  // the texts of their SIDs
};

}  // namespace permora
