// The output of `show` for objects whose lists hold more than the rows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "platform/nt/sddl.h"
#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class ShowTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = CannotHoldListsReason(folder.Path()); !reason.empty())
            GTEST_SKIP() << reason;
    }

    // Gives a file the list that `sddl` tells, with the last occurrence of a byte in its first entry's data
    // replaced.
    void SetChanged(const std::string& file, const std::string& sddl, std::uint8_t from, std::uint8_t to) {
        auto descriptor = nt::FromSddl(sddl);
        ASSERT_TRUE(descriptor);
        auto& data = descriptor->dacl.entries.front().tail;
        const auto place = std::find(data.rbegin(), data.rend(), from);
        ASSERT_NE(place, data.rend());
        *place = to;
        ASSERT_EQ(SetDescriptor(file, *descriptor), 0U);
    }

    const TemporaryFolder folder;
};

TEST_F(ShowTest, SddlTellsEntriesOfEveryTypeAndSystemListsWhenAsked) {
    const std::string file = folder.MakeFile("file");
    const std::string list =
        "O:BAG:BAD:PAI(XA;;FX;;;WD;((@USER.Title == \"PM\") && (Exists @DEVICE.a)))"
        "(OD;;CR;4c164200-20c0-11d0-a768-00aa006e0529;;BG)(A;;FA;;;BA)";
    const std::string audits =
        "S:(AU;SAFA;FA;;;WD)(RA;;;;;WD;(\"Secrecy\",TU,0x0,3))(ML;;NW;;;HI)(SP;;;;;S-1-17-1)(XU;SA;FA;;;WD;("
        "a))";
    ASSERT_EQ(SetDescriptorText(file, list + audits), 0U);
    EXPECT_EQ(SddlOf(file), list + '\n');
    EXPECT_EQ(RunCli({"show", "--sddl", "--audit", file}).output, list + audits + '\n');

    const CommandResult alone = RunCli({"show", "--audit", file});
    EXPECT_EQ(alone.exitCode, 2);
    EXPECT_THAT(alone.output, HasSubstr("--sddl"));
}

TEST_F(ShowTest, SddlOfSeveralHasTwoLinesForEachAndNamesTheEntryWithoutText) {
    const std::string first = folder.MakeFile("first");
    const std::string malformed = folder.MakeFile("malformed");
    const std::string unseen = folder.MakeFile("unseen");
    const std::string last = folder.MakeFile("last");
    const std::string plain = "O:BAG:BAD:PAI(A;;FA;;;BA)";
    ASSERT_EQ(SetDescriptorText(first, plain), 0U);
    ASSERT_EQ(SetDescriptorText(last, plain), 0U);
    // An operator that does not exist.
    SetChanged(malformed, "O:BAG:BAD:P(XA;;FX;;;WD;(a == 1))(A;;FA;;;BA)", 0x80, 0x7F);
    ASSERT_EQ(SetDescriptorText(unseen, "O:BAG:BAD:P(XA;;FX;;;WD;(a == \"\x1B[31m\xE2\x80\x8B\"))"), 0U);

    const CommandResult all = RunCli({"show", "--sddl", first, malformed, unseen, last});
    EXPECT_EQ(all.exitCode, 1);
    EXPECT_THAT(all.output, HasSubstr(first + '\n' + plain + '\n'));
    EXPECT_THAT(all.output, HasSubstr(last + '\n' + plain + '\n'));
    EXPECT_THAT(all.output, HasSubstr("permora-cli: " + malformed +
                                      ": entry 1 of its access list (Callback allow) has no text form; "));
    EXPECT_THAT(all.output, HasSubstr("permora-cli: " + unseen + ": its text has characters"));
    EXPECT_THAT(all.output, Not(HasSubstr("\x1B")));
}

TEST_F(ShowTest, JsonTellsWhatEntriesOfEveryTypeAre) {
    const std::string file = folder.MakeFile("file");
    ASSERT_EQ(SetDescriptorText(file,
                                "D:P(XA;OINP;FX;;;BG;(a == \"\xC3\xA4\"))"
                                "(ZA;;CR;4c164200-20c0-11d0-a768-00aa006e0529;"
                                "00000000-0000-0000-0000-0000000000ff;BU;(Exists b))"
                                "(RA;;;;;WD;(\"c\",TS,0x0,\"d;e\"))"),
              0U);
    const auto shown = ResultsIn(RunCli({"show", "--json", file}).output);
    ASSERT_EQ(shown.size(), 1U);
    const auto& json = shown[0];
    const auto& entries = json["entries"];
    ASSERT_EQ(entries.size(), 3U);
    const struct {
        const char* type;
        const char* sid;
        const char* account;
        bool childrenOnly;
    } rows[] = {{"Callback allow", "S-1-5-32-546", "BUILTIN\\Guests", true},
                {"Callback object allow", "S-1-5-32-545", "BUILTIN\\Users", false},
                {"Resource attribute", "S-1-1-0", "Everyone", false}};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(entries[i]["type"], rows[i].type);
        EXPECT_EQ(entries[i]["sid"], rows[i].sid);
        EXPECT_EQ(entries[i]["account"], rows[i].account);
        EXPECT_EQ(entries[i]["childrenOnly"], rows[i].childrenOnly);
        EXPECT_EQ(entries[i].contains("objectType"), i == 1);
    }
    EXPECT_EQ(entries[0]["condition"], "(a == \"\xC3\xA4\")");
    EXPECT_EQ(entries[0]["sddl"], "(XA;OINP;FX;;;BG;(a == \"\xC3\xA4\"))");
    EXPECT_EQ(entries[1]["objectType"], "4c164200-20c0-11d0-a768-00aa006e0529");
    EXPECT_EQ(entries[1]["inheritedObjectType"], "00000000-0000-0000-0000-0000000000ff");
    EXPECT_EQ(entries[1]["condition"], "(Exists b)");
    EXPECT_EQ(entries[2]["attribute"], "(\"c\",TS,0x0,\"d;e\")");
    EXPECT_FALSE(entries[2].contains("condition"));

    SetChanged(file, "D:P(XA;;FX;;;BG;(a == 1))", 0x80, 0x7F);
    const auto malformed = ResultsIn(RunCli({"show", "--json", file}).output);
    const auto& entry = malformed[0]["entries"][0];
    EXPECT_EQ(entry["type"], "Callback allow");
    EXPECT_EQ(entry["sid"], "S-1-5-32-546");
    EXPECT_TRUE(entry["sddl"].is_null());
    EXPECT_FALSE(entry.contains("condition"));
}

TEST_F(ShowTest, RowsTellEntriesForDirectChildrenFromOthers) {
    const std::string top = folder.MakeFolder("top");
    // The flag has no meaning if nothing is handed down.
    ASSERT_EQ(SetDescriptorText(top, "D:P(A;OICI;FR;;;BG)(A;NP;FR;;;BU)"), 0U);
    const std::string before = RunCli({"show", top}).output;
    ASSERT_EQ(SetDescriptorText(top, "D:P(A;OICINP;FR;;;BG)(A;OICI;FR;;;BU)"), 0U);
    const std::string after = RunCli({"show", top}).output;
    EXPECT_THAT(before, Not(HasSubstr("direct children")));
    EXPECT_THAT(after, testing::ContainsRegex("Apply To +Handed Down To\n"));
    EXPECT_THAT(after,
                testing::ContainsRegex("Guests .*This folder, subfolders and files +direct children only\n"));
    EXPECT_THAT(after, testing::ContainsRegex("Users .*This folder, subfolders and files\n"));
}

TEST_F(ShowTest, SourcesTellTheFolderOfEachInheritedEntry) {
    const std::string top = folder.MakeFolder("top");
    const std::string file = folder.MakeFile("top/file");
    ASSERT_EQ(SetDescriptorText(top, "D:P(A;OICI;FR;;;BG)"), 0U);
    ASSERT_EQ(SetDescriptorText(file, "D:(A;;FR;;;BU)"), 0U);
    const CommandResult shown = RunCli({"show", "--sources", file});
    EXPECT_THAT(shown.output, testing::ContainsRegex("Apply To +Inherited From\n"));
    EXPECT_THAT(shown.output, testing::ContainsRegex("Guests .*This folder only +C:.*top\n"));
    EXPECT_THAT(RunCli({"show", file}).output, Not(HasSubstr("Inherited From")));

    std::filesystem::rename(file, folder.Path("moved"));
    const auto moved = ResultsIn(RunCli({"show", "--json", folder.Path("moved")}).output);
    const auto& json = moved[0];
    ASSERT_EQ(json["entries"].size(), 2U);
    EXPECT_EQ(json["entries"][0]["source"], "own");
    EXPECT_EQ(json["entries"][1]["source"], "nobody");
    EXPECT_TRUE(json["entries"][1]["inheritedFrom"].is_null());
    EXPECT_EQ(json["kept"]["place"], geteuid() == 0 ? "samba" : "user");
    const std::string plain = folder.MakeFile("plain");
    std::filesystem::permissions(plain, std::filesystem::perms(0640));
    EXPECT_THAT(RunCli({"show", plain}).output,
                testing::ContainsRegex("  Kept: nowhere; .*\n  Mode bits: rw-r-----\n"));
    EXPECT_EQ(RunCli({"show", "--sources", "--sddl", top}).exitCode, 2);
    EXPECT_EQ(RunCli({"show", "--sources", "--share", "any"}).exitCode, 2);
}

}  // namespace
}  // namespace permora::test
