#include "cli/show_command.h"

#include <utility>

#include "cli/commands.h"
#include "cli/explanation_output.h"
#include "cli/listing.h"
#include "cli/share_listing.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "platform/security_change.h"

namespace permora {
namespace {

// Everything that is printed about one object.
struct ShownObject {
    ObjectSecurity security;
    ReadParts whole;  // owner, group, list and what else was asked for in one descriptor
    std::string owner;
    std::vector<EntrySource> sources;  // of the entries; none: not asked for
};

// Reads the list with the usual checks, then owner and group, for which these checks are not needed.
bool ReadShownObject(const Target& target, SECURITY_INFORMATION parts, bool withSources, ShownObject& object,
                     ConsoleMessages& messages) {
    HeldObject held;
    if (!FindTarget(target, held, messages) || !ReadList(held, object.security, messages) ||
        !messages.Check({held.ReadSecurity(parts, object.whole)}))
        return false;
    if (withSources && !messages.Check({FindEntrySources(held, object.security.dacl, object.sources)}))
        return false;
    AccountRecord account;
    if (account.SetSid(object.whole.owner)) object.owner = AccountDisplayName(account);
    return true;
}

std::string TableText(const Target& target, ShownObject& object) {
    return PrintableText(target.argument) +
           "\n  Owner: " + (object.owner.empty() ? "none" : PrintableText(object.owner)) + '\n' +
           InheritsLine(object.security) + RemarkLines(RemarksOn(object.security)) +
           RowsText(object.security.entries, object.sources);
}

Json ObjectJson(const Target& target, ShownObject& object) {
    Json entries = EntriesJson(object.security.dacl, object.security.entries);
    for (std::size_t i = 0; i < object.sources.size() && i < entries.size(); ++i)
        AddSource(object.sources[i], entries[i]);
    return {
        {"path", target.argument},
        {"owner", object.owner},
        {"inherits", object.security.inheritance == DaclInheritance::kFromParent},
        {"entries", std::move(entries)},
    };
}

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

    bool WithSources() const override { return static_cast<bool>(sources); }

    ShareOption shares{*this};
    Flag sources{*this, "--sources", "Also from which folder above each inherited entry comes"};
    JsonFlag json{*this, JsonShape::kObjects};
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
    if (!ReadShownObject(target, Parts(), WithSources(), object, messages)) return false;
    const ShowFormat format = Format();
    if (format == ShowFormat::kSddl) return PrintSddl(target.argument, object.whole.descriptor.get());
    if (format == ShowFormat::kJson)
        objects.push_back(ObjectJson(target, object));
    else
        PrintTable(TableText(target, object));
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
        objects.back()["entries"] = EntriesJson(share.dacl, share.entries);
    } else {
        PrintTable(ShareText(share));
    }
    return true;
}

bool ShowListsCommand::End() {
    if (Format() == ShowFormat::kJson) PrintJsonObjects(objects, ObjectCount());
    return true;
}

std::unique_ptr<Command> MakeShow(const CommandParent& parent) {
    return std::make_unique<ShowCommand>(parent);
}

}  // namespace permora
