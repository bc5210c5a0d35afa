#include "report/report_table.h"

#include "platform/system_message.h"
#include "report/report_json.h"
#include "report/visible_text.h"
#include "saved/output_buffer.h"
#include "security/entry_details.h"

namespace permora {
namespace {

std::string CodesOf(RemarkSet remarks) {
    std::string codes;
    for (const Remark remark : remarks)
        codes += (codes.empty() ? "" : " ") + std::string(CodeOf(remark));
    return codes;
}

// The lines of one object: at least one, whatever its list has.
std::string LinesOf(const Report& report, const ReportRow& row) {
    const std::string path = report.TypedPath(row);
    const std::string remarks = CodesOf(row.remarks);
    const char* const kind = KindWord(row.kind);
    const std::string reason = row.error == ERROR_SUCCESS ? "" : SystemMessageLine(row.error);
    if (!row.list) return CsvLine({path, kind, remarks, "", "", "", "", "", "", "", "", "", reason});
    const std::shared_ptr<const ReportList> kept = report.List(*row.list);
    const ReportList& list = *kept;
    const char* const inherits = list.descriptor.IsDaclProtected() ? "no" : "yes";
    std::string lines;
    std::string note = reason;
    for (const std::string& each : list.notes)
        note += (note.empty() ? "" : "; ") + each;
    for (const AccessRow& entry : list.rows) {
        const nt::Ace& ace = list.entries[entry.entryIndex];
        const char* const limit = IsForDirectChildrenOnly(ace.flags) ? "direct children only" : "";
        lines += CsvLine({path, kind, remarks, list.owner, inherits, entry.type, entry.name,
                          ace.sid ? ace.sid->ToText() : "", entry.permission, MaskDigits(ace.mask),
                          entry.inheritance,
                          entry.applyTo + std::string(limit[0] == '\0' ? "" : "; ") + limit, note});
    }
    if (!lines.empty()) return lines;
    return CsvLine({path, kind, remarks, list.owner, inherits, "", "", "", "", "", "", "", note});
}

}  // namespace

DWORD WriteReportTable(const Report& report, SavedOutput& output) {
    OutputBuffer buffer(output);
    DWORD error = buffer.Write(CsvLine({"Object", "Kind", "Remarks", "Owner", "Inherits", "Type", "Name",
                                        "SID", "Permission", "Mask", "Inheritance", "Apply To", "Note"}));
    for (std::size_t i = 0; i < report.RowCount() && error == ERROR_SUCCESS; ++i)
        error = buffer.Write(LinesOf(report, report.Row(i)));
    return error == ERROR_SUCCESS ? buffer.Flush() : error;
}

}  // namespace permora
