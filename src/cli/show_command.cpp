#include "cli/show_command.h"

#include <utility>
#include <vector>

#include "cli/commands.h"
#include "cli/explanation_output.h"
#include "cli/listing.h"
#include "cli/share_listing.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "platform/security_change.h"
#include "security/account_record.h"

namespace permora {
namespace {

std::string EnforcementLines(const ListEnforcement& enforcement) {
    std::string lines = "  Kept: " + PrintableText(KeptText(enforcement)) + '\n';
    if (const std::string bits = ModeBitsText(enforcement); !bits.empty())
        lines += "  Mode bits: " + bits + '\n';
    std::vector<std::string> defeats;
    for (const std::string& text : DefeatTexts(enforcement, AccountDisplayName))
        defeats.push_back(PrintableText(text));
    return lines + RemarkLines(defeats);
}

Json EnforcementJson(const ListEnforcement& enforcement) {
    Json shares = Json::array();
    for (const ListEnforcement::Share& share : enforcement.shares)
        shares.push_back({{"share", share.served.share}, {"goesBy", ServedByName(share.served.by)}});
    const std::string bits = ModeBitsText(enforcement);
    return {{"place", PlaceName(enforcement.place)},
            {"text", KeptText(enforcement)},
            {"shares", enforcement.sharesError == ERROR_SUCCESS ? std::move(shares) : Json()},
            {"modeBits", enforcement.permissions ? Json(bits) : Json()},
            {"notes", DefeatTexts(enforcement, AccountDisplayName)}};
}

}  // namespace

// Everything that is printed about one object.
struct ShowListsCommand::ShownObject {
    ObjectSecurity security;
    ReadParts whole;  // owner, group, list and what else was asked for in one descriptor
    std::string owner;
    std::vector<EntrySource> sources;  // of the entries; none: not asked for
    ListEnforcement enforcement;       // not asked for where only text is shown

    std::string AsTable(const Target& target);
    Json AsJson(const Target& target);
};

// Reads the list with the usual checks, then owner and group, for which these checks are not needed.
bool ShowListsCommand::Read(const Target& target, ShownObject& object) {
    HeldObject held;
    if (!FindTarget(target, held, messages) || !ReadList(held, object.security, messages) ||
        !messages.Check({held.ReadSecurity(Parts(), object.whole)}))
        return false;
    if (WithSources() && !messages.Check({FindEntrySources(held, object.security.dacl, object.sources)}))
        return false;
    if (Format() != ShowFormat::kSddl && !messages.Check({enforcement.Find(held, object.enforcement)}))
        return false;
    AccountRecord account;
    if (account.SetSid(object.whole.owner)) object.owner = AccountDisplayName(account);
    return true;
}

std::string ShowListsCommand::ShownObject::AsTable(const Target& target) {
    return PrintableText(target.argument) + "\n  Owner: " + (owner.empty() ? "none" : PrintableText(owner)) +
           '\n' + InheritsLine(security) + EnforcementLines(enforcement) + RemarkLines(RemarksOn(security)) +
           RowsText(security.entries, sources);
}

Json ShowListsCommand::ShownObject::AsJson(const Target& target) {
    Json entries = EntriesJson(security.dacl, security.entries);
    for (std::size_t i = 0; i < sources.size() && i < entries.size(); ++i)
        AddSource(sources[i], entries[i]);
    return {
        {"path", target.argument},
        {"owner", owner},
        {"inherits", security.inheritance == DaclInheritance::kFromParent},
        {"kept", EnforcementJson(enforcement)},
        {"entries", std::move(entries)},
    };
}

namespace {

class ShowCommand : public ShowListsCommand {
  public:
    explicit ShowCommand(const CommandParent& parent)
        : ShowListsCommand(parent, "show", "Show access lists") {
        sddl.Excludes(json);
        audit.Needs(sddl);
        sources.Excludes(sddl);
    }

  private:
    std::string Interpret() override {
        std::string fault = ShowListsCommand::Interpret();
        if (fault.empty() && sources && IsAboutShares())
            fault = "--sources is not for shares, which inherit nothing";
        return fault;
    }
    ShowFormat Format() const override {
        if (sddl) return ShowFormat::kSddl;
        return json ? ShowFormat::kJson : ShowFormat::kTable;
    }
    SECURITY_INFORMATION Parts() const override {
        return ShowListsCommand::Parts() | (audit ? SACL_SECURITY_INFORMATION : 0U);
    }

    // Programs get them with the rest.
    bool WithSources() const override { return sources || json; }

    ShareOption shares{*this};
    Flag sources{*this, "--sources",
                 "Also from which folder above each inherited entry comes (--json always has it)"};
    JsonFlag json{*this};
    Flag sddl{*this, "--sddl",
              "As security descriptor text, O:...G:...D:...; of several objects two lines\n"
              "for each, its path and the text"};
    Flag audit{*this, "--audit",
               "With --sddl: the system access list too (audits, labels, attributes), S:..."};
};

}  // namespace

SECURITY_INFORMATION ShowListsCommand::Parts() const {
    return kUsualParts;
}

bool ShowListsCommand::PrintSddl(const std::string& name, PSECURITY_DESCRIPTOR descriptor) {
    return PrintDescriptor(descriptor, Parts(), ObjectCount() > 1 ? name : "", messages);
}

void ShowListsCommand::PrintTable(const std::string& text) {
    Print(separator + text);
    separator = "\n";
}

bool ShowListsCommand::Do(const Target& target) {
    ShownObject object;
    if (!Read(target, object)) return false;
    const ShowFormat format = Format();
    if (format == ShowFormat::kSddl) return PrintSddl(target.argument, object.whole.descriptor.get());
    if (format == ShowFormat::kJson)
        objects.push_back(object.AsJson(target));
    else
        PrintTable(object.AsTable(target));
    return true;
}

bool ShowListsCommand::DoShare(const std::string& name) {
    ShareSecurity share;
    if (!messages.Check(LoadShareDacl(name, share))) return false;
    const ShowFormat format = Format();
    if (format == ShowFormat::kSddl) {
        if (share.hasDescriptor) return PrintSddl(name, share.record->shi502_security_descriptor);
        messages.Say("the share has no security descriptor");
        return false;
    }
    if (format == ShowFormat::kJson) {
        objects.push_back(FactsJson(FactsOf(*share.record)));
        objects.back()["kept"] = KeptText(FindShareServer());
        objects.back()["entries"] = EntriesJson(share.dacl, share.entries);
    } else {
        PrintTable(ShareText(share));
    }
    return true;
}

bool ShowListsCommand::End() {
    if (Format() == ShowFormat::kJson) PrintJson(Name(), objects);
    return true;
}

std::unique_ptr<Command> MakeShow(const CommandParent& parent) {
    return std::make_unique<ShowCommand>(parent);
}

}  // namespace permora
