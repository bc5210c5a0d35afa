// Reports for a window, of real trees.
#include "results/report_source.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <thread>

#include "platform/host_path.h"
#include "tests/cli/cli_program.h"
#include "tests/report/made_report.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class ReportSourceTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = CannotHoldListsReason(folder.Path()); !reason.empty())
            GTEST_SKIP() << reason;
        std::vector<std::string> all = {top};
        for (int i = 0; i < 10; ++i) {
            const std::string sub = "top/sub" + std::to_string(i);
            all.push_back(folder.MakeFolder(sub));
            for (int file = 0; file < 10; ++file)
                all.push_back(folder.MakeFile(sub + "/f" + std::to_string(file)));
        }
        for (const std::string& each : all)
            ASSERT_EQ(SetDescriptorText(each, "O:BAG:BAD:AI"), 0U);
        ASSERT_EQ(SetDescriptorText(top, "O:BAG:BAD:PAI(A;OICI;FA;;;BA)(A;OICI;FR;;;BU)"), 0U);
        ASSERT_EQ(SetDescriptorText(folder.Path("top/sub3"), "O:BAG:BAD:PAI(A;OICI;FA;;;BA)"), 0U);
        ASSERT_EQ(SetDescriptorText(folder.Path("top/sub3/f7"), "O:BAG:BAD:AI(A;;FA;;;WD)"), 0U);
        ASSERT_EQ(SetDescriptorText(folder.Path("top/sub5/f1"), "O:SYG:BAD:AI(A;;FR;;;BG)"), 0U);
    }

    // As the browser takes it.
    static std::string FullPath(const std::string& hostPath) {
        std::string path;
        EXPECT_EQ(FullPathOf(PathFromArgument(hostPath.c_str()), path), 0U);
        return path;
    }
    std::vector<ResultTop> Tops(std::vector<std::string> names) const {
        auto held = std::make_shared<FolderHandle>();
        const std::string path = FullPath(folder.Path());
        EXPECT_EQ(FolderHandle::Open(path, *held), 0U);
        return TopsOf({PlaceKind::kFolder, held, std::move(names)}, path);
    }
    static std::unique_ptr<ReportSource> Made(std::vector<ResultTop> tops, const ReportRequest& request = {},
                                              bool isStoppedAtOnce = false) {
        auto source = std::make_unique<ReportSource>(request, std::move(tops));
        source->Run(isStoppedAtOnce);
        source->TakeNews();
        return source;
    }
    static std::vector<std::string> Column(const ResultPage& page, std::size_t column) {
        std::vector<std::string> texts;
        for (std::size_t row = 0; row < page.Count(); ++row)
            texts.push_back(std::string(page.Indent(row), ' ') + page.Text(row, column));
        return texts;
    }
    static std::string Written(ReportSource& source, std::string_view extension) {
        WrittenText text;
        for (const SaveFormat& format : source.Formats())
            if (format.extension == extension) EXPECT_EQ(source.Write(format, text), 0U);
        return text.text;
    }

    const TemporaryFolder folder;
    const std::string top = folder.MakeFolder("top");
};

TEST_F(ReportSourceTest, TheFirstPageIsTheShapeAndTheSecondTheObjects) {
    const auto source = Made(Tops({"top"}));
    EXPECT_EQ(source->Title(), "Report - " + FullPath(top));
    const auto pages = source->Pages();
    ASSERT_EQ(pages.size(), 3U);
    EXPECT_THAT(Column(*pages[0], 0), ElementsAre(FullPath(top), " sub3"));
    EXPECT_THAT(
        Column(*pages[0], 1),
        ElementsAre(HasSubstr("owner BUILTIN\\Administrators; + BUILTIN\\Administrators: Full control; "
                              "+ BUILTIN\\Users: Read"),
                    " protected; + BUILTIN\\Administrators: Full control"));
    EXPECT_THAT(Column(*pages[0], 2), ElementsAre("3", " 1"));
    EXPECT_THAT(Column(*pages[1], 0), ElementsAre(EndsWith("top"), EndsWith("top\\sub3"),
                                                  EndsWith("sub3\\f7"), EndsWith("sub5\\f1")));
    EXPECT_EQ(pages[1]->Text(2, 3), "has entries of its own; lets everyone write");
    EXPECT_EQ(pages[1]->Text(3, 2), "NT AUTHORITY\\SYSTEM");
    EXPECT_EQ(pages[1]->Text(3, 4), "+ BUILTIN\\Guests: Read");
    const std::optional<ResultObject> object = pages[1]->Object(2);
    ASSERT_TRUE(object);
    EXPECT_EQ(object->path, FullPath(top) + "\\sub3\\f7");
    EXPECT_EQ(object->pathFromStart, "top\\sub3\\f7");
    EXPECT_EQ(object->kind, TreeObjectKind::kFile);
    EXPECT_THAT(source->Status(), StartsWith("111 objects, 11 folders, 7 distinct lists, 4 listed"));
}

// What the window saves is what the terminal prints.
TEST_F(ReportSourceTest, SavedReportsAreThoseOfTheTerminal) {
    const std::regex time("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}Z");
    ReportRequest people;
    people.members = ReportMembers::kFound;
    ReportRequest some;
    some.depth = 1;
    some.only = {Remark::kProtected, Remark::kOpenToAll};
    const std::pair<ReportRequest, std::vector<std::string>> asked[] = {
        {{}, {}}, {people, {"--members"}}, {some, {"--depth", "1", "--only", "protected,open-to-all"}}};
    for (const auto& [request, options] : asked) {
        const auto source = Made(Tops({"top"}), request);
        for (const char* extension : {"html", "csv", "json"}) {
            std::vector<std::string> arguments = {"report", FullPath(top)};
            if (extension == std::string("html"))
                arguments.insert(arguments.end(), {"--html", "-"});
            else
                arguments.push_back(std::string("--") + extension);
            arguments.insert(arguments.end(), options.begin(), options.end());
            const CommandResult printed = RunCli(arguments);
            EXPECT_EQ(printed.exitCode, 0);
            const std::string saved = Written(*source, extension);
            EXPECT_GT(saved.size(), 100U);
            EXPECT_EQ(std::regex_replace(saved, time, "T"), std::regex_replace(printed.output, time, "T"));
        }
    }
}

TEST_F(ReportSourceTest, WhatIsMissingIsSaid) {
    ASSERT_EQ(
        RunCommand({"setfattr", "-n", "security.NTACL", "-v", "damaged", folder.Path("top/sub1")}).exitCode,
        0);
    std::vector<ResultTop> tops = Tops({"gone", "top"});
    const auto source = Made(tops);
    EXPECT_THAT(source->Status(), HasSubstr("; 1 could not be read"));
    EXPECT_THAT(source->Status(), HasSubstr("\\gone: "));
    EXPECT_THAT(Column(*source->Pages()[0], 0), ElementsAre(FullPath(top), " sub1", " sub3"));
    EXPECT_THAT(source->Pages()[0]->Text(1, 1), StartsWith("has a damaged descriptor: "));
    EXPECT_THAT(Written(*source, "json"), HasSubstr("\"extent\": \"part\""));

    const auto nothing = Made(Tops({"gone"}));
    EXPECT_TRUE(nothing->Formats().empty());
    EXPECT_THAT(nothing->Status(), HasSubstr("\\gone: "));
}

TEST_F(ReportSourceTest, AStoppedReportIsSavedAsAPart) {
    const auto source = Made(Tops({"top"}), {}, true);
    EXPECT_THAT(source->Status(), StartsWith("Stopped: "));
    EXPECT_EQ(source->Pages()[2]->Count(), 0U);
    EXPECT_THAT(Written(*source, "json"), HasSubstr("\"extent\": \"part\""));
    EXPECT_THAT(Written(*source, "html"), HasSubstr("This report was stopped before its end"));
}

TEST_F(ReportSourceTest, AccountsHaveFiguresAndGroupsTheirPeople) {
    ReportRequest request;
    request.members = ReportMembers::kFound;
    const auto source = Made(Tops({"top"}), request);
    const ResultPage& accounts = *source->Pages()[2];
    const auto names = Column(accounts, 0);
    const auto everyone = std::ranges::find(names, "Everyone");
    ASSERT_NE(everyone, names.end());
    const auto row = static_cast<std::size_t>(everyone - names.begin());
    EXPECT_EQ(accounts.Text(row, 4), "1");
    EXPECT_EQ(names.at(row + 1), " whoever is Everyone");
    EXPECT_EQ(accounts.Text(row + 1, 4), "not known");
    EXPECT_LT(accounts.KeyOf(row + 1, 4), accounts.KeyOf(row, 4));
    EXPECT_THAT(names, testing::Contains(EndsWith("\\root")));
}

// The window reads while the worker adds.
TEST_F(ReportSourceTest, RowsAreReadWhileTheyCome) {
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(SetDescriptorText(folder.MakeFile("top/sub9/g" + std::to_string(i)),
                                    "O:BAD:AI(A;;0x" + std::to_string(i) + ";;;BG)"),
                  0U);
    ReportSource source({}, Tops({"top"}));
    std::atomic<bool> isOver = false;
    std::thread worker([&] {
        source.Run(false);
        isOver = true;
    });
    bool isLast = false;
    while (!isLast) {
        isLast = isOver;
        source.TakeNews();
        for (const ResultPage* page : source.Pages())
            for (std::size_t row = page->Count() - std::min<std::size_t>(page->Count(), 50);
                 row < page->Count(); ++row)
                for (std::size_t column = 0; column < page->Columns().size(); ++column)
                    page->Text(row, column);
    }
    worker.join();
    EXPECT_EQ(source.Pages()[1]->Count(), 1004U);
}

}  // namespace
}  // namespace permora::test
