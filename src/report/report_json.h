// A report for programs.
//
// One object in ASCII, whose arrays have one element a line. docs/terminal.md describes it. It holds what is
// needed to compare it with a later one (report/report_comparison.h): the descriptors, and the groups that
// the accounts had.
#pragma once

#include "report/report.h"
#include "saved/saved_list_writer.h"

namespace permora {

// What the first member, "report", has.
inline constexpr const char* kReportForm = "permora 1";

// 0 or a system error code: what was written until then is not complete.
DWORD WriteReportJson(const Report& report, SavedOutput& output);

// The words for kinds of objects, groups and standings that stay.
const char* KindWord(TreeObjectKind kind);
std::optional<TreeObjectKind> KindOfWord(std::string_view word);

}  // namespace permora
