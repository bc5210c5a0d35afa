#include "platform/private_place.h"

#include <shlobj.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "platform/api/security.h"
#include "platform/api/system.h"
#include "platform/api/token.h"
#include "platform/nt/ace_bits.h"
#include "platform/nt/sddl.h"
#include "platform/raw_security.h"
#include "platform/windows/code_page.h"
#include "platform/windows/descriptor_write.h"
#include "platform/windows/folder_entry.h"

namespace permora {
namespace {

// What changes an object or decides what is in a folder.
constexpr DWORD kChanging = FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_DELETE_CHILD | DELETE | WRITE_DAC |
                            WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;

std::optional<nt::Sid> FindUser() {
    HANDLE opened = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened) == FALSE) return std::nullopt;
    const UniqueHandle token(opened);
    alignas(TOKEN_USER) std::array<BYTE, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> block{};
    DWORD size = 0;
    if (GetTokenInformation(token.get(), TokenUser, block.data(), static_cast<DWORD>(block.size()), &size) ==
        FALSE)
        return std::nullopt;
    TOKEN_USER user{};
    std::memcpy(&user, block.data(), sizeof user);
    return SidOf(user.User.Sid);
}

// The system and its administrators may do everything anyway.
bool IsTrusted(const nt::Sid& sid, const nt::Sid& user) {
    static const nt::Sid kSystem(5, {18});
    static const nt::Sid kAdministrators(5, {32, 544});
    static const nt::Sid kOwnerRights(3, {4});
    return sid == user || sid == kSystem || sid == kAdministrators || sid == kOwnerRights;
}

bool IsGrantToOthers(const nt::Ace& ace, const nt::Sid& user) {
    if (ace.type == nt::kAccessDeniedType || (ace.flags & nt::kInheritOnly) != 0) return false;
    return (ace.mask & kChanging) != 0 && (!ace.sid || !IsTrusted(*ace.sid, user));
}

// `object` is open for READ_CONTROL.
DWORD RequireOurs(HANDLE object) {
    const std::optional<nt::Sid> user = FindUser();
    nt::SecurityDescriptor descriptor;
    if (!user) return ERROR_ACCESS_DENIED;
    if (const DWORD error = ReadDescriptor(object, descriptor); error != ERROR_SUCCESS) return error;
    bool isOurs = descriptor.daclState == nt::DaclState::kList && descriptor.owner &&
                  IsTrusted(*descriptor.owner, *user);
    for (const nt::Ace& ace : descriptor.dacl.entries)
        if (IsGrantToOthers(ace, *user)) isOurs = false;
    return isOurs ? ERROR_SUCCESS : ERROR_INVALID_OWNER;
}

DWORD OpenItself(const std::string& path, DWORD share, UniqueHandle& opened) {
    std::wstring wide;
    if (const DWORD error = ToVerbatimPath(path, wide); error != ERROR_SUCCESS) return error;
    HANDLE handle =
        CreateFileW(wide.c_str(), READ_CONTROL | FILE_READ_ATTRIBUTES, share, nullptr, OPEN_EXISTING,
                    FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return GetLastError();
    opened.reset(handle);
    return ERROR_SUCCESS;
}

// The descriptor of what is made here: for the user, and for the system's own work such as backups.
struct PrivateDescriptor {
    explicit PrivateDescriptor(const char* flags) {
        const std::optional<nt::Sid> user = FindUser();
        if (!user) return;
        const std::string begin = std::string("(A;") + flags + ";FA;;;";
        const std::string sddl = "D:P" + begin + user->ToText() + ')' + begin + "SY)" + begin + "BA)";
        const std::optional<nt::SecurityDescriptor> made = nt::FromSddl(sddl);
        isMade = made && made->AppendTo(bytes);
        attributes = {sizeof attributes, bytes.data(), FALSE};
    }

    bool isMade = false;
    std::vector<std::uint8_t> bytes;
    SECURITY_ATTRIBUTES attributes{};
};

DWORD MakeFolder(const std::string& path) {
    std::wstring wide;
    PrivateDescriptor descriptor("OICI");
    if (!descriptor.isMade) return ERROR_ACCESS_DENIED;
    const DWORD error = ToVerbatimPath(path, wide);
    if (error != ERROR_SUCCESS || CreateDirectoryW(wide.c_str(), &descriptor.attributes) != FALSE)
        return error;
    return GetLastError() == ERROR_ALREADY_EXISTS ? ERROR_SUCCESS : GetLastError();
}

std::int64_t Number(const FILETIME& time) {
    return static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

std::int64_t StartOf(HANDLE process) {
    FILETIME start{};
    FILETIME unused{};
    return GetProcessTimes(process, &start, &unused, &unused, &unused) != FALSE ? Number(start) : 0;
}

}  // namespace

std::string StateFolder() {
    std::array<wchar_t, MAX_PATH> path{};
    std::string folder;
    if (SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA | CSIDL_FLAG_CREATE, nullptr, SHGFP_TYPE_CURRENT,
                         path.data()) != S_OK ||
        ToAnsi(path.data(), folder) != ERROR_SUCCESS)
        return {};
    return folder + "\\Permora";
}

struct PrivateFolder::Inside {
    UniqueHandle folder;  // open, so that none of the names on the way to it can change
    std::string path;     // without links on the way
};

PrivateFolder::PrivateFolder() : inside(std::make_unique<Inside>()) {}
PrivateFolder::~PrivateFolder() = default;

std::string PrivateFolder::PathOf(std::string_view name) const {
    return inside->path + '\\' + std::string(name);
}

DWORD PrivateFolder::Hold(const std::string& path, MissingFolder missing,
                          std::shared_ptr<const PrivateFolder>& folder) {
    std::shared_ptr<PrivateFolder> held(new PrivateFolder);
    UniqueHandle& opened = held->inside->folder;
    std::wstring where;
    DWORD error = missing == MissingFolder::kMake ? MakeFolder(path) : DWORD{ERROR_SUCCESS};
    if (error == ERROR_SUCCESS) error = OpenItself(path, FILE_SHARE_READ | FILE_SHARE_WRITE, opened);
    if (error == ERROR_FILE_NOT_FOUND) return ERROR_PATH_NOT_FOUND;
    if (error == ERROR_SUCCESS) error = RequireFolder(opened.get());
    if (error == ERROR_SUCCESS) error = RequireOurs(opened.get());
    if (error == ERROR_SUCCESS) error = FinalPathOf(opened.get(), where);
    if (error == ERROR_SUCCESS) error = ToOrdinaryPath(where, held->inside->path);
    if (error == ERROR_SUCCESS) folder = std::move(held);
    return error;
}

DWORD CheckPrivateFile(const std::string& path) {
    UniqueHandle file;
    BY_HANDLE_FILE_INFORMATION info{};
    if (const DWORD error = OpenItself(path, kShareAll, file); error != ERROR_SUCCESS) return error;
    if (GetFileInformationByHandle(file.get(), &info) == FALSE) return GetLastError();
    if ((info.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return ERROR_CANT_RESOLVE_FILENAME;
    if ((info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return ERROR_FILE_CORRUPT;
    return info.nNumberOfLinks > 1 ? DWORD{ERROR_INVALID_OWNER} : RequireOurs(file.get());
}

DWORD MakePrivateFile(const std::string& path) {
    std::wstring wide;
    PrivateDescriptor descriptor("");
    if (!descriptor.isMade) return ERROR_ACCESS_DENIED;
    if (const DWORD error = ToVerbatimPath(path, wide); error != ERROR_SUCCESS) return error;
    HANDLE file = CreateFileW(wide.c_str(), FILE_WRITE_DATA, kShareAll, &descriptor.attributes, CREATE_NEW,
                              FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_FILE_EXISTS ? ERROR_SUCCESS : GetLastError();
    CloseHandle(file);
    return ERROR_SUCCESS;
}

bool MayOthersSteerBy(const std::string& /*path*/) {
    return false;
}

DWORD CheckWritable(const std::string& path) {
    std::wstring wide;
    if (const DWORD error = ToVerbatimPath(path, wide); error != ERROR_SUCCESS) return error;
    HANDLE file = CreateFileW(wide.c_str(), FILE_WRITE_DATA, kShareAll, nullptr, OPEN_EXISTING,
                              FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (file == INVALID_HANDLE_VALUE) return GetLastError();
    CloseHandle(file);
    return ERROR_SUCCESS;
}

DWORD ErrorOfHost(int number) {
    return static_cast<DWORD>(number);
}

ProcessMark ThisProcess() {
    return {static_cast<std::int64_t>(GetCurrentProcessId()), StartOf(GetCurrentProcess())};
}

bool IsRunning(const ProcessMark& process) {
    if (process.number <= 0 || process.number > std::int64_t{MAXDWORD}) return false;
    HANDLE opened = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE,
                                static_cast<DWORD>(process.number));
    // Whose process cannot be asked may be the one.
    if (opened == nullptr) return GetLastError() == ERROR_ACCESS_DENIED;
    const UniqueHandle handle(opened);
    return StartOf(opened) == process.start && WaitForSingleObject(opened, 0) == WAIT_TIMEOUT;
}

}  // namespace permora
