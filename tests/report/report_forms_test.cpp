// One report in every form, and read again.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "report/report_json.h"
#include "report/report_page.h"
#include "report/report_reader.h"
#include "report/report_table.h"
#include "tests/report/made_report.h"

namespace permora::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class ReportFormsTest : public testing::Test {
  protected:
    ReportFormsTest() {
        made.AddAccount(nt::Sid(1, {0}), {nt::Sid(1, {0})});
        made.AddAccount(nt::Sid(5, {21, 1, 2, 3, 1001}), {});
    }

    using Form = DWORD(const Report& report, SavedOutput& output);
    std::string Write(Form* form) {
        WrittenText output;
        EXPECT_EQ(form(made.Get(), output), 0U);
        return output.text;
    }

    MadeReport made{{
        {"", TreeObjectKind::kFolder, "O:BAG:BAD:P(A;OICI;FA;;;BA)(A;CI;FR;;;WD)", {}},
        {"=cmd|</script><b>", TreeObjectKind::kFile, "O:S-1-5-21-1-2-3-1001G:BAD:", {Remark::kEmptyList}},
        {"Payroll", TreeObjectKind::kFolder, "O:BAG:BAD:NO_ACCESS_CONTROL", {Remark::kNullList}},
        {"Payroll\\secret", TreeObjectKind::kFile, "", {Remark::kUnreadable}},
    }};
};

TEST_F(ReportFormsTest, JsonIsReadAgain) {
    const std::string text = Write(WriteReportJson);
    const auto json = nlohmann::json::parse(text);
    EXPECT_EQ(json["objects"][1]["path"], "/srv/data/=cmd|</script><b>");
    EXPECT_EQ(json["objects"][1]["remarks"], nlohmann::json::array({"empty-list"}));
    EXPECT_EQ(json["objects"][3]["error"], 5);
    EXPECT_TRUE(json["objects"][3]["list"].is_null());
    EXPECT_EQ(json["lists"][0]["entries"][1]["sid"], "S-1-1-0");
    EXPECT_EQ(json["lists"][0]["handsDown"], "2 entries to folders, 1 entry to files");
    EXPECT_EQ(json["lists"][1]["entries"], nlohmann::json::array());
    EXPECT_TRUE(json["lists"][2]["entries"].is_null());

    ReadReport report;
    // The name of an object that holds a "<" stands in no Windows name, so no report has it.
    EXPECT_THAT(ParseReport(text, report), HasSubstr("object 2"));
}

TEST_F(ReportFormsTest, TheTableHasALineForEachEntry) {
    const std::string text = Write(WriteReportTable);
    EXPECT_THAT(text, HasSubstr("/srv/data,folder,,BUILTIN\\Administrators,no,Allow,Everyone,S-1-1-0,"));
    EXPECT_THAT(text,
                HasSubstr("/srv/data/=cmd|</script><b>,file,empty-list,S-1-5-21-1-2-3-1001,yes,,,,,,,,"));
    EXPECT_THAT(text, HasSubstr("/srv/data/Payroll,folder,null-list,"));
    EXPECT_THAT(text, HasSubstr("/srv/data/Payroll/secret,file,unreadable,,,,,,,,,,"));
    EXPECT_EQ(std::ranges::count(text, '\n'), 6);
    EXPECT_EQ(text.find("\n"), text.find("\r\n") + 1);
}

TEST_F(ReportFormsTest, NamesCannotLeaveThePagesData) {
    const std::string page = Write(WriteReportPage);
    EXPECT_THAT(page, Not(HasSubstr("</script><b>")));
    EXPECT_THAT(page, HasSubstr("=cmd|&lt;/script&gt;&lt;b&gt;"));
    EXPECT_THAT(page, HasSubstr("=cmd|\\u003c/script\\u003e\\u003cb\\u003e"));
}

// What was written is cut off, and no shorter report.
TEST_F(ReportFormsTest, AFullDiskIsAnError) {
    for (Form* const form : {&WriteReportJson, &WriteReportTable, &WriteReportPage}) {
        WrittenText output;
        output.room = 100;
        EXPECT_EQ(form(made.Get(), output), DWORD{ERROR_DISK_FULL});
    }
}

TEST_F(ReportFormsTest, ASelectionLeavesOutWhatWasNotChosen) {
    Report& report = made.Get();
    const auto paths = [&](const ReportSelection& selection) {
        report.Select(RowChoice(selection));
        std::string text;
        for (std::size_t i = 0; i < report.RowCount(); ++i)
            text += report.Row(i).path + ';';
        return text + std::to_string(report.LeftOut());
    };
    const std::string file = "=cmd|</script><b>";
    EXPECT_EQ(paths({.depth = 0, .only = {}, .account = {}}), ";3");
    EXPECT_EQ(paths({.depth = 1, .only = {}, .account = {}}), ';' + file + ";Payroll;1");
    EXPECT_EQ(paths({.depth = {}, .only = {Remark::kUnreadable, Remark::kEmptyList}, .account = {}}),
              file + ";Payroll\\secret;2");
    // Owner; named with nothing but its SID; all where there is no list.
    const AccountGroups owner{{nt::Sid(5, {21, 1, 2, 3, 1001})}, GroupsOrigin::kThisMachine};
    EXPECT_EQ(paths({.depth = {}, .only = {}, .account = owner}), file + ";Payroll;2");
}

// Texts that are no report, or from somebody who wants one to be misread.
TEST(ReportReaderTest, WhatNoReportHasIsRefused) {
    MadeReport made({{"", TreeObjectKind::kFolder, "O:BAG:BAD:(A;;FA;;;BA)", {}},
                     {"a", TreeObjectKind::kFile, "O:BAG:BAD:(A;;FA;;;BA)", {}},
                     {"b", TreeObjectKind::kFile, "O:BAG:BAD:(A;;FA;;;BA)", {}}});
    WrittenText whole;
    ASSERT_EQ(WriteReportJson(made.Get(), whole), 0U);
    ReadReport report;
    ASSERT_EQ(ParseReport(whole.text, report), "");
    EXPECT_EQ(report.rows.size(), 3U);
    EXPECT_EQ(report.lists.size(), 3U);
    EXPECT_EQ(report.extent, ReportExtent::kWhole);

    struct Damage {
        const char* from;
        const char* to;
        const char* fault;
    };
    for (const auto& [from, to, fault] : {
             Damage{"permora 1", "permora 9", "of this form"},
             Damage{"\"objects\": [", "\"others\": [", "not complete"},
             Damage{"\"below\":\"b\"", "\"below\":\"a\"", "object 3"},
             Damage{"\"below\":\"b\"", "\"below\":\"..\\\\x\"", "object 3"},
             Damage{"\"below\":\"b\"", "\"below\":7", "object 3"},
             Damage{"\"list\":2", "\"list\":3", "object 3"},
             Damage{"\"list\":2", "\"list\":-1", "object 3"},
             Damage{"\"list\":2", "\"list\":1e300", "object 3"},
             Damage{"\"top\":0,\"below\":\"a\"", "\"top\":1,\"below\":\"a\"", "object 2"},
             Damage{"\"descriptor\":\"AQ", "\"descriptor\":\"BQ", "list 1"},
             Damage{"\"kind\":\"folder\"", "\"kind\":\"house\"", "object 1"},
         }) {
        std::string text = whole.text;
        const std::size_t place = text.find(from);
        ASSERT_NE(place, text.npos) << from;
        text.replace(place, std::string_view(from).size(), to);
        EXPECT_THAT(ParseReport(text, report), HasSubstr(fault)) << to;
    }
    for (std::size_t length = 0; length + 3 < whole.text.size(); length += 50)
        EXPECT_NE(ParseReport(whole.text.substr(0, length), report), "") << length;
    EXPECT_NE(ParseReport(std::string(100'000, '['), report), "");
}

}  // namespace
}  // namespace permora::test
