// A report as a table for spreadsheets: RFC 4180, in UTF-8, a line for each entry of each object's list.
#pragma once

#include "report/report.h"
#include "saved/saved_list_writer.h"

namespace permora {

// 0 or a system error code: what was written until then is not complete.
DWORD WriteReportTable(const Report& report, SavedOutput& output);

}  // namespace permora
