#include "cli/mode_check.h"

#include <algorithm>
#include <array>

#include "platform/accounts.h"
#include "platform/security_change.h"
#include "report/sid_key.h"

namespace permora {
namespace {

// Whoever connects to a server is in these; who serves the machine itself does not connect.
bool IsOfConnected(const nt::Sid& group) {
    static const std::array<nt::Sid, 3> kGroups = {nt::Sid(1, {0}), nt::Sid(5, {2}), nt::Sid(5, {11})};
    return std::ranges::find(kGroups, group) != kGroups.end();
}

bool IsGroup(SID_NAME_USE use) {
    return use == SidTypeGroup || use == SidTypeAlias || use == SidTypeWellKnownGroup;
}

// What is below a folder, or the folder itself.
bool IsIn(std::string_view path, std::string_view folder) {
    if (!path.starts_with(folder)) return false;
    return path.size() == folder.size() || folder.ends_with('\\') || path[folder.size()] == '\\';
}

void AppendBytes(std::string& key, std::span<const std::uint8_t> bytes) {
    key.append(bytes.begin(), bytes.end());
}

void AppendNumber(std::string& key, std::uint64_t number) {
    key += std::to_string(number) + ' ';
}

}  // namespace

const MeantPeople& SystemModeAccounts::PeopleOf(const nt::Sid& account) {
    const auto [place, isNew] = people.try_emplace(SidKey(account));
    MeantPeople& meant = place->second;
    if (!isNew) return meant;
    AccountName name;
    const NameAnswer answer = FindAccountName(account, kLookupTime, name);
    if (answer == NameAnswer::kNotYet || answer == NameAnswer::kFailed) {
        meant.error = kDomainOffline;
    } else if (answer == NameAnswer::kKnown && !IsGroup(name.use)) {
        meant.people.push_back(account);
    } else if (answer == NameAnswer::kKnown) {
        const GroupPeople members = directory.PeopleOf(account);
        for (const GroupPerson& person : members.people)
            meant.people.push_back(person.sid);
        std::ranges::copy_if(members.open, std::back_inserter(meant.open), IsOfConnected);
        if (!members.unknown.empty()) meant.error = members.unknown.front().error;
    }
    return meant;  // nobody, when there is no such account
}

DWORD SystemModeAccounts::FindHost(const nt::Sid& person, HostAccount& found) {
    const auto [place, isNew] = hosts.try_emplace(SidKey(person));
    if (isNew) place->second.first = FindHostAccount(person, place->second.second);
    if (place->second.first == ERROR_SUCCESS) found = place->second.second;
    return place->second.first;
}

DWORD SystemModeAccounts::FindSids(const nt::Sid& account, std::vector<nt::Sid>& sids) {
    const auto [place, isNew] = groups.try_emplace(SidKey(account));
    auto& [error, kept] = place->second;
    if (isNew) {
        AccountGroups found;
        error = FindAccountGroups(account, GroupsRequest::kUsual, found);
        kept = std::move(found.sids);
    }
    if (error == ERROR_SUCCESS) sids = kept;
    return error;
}

DWORD ModeCheck::Prepare() {
    const DWORD error = FindServedFolders(folders);
    isTold.assign(folders.size(), false);
    return error;
}

std::string ModeCheck::FullPath(std::string_view below) const {
    if (below.empty()) return path;
    return path + (path.ends_with('\\') ? "" : "\\") + std::string(below);
}

void ModeCheck::Run(HeldObject& top, const std::string& topPath, ModeObserver& whoListens) {
    const auto isConcerned = [&](const ServedFolder& folder) {
        return IsIn(topPath, folder.path) || IsIn(folder.path, topPath);
    };
    if (std::ranges::none_of(folders, isConcerned)) return;
    held = &top;
    path = topPath;
    observer = &whoListens;
    top.ExpectManyBelow();
    (void)ReadTree(top, kUsualParts, *this);  // the observer alone ends it
}

// Whether another share has said the same already.
bool ModeCheck::IsLikeEarlier(std::string_view full, std::size_t place) const {
    const ServedFolder& folder = folders[place];
    return folder.by != ServedBy::kUnknown &&
           std::any_of(folders.begin(), folders.begin() + static_cast<std::ptrdiff_t>(place),
                       [&](const ServedFolder& earlier) {
                           return earlier.by == folder.by && earlier.user == folder.user &&
                                  IsIn(full, earlier.path);
                       });
}

bool ModeCheck::Visit(const ReadObject& object) {
    if (!observer->Begin(object.path)) return false;
    if (object.kind != SavedKind::kFile && object.kind != SavedKind::kFolder) return true;
    const std::string full = FullPath(object.path);
    HostPermissions permissions;
    bool isRead = false;
    for (std::size_t i = 0; i < folders.size(); ++i) {
        if (!IsIn(full, folders[i].path) || IsLikeEarlier(full, i)) continue;
        if (folders[i].by == ServedBy::kUnknown) {
            if (!isTold[i]) observer->Miss(object.path, folders[i], ERROR_SUCCESS);
            isTold[i] = true;
            continue;
        }
        if (!isRead) {
            HeldObject below;
            DWORD error =
                object.path.empty() ? ERROR_SUCCESS : held->HoldBelow(std::string(object.path), below);
            if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return true;
            if (error == ERROR_SUCCESS)
                error = (object.path.empty() ? *held : below).ReadHostPermissions(permissions);
            if (error != ERROR_SUCCESS) {
                observer->Miss(object.path, folders[i], error);
                return true;
            }
            isRead = true;
        }
        Compare(object, i, permissions);
    }
    return true;
}

// Many objects have few lists and modes.
void ModeCheck::Compare(const ReadObject& object, std::size_t place, const HostPermissions& permissions) {
    std::string key;
    for (const std::uint64_t number :
         {std::uint64_t{place}, std::uint64_t{permissions.owner}, std::uint64_t{permissions.group},
          std::uint64_t{permissions.mode}, std::uint64_t{object.kind == SavedKind::kFolder},
          std::uint64_t{permissions.list.size()}})
        AppendNumber(key, number);
    AppendBytes(key, permissions.list);
    AppendBytes(key, object.descriptor);
    const auto [found, isNew] = known.try_emplace(std::move(key));
    const auto descriptor = isNew ? nt::SecurityDescriptor::FromBytes(object.descriptor) : std::nullopt;
    const nt::ObjectKind kind =
        object.kind == SavedKind::kFolder ? nt::ObjectKind::kFolder : nt::ObjectKind::kFile;
    if (descriptor) found->second = CompareWithMode(*descriptor, permissions, kind, folders[place], accounts);
    if (!found->second.empty()) observer->Take(object.path, folders[place], found->second);
}

}  // namespace permora
