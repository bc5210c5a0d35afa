// The pages of a report in a window: the shape of the permissions, the objects, the accounts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "report/report.h"
#include "results/report_findings.h"
#include "results/result_source.h"
#include "results/result_tops.h"

namespace permora {

// The start page. One look shows where the permissions of a tree change.
class FoldersPage : public ResultPage {
  public:
    FoldersPage(const ReportFindings& found, const std::vector<ResultTop>& walked)
        : findings(found), tops(walked) {}

    void TakeNews() { count = findings.FolderCount(); }

    std::string Title() const override { return "&Folders"; }
    std::span<const ResultColumn> Columns() const override;
    std::size_t Count() const override { return count; }
    std::string Text(std::size_t row, std::size_t column) const override;
    ResultKey KeyOf(std::size_t row, std::size_t column) const override;
    std::optional<ResultObject> Object(std::size_t row) const override;
    std::size_t Indent(std::size_t row) const override;

  private:
    const ReportFindings& findings;
    const std::vector<ResultTop>& tops;
    std::size_t count = 0;
};

// Each object that departs from what its folder hands down, or has another remark, as far as the user asked
// for it.
class ObjectsPage : public ResultPage {
  public:
    ObjectsPage(const ReportFindings& found, const std::vector<ResultTop>& walked)
        : findings(found), tops(walked) {}

    void TakeNews() { count = findings.ListedCount(); }

    std::string Title() const override { return "&Objects"; }
    std::span<const ResultColumn> Columns() const override;
    std::size_t Count() const override { return count; }
    std::string Text(std::size_t row, std::size_t column) const override;
    std::optional<ResultObject> Object(std::size_t row) const override;

  private:
    const ReportFindings& findings;
    const std::vector<ResultTop>& tops;
    std::size_t count = 0;
};

// An account, or a person in the group above.
struct AccountLine {
    std::string name = {};
    std::string kind = {};
    bool isInGroup = false;
    // Nothing: not known.
    std::optional<std::size_t> listed = {};
    std::optional<std::size_t> owned = {};
    std::optional<std::size_t> readable = {};
    std::optional<std::size_t> writable = {};
    std::string remark = {};
};

std::vector<AccountLine> AccountLinesOf(const Report& report);

class AccountsPage : public ResultPage {
  public:
    void TakeLines(std::vector<AccountLine> all) { lines = std::move(all); }

    std::string Title() const override { return "&Accounts"; }
    std::span<const ResultColumn> Columns() const override;
    std::size_t Count() const override { return lines.size(); }
    std::string Text(std::size_t row, std::size_t column) const override;
    ResultKey KeyOf(std::size_t row, std::size_t column) const override;
    std::optional<ResultObject> Object(std::size_t /*row*/) const override { return std::nullopt; }
    std::size_t Indent(std::size_t row) const override { return lines[row].isInGroup ? 1 : 0; }

  private:
    std::vector<AccountLine> lines;
};

}  // namespace permora
