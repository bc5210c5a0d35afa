#include "cli/show_command.h"

#include <optional>

#include "cli/json_output.h"
#include "cli/listing.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"

namespace permora {
namespace {

// Everything that is shown of one object.
struct ShownObject {
    ObjectSecurity security;
    ReadParts whole;  // owner, group, DACL and what else was asked for in one descriptor
    std::string owner;
};

// Reads with the checks that every reader of a list makes, then owner and group, which they do not need.
std::optional<ShownObject> ReadObject(const Target& target, SECURITY_INFORMATION parts,
                                      ConsoleMessages& messages) {
    ShownObject object;
    HeldObject held;
    if (!FindTarget(target, held, messages) || !ReadList(held, object.security, messages))
        return std::nullopt;
    const DWORD error = held.ReadSecurity(parts, object.whole);
    if (error != ERROR_SUCCESS) {
        messages.SaySystemError(error);
        return std::nullopt;
    }
    AccountRecord account;
    if (account.SetSid(object.whole.owner)) object.owner = AccountDisplayName(account);
    return object;
}

std::string TableText(const Target& target, ShownObject& object) {
    return PrintableText(target.argument) +
           "\n  Owner: " + (object.owner.empty() ? "none" : PrintableText(object.owner)) + '\n' +
           InheritsLine(object.security) + RemarkLines(RemarksOn(object.security)) +
           RowsText(object.security.entries);
}

Json ObjectJson(const Target& target, ShownObject& object) {
    return {
        {"path", target.argument},
        {"owner", object.owner},
        {"inherits", object.security.inheritance == DaclInheritance::kFromParent},
        {"entries", EntriesJson(object.security.dacl, object.security.entries)},
    };
}

}  // namespace

bool RunShow(const Arguments& arguments, const std::vector<Target>& targets, ConsoleMessages& messages) {
    const SECURITY_INFORMATION parts = ShownParts(arguments);
    bool allRead = true;
    Json objects = Json::array();
    const char* separator = "";
    for (const Target& target : targets) {
        messages.SetSubject(target.argument);
        std::optional<ShownObject> object = ReadObject(target, parts, messages);
        if (!object) {
            allRead = false;
            continue;
        }
        switch (arguments.format) {
            case ShowFormat::kTable:
                Print(separator + TableText(target, *object));
                separator = "\n";
                break;
            case ShowFormat::kSddl:
                allRead = PrintDescriptor(object->whole.descriptor.get(), parts,
                                          arguments.paths.size() > 1 ? target.argument : "", messages) &&
                          allRead;
                break;
            case ShowFormat::kJson:
                objects.push_back(ObjectJson(target, *object));
                break;
        }
    }
    if (arguments.format == ShowFormat::kJson) PrintJsonObjects(objects, arguments.paths.size());
    return allRead;
}

}  // namespace permora
