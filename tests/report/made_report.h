// Reports of trees that are nowhere but in a table.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/nt/sddl.h"
#include "report/report.h"
#include "saved/saved_list_writer.h"

namespace permora::test {

// A text that was written.
struct WrittenText : SavedOutput {
    DWORD Write(std::string_view bytes) override {
        if (text.size() + bytes.size() > room) return ERROR_DISK_FULL;
        text += bytes;
        return ERROR_SUCCESS;
    }
    std::string text;
    std::size_t room = std::string::npos;
};

struct MadeRow {
    std::string path;  // below the top, with backslashes
    TreeObjectKind kind = TreeObjectKind::kFolder;
    std::string sddl;  // empty: it could not be read
    RemarkSet remarks;
};

class MadeReport {
  public:
    explicit MadeReport(const std::vector<MadeRow>& table, const std::string& top = "/srv/data") {
        for (const MadeRow& row : table)
            Add(row);
        summary.objects = table.size();
        report.emplace(survey, rows, summary);
        report->tops = {{top, "C:\\srv\\data"}};
        report->time = "2026-11-26T08:00:00Z";
        report->Select(RowChoice({}));
    }

    // Gives an account these groups; without any, they are not known.
    void AddAccount(const nt::Sid& sid, std::vector<nt::Sid> groups) {
        AccountSummary account;
        account.sid = sid;
        if (groups.empty()) account.groupsError = ERROR_NONE_MAPPED;
        account.groups = std::move(groups);
        summary.accounts.push_back(account);
        const auto tops = report->tops;
        report.emplace(survey, rows, summary);
        report->tops = tops;
        report->time = "2026-11-26T08:00:00Z";
        report->Select(RowChoice({}));
    }

    Report& Get() { return *report; }

  private:
    void Add(const MadeRow& row) {
        const JudgedSecurity* security = nullptr;
        if (!row.sddl.empty()) {
            DistinctSecurity& own = distinct.emplace_back();
            const auto descriptor = nt::FromSddl(row.sddl);
            if (!descriptor || !descriptor->AppendTo(own.bytes)) std::abort();  // the table is wrong
            own.number = distinct.size() - 1;
            own.objects = 1;
            security = &judged.emplace_back(JudgedSecurity{&own, nullptr, row.kind, row.remarks});
        }
        rows.Add({row.path, 0, row.kind, row.remarks, security,
                  security == nullptr ? DWORD{ERROR_ACCESS_DENIED} : DWORD{ERROR_SUCCESS}});
    }

    Survey survey;
    std::deque<DistinctSecurity> distinct;
    std::deque<JudgedSecurity> judged;
    SurveyRows rows;
    SurveySummary summary;
    std::optional<Report> report;
};

}  // namespace permora::test
