#include "shares/host_view.h"

#include <algorithm>
#include <utility>

#include "platform/api/security.h"
#include "platform/system_message.h"

namespace permora {
namespace {

constexpr std::uint32_t kHostSuperuser = 0;

// What the server makes of each bit of a mode, of all three together, and besides of writing in a folder.
constexpr DWORD kOfRead = FILE_GENERIC_READ;
constexpr DWORD kOfWrite = FILE_GENERIC_WRITE;
constexpr DWORD kOfEnter = FILE_GENERIC_EXECUTE;
constexpr DWORD kOfAll = FILE_ALL_ACCESS;
constexpr DWORD kOfOwner = READ_CONTROL | WRITE_DAC | FILE_READ_ATTRIBUTES;

class HostUser {
  public:
    HostUser(HostAccount known, std::span<const nt::Sid> standing)
        : account(std::move(known)), sids(standing) {}

    // Nothing for a damaged list.
    std::optional<bool> May(const HostPermissions& permissions, std::uint32_t bits) const {
        HostAccount asked = account;
        // The server counts groups in which the host does not know the user.
        if (std::ranges::find(sids, HostGroupSid(permissions)) != sids.end())
            asked.groups.push_back(permissions.group);
        return HostAllows(permissions, asked, bits);
    }
    bool Owns(const HostPermissions& permissions) const { return account.user == permissions.owner; }

  private:
    HostAccount account;
    std::span<const nt::Sid> sids;
};

// Without its backslash, unless it is a root; empty above a root.
std::string FolderAbove(const std::string& path) {
    const std::size_t end = path.find_last_of('\\');
    if (end == path.npos || end + 1 == path.size()) return {};
    return path.substr(0, end + (path.find('\\') == end ? 1 : 0));
}

DWORD ReadPermissionsAt(const std::string& path, HostPermissions& permissions) {
    HeldObject folder;
    const DWORD error = HeldObject::Hold(path + (path.ends_with('\\') ? "" : "\\"), folder);
    return error == ERROR_SUCCESS ? folder.ReadHostPermissions(permissions) : error;
}

class Viewing {
  public:
    Viewing(HostUser who, std::string top) : user(std::move(who)), path(std::move(top)) {}

    HostView Run(const HeldObject& object) {
        LookAtFolders();
        HostPermissions own;
        if (const DWORD error = object.ReadHostPermissions(own); error != ERROR_SUCCESS) Miss(error);
        const bool mayRead = May(own, kHostRead);
        const bool mayWrite = May(own, kHostWrite);
        const bool mayEnter = May(own, kHostEnter);
        const bool isFolder = object.IsFolder();
        const std::uint32_t enter = isFolder ? kHostEnter : 0;
        if (May(own, kHostRead | enter)) view.left |= FILE_READ_DATA;
        if (isFolder ? mayEnter : mayRead) view.left |= FILE_EXECUTE;
        if (May(own, kHostWrite | enter)) view.left |= FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_DELETE_CHILD;
        view.asList |= (mayRead ? kOfRead : 0) | (mayWrite ? kOfWrite : 0) | (mayEnter ? kOfEnter : 0);
        if (mayRead && mayWrite && mayEnter) view.asList |= kOfAll;
        if (isFolder && mayWrite) view.asList |= FILE_DELETE_CHILD;
        if (user.Owns(own)) view.asList |= kOfOwner;
        view.isStickyFor = isSticky && !ownsFolder && !user.Owns(own);
        if (mayRemove && !view.isStickyFor) view.left |= DELETE;
        view.asList |= view.left & DELETE;
        return std::move(view);
    }

  private:
    // All that is on the way has to be entered; in the last one the object has its name.
    void LookAtFolders() {
        bool isNearest = true;
        for (std::string folder = FolderAbove(path); !folder.empty(); folder = FolderAbove(folder)) {
            HostPermissions permissions;
            const DWORD error = ReadPermissionsAt(folder, permissions);
            if (error != ERROR_SUCCESS) return Miss(error);
            if (!May(permissions, kHostEnter)) view.closedFolder = folder;
            if (isNearest) {
                mayRemove = May(permissions, kHostWrite | kHostEnter);
                isSticky = permissions.isSticky;
                ownsFolder = user.Owns(permissions);
            }
            isNearest = false;
        }
    }

    bool May(const HostPermissions& permissions, std::uint32_t bits) {
        const std::optional<bool> may = user.May(permissions, bits);
        if (!may) Miss(ERROR_INVALID_ACL);
        return may.value_or(false);
    }

    void Miss(DWORD error) { view.unknown = "the mode bits cannot be read: " + SystemMessageLine(error); }

    HostUser user;
    std::string path;
    HostView view;
    bool mayRemove = false;
    bool isSticky = false;
    bool ownsFolder = false;
};

}  // namespace

HostView ViewOfHost(const HeldObject& object, const std::string& path, const nt::Sid& account,
                    std::span<const nt::Sid> sids, const std::string& name) {
    HostView view;
    HostAccount host;
    const DWORD error = FindHostAccount(account, host);
    if (error == ERROR_NONE_MAPPED)
        view.unknown = "the mode bits decide for each user of the machine, and " + name + " is none";
    else if (error != ERROR_SUCCESS)
        view.unknown =
            "which user of the machine " + name + " is cannot be found: " + SystemMessageLine(error);
    else if (host.user == kHostSuperuser)
        view.isSuperuser = true;
    if (error != ERROR_SUCCESS || view.isSuperuser) return view;
    return Viewing(HostUser(std::move(host), sids), path).Run(object);
}

}  // namespace permora
