// The services for shares under the system's names. The checks here apply to every provider of shares.
#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <utility>

#include "platform/api/files.h"
#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/base/wide_text.h"
#include "platform/linux/files/path_text.h"
#include "platform/linux/security/descriptor_view.h"
#include "platform/linux/shares/recent_shares.h"
#include "platform/linux/shares/share_records.h"
#include "platform/share_descriptor.h"
#include "platform/share_name.h"

namespace permora::host {
namespace {

std::string AnsiOf(LPCWSTR text) {
    return text != nullptr ? ToAnsi(text) : std::string();
}

constexpr DWORD kLevelWithDescriptor = 502;

DWORD CheckCall(LPCWSTR server, DWORD level, std::initializer_list<DWORD> levels, const void* pointer) {
    if (std::ranges::find(levels, level) == levels.end()) return ERROR_INVALID_LEVEL;
    if (pointer == nullptr) return ERROR_INVALID_PARAMETER;
    return IsThisServer(server) ? ERROR_SUCCESS : ERROR_BAD_NETPATH;
}

SHARE_INFO_502 RecordAt(const BYTE* place) {
    SHARE_INFO_502 record{};
    std::memcpy(&record, place, sizeof record);
    return record;
}

DWORD Refuse(DWORD field, LPDWORD wrongField, DWORD error = ERROR_INVALID_PARAMETER) {
    if (wrongField != nullptr) *wrongField = field;
    return error;
}

// The providers of this machine's shares, and the shares as last read.
struct MachineShares {
    const std::unique_ptr<const ShareProvider> provider = MakeShareProvider();
    RecentShares recent{*provider};
};

MachineShares& Shares() {
    static MachineShares shares;
    return shares;
}

// One share with everything of its level.
DWORD FindShare(LPCWSTR name, DWORD level, Share& share) {
    const bool needsDescriptor = level == kLevelWithDescriptor;
    Share found;
    DWORD error =
        Shares().recent.Find(AnsiOf(name), needsDescriptor ? Freshness::kNow : Freshness::kRecent, found);
    if (error == ERROR_SUCCESS && needsDescriptor) error = Shares().provider->ReadDescriptor(found);
    if (error == ERROR_SUCCESS) share = std::move(found);
    return error;
}

// The checked bytes of a caller's descriptor of either form; empty for none.
DWORD BytesOf(PSECURITY_DESCRIPTOR descriptor, std::vector<std::uint8_t>& bytes) {
    if (descriptor == nullptr) return ERROR_SUCCESS;
    const auto value = DescriptorValue(descriptor);
    return value && value->AppendTo(bytes) ? ERROR_SUCCESS : ERROR_INVALID_SECURITY_DESCR;
}

// In the form in which the services return texts, so that a text that was read and is given back is
// unchanged.
std::string AsHandedOut(const std::string& text) {
    return ToAnsi(ToWide(text));
}

// The differences of a record from the share; an error for a difference that cannot be applied.
DWORD FindChange(const SHARE_INFO_502& record, const Share& share, ShareChange& change, LPDWORD wrongField) {
    if (!IsSameShare(AnsiOf(record.shi502_netname), share.name))
        return Refuse(SHARE_NETNAME_PARMNUM, wrongField);
    if (record.shi502_type != share.type) return Refuse(SHARE_TYPE_PARMNUM, wrongField);
    if (record.shi502_permissions != share.permissions) return Refuse(SHARE_PERMISSIONS_PARMNUM, wrongField);
    if (AnsiOf(record.shi502_path) != AsHandedOut(share.path)) return Refuse(SHARE_PATH_PARMNUM, wrongField);
    if (!AnsiOf(record.shi502_passwd).empty()) return Refuse(SHARE_PASSWD_PARMNUM, wrongField);
    if (record.shi502_max_uses != share.maxUses) {
        if (record.shi502_max_uses == 0)
            return Refuse(SHARE_MAX_USES_PARMNUM, wrongField, NERR_InvalidMaxUsers);
        change.maxUses = record.shi502_max_uses;
    }
    if (std::string remark = AnsiOf(record.shi502_remark); remark != AsHandedOut(share.remark))
        change.remark = std::move(remark);
    std::vector<std::uint8_t> descriptor;
    if (const DWORD error = BytesOf(record.shi502_security_descriptor, descriptor); error != ERROR_SUCCESS)
        return Refuse(SHARE_FILE_SD_PARMNUM, wrongField, error);
    if (!descriptor.empty() && descriptor != share.descriptor) change.descriptor = std::move(descriptor);
    return ERROR_SUCCESS;
}

// "C:\a" for an existing folder; NERR_UnknownDevDir for anything else.
DWORD FindFolder(LPCWSTR text, std::string& folder) {
    std::string path = AnsiOf(text);
    PathText parts;
    if (ParsePath(path, parts) != ERROR_SUCCESS || parts.drive == 0 || parts.start != PathText::Start::kRoot)
        return NERR_UnknownDevDir;
    std::string whole = JoinPath(parts.drive, parts.components);
    const DWORD attributes = GetFileAttributesA(whole.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0 ||
        (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        return NERR_UnknownDevDir;
    }
    folder = std::move(whole);
    return ERROR_SUCCESS;
}

DWORD MakeShare(const SHARE_INFO_502& record, Share& share, LPDWORD wrongField) {
    if (record.shi502_netname == nullptr ||
        FindShareNameFault(record.shi502_netname) != ShareNameFault::kNone)
        return Refuse(SHARE_NETNAME_PARMNUM, wrongField, ERROR_INVALID_NAME);
    if (record.shi502_type != STYPE_DISKTREE) return Refuse(SHARE_TYPE_PARMNUM, wrongField);
    if (!AnsiOf(record.shi502_passwd).empty()) return Refuse(SHARE_PASSWD_PARMNUM, wrongField);
    if (record.shi502_max_uses == 0) return Refuse(SHARE_MAX_USES_PARMNUM, wrongField, NERR_InvalidMaxUsers);
    if (const DWORD error = FindFolder(record.shi502_path, share.path); error != ERROR_SUCCESS)
        return Refuse(SHARE_PATH_PARMNUM, wrongField, error);
    const DWORD error = BytesOf(record.shi502_security_descriptor, share.descriptor);
    if (error != ERROR_SUCCESS) return Refuse(SHARE_FILE_SD_PARMNUM, wrongField, error);
    share.name = AnsiOf(record.shi502_netname);
    share.remark = AnsiOf(record.shi502_remark);
    share.permissions = record.shi502_permissions;
    share.maxUses = record.shi502_max_uses;
    return ERROR_SUCCESS;
}

}  // namespace
}  // namespace permora::host

using namespace permora::host;

NET_API_STATUS WINAPI NetShareEnum(LPWSTR server, DWORD level, LPBYTE* buffer, DWORD /*preferredLength*/,
                                   LPDWORD read, LPDWORD total, LPDWORD resume) {
    DWORD error = CheckCall(server, level, {1, 2}, buffer);
    if (error != ERROR_SUCCESS) return error;
    if (read == nullptr || total == nullptr) return ERROR_INVALID_PARAMETER;
    std::vector<Share> shares;
    error = Shares().recent.List(shares);
    if (error != ERROR_SUCCESS) return error;
    LPBYTE block = MakeShareRecords(shares, level);
    if (block == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
    *buffer = block;
    *read = *total = static_cast<DWORD>(shares.size());
    if (resume != nullptr) *resume = 0;
    return NERR_Success;
}

NET_API_STATUS WINAPI NetShareGetInfo(LPWSTR server, LPWSTR name, DWORD level, LPBYTE* buffer) {
    DWORD error = CheckCall(server, level, {2, kLevelWithDescriptor}, buffer);
    if (error != ERROR_SUCCESS) return error;
    Share share;
    error = FindShare(name, level, share);
    if (error != ERROR_SUCCESS) return error;
    LPBYTE block = MakeShareRecords({&share, 1}, level);
    if (block == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
    *buffer = block;
    return NERR_Success;
}

NET_API_STATUS WINAPI NetShareSetInfo(LPWSTR server, LPWSTR name, DWORD level, LPBYTE record,
                                      LPDWORD wrongField) {
    DWORD error = CheckCall(server, level, {kLevelWithDescriptor}, record);
    if (error != ERROR_SUCCESS) return error;
    Share share;
    error = FindShare(name, level, share);
    if (error != ERROR_SUCCESS) return error;
    ShareChange change;
    error = FindChange(RecordAt(record), share, change, wrongField);
    if (error != ERROR_SUCCESS) return error;
    const bool isChanged = change.remark || change.maxUses || change.descriptor;
    return isChanged ? Shares().recent.Change(share.name, change) : NERR_Success;
}

NET_API_STATUS WINAPI NetShareAdd(LPWSTR server, DWORD level, LPBYTE record, LPDWORD wrongField) {
    DWORD error = CheckCall(server, level, {kLevelWithDescriptor}, record);
    if (error != ERROR_SUCCESS) return error;
    Share share;
    error = MakeShare(RecordAt(record), share, wrongField);
    return error == ERROR_SUCCESS ? Shares().recent.Add(share) : error;
}

NET_API_STATUS WINAPI NetShareDel(LPWSTR server, LPWSTR name, DWORD reserved) {
    if (reserved != 0) return ERROR_INVALID_PARAMETER;
    if (!IsThisServer(server)) return ERROR_BAD_NETPATH;
    return Shares().recent.Remove(AnsiOf(name));
}

DWORD permora::RemoveShareDescriptor(const std::string& name) {
    ShareChange change;
    change.descriptor.emplace();
    return Shares().recent.Change(name, change);
}
