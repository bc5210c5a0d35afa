#include "security/entry_source.h"

#include <cstddef>
#include <optional>
#include <utility>

#include "platform/nt/ace_bits.h"
#include "platform/nt/entry_effects.h"
#include "platform/raw_security.h"
#include "platform/security_change.h"
#include "platform/system_message.h"

namespace permora {
namespace {

// An entry that is looked for, and where it stands in the list of the folder that the search has reached.
struct Sought {
    std::size_t entry;
    std::size_t inFolder;
};

std::string PathOf(const HeldObject& folder) {
    ChangedTop top;
    return folder.FindTop(top) == ERROR_SUCCESS ? top.path : "a folder above, to which no path leads";
}

// One walk up from an object.
class SourceSearch {
  public:
    explicit SourceSearch(std::vector<EntrySource>& found) : sources(found) {}

    void Begin(const nt::Acl& list) {
        sources.assign(list.entries.size(), {});
        for (std::size_t i = 0; i < list.entries.size(); ++i)
            if ((list.entries[i].flags & nt::kInherited) != 0) sought.push_back({i, i});
    }
    bool IsDone() const { return sought.empty(); }
    // For all that are still sought.
    void End(const EntrySource& source) {
        for (const Sought& each : sought)
            sources[each.entry] = source;
        sought.clear();
    }
    // From an object that `below` describes to its folder, whose list is `above`.
    void GoUp(const nt::SecurityDescriptor& below, nt::ObjectKind kind, const nt::Acl& above,
              const HeldObject& folder) {
        const std::vector<std::optional<std::size_t>> from = nt::FindHandedDown(below, above, kind);
        std::vector<Sought> higher;
        std::string path;
        for (const Sought& each : sought) {
            const std::optional<std::size_t> index = from[each.inFolder];
            if (!index) {
                sources[each.entry] = {SourceKind::kNobody, {}, {}};
            } else if ((above.entries[*index].flags & nt::kInherited) != 0) {
                higher.push_back({each.entry, *index});
            } else {
                if (path.empty()) path = PathOf(folder);
                sources[each.entry] = {SourceKind::kFolder, path, {}};
            }
        }
        sought = std::move(higher);
    }

  private:
    std::vector<EntrySource>& sources;
    std::vector<Sought> sought;
};

EntrySource Unknown(std::string reason) {
    return {SourceKind::kUnknown, {}, std::move(reason)};
}

// The folder that holds `object`, and what it hands down. Says why the search ends before it, if it does.
std::optional<EntrySource> ReadFolder(const HeldObject& object, HeldObject& folder,
                                      nt::SecurityDescriptor& descriptor) {
    DWORD error = object.HoldAbove(folder);
    if (error == ERROR_SUCCESS && !folder.IsHeld())
        return Unknown("the search ends at the root of the volume");
    if (error == ERROR_SUCCESS) error = ReadDescriptor(folder, kUsualParts, descriptor);
    if (error != ERROR_SUCCESS)
        return Unknown("the folder above cannot be read: " + SystemMessageLine(error));
    descriptor.dacl = nt::Acl(ListOf(descriptor));
    return std::nullopt;
}

}  // namespace

DWORD FindEntrySources(const HeldObject& object, PACL dacl, std::vector<EntrySource>& sources) {
    nt::SecurityDescriptor below;
    std::optional<nt::Acl> shown = AclOf(dacl);
    if (dacl != nullptr && !shown) return ERROR_INVALID_ACL;
    if (const DWORD error = ReadDescriptor(object, kUsualParts, below); error != ERROR_SUCCESS) return error;
    below.dacl = std::move(shown).value_or(nt::Acl());
    nt::ObjectKind kind = object.IsFolder() ? nt::ObjectKind::kFolder : nt::ObjectKind::kFile;
    SourceSearch search(sources);
    search.Begin(below.dacl);
    HeldObject reached;
    for (const HeldObject* current = &object; !search.IsDone(); current = &reached) {
        HeldObject folder;
        nt::SecurityDescriptor above;
        std::optional<EntrySource> end;
        if (below.IsDaclProtected())
            end = {SourceKind::kNobody, {}, {}};
        else
            end = ReadFolder(*current, folder, above);
        if (end) {
            search.End(*end);
            break;
        }
        search.GoUp(below, kind, above.dacl, folder);
        below = std::move(above);
        kind = nt::ObjectKind::kFolder;
        reached = std::move(folder);
    }
    return ERROR_SUCCESS;
}

std::string SourceText(const EntrySource& source) {
    switch (source.kind) {
        case SourceKind::kOwn:
            return {};
        case SourceKind::kFolder:
            return source.folder;
        case SourceKind::kNobody:
            return "no folder above hands it down";
        case SourceKind::kUnknown:
            break;
    }
    return "not known: " + source.reason;
}

}  // namespace permora
