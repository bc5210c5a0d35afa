#include "platform/linux/shares/samba_user_shares.h"

#include <unistd.h>

#include <fstream>
#include <iterator>
#include <utility>

#include "platform/ascii.h"
#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/accounts/account_names.h"
#include "platform/linux/accounts/name_service.h"
#include "platform/linux/samba/samba_questions.h"
#include "platform/linux/shares/samba_tools.h"
#include "platform/linux/shares/samba_user_share_files.h"

namespace permora::host {

namespace {

// The server reads at most 10,240 bytes of a share's file, including the names of the values, and does not
// serve a share whose file is longer.
constexpr std::size_t kLongestTexts = 10'000;

// Root's tools get copies of the chosen files alone. Other users' tools work on the real folder, since Samba
// accepts no folder of another owner.
bool WorksOnCopies() {
    return geteuid() == 0;
}

DWORD MirrorUserShares(SambaMirror& mirror) {
    const DWORD error = MirrorSamba(mirror);
    return error == ERROR_SUCCESS ? mirror.AddUserShareFolder() : error;
}

// A file that is gone, that is a link or not a file, or that nobody may read: the server does not serve it
// either. After any other failure, the server may still serve the share.
bool IsServedByNobody(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_CANT_RESOLVE_FILENAME ||
           error == ERROR_DEV_NOT_EXIST || error == ERROR_ACCESS_DENIED;
}

DWORD AskAboutAll(std::string& answer) {
    const std::vector<std::string> question = {"usershare", "info", "--long"};
    if (!WorksOnCopies()) return AskSambaTool("net", question, answer, FailedOutput::kKept);
    UserShareFolder folder;
    SambaMirror mirror;
    std::vector<std::string> names;
    DWORD error = folder.Open();
    if (error == ERROR_SUCCESS) error = folder.ListNames(names);
    if (error == ERROR_SUCCESS) error = MirrorUserShares(mirror);
    for (const std::string& name : names) {
        if (error != ERROR_SUCCESS) break;
        UserShareFile file;
        error = folder.Hold(name, file);
        if (error == ERROR_SUCCESS)
            error = CopyUserShareFile(file, mirror.UserShareFolder());
        else if (IsServedByNobody(error))
            error = ERROR_SUCCESS;
    }
    if (error == ERROR_SUCCESS) error = AskSambaTool(mirror, "net", question, answer, FailedOutput::kKept);
    return error;
}

DWORD AskAboutOne(const UserShareFile& file, const std::string& share, std::string& answer) {
    const std::vector<std::string> question = {"usershare", "info", "--long", "--", share};
    if (!WorksOnCopies()) return AskSambaTool("net", question, answer);
    SambaMirror mirror;
    DWORD error = MirrorUserShares(mirror);
    if (error == ERROR_SUCCESS) error = CopyUserShareFile(file, mirror.UserShareFolder());
    return error == ERROR_SUCCESS ? AskSambaTool(mirror, "net", question, answer) : error;
}

// Whether the tool described this file, and not one whose name differs only in letter case.
bool IsToldBy(const SambaSection& section, const UserShareFile& file) {
    for (const char* parameter : {"path", "comment"}) {
        const std::string line =
            std::string("\n") + parameter + '=' + section.Value(parameter).value_or("") + '\n';
        if (file.text.find(line) == file.text.npos) return false;
    }
    return true;
}

DWORD HoldShare(const std::string& share, UserShareFolder& folder, UserShareFile& file) {
    DWORD error = folder.Open();
    if (error == ERROR_FILE_READ_ONLY) error = NERR_NetNameNotFound;
    std::string name;
    if (error == ERROR_SUCCESS) error = folder.FindName(share, name);
    return error == ERROR_SUCCESS ? folder.Hold(name, file) : error;
}

DWORD ReadHeld(const UserShareFile& file, const std::string& share, SambaSection& section) {
    // The tool reads the name as a pattern.
    constexpr const char* kPatternCharacters = "*?<>\"";
    if (!IsPlainAccountName(share) || share.find_first_of(kPatternCharacters) != share.npos)
        return NERR_NetNameNotFound;
    std::string answer;
    const DWORD error = AskAboutOne(file, share, answer);
    if (error != ERROR_SUCCESS) return error;
    std::vector<SambaSection> sections = ParseSambaSections(answer);
    if (sections.size() != 1 || !IsSameShare(sections.front().name, share)) return NERR_NetNameNotFound;
    if (!IsToldBy(sections.front(), file)) return NERR_DuplicateShare;
    section = std::move(sections.front());
    return ERROR_SUCCESS;
}

// --- Writing.

DWORD AclOf(const std::vector<std::uint8_t>& descriptor, std::string& acl) {
    const auto value = nt::SecurityDescriptor::FromBytes(descriptor);
    std::optional<std::string> text = value ? FormatUserShareAcl(*value) : std::nullopt;
    if (!text) return ERROR_NOT_SUPPORTED;
    acl = *std::move(text);
    return ERROR_SUCCESS;
}

enum class Guests { kRefused, kAllowed };

// The tool's arguments for a share.
DWORD AddingArguments(const std::string& name, const std::string& hostPath, const std::string& remark,
                      const std::string& acl, Guests guests, std::vector<std::string>& arguments) {
    if (name.size() + hostPath.size() + remark.size() + acl.size() > kLongestTexts)
        return ERROR_NOT_SUPPORTED;
    arguments = {"usershare", "add",  "--", name,
                 hostPath,    remark, acl,  guests == Guests::kAllowed ? "guest_ok=y" : "guest_ok=n"};
    return ERROR_SUCCESS;
}

// The text of the share's file `name`. Only the tool knows the server's name of that file, so it writes it
// into a folder of ours.
DWORD ComposeFile(const std::vector<std::string>& adding, const std::string& name, std::string& text) {
    SambaMirror mirror;
    std::string answer;
    DWORD error = MirrorUserShares(mirror);
    if (error == ERROR_SUCCESS) error = AskSambaTool(mirror, "net", adding, answer);
    if (error != ERROR_SUCCESS) return error;
    std::ifstream file(mirror.UserShareFolder() + '/' + name, std::ios::binary);
    if (!file) return NERR_NetNameNotFound;
    text.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    return ERROR_SUCCESS;
}

// The tool would first give the share to root, who may share everything, before it could be given back.
DWORD WriteShare(const UserShareFolder& folder, const UserShareFile& held,
                 const std::vector<std::string>& adding) {
    if (!WorksOnCopies()) return TellSambaTool("net", adding);
    std::string text;
    const DWORD error = ComposeFile(adding, held.name, text);
    return error == ERROR_SUCCESS ? folder.Replace(held, text) : error;
}

// The tool refuses the name of a user, since the server may share the user's home under it. It overwrites an
// existing share, even a damaged one that no list shows.
DWORD CheckNewName(const std::string& name) {
    UserShareFolder folder;
    if (const DWORD error = folder.Open(); error != ERROR_SUCCESS) return error;
    for (const std::string& user : {name, InLowerCase(name)}) {
        id_t id = 0;
        const DWORD error = FindHostId(AccountKind::kUser, user, id);
        if (error != ERROR_NONE_MAPPED) return error == ERROR_SUCCESS ? ERROR_INVALID_NAME : error;
    }
    std::string known;
    const DWORD error = folder.FindName(name, known);
    if (error == NERR_NetNameNotFound) return ERROR_SUCCESS;
    return error == ERROR_SUCCESS ? NERR_DuplicateShare : error;
}

}  // namespace

// For one damaged share the tool fails as a whole, but still prints the others.
DWORD ReadUserShares(std::vector<SambaSection>& sections) {
    std::string answer;
    const DWORD error = AskAboutAll(answer);
    if (error != ERROR_SUCCESS && error != ERROR_FILE_READ_ONLY && !IsFailureOfTool(error)) return error;
    sections = ParseSambaSections(answer);
    return ERROR_SUCCESS;
}

DWORD ReadUserShare(const std::string& name, SambaSection& section) {
    UserShareFolder folder;
    UserShareFile file;
    const DWORD error = HoldShare(name, folder, file);
    return error == ERROR_SUCCESS ? ReadHeld(file, name, section) : error;
}

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

DWORD ChangeUserShare(const std::string& name, const ShareChange& change) {
    if (change.maxUses) return ERROR_NOT_SUPPORTED;
    UserShareFolder folder;
    UserShareFile held;
    SambaSection share;
    DWORD error = HoldShare(name, folder, held);
    if (error == ERROR_SUCCESS) error = ReadHeld(held, name, share);
    if (error != ERROR_SUCCESS) return error;
    std::vector<std::uint8_t> descriptor;
    if (change.descriptor)
        descriptor = *change.descriptor;
    else
        error = ReadUserShareDescriptor(share, descriptor);
    std::string acl;
    std::vector<std::string> adding;
    if (error == ERROR_SUCCESS) error = AclOf(descriptor, acl);
    if (error == ERROR_SUCCESS) {
        const bool isAllowed = share.IsSet("guest_ok") || share.Value("guest_ok") == "y";
        error = AddingArguments(share.name, share.Value("path").value_or(""),
                                change.remark.value_or(share.Value("comment").value_or("")), acl,
                                isAllowed ? Guests::kAllowed : Guests::kRefused, adding);
    }
    return error == ERROR_SUCCESS ? WriteShare(folder, held, adding) : error;
}

DWORD AddUserShare(const Share& share, const std::string& hostPath) {
    if (share.maxUses != SHI_USES_UNLIMITED) return ERROR_NOT_SUPPORTED;
    // Without a list everyone may do everything, as for files.
    std::string acl = "S-1-1-0:f";
    if (!share.descriptor.empty()) {
        if (const DWORD error = AclOf(share.descriptor, acl); error != ERROR_SUCCESS) return error;
    }
    std::vector<std::string> adding;
    DWORD error = CheckNewName(share.name);
    if (error == ERROR_SUCCESS)
        error = AddingArguments(share.name, hostPath, share.remark, acl, Guests::kRefused, adding);
    return error == ERROR_SUCCESS ? TellSambaTool("net", adding) : error;
}

DWORD RemoveUserShare(const std::string& name) {
    UserShareFolder folder;
    UserShareFile held;
    const DWORD error = HoldShare(name, folder, held);
    return error == ERROR_SUCCESS ? folder.Remove(held) : error;
}

}  // namespace permora::host
