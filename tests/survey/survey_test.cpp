// Surveys of real volumes.
#include "survey/survey.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <vector>

#include "tests/support/command.h"
#include "tests/support/fake_domain.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"
#include "tests/survey/survey_texts.h"

namespace permora::test {
namespace {

using testing::HasSubstr;
using testing::Not;

const std::atomic<bool> kGoesOn = false;

// "owned/listed/readable/writable" of an account, or the error of its groups.
std::string FiguresOf(const SurveySummary& summary, const std::string& sid) {
    for (const AccountSummary& account : summary.accounts) {
        if (account.sid.ToText() != sid) continue;
        const std::string known = std::to_string(account.owned) + '/' + std::to_string(account.listed) + '/';
        if (account.groupsError != ERROR_SUCCESS)
            return known + "error " + std::to_string(account.groupsError);
        return known + std::to_string(account.readable) + '/' + std::to_string(account.writable);
    }
    return "none";
}

class SurveyTest : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "security.NTACL needs root";
    }

    const TemporaryFolder folder;
    const std::string top = folder.MakeFolder("top");
};

// What is written through the platform layer, by whatever way, is as it hands it down.
TEST_F(SurveyTest, WhatTheProgramWroteIsNotStale) {
    std::vector<std::string> tops = {top};
    std::unique_ptr<NtfsVolume> volume;
    if (NtfsVolume::SkipReason().empty()) {
        volume = std::make_unique<NtfsVolume>();
        ASSERT_EQ(volume->Problem(), "");
        tops.push_back(volume->Path("top"));
    }
    for (const std::string& each : tops) {
        std::filesystem::create_directories(each + "/sub/deep");
        std::filesystem::create_directories(each + "/other");
        for (const char* name : {"/file", "/sub/file", "/sub/deep/file", "/other/moved"})
            ASSERT_EQ(RunCommand({"touch", each + name}).exitCode, 0);
        ASSERT_EQ(SetDescriptorText(each,
                                    "O:BAG:BAD:P(A;OICI;FA;;;BA)(A;OICIIO;GA;;;CO)(A;CI;0x1200a9;;;BU)"
                                    "(A;OICINP;FR;;;BG)(A;OICIIO;GRGX;;;SY)"),
                  0U);
        ASSERT_EQ(SetDescriptorText(each + "/sub", "D:(D;OICI;FW;;;BG)(A;OICI;FR;;;BG)"), 0U);
        ASSERT_EQ(SetDescriptorText(each + "/sub/deep/file", "O:SY"), 0U);
        const std::string text = SurveyText(each);
        EXPECT_THAT(text, HasSubstr("\nsub: own-entries"));
        EXPECT_THAT(text, HasSubstr("\nsub\\deep\\file: "));
        EXPECT_THAT(text, Not(HasSubstr("stale")));

        std::filesystem::rename(each + "/other/moved", each + "/sub/moved");
        EXPECT_THAT(SurveyText(each), HasSubstr("\nsub\\moved: own-entries stale-inheritance"));
    }
}

// Nobody wants a row for each object of a tree that never had lists.
TEST_F(SurveyTest, APlainTreeHasNoRowsButForWhatIsOddInIt) {
    for (const char* name : {"top/a", "top/sub", "top/sub/b"})
        folder.MakeFolder(name);
    ASSERT_EQ(chmod(folder.MakeFile("top/a/closed").c_str(), 0600), 0);
    ASSERT_EQ(chmod(folder.MakeFile("top/a/group").c_str(), 0707), 0);
    ASSERT_EQ(chmod(folder.MakeFile("top/a/open").c_str(), 0666), 0);
    ASSERT_EQ(chown(folder.MakeFile("top/sub/gone").c_str(), 54321, 0), 0);
    ASSERT_EQ(symlink("/etc", folder.Path("top/link").c_str()), 0);
    ASSERT_EQ(mkfifo(folder.Path("top/pipe").c_str(), 0600), 0);
    EXPECT_EQ(SurveyText(top),
              ": \na\\group: open-to-all\na\\open: open-to-all\n"
              "sub\\gone: other-owner deleted-account\n");
}

TEST_F(SurveyTest, WhatCannotBeReadIsARowAndTheRestIsJudged) {
    const std::string sub = folder.MakeFolder("top/sub");
    const std::string file = folder.MakeFile("top/sub/file");
    folder.MakeFile("top/x");
    ASSERT_EQ(SetDescriptorText(file, "D:P(A;;FA;;;BA)"), 0U);
    ASSERT_EQ(setxattr(sub.c_str(), "security.NTACL", "damaged", 7, 0), 0);
    Survey survey;
    RowTexts rows;
    EXPECT_EQ(survey.Walk(Held(top), rows), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(rows.text, ": \nsub: damaged\nsub\\file: own-entries protected\n");
    SurveySummary summary;
    EXPECT_EQ(survey.Summarise(kGoesOn, summary), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(summary.objects, 4U);
    EXPECT_EQ(summary.folders, 2U);
    EXPECT_EQ(summary.unread, 1U);
    EXPECT_EQ(summary.rows.at(static_cast<std::size_t>(Remark::kDamaged)), 1U);

    rows.end = "sub\\file";
    rows.text.clear();
    EXPECT_EQ(survey.Walk(Held(top), rows), DWORD{ERROR_OPERATION_ABORTED});
    EXPECT_EQ(rows.text, ": \nsub: damaged\n");
}

// The figures are those of the account with its groups, and there are none where these are not known.
TEST_F(SurveyTest, AccountsAreCountedByWhatTheyMayDo) {
    FakeDomain domain;
    domain.Add(1103, "anna");
    domain.Add(1104, "staff", SidTypeGroup);
    domain.SetGroups(ERROR_SUCCESS, {1103, 1104}, GroupsOrigin::kLastLogon);
    const std::string anna = FakeDomain::SidText(1103);
    const std::string staff = FakeDomain::SidText(1104);
    const std::string gone = "S-1-5-21-4-4-4-1000";
    for (const char* name : {"top/a", "top/b", "top/c"})
        folder.MakeFile(name);
    ASSERT_EQ(SetDescriptorText(top, "O:BAG:BAD:P(A;OICI;FA;;;BA)(A;OICI;FR;;;" + staff + ")"), 0U);
    ASSERT_EQ(SetDescriptorText(folder.Path("top/a"), "O:" + anna + "D:(D;;FR;;;" + anna + ")"), 0U);
    ASSERT_EQ(SetDescriptorText(folder.Path("top/b"), "D:(A;;FW;;;" + anna + ")(A;;FW;;;" + gone + ")"), 0U);
    ASSERT_EQ(SetDescriptorText(folder.Path("top/c"), "O:BAD:NO_ACCESS_CONTROL"), 0U);
    const auto figures = [&](const std::string& sid) {
        Survey survey;
        RowTexts rows;
        SurveySummary summary;
        EXPECT_EQ(survey.Walk(Held(top), rows), DWORD{ERROR_SUCCESS});
        EXPECT_EQ(survey.Summarise(kGoesOn, summary), DWORD{ERROR_SUCCESS});
        return FiguresOf(summary, sid);
    };
    EXPECT_EQ(figures(anna), "1/2/3/2");
    EXPECT_EQ(figures(gone), "0/1/error 1332");
    EXPECT_EQ(figures("S-1-5-32-544"), "2/3/4/4");
    domain.SetGroups(kDomainOffline, {}, GroupsOrigin::kLastLogon);
    EXPECT_EQ(figures(anna), "1/2/error 1355");
}

// An account of a domain that does not answer is never taken for one that is no more.
TEST_F(SurveyTest, WhatADomainDoesNotAnswerIsSaidToBeUnasked) {
    FakeDomain domain;
    const std::string file = folder.MakeFile("top/file");
    ASSERT_EQ(SetDescriptorText(file, "D:P(A;;FA;;;" + FakeDomain::SidText(1103) + ")"), 0U);
    EXPECT_EQ(SurveyText(top), ": \nfile: own-entries protected unknown-account\n");
    domain.HoldNames(true);
    EXPECT_EQ(SurveyText(top), ": \nfile: own-entries protected unasked-account\n");
}

}  // namespace
}  // namespace permora::test
