#include "shares/share_security.h"

#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "platform/api/errors.h"
#include "platform/nt/security_descriptor.h"
#include "platform/raw_security.h"
#include "platform/share_descriptor.h"
#include "platform/share_turn.h"
#include "security/dacl_builder.h"
#include "security/text_conversion.h"

namespace permora {
namespace {

constexpr DWORD kLevel = 502;  // with the descriptor

using ShareRecord = UniqueNetworkBuffer<SHARE_INFO_502>;

NET_API_STATUS GetRecord(const std::string& name, ShareRecord& record) {
    std::basic_string<WCHAR> wideName;
    LPBYTE block = nullptr;
    const NET_API_STATUS status = NetShareGetInfo(nullptr, AnsiToWide(name, wideName), kLevel, &block);
    if (status == NERR_Success) record.reset(reinterpret_cast<SHARE_INFO_502*>(block));
    return status;
}

// Writes the record back as it was read, with another descriptor.
NET_API_STATUS SetDescriptor(const std::string& name, const SHARE_INFO_502& read,
                             PSECURITY_DESCRIPTOR descriptor) {
    std::basic_string<WCHAR> wideName;
    SHARE_INFO_502 record = read;
    record.shi502_security_descriptor = descriptor;
    return NetShareSetInfo(nullptr, AnsiToWide(name, wideName), kLevel, reinterpret_cast<LPBYTE>(&record),
                           nullptr);
}

// ERROR_INVALID_SECURITY_DESCR for one that could not be written back.
DWORD StoredOf(const SHARE_INFO_502& record, StoredSecurity& security) {
    StoredSecurity stored;
    if (PSECURITY_DESCRIPTOR descriptor = record.shi502_security_descriptor; descriptor != nullptr) {
        if (IsValidSecurityDescriptor(descriptor) == FALSE) return ERROR_INVALID_SECURITY_DESCR;
        const auto* bytes = static_cast<const std::uint8_t*>(descriptor);
        stored.form = SecurityForm::kShare;
        stored.bytes.assign(bytes, bytes + GetSecurityDescriptorLength(descriptor));
        if (!nt::SecurityDescriptor::FromBytes(stored.bytes)) return ERROR_INVALID_SECURITY_DESCR;
    }
    security = std::move(stored);
    return ERROR_SUCCESS;
}

// Nothing for a damaged one.
std::optional<nt::SecurityDescriptor> DescriptorIn(const StoredSecurity& security) {
    if (security.form == SecurityForm::kNone) return nt::SecurityDescriptor();
    return nt::SecurityDescriptor::FromBytes(security.bytes);
}

// What becomes of a share's descriptor that gets this list, which may be null. A system error code.
DWORD PreviewList(const StoredSecurity& stored, PACL dacl, SecurityPreview& preview) {
    const std::optional<nt::SecurityDescriptor> before = DescriptorIn(stored);
    std::optional<nt::Acl> list = AclOf(dacl);
    if (!before || (dacl != nullptr && !list)) return ERROR_INVALID_ACL;
    preview = {*before, *before, false};
    preview.after.daclState = list ? nt::DaclState::kList : nt::DaclState::kNull;
    preview.after.dacl = std::move(list).value_or(nt::Acl());
    preview.changes = preview.before != preview.after;
    return ERROR_SUCCESS;
}

// Records that the share gets a descriptor with this list, which may be null.
Outcome RecordList(const SHARE_INFO_502& share, PACL dacl, ChangeRecorder& recorder) {
    DescriptorChange change;
    SecurityPreview preview;
    if (const DWORD problem = StoredOf(share, change.before); problem != ERROR_SUCCESS) return {problem};
    if (const DWORD problem = PreviewList(change.before, dacl, preview); problem != ERROR_SUCCESS)
        return {problem};
    change.after.form = SecurityForm::kShare;
    if (!preview.after.AppendTo(change.after.bytes)) return {ERROR_INVALID_ACL};
    ChangedTop top;
    top.path = WideToAnsi(share.shi502_netname);
    std::uint64_t number = 0;
    DWORD error = recorder.BeginTop(top, number);
    if (error == ERROR_SUCCESS) error = recorder.Record(number, {&change, 1});
    return OutcomeOfChange(error, recorder);
}

bool IsSameList(PACL one, PACL other) {
    if (one == nullptr || other == nullptr) return one == other;
    return one->AclSize == other->AclSize && std::memcmp(one, other, one->AclSize) == 0;
}

}  // namespace

Outcome LoadShareDacl(const std::string& name, ShareSecurity& share) {
    ShareSecurity read;
    if (const NET_API_STATUS status = GetRecord(name, read.record); status != NERR_Success) return {status};
    PSECURITY_DESCRIPTOR descriptor = read.record->shi502_security_descriptor;
    read.hasDescriptor = IsValidSecurityDescriptor(descriptor) != FALSE;
    BOOL isPresent = FALSE;
    BOOL isDefaulted = FALSE;
    if (read.hasDescriptor &&
        GetSecurityDescriptorDacl(descriptor, &isPresent, &read.dacl, &isDefaulted) == FALSE)
        return {GetLastError()};
    read.entries = AccessEntryList(AcesOf(read.dacl));
    share = std::move(read);
    return {};
}

Outcome GiveShareDescriptor(const std::string& name, ChangeRecorder& recorder) {
    ShareSecurity share;
    if (Outcome outcome = LoadShareDacl(name, share); !outcome.IsDone() || share.hasDescriptor)
        return outcome;
    SECURITY_DESCRIPTOR descriptor{};
    if (InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) == FALSE ||
        SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE) == FALSE)
        return {GetLastError()};
    if (Outcome outcome = RecordList(*share.record, nullptr, recorder); !outcome.IsDone()) return outcome;
    return {SetDescriptor(name, *share.record, &descriptor), Step::kAssignDescriptor};
}

Outcome WriteShareDacl(const std::string& name, PACL dacl, const ShareSecurity* shown,
                       ChangeRecorder& recorder) {
    ShareSecurity share;
    if (Outcome outcome = LoadShareDacl(name, share); !outcome.IsDone()) return outcome;
    if (shown != nullptr && !IsSameList(shown->dacl, share.dacl)) return {ERROR_REVISION_MISMATCH};
    PSECURITY_DESCRIPTOR absolute = nullptr;
    UniqueHeap heap;
    if (!MakeAbsoluteDescriptor(share.record->shi502_security_descriptor, absolute, heap))
        return {ERROR_INVALID_SECURITY_DESCR, Step::kMakeAbsolute};
    if (SetSecurityDescriptorDacl(absolute, TRUE, dacl, FALSE) == FALSE) return {GetLastError()};
    if (Outcome outcome = RecordList(*share.record, dacl, recorder); !outcome.IsDone()) return outcome;
    return {SetDescriptor(name, *share.record, absolute)};
}

ChangePreview PreviewListOnShares(std::span<const std::string> names, PACL dacl, TreeObserver& observer) {
    ChangePreviewing previewing(observer);
    for (const std::string& name : names) {
        StoredSecurity stored;
        SecurityPreview share;
        DWORD error = ReadStoredShare(name, stored);
        if (error == ERROR_SUCCESS && stored.form == SecurityForm::kNone)
            error = ERROR_INVALID_SECURITY_DESCR;
        if (error == ERROR_SUCCESS) error = PreviewList(stored, dacl, share);
        if (error == ERROR_SUCCESS)
            previewing.AddShare(name, share);
        else
            previewing.AddFailure({error, Step::kNone, name});
        if (previewing.IsStopped() || error != ERROR_SUCCESS)
            break;  // those behind a failure are not written
    }
    return previewing.Preview();
}

DWORD ReadStoredShare(const std::string& name, StoredSecurity& security) {
    ShareRecord record;
    const NET_API_STATUS status = GetRecord(name, record);
    return status == NERR_Success ? StoredOf(*record, security) : status;
}

DWORD WriteStoredShare(const std::string& name, const StoredSecurity& expected,
                       const StoredSecurity& wanted) {
    const bool hasDescriptor = wanted.form == SecurityForm::kShare;
    if (hasDescriptor && !nt::SecurityDescriptor::FromBytes(wanted.bytes))
        return ERROR_INVALID_SECURITY_DESCR;
    ShareRecord record;
    StoredSecurity now;
    DWORD error = GetRecord(name, record);
    if (error == ERROR_SUCCESS) error = StoredOf(*record, now);
    if (error == ERROR_SUCCESS && now != expected) error = ERROR_REVISION_MISMATCH;
    if (error != ERROR_SUCCESS || now == wanted) return error;
    if (!hasDescriptor) return RemoveShareDescriptor(name);
    std::vector<std::uint8_t> bytes = wanted.bytes;
    return SetDescriptor(name, *record, bytes.data());
}

bool HaveSameList(const StoredSecurity& one, const StoredSecurity& other) {
    const auto first = DescriptorIn(one);
    const auto second = DescriptorIn(other);
    if (!first || !second) return false;
    const bool isList = first->daclState == nt::DaclState::kList;
    const bool isSecondList = second->daclState == nt::DaclState::kList;
    return isList == isSecondList && (!isList || first->dacl == second->dacl);
}

Outcome WriteListToShares(std::span<const std::string> names, PACL dacl, ShareSecurity* shown,
                          ChangeRecorder& recorder) {
    for (const std::string& name : names) {
        const bool isFirst = &name == names.data();
        ShareTurn turn;
        Outcome outcome{turn.Take(name)};
        if (outcome.IsDone()) outcome = WriteShareDacl(name, dacl, isFirst ? shown : nullptr, recorder);
        if (outcome.step == Step::kRecord) outcome.object = name;
        if (!outcome.IsDone()) return outcome;
        ShareSecurity written;
        if (!isFirst || shown == nullptr || !LoadShareDacl(name, written).IsDone()) continue;
        shown->record = std::move(written.record);
        shown->dacl = written.dacl;
    }
    return {};
}

}  // namespace permora
