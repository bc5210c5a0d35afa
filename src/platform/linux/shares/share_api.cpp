// The services for shares under the system's names. What is checked here holds whoever keeps the shares.
#include <algorithm>
#include <utility>

#include "platform/api/files.h"
#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/base/wide_text.h"
#include "platform/linux/files/path_text.h"
#include "platform/linux/security/descriptor_view.h"
#include "platform/linux/shares/recent_shares.h"
#include "platform/linux/shares/share_records.h"
#include "platform/share_name.h"

namespace permora::host {
namespace {

std::string AnsiOf(LPCWSTR text) {
    return text != nullptr ? ToAnsi(text) : std::string();
}

DWORD CheckCall(LPCWSTR server, DWORD level, const void* pointer) {
    if (!IsShareLevel(level)) return ERROR_INVALID_LEVEL;
    if (pointer == nullptr) return ERROR_INVALID_PARAMETER;
    return IsThisServer(server) ? ERROR_SUCCESS : ERROR_BAD_NETPATH;
}

DWORD Refuse(DWORD field, LPDWORD wrongField, DWORD error = ERROR_INVALID_PARAMETER) {
    if (wrongField != nullptr) *wrongField = field;
    return error;
}

constexpr DWORD kLevelWithDescriptor = 502;

RecentShares& Shares() {
    static RecentShares shares(ThisMachinesShares());
    return shares;
}

// One share with all that the level tells.
DWORD FindShare(LPCWSTR name, DWORD level, Share& share) {
    const bool needsDescriptor = level == kLevelWithDescriptor;
    Share found;
    DWORD error = Shares().Find(AnsiOf(name), needsDescriptor ? Freshness::kNow : Freshness::kRecent, found);
    if (error == ERROR_SUCCESS && needsDescriptor) error = ThisMachinesShares().ReadDescriptors({&found, 1});
    if (error == ERROR_SUCCESS) share = std::move(found);
    return error;
}

// The bytes of a caller's descriptor of either form, checked whole. None is no bytes.
DWORD BytesOf(PSECURITY_DESCRIPTOR descriptor, std::vector<std::uint8_t>& bytes) {
    if (descriptor == nullptr) return ERROR_SUCCESS;
    const auto value = DescriptorValue(descriptor);
    return value && value->AppendTo(bytes) ? ERROR_SUCCESS : ERROR_INVALID_SECURITY_DESCR;
}

// As the services hand texts out, so that what was read and is given back counts as the same.
std::string AsHandedOut(const std::string& text) {
    return ToAnsi(ToWide(text));
}

// What a record has different from the share; the error when it is something that cannot be changed.
DWORD FindChange(const ShareRecord& record, const Share& share, ShareChange& change, LPDWORD wrongField) {
    if (!IsSameShare(AnsiOf(record.name), share.name)) return Refuse(SHARE_NETNAME_PARMNUM, wrongField);
    if (record.type != share.type) return Refuse(SHARE_TYPE_PARMNUM, wrongField);
    if (std::string remark = AnsiOf(record.remark); remark != AsHandedOut(share.remark))
        change.remark = std::move(remark);
    if (record.limits) {
        const ShareRecord::Limits& limits = *record.limits;
        if (limits.permissions != share.permissions) return Refuse(SHARE_PERMISSIONS_PARMNUM, wrongField);
        if (AnsiOf(limits.path) != AsHandedOut(share.path)) return Refuse(SHARE_PATH_PARMNUM, wrongField);
        if (!AnsiOf(limits.password).empty()) return Refuse(SHARE_PASSWD_PARMNUM, wrongField);
        if (limits.maxUses == 0) return Refuse(SHARE_MAX_USES_PARMNUM, wrongField, NERR_InvalidMaxUsers);
        if (limits.maxUses != share.maxUses) change.maxUses = limits.maxUses;
    }
    std::vector<std::uint8_t> descriptor;
    if (const DWORD error = BytesOf(record.descriptor, descriptor); error != ERROR_SUCCESS)
        return Refuse(SHARE_FILE_SD_PARMNUM, wrongField, error);
    if (!descriptor.empty() && descriptor != share.descriptor) change.descriptor = std::move(descriptor);
    return ERROR_SUCCESS;
}

// "C:\a" for a folder that is there; NERR_UnknownDevDir for anything else.
DWORD FindFolder(LPCWSTR text, std::string& folder) {
    std::string path = AnsiOf(text);
    PathText parts;
    if (ParsePath(path, parts) != ERROR_SUCCESS || parts.drive == 0 ||
        parts.start != PathText::Start::kRoot) {
        return NERR_UnknownDevDir;
    }
    std::string whole = JoinPath(parts.drive, parts.components);
    const DWORD attributes = GetFileAttributesA(whole.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0 ||
        (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        return NERR_UnknownDevDir;
    }
    folder = std::move(whole);
    return ERROR_SUCCESS;
}

DWORD MakeShare(const ShareRecord& record, Share& share, LPDWORD wrongField) {
    if (record.name == nullptr || FindShareNameFault(record.name) != ShareNameFault::kNone)
        return Refuse(SHARE_NETNAME_PARMNUM, wrongField, ERROR_INVALID_NAME);
    if (record.type != STYPE_DISKTREE) return Refuse(SHARE_TYPE_PARMNUM, wrongField);
    if (!AnsiOf(record.limits->password).empty()) return Refuse(SHARE_PASSWD_PARMNUM, wrongField);
    if (record.limits->maxUses == 0) return Refuse(SHARE_MAX_USES_PARMNUM, wrongField, NERR_InvalidMaxUsers);
    if (const DWORD error = FindFolder(record.limits->path, share.path); error != ERROR_SUCCESS)
        return Refuse(SHARE_PATH_PARMNUM, wrongField, error);
    if (const DWORD error = BytesOf(record.descriptor, share.descriptor); error != ERROR_SUCCESS)
        return Refuse(SHARE_FILE_SD_PARMNUM, wrongField, error);
    share.name = AnsiOf(record.name);
    share.remark = AnsiOf(record.remark);
    share.permissions = record.limits->permissions;
    share.maxUses = record.limits->maxUses;
    return ERROR_SUCCESS;
}

}  // namespace
}  // namespace permora::host

using namespace permora::host;

NET_API_STATUS WINAPI NetShareEnum(LPWSTR server, DWORD level, LPBYTE* buffer, DWORD preferredLength,
                                   LPDWORD read, LPDWORD total, LPDWORD resume) {
    DWORD error = CheckCall(server, level, buffer);
    if (error != ERROR_SUCCESS) return error;
    if (read == nullptr || total == nullptr) return ERROR_INVALID_PARAMETER;
    std::vector<Share> shares;
    error = Shares().List(shares);
    if (error == ERROR_SUCCESS && level == kLevelWithDescriptor)
        error = ThisMachinesShares().ReadDescriptors(shares);
    if (error != ERROR_SUCCESS) return error;
    const std::size_t first = resume != nullptr ? std::min<std::size_t>(*resume, shares.size()) : 0;
    std::size_t count = 0;
    LPBYTE block = MakeShareRecords(std::span(shares).subspan(first), level, preferredLength, count);
    if (block == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
    const bool isComplete = first + count == shares.size();
    *buffer = block;
    *read = static_cast<DWORD>(count);
    *total = static_cast<DWORD>(shares.size() - first);
    if (resume != nullptr) *resume = isComplete ? 0 : static_cast<DWORD>(first + count);
    return isComplete ? NERR_Success : ERROR_MORE_DATA;
}

NET_API_STATUS WINAPI NetShareGetInfo(LPWSTR server, LPWSTR name, DWORD level, LPBYTE* buffer) {
    if (const DWORD error = CheckCall(server, level, buffer); error != ERROR_SUCCESS) return error;
    Share share;
    const DWORD error = FindShare(name, level, share);
    if (error != ERROR_SUCCESS) return error;
    std::size_t count = 0;
    LPBYTE block = MakeShareRecords({&share, 1}, level, 0, count);
    if (block == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
    *buffer = block;
    return NERR_Success;
}

NET_API_STATUS WINAPI NetShareSetInfo(LPWSTR server, LPWSTR name, DWORD level, LPBYTE record,
                                      LPDWORD wrongField) {
    DWORD error = CheckCall(server, level, record);
    if (error != ERROR_SUCCESS) return error;
    Share share;
    error = FindShare(name, level, share);
    if (error != ERROR_SUCCESS) return error;
    ShareChange change;
    error = FindChange(ReadShareRecord(level, record), share, change, wrongField);
    if (error != ERROR_SUCCESS) return error;
    const bool isChanged = change.remark || change.maxUses || change.descriptor;
    return isChanged ? Shares().Change(share.name, change) : NERR_Success;
}

NET_API_STATUS WINAPI NetShareAdd(LPWSTR server, DWORD level, LPBYTE record, LPDWORD wrongField) {
    if (level == 1) return ERROR_INVALID_LEVEL;
    if (const DWORD error = CheckCall(server, level, record); error != ERROR_SUCCESS) return error;
    Share share;
    const DWORD error = MakeShare(ReadShareRecord(level, record), share, wrongField);
    return error == ERROR_SUCCESS ? Shares().Add(share) : error;
}

NET_API_STATUS WINAPI NetShareDel(LPWSTR server, LPWSTR name, DWORD reserved) {
    if (reserved != 0) return ERROR_INVALID_PARAMETER;
    if (!IsThisServer(server)) return ERROR_BAD_NETPATH;
    return Shares().Remove(AnsiOf(name));
}
