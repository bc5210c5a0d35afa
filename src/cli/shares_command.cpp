#include "cli/shares_command.h"

#include <array>

#include "cli/entry_edits.h"
#include "cli/json_output.h"
#include "cli/list_change.h"
#include "cli/listing.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "security/text_conversion.h"
#include "shares/share_security.h"

namespace permora {
namespace {

// --- Facts.

struct Facts {
    std::string name;
    std::string type;
    std::string path;
    std::string remark;
    DWORD maxUses = 0;
};

std::string TypeText(DWORD type) {
    constexpr std::array<const char*, 4> kTypes = {"Folder", "Printer", "Device", "IPC"};
    const DWORD kind = type & ~STYPE_SPECIAL;
    const std::string text = kind < kTypes.size() ? kTypes.at(kind) : "Type " + std::to_string(kind);
    return (type & STYPE_SPECIAL) != 0 ? text + ", administrative" : text;
}

std::string UsesText(DWORD maxUses) {
    return maxUses == SHI_USES_UNLIMITED ? "unlimited" : std::to_string(maxUses);
}

Json FactsJson(const Facts& facts) {
    Json json = {{"name", facts.name}, {"type", facts.type}, {"path", facts.path}, {"remark", facts.remark}};
    json["maxUses"] = facts.maxUses == SHI_USES_UNLIMITED ? Json() : Json(facts.maxUses);
    return json;
}

// All shares; a system error code.
DWORD ListShares(std::vector<Facts>& shares) {
    DWORD resume = 0;
    NET_API_STATUS status = ERROR_MORE_DATA;
    while (status == ERROR_MORE_DATA) {
        LPBYTE block = nullptr;
        DWORD read = 0;
        DWORD total = 0;
        status = NetShareEnum(nullptr, 2, &block, MAX_PREFERRED_LENGTH, &read, &total, &resume);
        if (status != NERR_Success && status != ERROR_MORE_DATA) return status;
        const UniqueNetworkBuffer<SHARE_INFO_2> records(reinterpret_cast<SHARE_INFO_2*>(block));
        for (DWORD i = 0; i < read; ++i) {
            const SHARE_INFO_2& record = records.get()[i];
            shares.push_back({WideToAnsi(record.shi2_netname), TypeText(record.shi2_type),
                              WideToAnsi(record.shi2_path), WideToAnsi(record.shi2_remark),
                              record.shi2_max_uses});
        }
    }
    return ERROR_SUCCESS;
}

// --- Lists.

bool Load(const std::string& name, ShareSecurity& share, ConsoleMessages& messages) {
    const Outcome outcome = LoadShareDacl(name, share);
    if (!outcome.IsDone()) messages.Say(outcome);
    return outcome.IsDone();
}

Facts FactsOf(const SHARE_INFO_502& record) {
    return {WideToAnsi(record.shi502_netname), TypeText(record.shi502_type), WideToAnsi(record.shi502_path),
            WideToAnsi(record.shi502_remark), record.shi502_max_uses};
}

std::string TableText(ShareSecurity& share) {
    const Facts facts = FactsOf(*share.record);
    std::string text = PrintableText(facts.name) + "\n  Type: " + facts.type + '\n';
    if (!facts.path.empty()) text += "  Path: " + PrintableText(facts.path) + '\n';
    if (!facts.remark.empty()) text += "  Remark: " + PrintableText(facts.remark) + '\n';
    return text + "  Users: " + UsesText(facts.maxUses) + '\n' +
           RemarkLines(RemarksOn(share.dacl, share.entries)) + RowsText(share.entries);
}

bool PrintSddl(const Arguments& arguments, const std::string& name, const ShareSecurity& share,
               ConsoleMessages& messages) {
    if (!share.hasDescriptor) {
        messages.Say("the share has no security descriptor");
        return false;
    }
    return PrintDescriptor(share.record->shi502_security_descriptor, ShownParts(arguments),
                           arguments.shares.size() > 1 ? name : "", messages);
}

std::string StateText(const std::string& name, const char* moment, PACL dacl, AccessEntryList& entries) {
    return PrintableText(name) + ' ' + moment + ":\n" + RemarkLines(RemarksOn(dacl, entries)) +
           RowsText(entries);
}

bool Write(const std::string& name, const ShareSecurity& share, PACL dacl, ConsoleMessages& messages) {
    // A list needs a descriptor to stand in.
    Outcome outcome = share.hasDescriptor ? Outcome() : GiveShareDescriptor(name, *share.record);
    if (outcome.IsDone()) outcome = WriteShareDacl({&name, 1}, dacl);
    if (outcome.IsDone())
        Print(PrintableText(name) + ": changed\n");
    else
        messages.Say(outcome);
    return outcome.IsDone();
}

bool ChangeShare(const Arguments& arguments, const AccountRecord& account, const std::string& name,
                 HMODULE library, ConsoleMessages& messages) {
    ShareSecurity share;
    if (!Load(name, share, messages)) return false;
    const Losses losses = LossesOf(share.dacl, share.entries);
    std::string preview;
    if (arguments.dryRun) preview = StateText(name, "before", share.dacl, share.entries);

    const EditResult result =
        EditEntries(arguments, account, EntryPlace::kShare, share.dacl, share.entries, messages);
    if (result != EditResult::kChanged) return result == EditResult::kNothingToDo;
    if (!MayReplace(losses, arguments, messages)) return false;
    DropOtherEntries(share.entries);
    const UniqueLocal<ACL> dacl = BuildWholeDacl(library, share.entries.Entries(), messages);
    if (!dacl) return false;
    if (!arguments.dryRun) return Write(name, share, dacl.get(), messages);
    Print(preview + StateText(name, "after", dacl.get(), share.entries));
    return true;
}

}  // namespace

bool RunShares(const Arguments& arguments, ConsoleMessages& messages) {
    std::vector<Facts> shares;
    if (const DWORD error = ListShares(shares); error != ERROR_SUCCESS) {
        messages.SetSubject("shares");
        messages.SaySystemError(error);
        return false;
    }
    Json array = Json::array();
    std::vector<std::vector<std::string>> table = {{"Name", "Type", "Users", "Path", "Remark"}};
    for (const Facts& share : shares) {
        table.push_back({share.name, share.type, UsesText(share.maxUses), share.path, share.remark});
        array.push_back(FactsJson(share));
    }
    if (arguments.format == ShowFormat::kJson)
        PrintJson(array);
    else
        Print(AlignedTable(table, ""));
    return true;
}

bool RunShowShares(const Arguments& arguments, ConsoleMessages& messages) {
    bool allRead = true;
    Json objects = Json::array();
    const char* separator = "";
    for (const std::string& name : arguments.shares) {
        messages.SetSubject(name);
        ShareSecurity share;
        if (!Load(name, share, messages)) {
            allRead = false;
            continue;
        }
        switch (arguments.format) {
            case ShowFormat::kTable:
                Print(separator + TableText(share));
                separator = "\n";
                break;
            case ShowFormat::kSddl:
                allRead = PrintSddl(arguments, name, share, messages) && allRead;
                break;
            case ShowFormat::kJson:
                objects.push_back(FactsJson(FactsOf(*share.record)));
                objects.back()["entries"] = EntriesJson(share.dacl, share.entries);
                break;
        }
    }
    if (arguments.format == ShowFormat::kJson) PrintJsonObjects(objects, arguments.shares.size());
    return allRead;
}

bool RunChangeShares(const Arguments& arguments, const AccountRecord& account, ConsoleMessages& messages) {
    const UniqueLibrary library = LoadAccessListLibrary();
    bool allDone = true;
    for (const std::string& name : arguments.shares) {
        messages.SetSubject(name);
        allDone = ChangeShare(arguments, account, name, library.get(), messages) && allDone;
    }
    return allDone;
}

}  // namespace permora
