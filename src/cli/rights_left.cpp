#include "cli/rights_left.h"

#include <algorithm>
#include <vector>

#include "cli/listing.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "platform/raw_security.h"
#include "security/access_rights.h"
#include "security/access_rows.h"
#include "security/effective_rights.h"
#include "security/object_server.h"

namespace permora {
namespace {

std::string NamesOf(DWORD rights) {
    if ((rights & FULL_CONTROL_RIGHTS) == FULL_CONTROL_RIGHTS) return kAccessRights.front().listName;
    std::string names;
    for (std::size_t right = 1; right < kAccessRights.size(); ++right) {
        if ((kAccessRights.at(right).bits & rights) == 0) continue;
        names += (names.empty() ? "" : ", ") + std::string(kAccessRights.at(right).listName);
    }
    return names;
}

}  // namespace

std::string RightsLeftText(const HeldObject& object, PACL dacl, AccountRecord& account, KnownGroups& groups) {
    const std::string server = ServerOfObject(object);
    const std::string name = PrintableText(AccountDisplayName(account));
    std::vector<Grant> grants;
    DWORD error = groups.Find(server, account, GroupsRequest::kUsual);
    if (error == ERROR_SUCCESS) error = CheckListOfServer(server, dacl);
    if (error == ERROR_SUCCESS) error = FindGrants(dacl, groups.Groups(), grants);
    if (error != ERROR_SUCCESS)
        return "  Which rights " + name +
               " has cannot be told: " + PrintableText(NoRightsText(error, GroupsRequest::kUsual, account)) +
               '\n';
    AccessEntryList entries(AcesOf(dacl));
    const std::vector<AccessRow> rows = AccessRowsOf(entries, AccountDisplayName);
    std::string lines;
    DWORD all = 0;
    for (const Grant& grant : grants) {
        all |= grant.rights;
        const std::string names = NamesOf(grant.rights);
        const auto row = std::ranges::find(rows, grant.index, &AccessRow::entryIndex);
        if (names.empty() || row == rows.end()) continue;
        lines += "    through " + PrintableText(row->name) + " (" + row->inheritance + "): " + names + '\n';
    }
    if (lines.empty()) return "  " + name + " has no rights\n";
    return "  " + name + " has:\n" + lines +
           RemarkLines(RemarksOnRights(dacl, account, {all, groups.Groups().origin}));
}

}  // namespace permora
