// A report as one page of HTML that fetches nothing from elsewhere and from which nothing can leave.
//
// Without scripts it is a page of tables. With them the tables of the objects stay text that the browser does
// not build, and the script shows a tree of the objects from a data block. The page's policy allows its own
// style and its own script by their hashes and nothing else.
#pragma once

#include "report/report.h"
#include "saved/saved_list_writer.h"

namespace permora {

// 0 or a system error code: what was written until then is not complete.
DWORD WriteReportPage(const Report& report, SavedOutput& output);

}  // namespace permora
