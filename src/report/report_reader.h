// Reads a report for programs (report/report_json.h) again. The file may be anybody's, so all of it is
// checked before anything of it is used.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/nt/security_descriptor.h"
#include "platform/nt/sid.h"
#include "report/report.h"

namespace permora {

struct ReadReport {
    struct Account {
        nt::Sid sid;
        std::string name;
        std::optional<std::vector<nt::Sid>> groups;  // itself first; nothing: they were not known
    };
    struct List {
        nt::SecurityDescriptor descriptor;
        bool isStored = true;
    };
    struct Row {
        std::string path;  // below its top, with backslashes
        std::uint32_t top = 0;
        TreeObjectKind kind = TreeObjectKind::kFile;
        std::optional<std::uint32_t> list;
        bool isUnlisted = false;
    };

    std::string time;
    ReportExtent extent = ReportExtent::kPart;
    std::vector<ReportTop> tops;
    std::vector<Account> accounts;
    std::vector<List> lists;
    std::vector<Row>
        rows;  // top by top, each in the order of saved objects (ComesBefore), the top itself first
};

// Empty, or why the text is no such report; `report` is then worth nothing.
std::string ParseReport(std::string_view text, ReadReport& report);

}  // namespace permora
