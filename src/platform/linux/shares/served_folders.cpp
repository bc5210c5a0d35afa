#include "platform/served_folders.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/ascii.h"
#include "platform/linux/accounts/machine.h"
#include "platform/linux/accounts/name_service.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/files/descriptor_support.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/shares/samba_tools.h"
#include "platform/linux/shares/samba_user_shares.h"
#include "platform/list_place.h"

namespace permora {
namespace host {
namespace {

enum class ShareMaker : std::uint8_t { kConfiguration, kUser };

// What a share has of its own counts before what all shares have.
std::string SettingOf(const SambaSection& share, const SambaSection* global, std::string_view name) {
    if (const auto own = share.Value(name)) return *own;
    return global != nullptr ? global->Value(name).value_or("") : std::string();
}

bool IsOn(const SambaSection& share, const SambaSection* global, std::string_view name) {
    return share.Value(name) ? share.IsSet(name) : global != nullptr && global->IsSet(name);
}

// "acl_xattr" in "/usr/lib/samba/vfs/acl_xattr.so:second".
std::string_view ModuleName(std::string_view word) {
    word = word.substr(0, word.find(':'));
    if (const std::size_t slash = word.rfind('/'); slash != word.npos) word.remove_prefix(slash + 1);
    return word.substr(0, word.find('.'));
}

// Other modules that put access lists of their own in the place of the host's.
bool HasListsOfItsOwn(std::string_view module) {
    constexpr std::array<std::string_view, 5> kVolumes = {"gpfs", "ceph", "ceph_new", "glusterfs", "vxfs"};
    return module.find("acl") != module.npos || std::ranges::find(kVolumes, module) != kVolumes.end();
}

void JudgeModules(const std::string& modules, ServedFolder& folder) {
    folder.by = ServedBy::kHostAlone;
    std::string_view rest = modules;
    while (!rest.empty()) {
        const std::size_t end = rest.find_first_of(" \t,");
        const std::string_view module = ModuleName(rest.substr(0, end));
        rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
        if (module == "acl_xattr") {
            folder.by = ServedBy::kListAndHost;
        } else if (HasListsOfItsOwn(module)) {
            folder.by = ServedBy::kUnknown;
            folder.setting = "vfs objects";
            return;
        }
    }
}

// The settings that let some or all users in as others.
void JudgeUsers(const SambaSection& share, const SambaSection* global, ServedFolder& folder) {
    const auto leaveUnknown = [&](const char* setting) {
        folder.by = ServedBy::kUnknown;
        folder.setting = setting;
    };
    for (const char* setting : {"force group", "admin users"})
        if (!SettingOf(share, global, setting).empty()) leaveUnknown(setting);
    if (IsOn(share, global, "guest only")) leaveUnknown("guest only");
    const std::string forced = SettingOf(share, global, "force user");
    if (forced.empty()) return;
    id_t user = 0;
    if (FindHostId(AccountKind::kUser, forced, user) == ERROR_SUCCESS)
        folder.user = SidForUser(user);
    else
        leaveUnknown("force user");
}

// Nobody can write unless a share says otherwise; in a user's share its list alone says who can.
void JudgeWriting(const SambaSection& share, const SambaSection* global, ShareMaker maker,
                  ServedFolder& folder) {
    for (const char* setting : {"valid users", "invalid users", "read list", "write list"})
        if (!SettingOf(share, global, setting).empty()) folder.partiality = setting;
    const std::string readOnly = SettingOf(share, global, "read only");
    folder.isReadOnly = maker == ShareMaker::kConfiguration && folder.partiality != "write list" &&
                        !EqualsIgnoringCase(readOnly, "no");
}

ServedFolder Judge(const SambaSection& share, const SambaSection* global, ShareMaker maker) {
    ServedFolder folder;
    folder.share = share.name;
    JudgeModules(SettingOf(share, global, "vfs objects"), folder);
    const std::string attribute = SettingOf(share, global, "acl_xattr:security_acl_name");
    if (folder.by == ServedBy::kListAndHost && !attribute.empty() && attribute != kSambaAttribute) {
        folder.by = ServedBy::kUnknown;
        folder.setting = "acl_xattr:security_acl_name";
    }
    JudgeUsers(share, global, folder);
    JudgeWriting(share, global, maker, folder);
    return folder;
}

// Without links; empty when there is no such folder, as for paths that are made for each user.
std::string RealPath(const std::string& hostPath) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(hostPath.c_str(), nullptr), std::free);
    return real ? std::string(real.get()) : std::string();
}

DWORD FindFolders(std::vector<ServedFolder>& folders) {
    if (!IsSambaSetUp()) return ERROR_SUCCESS;
    std::vector<SambaSection> sections;
    std::vector<SambaSection> users;
    DWORD error = ReadSambaConfiguration(sections);
    if (error == ERROR_SUCCESS) error = ReadUserShares(users);
    if (error != ERROR_SUCCESS) return error;
    const auto global = std::ranges::find_if(
        sections, [](const SambaSection& section) { return IsSameShare(section.name, "global"); });
    const SambaSection* const settings = global == sections.end() ? nullptr : &*global;
    for (const std::vector<SambaSection>* const all : {&sections, &users}) {
        for (const SambaSection& section : *all) {
            const std::string path = RealPath(section.Value("path").value_or(""));
            if (path.empty() || section.IsSet("printable") || SharesOfSections({section}).empty()) continue;
            const ShareMaker maker = all == &users ? ShareMaker::kUser : ShareMaker::kConfiguration;
            ServedFolder folder = Judge(section, settings, maker);
            folder.path = PathFromHost(path, {{'C', "/"}});
            folders.push_back(std::move(folder));
        }
    }
    return ERROR_SUCCESS;
}

}  // namespace
}  // namespace host

ShareServer FindShareServer() {
    return host::IsSambaSetUp() ? ShareServer::kSamba : ShareServer::kNobody;
}

DWORD FindServedFolders(std::vector<ServedFolder>& folders) {
    std::vector<ServedFolder> found;
    const DWORD error = host::FindFolders(found);
    if (error == ERROR_SUCCESS) folders = std::move(found);
    return error;
}

std::string FileServerName() {
    return host::ThisMachine().name;
}

}  // namespace permora
