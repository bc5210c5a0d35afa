#include "cli/listing.h"

#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/api/errors.h"
#include "security/access_rows.h"

namespace permora {

bool ReadList(const Target& target, ObjectSecurity& object, ConsoleMessages& messages) {
    if (const DWORD error = EnterFolder(target); error != ERROR_SUCCESS) {
        messages.SaySystemError(error);
        return false;
    }
    if (ReadObjectDacl(nullptr, target.name.c_str(), target.place, object)) return true;
    messages.SayIfSilent("its access list cannot be read");
    return false;
}

std::vector<std::string> RemarksOn(PACL dacl, const AccessEntryList& entries) {
    if (dacl == nullptr) return {"there is no access list: everyone may do everything"};
    std::vector<std::string> remarks;
    if (entries.Entries().empty()) remarks.emplace_back("the access list is empty: nobody has access");
    if (!entries.IsInCanonicalOrder()) {
        remarks.emplace_back("the entries do not stand in the usual order (deny, allow, inherited)");
    }
    const std::size_t others = entries.OtherTypeCount();
    if (others > 0) {
        remarks.push_back(std::to_string(others) +
                          (others == 1 ? " entry of another type" : " entries of other types") +
                          " than allow and deny " + (others == 1 ? "is" : "are") + " not shown");
    }
    if (const std::size_t invalid = entries.UnacceptableCount(); invalid > 0) {
        remarks.push_back(std::to_string(invalid) +
                          (invalid == 1 ? " entry is not valid" : " entries are not valid"));
    }
    return remarks;
}

std::vector<std::string> RemarksOn(const ObjectSecurity& object) {
    return RemarksOn(object.dacl, object.entries);
}

std::string InheritsLine(const ObjectSecurity& object) {
    return object.inheritance == DaclInheritance::kFromParent ? "  Inherits: yes\n" : "  Inherits: no\n";
}

std::string RemarkLines(const std::vector<std::string>& remarks) {
    std::string lines;
    for (const std::string& remark : remarks)
        lines += "  Note: " + remark + '\n';
    return lines;
}

std::string RowsText(AccessEntryList& entries) {
    const std::vector<AccessRow> rows = AccessRowsOf(entries);
    if (rows.empty()) return "";
    std::vector<std::vector<std::string>> lines;
    lines.emplace_back(kAccessRowTitles.begin(), kAccessRowTitles.end());
    for (const AccessRow& row : rows) {
        lines.push_back({row.type, row.name, row.permission, row.inheritance, row.applyTo});
    }
    return AlignedTable(lines, "  ");
}

bool PrintDescriptor(PSECURITY_DESCRIPTOR descriptor, ConsoleMessages& messages) {
    constexpr SECURITY_INFORMATION kShown =
        OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
    char* text = nullptr;
    if (ConvertSecurityDescriptorToStringSecurityDescriptorA(descriptor, SDDL_REVISION_1, kShown, &text,
                                                             nullptr) == FALSE) {
        messages.SaySystemError(GetLastError());
        return false;
    }
    const UniqueLocal<char> owned(text);
    Print(std::string(text) + '\n');
    return true;
}

}  // namespace permora
