// A tree that a real Samba server made: it hands lists down in its own way.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/support/samba_fixture.h"
#include "tests/survey/survey_texts.h"

namespace permora::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class SurveySambaTest : public WithSambaServer {};

TEST_F(SurveySambaTest, WhatTheServerHandsDownIsNotStale) {
    const TemporaryFolder folder;
    const std::string local = folder.MakeFile("text");
    const char* const lists[] = {
        ("D:PAI(A;OICI;FA;;;BA)(A;OICIIO;GA;;;CO)(A;OICIIO;0x1200a9;;;CG)(A;CI;0x1200a9;;;BU)"
         "(A;OICINP;FR;;;BG)"),
        "D:PAI(A;OICI;FA;;;WD)(A;OIIO;FA;;;CO)(A;CIIO;GRGX;;;BU)(D;OICI;FW;;;BG)",
        "D:P(A;OICI;FA;;;WD)(A;OICIIO;FA;;;CO)",
    };
    int number = 0;
    for (const char* list : lists) {
        const std::string name = "tree" + std::to_string(++number);
        const std::string top = server->Path(name);
        ASSERT_TRUE(std::filesystem::create_directory(top));
        std::filesystem::permissions(top, std::filesystem::perms::all);
        ASSERT_EQ(SetDescriptorText(top, list), 0U);
        const CommandResult made =
            server->Smbclient("cd " + name + "; mkdir sub; put " + local + " file; cd sub; mkdir deep; put " +
                              local + " file; cd deep; put " + local + " file");
        ASSERT_EQ(made.exitCode, 0) << made.output;
        ASSERT_TRUE(std::filesystem::exists(top + "/sub/deep/file"));
        EXPECT_THAT(SurveyText(top), Not(HasSubstr("stale"))) << list;
        EXPECT_THAT(SurveyText(top), Not(HasSubstr("file: own"))) << list;
    }
}

}  // namespace
}  // namespace permora::test
