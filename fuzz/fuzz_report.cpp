// Saved reports as JSON, which anyone may have edited: what is accepted is a report, and equals itself.
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "report/report_comparison.h"
#include "saved/saved_path.h"

namespace permora {
namespace {

void CheckRows(const ReadReport& report) {
    const ReadReport::Row* last = nullptr;
    for (const ReadReport::Row& row : report.rows) {
        Require(row.top < report.tops.size(), "an object has a top");
        Require(!row.list || *row.list < report.lists.size(), "an object has a list of the report");
        const bool isTop = last == nullptr || last->top != row.top;
        Require(isTop ? row.path.empty() : IsPathBelow(row.path) && ComesBefore(last->path, row.path),
                "the objects come top by top and ascend");
        last = &row;
    }
}

class NoDifference : public AccessObserver {
  public:
    bool Begin() override { return true; }
    void Take(const ComparedObjectAccess& object) override {
        Require(!object.owner && object.changes.empty(), "nobody has gained or lost anything");
    }
};

}  // namespace
}  // namespace permora

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace permora;
    ReadReport report;
    if (!ParseReport({reinterpret_cast<const char*>(data), size}, report).empty()) return 0;
    CheckRows(report);
    const ReportComparison comparison(report, report);
    NoDifference observer;
    std::size_t objects = 0;
    Require(comparison.Run(observer, objects), "nobody has ended the comparison");
    return 0;
}
