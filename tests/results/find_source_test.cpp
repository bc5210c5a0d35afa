// Searches of real trees for a window.
#include "results/find_source.h"

#include <gmock/gmock.h>
#include <sys/xattr.h>

#include <filesystem>

#include "tests/results/sample_tree.h"

namespace permora::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const std::atomic<bool> kGoesOn = false;
const std::atomic<bool> kMustStop = true;

nt::Sid Guests() {
    return *nt::Sid::FromText("S-1-5-32-546");
}

class Text : public SavedOutput {
  public:
    DWORD Write(std::string_view bytes) override {
        text += bytes;
        return error;
    }
    std::string text;
    DWORD error = ERROR_SUCCESS;
};

// Each row with all columns but the folder.
std::vector<std::string> RowsOf(const ResultPage& page) {
    std::vector<std::string> rows;
    for (std::size_t row = 0; row < page.Count(); ++row) {
        std::string text = page.Text(row, 0);
        for (std::size_t column = 2; column < page.Columns().size(); ++column)
            text += " | " + page.Text(row, column);
        rows.push_back(text);
    }
    return rows;
}

class FindSourceTest : public SampleTree {
  protected:
    // What was found, searching in these tops.
    ResultPage& Find(std::vector<ResultTop> tops, const EntryCriteria& criteria,
                     const std::atomic<bool>& isStopped = kGoesOn) {
        source = std::make_unique<FindSource>(std::move(tops), criteria, "somebody");
        source->Run(isStopped);
        source->TakeNews();
        return *source->Pages()[0];
    }
    ResultPage& Missed() { return *source->Pages()[1]; }
    std::string Saved(const char* extension) {
        for (const SaveFormat& format : source->Formats())
            if (format.extension == std::string_view(extension)) {
                Text text;
                EXPECT_EQ(source->Write(format, text), ERROR_SUCCESS);
                return text.text;
            }
        return "no such format";
    }

    std::unique_ptr<FindSource> source;
};

TEST_F(FindSourceTest, ShowsWhatFitsAndWhoOwnsIt) {
    const ResultPage& found = Find(Tops({}), {.account = Guests()});
    EXPECT_THAT(
        RowsOf(found),
        ElementsAre("top | Folder | Allow Read (This folder, subfolders and files) | BUILTIN\\Administrators",
                    "sub | Folder | Deny Delete (This folder, subfolders and files); Allow Read (This "
                    "folder, subfolders "
                    "and files; inherited) | BUILTIN\\Administrators",
                    "file | File | Deny Delete (inherited); Allow Read (inherited) | S-1-5-21-9-9-9-1001"));
    EXPECT_EQ(found.Text(2, 1), PathFromArgument(sub.c_str()));
    EXPECT_EQ(found.Object(2)->path, PathFromArgument(file.c_str()));
    EXPECT_EQ(source->Status(), "3 objects, 3 found");
    EXPECT_THAT(source->Title(), testing::StartsWith("Find - somebody in "));
    EXPECT_THAT(RowsOf(Missed()), ElementsAre());

    EXPECT_THAT(RowsOf(Find(Tops({"top"}), {.account = {}, .part = SearchedPart::kOwner})),
                ElementsAre("file | File | Owner | S-1-5-21-9-9-9-1001"));
    EXPECT_THAT(RowsOf(Find(Tops({}), {.account = {}, .origin = EntryOrigin::kExplicit})),
                ElementsAre("file | File | S-1-5-21-9-9-9-1001: Allow Full control | S-1-5-21-9-9-9-1001"));
}

TEST_F(FindSourceTest, NamesWhatCouldNotBeSearched) {
    ASSERT_EQ(setxattr(file.c_str(), "security.NTACL", "damaged", 7, 0), 0);
    std::vector<ResultTop> tops = Tops({"top", "gone"});
    Find(std::move(tops), {.account = Guests()});
    ASSERT_EQ(Missed().Count(), 2U);
    EXPECT_EQ(Missed().Text(0, 0), "file");
    EXPECT_EQ(Missed().Text(1, 0), "gone");
    EXPECT_NE(Missed().Text(0, 2), "");
    EXPECT_NE(Missed().Text(1, 2), "");
    EXPECT_EQ(source->Status(), "3 objects, 2 found; 2 not searched (see View)");
}

TEST_F(FindSourceTest, AStoppedSearchSaysSo) {
    Find(Tops({}), {.account = Guests()}, kMustStop);
    EXPECT_EQ(source->Status(), "Stopped, the rest was not searched: 0 objects, 0 found");
}

TEST_F(FindSourceTest, SavesTablesAndKnowsWhenTheDiskIsFull) {
    Find(Tops({}), {.account = Guests()});
    const std::string table = Saved("csv");
    EXPECT_EQ(std::ranges::count(table, '\n'), 6);
    EXPECT_THAT(table,
                HasSubstr(PathFromArgument(sub.c_str()) +
                          R"(,folder,,Deny,BUILTIN\Guests,S-1-5-32-546,Delete,0x10000,Not inherited,)"));
    EXPECT_THAT(
        Saved("json"),
        testing::StartsWith(
            "{\n  \"version\": 1,\n  \"command\": \"find\",\n  \"results\": [\n    {\n      \"path\": "));
    Text full;
    full.error = ERROR_DISK_FULL;
    EXPECT_EQ(source->Write(source->Formats()[0], full), ERROR_DISK_FULL);
    Find(Tops({}), {.account = {}, .part = SearchedPart::kOwner});
    EXPECT_THAT(Saved("csv"), HasSubstr(",file,S-1-5-21-9-9-9-1001,,,S-1-5-21-9-9-9-1001,,,,\r\n"));
}

}  // namespace
}  // namespace permora::test
