// How a server is asked about its accounts: as whom, and with what that is proven.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/base/run_tool.h"
#include "platform/linux/files/mount_table.h"

namespace permora::host {

// What Samba's clients get beside the question.
struct ServerLogon {
    std::vector<std::string> arguments;
    ToolInput input;
};

// A file with a user's name and password in the form of `mount.cifs`. The user is "DOMAIN\name" where the
// file says so. Nothing: no password stands there, or something that cannot be handed on as it is.
struct ServerCredentials {
    std::string user;  // empty: not said
    std::string domain;
    std::string password;
};
std::optional<ServerCredentials> ParseCredentials(std::string_view text);

// Where such files are named and kept.
struct LogonPlaces {
    std::string mountList;   // fstab(5)
    std::string userFolder;  // of this user's own files, each called as its server in small letters

    static LogonPlaces OfThisProcess();
};

// The value of an option of a mount, such as "username"; nothing when it is not among them.
std::optional<std::string> OptionOf(const MountEntry& mount, std::string_view name);

// The server of a mounted share, in small letters; empty when no tool may be given such a name.
std::string ServerOf(const MountEntry& mount);

// The logon for the server of a share that is mounted (IsSmbMount): by this user's ticket where the share was
// mounted by one; else by the file that the list of mounts names for it, of which the mount must have been
// made; else by this user's own file for the server. Nothing: there is none that this process may read.
//
// A file is believed only if it belongs to root or to this user, nobody else may read it, and no link leads
// there.
std::optional<ServerLogon> FindLogon(const MountEntry& mount, const LogonPlaces& places);

}  // namespace permora::host
