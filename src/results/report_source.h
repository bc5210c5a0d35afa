// A report in a window of results.
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "report/report_making.h"
#include "results/report_findings.h"
#include "results/report_pages.h"
#include "results/result_source.h"
#include "results/result_tops.h"

namespace permora {

class ReportSource : public ResultSource {
  public:
    // One top at least.
    ReportSource(ReportRequest request, std::vector<ResultTop> walked);

    std::string Title() const override { return "Report - " + NameOfTops(tops); }
    std::vector<ResultPage*> Pages() override { return {&folders, &objects, &accounts}; }
    void Run(const std::atomic<bool>& isStopped) override;
    void TakeNews() override;
    std::string Status() const override { return status; }
    std::span<const SaveFormat> Formats() const override;
    DWORD Write(const SaveFormat& format, SavedOutput& output) override;

  private:
    class Walk;

    enum class End : std::uint8_t {
        kNotYet,
        kDone,
        kStopped,
        kNothing,  // there was no top
    };
    // What the worker hands to the window beside the rows.
    struct News {
        std::vector<std::string> problems;  // half a sentence each
        End end = End::kNotYet;
        std::string summary;  // after the end
        std::vector<AccountLine> accounts;
    };

    bool WalkTops(const std::atomic<bool>& isStopped);
    void AddProblem(std::string problem);
    std::string StatusText() const;

    const std::vector<ResultTop> tops;
    ReportMaking making;  // the worker's, but for the rows
    ReportFindings findings{making.Rows()};
    std::mutex lock;  // of the next
    News news;
    std::atomic<std::size_t> objectCount = 0;
    std::atomic<std::size_t> unreadCount = 0;

    // The window's.
    FoldersPage folders{findings, tops};
    ObjectsPage objects{findings, tops};
    AccountsPage accounts;
    End end = End::kNotYet;
    std::string status;
};

}  // namespace permora
