// Access lists in the caller's memory, which need not be aligned. The size that a list's header claims bounds
// everything that is read and written.
#include <cstddef>
#include <cstring>
#include <optional>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/linux/base/failure.h"
#include "platform/nt/acl.h"
#include "platform/raw_security.h"

namespace {

namespace nt = permora::nt;
using permora::host::Fail;

constexpr DWORD kInheritanceFlags =
    OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE | NO_PROPAGATE_INHERIT_ACE | INHERIT_ONLY_ACE | INHERITED_ACE;
constexpr std::size_t kAceAlignment = 4;

bool IsKnownRevision(DWORD revision) {
    return revision >= nt::Acl::kLowestRevision && revision <= nt::Acl::kHighestRevision;
}

BYTE* BytesOf(PACL acl) {
    return reinterpret_cast<BYTE*>(acl);
}

// The header of a list that may be walked.
std::optional<ACL> ReadHeader(PACL acl) {
    if (acl == nullptr) return std::nullopt;
    ACL header;
    std::memcpy(&header, acl, sizeof(header));
    if (!IsKnownRevision(header.AclRevision) || header.AclSize < sizeof(header)) return std::nullopt;
    return header;
}

// The size of the entry at `offset`; nothing unless the entry lies inside the list.
std::optional<std::size_t> EntrySize(PACL acl, const ACL& header, std::size_t offset) {
    return nt::Ace::SizeIn({BytesOf(acl) + offset, header.AclSize - offset});
}

// Where entry `index` starts, or the first unused byte when `index` is the number of entries. Nothing when an
// entry before it does not lie inside the list.
std::optional<std::size_t> OffsetOf(PACL acl, const ACL& header, DWORD index) {
    std::size_t offset = sizeof(header);
    for (DWORD i = 0; i < index; ++i) {
        const std::optional<std::size_t> size = EntrySize(acl, header, offset);
        if (!size) return std::nullopt;
        offset += *size;
    }
    return offset;
}

BOOL AppendEntry(PACL acl, DWORD revision, BYTE type, DWORD flags, DWORD mask, PSID sid) {
    std::optional<ACL> header = ReadHeader(acl);
    const std::optional<std::size_t> end =
        header ? OffsetOf(acl, *header, header->AceCount) : std::optional<std::size_t>();
    if (!end) return Fail(ERROR_INVALID_ACL);
    if (!IsKnownRevision(revision)) return Fail(ERROR_REVISION_MISMATCH);
    if ((flags & ~kInheritanceFlags) != 0) return Fail(ERROR_INVALID_FLAGS);
    const std::optional<nt::Sid> account = permora::SidOf(sid);
    if (!account) return Fail(ERROR_INVALID_SID);

    std::vector<BYTE> entry;
    nt::Ace{type, static_cast<BYTE>(flags), mask, account, {}, {}}.AppendTo(entry);
    if (entry.size() > header->AclSize - *end) return Fail(ERROR_ALLOTTED_SPACE_EXCEEDED);
    std::memcpy(BytesOf(acl) + *end, entry.data(), entry.size());

    // A list takes the highest revision that any of its entries was added with.
    if (revision > header->AclRevision) header->AclRevision = static_cast<BYTE>(revision);
    ++header->AceCount;
    std::memcpy(acl, &*header, sizeof(*header));
    return TRUE;
}

}  // namespace

BOOL WINAPI InitializeAcl(PACL acl, DWORD size, DWORD revision) {
    constexpr DWORD kLargestSize = 0xFFFF;  // AclSize has sixteen bits
    if (acl == nullptr || size > kLargestSize || !IsKnownRevision(revision))
        return Fail(ERROR_INVALID_PARAMETER);
    if (size < sizeof(ACL)) return Fail(ERROR_INSUFFICIENT_BUFFER);
    const auto wholeEntries = static_cast<WORD>(size - size % kAceAlignment);
    const ACL header{static_cast<BYTE>(revision), 0, wholeEntries, 0, 0};
    std::memcpy(acl, &header, sizeof(header));
    return TRUE;
}

BOOL WINAPI IsValidAcl(PACL acl) {
    return permora::AclOf(acl).has_value();
}

BOOL WINAPI GetAclInformation(PACL acl, LPVOID information, DWORD size,
                              ACL_INFORMATION_CLASS informationClass) {
    const std::optional<ACL> header = ReadHeader(acl);
    if (!header) return Fail(ERROR_INVALID_ACL);
    if (information == nullptr) return Fail(ERROR_INVALID_PARAMETER);

    if (informationClass == AclRevisionInformation) {
        const DWORD revision = header->AclRevision;
        if (size < sizeof(revision)) return Fail(ERROR_INSUFFICIENT_BUFFER);
        std::memcpy(information, &revision, sizeof(revision));
        return TRUE;
    }
    if (informationClass != AclSizeInformation) return Fail(ERROR_INVALID_PARAMETER);

    const std::optional<std::size_t> end = OffsetOf(acl, *header, header->AceCount);
    if (!end) return Fail(ERROR_INVALID_ACL);
    const auto used = static_cast<DWORD>(*end);
    const ACL_SIZE_INFORMATION sizes{header->AceCount, used, header->AclSize - used};
    if (size < sizeof(sizes)) return Fail(ERROR_INSUFFICIENT_BUFFER);
    std::memcpy(information, &sizes, sizeof(sizes));
    return TRUE;
}

BOOL WINAPI GetAce(PACL acl, DWORD index, LPVOID* ace) {
    const std::optional<ACL> header = ReadHeader(acl);
    if (!header) return Fail(ERROR_INVALID_ACL);
    if (ace == nullptr || index >= header->AceCount) return Fail(ERROR_INVALID_PARAMETER);
    const std::optional<std::size_t> offset = OffsetOf(acl, *header, index);
    if (!offset || !EntrySize(acl, *header, *offset)) return Fail(ERROR_INVALID_ACL);
    *ace = BytesOf(acl) + *offset;
    return TRUE;
}

BOOL WINAPI AddAccessAllowedAceEx(PACL acl, DWORD revision, DWORD flags, DWORD mask, PSID sid) {
    return AppendEntry(acl, revision, ACCESS_ALLOWED_ACE_TYPE, flags, mask, sid);
}

BOOL WINAPI AddAccessDeniedAceEx(PACL acl, DWORD revision, DWORD flags, DWORD mask, PSID sid) {
    return AppendEntry(acl, revision, ACCESS_DENIED_ACE_TYPE, flags, mask, sid);
}
