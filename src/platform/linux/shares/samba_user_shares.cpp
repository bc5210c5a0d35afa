#include "platform/linux/shares/samba_user_shares.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/ascii.h"
#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/accounts/name_service.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/shares/samba_tools.h"

namespace permora::host {

namespace {

// The server reads no more than 10,240 bytes of a share's file, names of the values included, and does not
// serve a share whose file is longer.
constexpr std::size_t kLongestTexts = 10'000;

// ERROR_FILE_READ_ONLY where users may make no shares.
DWORD OpenShareFolder(UniqueFd& folder) {
    std::string limit;
    std::string path;
    DWORD error = ReadSambaSetting("usershare max shares", limit);
    if (error == ERROR_SUCCESS && limit == "0") error = ERROR_FILE_READ_ONLY;
    if (error == ERROR_SUCCESS) error = ReadSambaSetting("usershare path", path);
    if (error != ERROR_SUCCESS) return error;
    UniqueFd opened(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened) return errno == ENOENT ? ERROR_FILE_READ_ONLY : ErrorFromErrno(errno);
    folder = std::move(opened);
    return ERROR_SUCCESS;
}

// The file in which Samba keeps the share, called by its name in small letters. Whoever may make such shares
// can write in its folder.
DWORD OpenShareFile(const std::string& name, UniqueFd& file, struct stat& status) {
    if (name.find('/') != name.npos) return ERROR_INVALID_NAME;
    UniqueFd folder;
    if (const DWORD error = OpenShareFolder(folder); error != ERROR_SUCCESS) return error;
    UniqueFd opened(
        openat(folder.Get(), InLowerCase(name).c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    if (!opened || fstat(opened.Get(), &status) != 0) return ErrorFromErrno(errno);
    if (!S_ISREG(status.st_mode) || status.st_nlink != 1) return ERROR_ACCESS_DENIED;
    file = std::move(opened);
    return ERROR_SUCCESS;
}

DWORD WriteShare(const std::string& name, const std::string& hostPath, const std::string& remark,
                 const std::string& acl, bool allowsGuests) {
    if (name.size() + hostPath.size() + remark.size() + acl.size() > kLongestTexts)
        return ERROR_NOT_SUPPORTED;
    return TellSambaTool("net", {"usershare", "add", "--", name, hostPath, remark, acl,
                                 allowsGuests ? "guest_ok=y" : "guest_ok=n"});
}

// The tool takes no name of a user, whose home the server may share by it, and writes over a share that is
// there: a damaged one too, which no list shows.
DWORD CheckNewName(const std::string& name) {
    UniqueFd folder;
    if (const DWORD error = OpenShareFolder(folder); error != ERROR_SUCCESS) return error;
    for (const std::string& user : {name, InLowerCase(name)}) {
        id_t id = 0;
        const DWORD error = FindHostId(AccountKind::kUser, user, id);
        if (error != ERROR_NONE_MAPPED) return error == ERROR_SUCCESS ? ERROR_INVALID_NAME : error;
    }
    SambaSection known;
    const DWORD error = ReadUserShare(name, known);
    if (error == NERR_NetNameNotFound) return ERROR_SUCCESS;
    return error == ERROR_SUCCESS || IsFailureOfTool(error) ? NERR_DuplicateShare : error;
}

// The tool writes a new file, which belongs to whoever ran it.
DWORD GiveBack(const std::string& name, const struct stat& before) {
    UniqueFd file;
    struct stat status {};
    const DWORD error = OpenShareFile(name, file, status);
    if (error != ERROR_SUCCESS) return error;
    const bool isOurs = status.st_uid == geteuid();
    if (!isOurs) return ERROR_ACCESS_DENIED;
    return fchown(file.Get(), before.st_uid, before.st_gid) == 0 ? ERROR_SUCCESS : ErrorFromErrno(errno);
}

DWORD AclOf(const std::vector<std::uint8_t>& descriptor, std::string& acl) {
    const auto value = nt::SecurityDescriptor::FromBytes(descriptor);
    std::optional<std::string> text = value ? FormatUserShareAcl(*value) : std::nullopt;
    if (!text) return ERROR_NOT_SUPPORTED;
    acl = *std::move(text);
    return ERROR_SUCCESS;
}

}  // namespace

DWORD ReadUserShareDescriptor(const SambaSection& share, std::vector<std::uint8_t>& descriptor) {
    const auto grants = ParseUserShareAcl(share.Value("usershare_acl").value_or(""));
    if (!grants) return ERROR_INVALID_SECURITY_DESCR;
    nt::SecurityDescriptor value;
    value.daclState = nt::DaclState::kList;
    for (const UserShareGrant& grant : *grants) {
        nt::Sid account;
        if (const DWORD error = FindAccountSid(grant.account, account); error != ERROR_SUCCESS) return error;
        value.dacl.entries.push_back(AceOfGrant(grant.access, account));
    }
    std::vector<std::uint8_t> bytes;
    if (!value.AppendTo(bytes)) return ERROR_INVALID_SECURITY_DESCR;
    descriptor = std::move(bytes);
    return ERROR_SUCCESS;
}

DWORD ChangeUserShare(const SambaSection& share, const ShareChange& change) {
    if (change.maxUses) return ERROR_NOT_SUPPORTED;
    std::vector<std::uint8_t> descriptor;
    std::string acl;
    DWORD error = ERROR_SUCCESS;
    if (change.descriptor) {
        descriptor = *change.descriptor;
    } else {
        error = ReadUserShareDescriptor(share, descriptor);
    }
    if (error == ERROR_SUCCESS) error = AclOf(descriptor, acl);
    UniqueFd file;
    struct stat before {};
    if (error == ERROR_SUCCESS) error = OpenShareFile(share.name, file, before);
    if (error != ERROR_SUCCESS) return error;
    error = WriteShare(share.name, share.Value("path").value_or(""),
                       change.remark.value_or(share.Value("comment").value_or("")), acl,
                       share.IsSet("guest_ok") || share.Value("guest_ok") == "y");
    return error == ERROR_SUCCESS ? GiveBack(share.name, before) : error;
}

DWORD AddUserShare(const Share& share, const std::string& hostPath) {
    if (share.maxUses != SHI_USES_UNLIMITED) return ERROR_NOT_SUPPORTED;
    // Without a list everyone may do everything, as everywhere else.
    std::string acl = "S-1-1-0:f";
    if (!share.descriptor.empty()) {
        if (const DWORD error = AclOf(share.descriptor, acl); error != ERROR_SUCCESS) return error;
    }
    const DWORD error = CheckNewName(share.name);
    return error == ERROR_SUCCESS ? WriteShare(share.name, hostPath, share.remark, acl, false) : error;
}

DWORD RemoveUserShare(const SambaSection& share) {
    return TellSambaTool("net", {"usershare", "delete", "--", share.name});
}

}  // namespace permora::host
