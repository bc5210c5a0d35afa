#include "platform/linux/accounts/server_logon.h"

#include <fcntl.h>
#include <mntent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "platform/ascii.h"
#include "platform/linux/base/letter_case.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/base/user_folders.h"

namespace permora::host {
namespace {

// With slashes, in small letters and without the one at the end.
std::string ShareText(std::string_view source) {
    std::string text = InSmallLetters(source);
    std::ranges::replace(text, '\\', '/');
    while (text.ends_with('/'))
        text.pop_back();
    return text;
}

std::optional<std::string_view> OptionIn(std::string_view options, std::string_view name) {
    while (!options.empty()) {
        std::string_view value = TakeUntil(',', options);
        if (TakeUntil('=', value) == name) return value;
    }
    return std::nullopt;
}

// Samba's tools take blanks off the front of a value, and end it with the line.
bool CanBeHandedOn(std::string_view value) {
    constexpr char kNul = '\0';
    return !value.starts_with(' ') && !value.starts_with('\t') && value.find('\r') == value.npos &&
           value.find(kNul) == value.npos;
}

bool IsOfThisUserAlone(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return false;
    const bool isOurs = status.st_uid == 0 || status.st_uid == geteuid();
    return isOurs && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

std::optional<ServerCredentials> ReadCredentials(const std::string& path) {
    const UniqueFd file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (path.empty() || path.front() != '/' || !file || !IsOfThisUserAlone(file.Get())) return std::nullopt;
    std::array<char, kLongestInput> text{};
    const ssize_t size = read(file.Get(), text.data(), text.size());
    if (size <= 0 || static_cast<std::size_t>(size) == text.size()) return std::nullopt;
    return ParseCredentials({text.data(), static_cast<std::size_t>(size)});
}

// The file that the list names for this mount; empty when it names none.
std::string ListedFile(const MountEntry& mount, const std::string& mountList) {
    const std::unique_ptr<FILE, int (*)(FILE*)> list(setmntent(mountList.c_str(), "re"), &endmntent);
    if (!list) return {};
    mntent line{};
    std::array<char, 8192> room{};
    std::string file;
    while (getmntent_r(list.get(), &line, room.data(), static_cast<int>(room.size())) != nullptr) {
        if (ShareText(line.mnt_fsname) != ShareText(mount.source) || line.mnt_dir != mount.mountPoint)
            continue;
        for (const char* option : {"credentials", "cred"})
            if (const auto named = OptionIn(line.mnt_opts, option)) file = *named;
    }
    return file;
}

std::optional<ServerLogon> ByTicket(const MountEntry& mount) {
    // Of another user's tickets nothing is taken.
    if (OptionOf(mount, "cruid").value_or(std::to_string(geteuid())) != std::to_string(geteuid()))
        return std::nullopt;
    ServerLogon logon{{"--use-kerberos=required", "--no-pass"}, {}};
    if (const char* const tickets = std::getenv("KRB5CCNAME"))
        logon.input.environment.push_back(std::string("KRB5CCNAME=") + tickets);
    return logon;
}

ServerLogon ByPassword(const ServerCredentials& credentials) {
    ServerLogon logon{{"--authentication-file=/proc/self/fd/0"}, {}};
    logon.input.text = "username = " + credentials.user + "\npassword = " + credentials.password + '\n';
    if (!credentials.domain.empty()) logon.input.text += "domain = " + credentials.domain + '\n';
    return logon;
}

}  // namespace

std::optional<ServerCredentials> ParseCredentials(std::string_view text) {
    ServerCredentials credentials;
    bool hasPassword = false;
    while (!text.empty()) {
        std::string_view value = TakeLine(text);
        if (!CanBeHandedOn(value.substr(std::min(value.find('=') + 1, value.size())))) return std::nullopt;
        const std::string key = InLowerCase(WithoutOuterBlanks(TakeUntil('=', value)));
        if (key.starts_with("user")) credentials.user = value;
        if (key.starts_with("dom")) credentials.domain = value;
        hasPassword = hasPassword || key.starts_with("pass");
        if (key.starts_with("pass")) credentials.password = value;
    }
    if (!hasPassword) return std::nullopt;
    if (const std::size_t separator = credentials.user.find_first_of("\\/"); separator != std::string::npos) {
        credentials.domain = credentials.user.substr(0, separator);
        credentials.user.erase(0, separator + 1);
    }
    return credentials;
}

LogonPlaces LogonPlaces::OfThisProcess() {
    const std::string folder = UserConfigurationFolder();
    return {"/etc/fstab", folder.empty() ? std::string() : folder + "/permora/servers"};
}

std::optional<std::string> OptionOf(const MountEntry& mount, std::string_view name) {
    const auto value = OptionIn(mount.options, name);
    return value ? std::optional(std::string(*value)) : std::nullopt;
}

std::string ServerOf(const MountEntry& mount) {
    constexpr std::string_view kAllowed = "abcdefghijklmnopqrstuvwxyz0123456789.-_:";
    std::string text = ShareText(mount.source);
    if (!text.starts_with("//")) return {};
    text = text.substr(2, text.find('/', 2) - 2);
    const bool isPlain = !text.empty() && text.front() != '-' && text.front() != '.' &&
                         text.find_first_not_of(kAllowed) == std::string::npos;
    return isPlain ? text : std::string();
}

std::optional<ServerLogon> FindLogon(const MountEntry& mount, const LogonPlaces& places) {
    if (OptionOf(mount, "sec").value_or("").starts_with("krb5")) return ByTicket(mount);
    const std::string user = OptionOf(mount, "username").value_or("");
    std::optional<ServerCredentials> found = ReadCredentials(ListedFile(mount, places.mountList));
    if (found && found->user.empty()) found->user = user;
    if (found && InSmallLetters(found->user) != InSmallLetters(user)) found.reset();
    if (!found && !places.userFolder.empty())
        found = ReadCredentials(places.userFolder + '/' + ServerOf(mount));
    if (!found || ServerOf(mount).empty()) return std::nullopt;
    if (found->user.empty()) found->user = user;
    if (found->domain.empty()) found->domain = OptionOf(mount, "domain").value_or("");
    return found->user.empty() ? std::nullopt : std::optional(ByPassword(*found));
}

}  // namespace permora::host
