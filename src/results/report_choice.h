// What the user chose in the Report dialog, without a window.
#pragma once

#include <string>

#include "report/report_making.h"
#include "survey/remark.h"

namespace permora {

// Texts as they were typed; empty ones leave nothing out.
struct ReportChoice {
    std::string levels;
    std::string account;  // a name, DOMAIN\name or the text of a SID
    std::string server;   // that is asked for names which nobody here has (LookupAccountByName)
    RemarkSet only;
    ReportMembers members = ReportMembers::kLeftOut;
};

// Looks the account up, which may take long. What is wrong with the choice, or an empty text; `request` is
// untouched then.
std::string MakeReportRequest(const ReportChoice& choice, ReportRequest& request);

}  // namespace permora
