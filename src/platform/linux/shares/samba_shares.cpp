#include "platform/linux/shares/samba_shares.h"

#include <algorithm>
#include <climits>
#include <utility>

#include "platform/ascii.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/shares/samba_tools.h"
#include "platform/linux/shares/samba_user_shares.h"

namespace permora::host {

namespace {

using Sections = std::vector<SambaSection>;

const SambaSection* FindSection(const Sections& sections, std::string_view name) {
    const auto found = std::ranges::find_if(
        sections, [name](const SambaSection& section) { return IsSameShare(section.name, name); });
    return found != sections.end() ? &*found : nullptr;
}

// The server uses the registry's shares only if its configuration says so.
bool UsesRegistry(const Sections& configuration) {
    const SambaSection* global = FindSection(configuration, "global");
    return global != nullptr && global->IsSet("registry shares");
}

enum class Keeper {
    kFile,
    kRegistry,
    kUser,
};

struct KeptShare {
    Keeper keeper = Keeper::kFile;
    SambaSection section;  // as the keeper has it
};

// The name as the server's registry spells it; empty when it holds no such share, or the server does not use
// the registry. Only names are listed: with thousands of shares, Samba's tool needs a second for their
// settings.
DWORD FindRegistered(const Sections& configuration, std::string_view name, std::string& registered) {
    registered.clear();
    if (!UsesRegistry(configuration)) return ERROR_SUCCESS;
    std::string names;
    const DWORD error = AskSambaTool("net", {"conf", "listshares"}, names);
    if (error != ERROR_SUCCESS) return error;
    for (std::string_view rest = names; !rest.empty() && registered.empty();) {
        const std::string_view line = TakeLine(rest);
        if (IsSameShare(line, name)) registered = line;
    }
    return ERROR_SUCCESS;
}

DWORD ReadRegistered(const std::string& name, SambaSection& section) {
    std::string answer;
    const DWORD error = AskSambaTool("net", {"conf", "showshare", "--", name}, answer);
    if (error != ERROR_SUCCESS) return error;
    Sections sections = ParseSambaSections(answer);
    if (sections.empty() || !IsSameShare(sections.front().name, name)) return NERR_NetNameNotFound;
    section = std::move(sections.front());
    return ERROR_SUCCESS;
}

// Tools get only names that were listed.
DWORD FindKeeper(std::string_view name, KeptShare& kept) {
    // The server always has it.
    if (IsSameShare(name, InterProcessShare().name)) return ERROR_NOT_SUPPORTED;
    Sections configuration;
    DWORD error = ReadSambaConfiguration(configuration);
    if (error != ERROR_SUCCESS) return error;
    const std::vector<Share> shares = SharesOfSections(configuration);
    const bool isConfigured =
        std::ranges::any_of(shares, [name](const Share& share) { return IsSameShare(share.name, name); });
    if (isConfigured) {
        std::string registered;
        error = FindRegistered(configuration, name, registered);
        if (error != ERROR_SUCCESS) return error;
        KeptShare found{Keeper::kFile, *FindSection(configuration, name)};
        if (!registered.empty() && !IsFixedInFile(name)) {
            found.keeper = Keeper::kRegistry;
            error = ReadRegistered(registered, found.section);
        }
        if (error == ERROR_SUCCESS) kept = std::move(found);
        return error;
    }
    Sections users;
    error = ReadUserShares(users);
    if (error != ERROR_SUCCESS) return error;
    const SambaSection* made = FindSection(users, name);
    if (made == nullptr) return NERR_NetNameNotFound;
    kept = {Keeper::kUser, *made};
    return ERROR_SUCCESS;
}

// The list of a share for which the tool that reads them failed with `toolError`.
DWORD ReadOtherDescriptor(Share& share, DWORD toolError) {
    SambaSection made;
    const DWORD error = ReadUserShare(share.name, made);
    if (error == ERROR_SUCCESS) return ReadUserShareDescriptor(made, share.descriptor);
    Sections configuration;
    const bool isGone = error == NERR_NetNameNotFound &&
                        ReadSambaConfiguration(configuration) == ERROR_SUCCESS &&
                        FindSection(configuration, share.name) == nullptr;
    return isGone ? NERR_NetNameNotFound : toolError;
}

// --- Changing a section of the registry.

DWORD SetParameter(const std::string& share, const std::string& parameter,
                   const std::optional<std::string>& value) {
    if (!value) return TellSambaTool("net", {"conf", "delparm", "--", share, parameter});
    return TellSambaTool("net", {"conf", "setparm", "--", share, parameter, *value});
}

// What Samba has a number for.
bool IsLimit(DWORD maxUses) {
    return maxUses == SHI_USES_UNLIMITED || maxUses <= DWORD{INT_MAX};
}

std::string LimitText(DWORD maxUses) {
    return std::to_string(maxUses == SHI_USES_UNLIMITED ? 0 : maxUses);
}

// Undoes the changes when a later step fails.
DWORD ChangeRegistered(const SambaSection& section, const ShareChange& change) {
    std::vector<std::pair<std::string, std::string>> wanted;
    if (change.remark) wanted.emplace_back("comment", *change.remark);
    if (change.maxUses) wanted.emplace_back("max connections", LimitText(*change.maxUses));
    DWORD error = ERROR_SUCCESS;
    std::size_t done = 0;
    while (error == ERROR_SUCCESS && done < wanted.size()) {
        error = SetParameter(section.name, wanted[done].first, wanted[done].second);
        if (error == ERROR_SUCCESS) ++done;
    }
    if (error == ERROR_SUCCESS && change.descriptor)
        error = WriteSambaDescriptor(section.name, *change.descriptor);
    while (error != ERROR_SUCCESS && done > 0) {
        const std::string& parameter = wanted[--done].first;
        SetParameter(section.name, parameter, section.Value(parameter));
    }
    return error;
}

// The share is read-only until it has its list.
DWORD AddRegistered(const Share& share, const std::string& hostPath) {
    DWORD error = TellSambaTool(
        "net", {"conf", "addshare", "--", share.name, hostPath, "writeable=n", "guest_ok=n", share.remark});
    if (error != ERROR_SUCCESS) return error;
    if (share.maxUses != SHI_USES_UNLIMITED)
        error = SetParameter(share.name, "max connections", LimitText(share.maxUses));
    if (error == ERROR_SUCCESS && !share.descriptor.empty())
        error = WriteSambaDescriptor(share.name, share.descriptor);
    if (error == ERROR_SUCCESS) error = SetParameter(share.name, "read only", "no");
    // No share is better than one that is open to too many people.
    if (error != ERROR_SUCCESS) TellSambaTool("net", {"conf", "delshare", "--", share.name});
    return error;
}

// An included configuration file may define the share, too. It then stays.
DWORD RemoveRegistered(const std::string& name) {
    DWORD error = TellSambaTool("net", {"conf", "delshare", "--", name});
    Sections configuration;
    if (error == ERROR_SUCCESS) error = ReadSambaConfiguration(configuration);
    if (error != ERROR_SUCCESS) return error;
    return FindSection(configuration, name) == nullptr ? ERROR_SUCCESS : ERROR_FILE_READ_ONLY;
}

// --- What a configuration can hold.

bool IsPlainText(std::string_view text) {
    return std::none_of(text.begin(), text.end(), IsControl);
}

// Samba reads the letter after a percent sign as a variable, and removes blanks and quotation marks around
// values.
DWORD FindHostFolder(const std::string& path, std::string& hostPath) {
    ObjectHandle folder;
    std::string found;
    DWORD error = OpenObject(path.c_str(), folder);
    if (error == ERROR_SUCCESS && !folder.IsFolder()) error = NERR_UnknownDevDir;
    if (error == ERROR_SUCCESS) error = HostPathOf(folder.Descriptor(), found);
    if (error != ERROR_SUCCESS) return error;
    if (!IsPlainText(found) || found.find('%') != found.npos || found.ends_with(' ') || found.ends_with('"'))
        return ERROR_NOT_SUPPORTED;
    hostPath = std::move(found);
    return ERROR_SUCCESS;
}

bool IsNameOfShare(const std::string& name) {
    return name.find('%') == name.npos && !SharesOfSections({{name, {}}}).empty();
}

}  // namespace

DWORD SambaShares::List(std::vector<Share>& shares) const {
    Sections sections;
    Sections users;
    DWORD error = ReadSambaConfiguration(sections);
    if (error == ERROR_SUCCESS) error = ReadUserShares(users);
    if (error != ERROR_SUCCESS) return error;
    std::vector<Share> found = SharesOfSections(sections);
    for (Share& share : SharesOfSections(users)) {
        // The server prefers its configuration.
        if (FindSection(sections, share.name) == nullptr) found.push_back(std::move(share));
    }
    // The server always has this share. A section of that name only changes its settings.
    if (std::ranges::none_of(found, IsInterProcess)) found.push_back(InterProcessShare());
    const std::vector<DriveRoot> drives = ListDriveRoots();
    for (Share& share : found)
        share.path = share.path.starts_with('/') ? PathFromHost(share.path, drives) : std::string();
    shares = std::move(found);
    return ERROR_SUCCESS;
}

DWORD SambaShares::ReadDescriptor(Share& share) const {
    if (IsInterProcess(share)) return ERROR_SUCCESS;
    const DWORD error = ReadSambaDescriptor(share.name, share.descriptor);
    // The tool does not know users' shares.
    return IsFailureOfTool(error) ? ReadOtherDescriptor(share, error) : error;
}

DWORD SambaShares::Change(std::string_view name, const ShareChange& change) const {
    if (change.remark && !IsPlainText(*change.remark)) return ERROR_INVALID_PARAMETER;
    if (change.maxUses && !IsLimit(*change.maxUses)) return NERR_InvalidMaxUsers;
    // To Samba every share has a list.
    if (change.descriptor && change.descriptor->empty()) return ERROR_NOT_SUPPORTED;
    KeptShare kept;
    const DWORD error = FindKeeper(name, kept);
    if (error != ERROR_SUCCESS) return error;
    switch (kept.keeper) {
        case Keeper::kRegistry:
            return ChangeRegistered(kept.section, change);
        case Keeper::kUser:
            return ChangeUserShare(kept.section.name, change);
        case Keeper::kFile:
            if (change.remark || change.maxUses) return ERROR_FILE_READ_ONLY;
            return WriteSambaDescriptor(kept.section.name, *change.descriptor);
    }
    return ERROR_NOT_SUPPORTED;
}

DWORD SambaShares::Add(const Share& share) const {
    if (!IsNameOfShare(share.name)) return ERROR_INVALID_NAME;
    if (!IsPlainText(share.remark)) return ERROR_INVALID_PARAMETER;
    if (!IsLimit(share.maxUses)) return NERR_InvalidMaxUsers;
    std::string hostPath;
    if (const DWORD error = FindHostFolder(share.path, hostPath); error != ERROR_SUCCESS) return error;
    Sections configuration;
    Sections users;
    std::string registered;
    DWORD error = ReadSambaConfiguration(configuration);
    if (error == ERROR_SUCCESS) error = ReadUserShares(users);
    if (error == ERROR_SUCCESS) error = FindRegistered(configuration, share.name, registered);
    if (error != ERROR_SUCCESS) return error;
    const bool isListed = FindSection(configuration, share.name) != nullptr ||
                          FindSection(users, share.name) != nullptr || !registered.empty();
    if (isListed) return NERR_DuplicateShare;
    if (UsesRegistry(configuration)) return AddRegistered(share, hostPath);
    return AddUserShare(share, hostPath);
}

DWORD SambaShares::Remove(std::string_view name) const {
    KeptShare kept;
    const DWORD error = FindKeeper(name, kept);
    if (error != ERROR_SUCCESS) return error;
    switch (kept.keeper) {
        case Keeper::kRegistry:
            return RemoveRegistered(kept.section.name);
        case Keeper::kUser:
            return RemoveUserShare(kept.section.name);
        case Keeper::kFile:
            return ERROR_FILE_READ_ONLY;
    }
    return ERROR_NOT_SUPPORTED;
}

}  // namespace permora::host
