// What it costs to look at a whole tree and judge its lists, against reading the same attributes in a plain
// loop on one thread and against getfattr. Prints rows of the table in README.md.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/sample_tree.h"
#include "platform/api/errors.h"
#include "survey/survey.h"
#include "survey/survey_rows.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/temporary_folder.h"

namespace {

using permora::bench::Check;
using permora::bench::PrintRatio;
using permora::bench::Runs;
using permora::bench::SecondsFor;

constexpr const char* kAttribute = "security.NTACL";

class KeptRows : public permora::SurveyObserver {
  public:
    bool Begin(std::string_view /*path*/) override { return true; }
    void Take(const permora::SurveyRow& row) override {
        if (rows.Count() == 0) first = Clock::now() - begun;
        rows.Add(row);
    }

    using Clock = std::chrono::steady_clock;
    const Clock::time_point begun = Clock::now();
    Clock::duration first{};
    permora::SurveyRows rows;
};

// The milliseconds until the first row.
double LookAt(const std::string& top, std::size_t objects) {
    static const std::atomic<bool> kGoesOn = false;
    permora::Survey survey;
    KeptRows kept;
    permora::SurveySummary summary;
    Check(survey.Walk(permora::test::Held(top), kept) == ERROR_SUCCESS, "the walk failed");
    Check(survey.Summarise(kGoesOn, summary) == ERROR_SUCCESS, "no summary");
    Check(summary.objects == objects + 1, "the survey missed objects");
    Check(kept.rows.Count() == 1, "the sample tree has rows");
    return std::chrono::duration<double, std::milli>(kept.first).count();
}

void Measure(const std::string& top, std::size_t objects) {
    std::vector<double> surveys;
    std::vector<double> loops;
    std::vector<double> peers;
    std::vector<double> firstRows;
    const std::string peer =
        std::string("getfattr -R -P -e hex -n ") + kAttribute + " '" + top + "' >/dev/null 2>&1";
    for (int run = 0; run < Runs(5); ++run) {
        loops.push_back(SecondsFor([&] {
            Check(permora::bench::ReadAttributes(top, kAttribute) == objects + 1, "the loop missed objects");
        }));
        surveys.push_back(SecondsFor([&] { firstRows.push_back(LookAt(top, objects)); }));
        peers.push_back(SecondsFor([&] {
            Check(permora::test::RunCommand({"sh", "-c", peer}).exitCode == 0, "getfattr failed");
        }));
    }
    const std::string where = "local disk, " + std::to_string(objects) + " objects";
    PrintRatio({"judging lists", where, "`lgetxattr` alone"}, surveys, loops, 1.2);
    PrintRatio({"judging lists", where, "`getfattr -R`"}, surveys, peers, 0.5);
    permora::bench::PrintLimited({"first row of a survey", where, ""}, permora::bench::Median(firstRows), 100,
                                 {1, " ms"});
    permora::bench::PrintLimited(
        {"memory for judging", where, ""},
        static_cast<double>(permora::bench::PeakKibibytesOf([&] { LookAt(top, objects); })), 131072,
        {0, " KiB"});
}

}  // namespace

// PERMORA_BENCH_OBJECTS is the number of objects, a million for example.
int main(int argc, char** argv) {
    permora::bench::Begin(argc, argv);
    const char* const wanted = std::getenv("PERMORA_BENCH_OBJECTS");
    const std::size_t objects =
        wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : permora::bench::Scaled(100'000);
    const permora::test::TemporaryFolder folder;
    if (Check(permora::bench::MakeSampleTree(folder.Path("tree"), objects), "cannot make the tree"))
        Measure(folder.Path("tree"), objects);
    return permora::bench::ExitCode();
}
