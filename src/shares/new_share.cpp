#include "shares/new_share.h"

#include <charconv>

#include "platform/api/errors.h"
#include "platform/api/shares.h"
#include "platform/resources.h"
#include "platform/share_name.h"
#include "security/text_conversion.h"

namespace permora {
namespace {

using WideText = std::basic_string<WCHAR>;

// Everyone: read and execute. Without a list of its own, a share would let everyone do everything.
constexpr const char* kReadersOnly = "D:(A;;0x1200a9;;;WD)";

// 0 unless the text is a number of users.
DWORD UserLimitOf(const std::string& text) {
    DWORD limit = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, limit);
    return error == std::errc() && stop == end && limit != SHI_USES_UNLIMITED ? limit : 0;
}

const char* NameFaultText(ShareNameFault fault) {
    switch (fault) {
        case ShareNameFault::kNone:
            return "";
        case ShareNameFault::kEmpty:
            return "Please, enter a name for the share.";
        case ShareNameFault::kTooLong:
            return "The name of a share has at most 80 characters.";
        case ShareNameFault::kForbiddenCharacter:
            return "The name of a share cannot contain any of these characters:\n\" / \\ [ ] : | < > + = ; , "
                   "* ?";
        case ShareNameFault::kOuterBlank:
            return "The name of a share cannot begin or end with a blank.";
        case ShareNameFault::kReserved:
            return "This name is reserved by the system. Please, enter another one.";
    }
    return "";
}

}  // namespace

NewShareFault FindNewShareFault(const NewShare& share) {
    if (share.folder.empty()) return {NewShareField::kFolder, "Please, choose the folder to share."};
    WideText wideName;
    AnsiToWide(share.name, wideName);
    const ShareNameFault fault = FindShareNameFault(wideName.c_str());
    if (fault != ShareNameFault::kNone) return {NewShareField::kName, NameFaultText(fault)};
    if (share.hasUserLimit && UserLimitOf(share.userLimit) == 0)
        return {NewShareField::kUserLimit, "Please, enter how many users may be connected at a time."};
    return {};
}

Outcome CreateShare(const NewShare& share) {
    PSECURITY_DESCRIPTOR readersOnly = nullptr;
    if (ConvertStringSecurityDescriptorToSecurityDescriptorA(kReadersOnly, SDDL_REVISION_1, &readersOnly,
                                                             nullptr) == FALSE) {
        return {GetLastError(), Step::kShareFolder};
    }
    const UniqueLocal<void> descriptor(readersOnly);
    WideText name;
    WideText comment;
    WideText folder;
    SHARE_INFO_502 record{};
    record.shi502_netname = AnsiToWide(share.name, name);
    record.shi502_type = STYPE_DISKTREE;
    record.shi502_remark = AnsiToWide(share.comment, comment);
    record.shi502_max_uses = share.hasUserLimit ? UserLimitOf(share.userLimit) : SHI_USES_UNLIMITED;
    record.shi502_path = AnsiToWide(share.folder, folder);
    record.shi502_security_descriptor = descriptor.get();
    return {NetShareAdd(nullptr, 502, reinterpret_cast<LPBYTE>(&record), nullptr), Step::kShareFolder};
}

}  // namespace permora
