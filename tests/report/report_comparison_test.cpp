#include "report/report_comparison.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "report/report_json.h"
#include "security/descriptor_comparison.h"
#include "tests/report/made_report.h"

namespace permora::test {
namespace {

const nt::Sid kAnna(5, {21, 1, 2, 3, 1001});
const nt::Sid kBen(5, {21, 1, 2, 3, 1002});
const nt::Sid kStaff(5, {21, 1, 2, 3, 2001});

// AA, BB and SS stand for the three.
std::string WithSids(std::string sddl) {
    for (const auto& [word, sid] : {std::pair("AA", kAnna), std::pair("BB", kBen), std::pair("SS", kStaff)})
        for (std::size_t at = sddl.find(word); at != sddl.npos; at = sddl.find(word))
            sddl.replace(at, 2, sid.ToText());
    return sddl;
}

struct Listed {
    const char* path;
    const char* sddl;
    TreeObjectKind kind = TreeObjectKind::kFolder;
};

// As it comes back from its file. `staff` are members of the group.
ReadReport ReportOf(const std::vector<Listed>& rows, const std::vector<nt::Sid>& staff) {
    std::vector<MadeRow> table;
    for (const Listed& row : rows)
        table.push_back({row.path, row.kind, WithSids(row.sddl), {}});
    MadeReport made(table);
    for (const nt::Sid& person : {kAnna, kBen}) {
        std::vector<nt::Sid> groups = {person};
        if (std::ranges::find(staff, person) != staff.end()) groups.push_back(kStaff);
        made.AddAccount(person, groups);
    }
    WrittenText text;
    EXPECT_EQ(WriteReportJson(made.Get(), text), 0U);
    ReadReport report;
    EXPECT_EQ(ParseReport(text.text, report), "");
    return report;
}

class Lines : public AccessObserver {
  public:
    explicit Lines(const ReportComparison& whole) : comparison(whole) {}
    bool Begin() override { return true; }
    void Take(const ComparedObjectAccess& object) override {
        if (object.isUnknown) text += object.path + " unknown\n";
        if (object.owner) text += object.path + " owner\n";
        for (const AccessChange& change : object.changes) {
            const char* const kinds[] = {"gained", "lost", "both", "as before"};
            const bool isAnna = comparison.Accounts()[change.account].sid == kAnna;
            text += object.path + (isAnna ? " anna " : " ben ") + kinds[static_cast<int>(change.kind)] + ' ' +
                    RightsText(change.before) + " > " + RightsText(change.after) + ", " + change.where + '\n';
        }
    }
    std::string text;

  private:
    const ReportComparison& comparison;
};

struct Case {
    const char* name;
    std::vector<Listed> before;
    std::vector<Listed> after;
    std::vector<nt::Sid> staffBefore;
    std::vector<nt::Sid> staffAfter;
    const char* lines;
};

TEST(ReportComparisonTest, WhoHasGainedAndWhoHasLost) {
    constexpr const char* kTop = "O:BAG:BAD:P(A;OICI;FA;;;BA)(A;OICI;FR;;;AA)";
    const std::vector<Case> cases = {
        {"nothing", {{"", kTop}}, {{"", kTop}}, {}, {}, ""},
        {"an entry for all below, not said again at what shares it",
         {{"", kTop}, {"a", "O:BAG:BAD:(A;;FA;;;BA)(A;OICIID;FA;;;BA)(A;OICIID;FR;;;AA)"}},
         {{"", "O:BAG:BAD:P(A;OICI;FA;;;BA)(A;OICI;FR;;;AA)(A;OICI;FR;;;BB)"},
          {"a", "O:BAG:BAD:(A;;FA;;;BA)(A;OICIID;FA;;;BA)(A;OICIID;FR;;;AA)(A;OICIID;FR;;;BB)"}},
         {},
         {},
         " ben gained None > Read, This folder, subfolders and files\n"},
        {"what it hands down alone",
         {{"", "O:BAG:BAD:P(A;OICI;FA;;;BA)(A;OICIIO;FR;;;AA)"}},
         {{"", "O:BAG:BAD:P(A;OICI;FA;;;BA)(A;CIIO;FR;;;AA)"}},
         {},
         {},
         " anna lost Read > None, Files only\n"},
        {"one level",
         {{"", kTop}},
         {{"", "O:BAG:BAD:P(A;OICI;FA;;;BA)(A;OICI;FR;;;AA)(A;OICINP;FR;;;BB)"}},
         {},
         {},
         " ben gained None > Read, This folder, subfolders and files, direct children only\n"},
        {"a folder that was like its folder before",
         {{"", kTop}},
         {{"", kTop}, {"x\\y", "O:BAG:BAD:P(A;OICI;FA;;;BB)"}},
         {},
         {},
         "x\\y anna lost Read > None, This folder, subfolders and files\n"
         "x\\y ben gained None > Full control, This folder, subfolders and files\n"},
        {"a file that is like its folder again",
         {{"", kTop}, {"f", "O:BAG:BAD:P(A;;FA;;;BB)", TreeObjectKind::kFile}},
         {{"", kTop}},
         {},
         {},
         "f anna gained None > Read, \nf ben lost Full control > None, \n"},
        {"what did not change below a change",
         {{"", kTop}, {"p", "O:BAG:BAD:P(A;OICI;FA;;;BA)"}},
         {{"", "O:BAG:BAD:P(A;OICI;FA;;;BA)(A;OICI;FR;;;AA)(A;OICI;FR;;;BB)"},
          {"p", "O:BAG:BAD:P(A;OICI;FA;;;BA)"}},
         {},
         {},
         " ben gained None > Read, This folder, subfolders and files\n"
         "p ben as before None > None, This folder, subfolders and files\n"},
        {"by a group, though no list has changed",
         {{"", "O:BAG:BAD:P(A;OICI;FR;;;SS)"}},
         {{"", "O:BAG:BAD:P(A;OICI;FR;;;SS)"}},
         {kAnna},
         {kBen},
         " anna lost Read > None, This folder, subfolders and files\n"
         " ben gained None > Read, This folder, subfolders and files\n"},
        {"an owner", {{"", kTop}}, {{"", "O:AAG:BAD:P(A;OICI;FA;;;BA)(A;OICI;FR;;;AA)"}}, {}, {}, " owner\n"},
        {"where the folder hands down nothing, nobody knows what was there",
         {{"", "O:BAG:BAD:P(A;;FA;;;BA)"}},
         {{"", "O:BAG:BAD:P(A;;FA;;;BA)"}, {"n", "O:BAG:BAD:P(A;OICI;FA;;;BB)"}},
         {},
         {},
         "n unknown\n"},
        {"what could not be read",
         {{"", kTop}, {"u", ""}},
         {{"", kTop}, {"u", ""}, {"u\\v", "O:BAG:BAD:P(A;OICI;FA;;;BB)"}},
         {},
         {},
         "u unknown\nu\\v unknown\n"},
    };
    for (const Case& each : cases) {
        const ReadReport before = ReportOf(each.before, each.staffBefore);
        const ReadReport after = ReportOf(each.after, each.staffAfter);
        ReportComparison comparison(before, after);
        Lines lines(comparison);
        std::size_t objects = 0;
        EXPECT_TRUE(comparison.Run(lines, objects));
        EXPECT_EQ(lines.text, each.lines) << each.name;
    }
}

}  // namespace
}  // namespace permora::test
