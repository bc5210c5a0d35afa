// The shares of a real server, worked as a user works them (shares_test.sh); the server's own tools judge
// what then stands there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/cli/cli_program.h"
#include "tests/support/descriptor_texts.h"
#include "tests/support/project_folders.h"
#include "tests/support/samba_server.h"

namespace permora::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

class SharesTest : public ::testing::TestWithParam<const char*> {};

TEST_P(SharesTest, OnASambaServer) {
    if (const std::string reason = SambaServer::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const SambaServer server;
    ASSERT_EQ(server.Problem(), "");
    for (const char* name : {"plans", "old"})
        std::filesystem::create_directory(server.Path(name));
    ASSERT_EQ(RunCommand({"net", "conf", "addshare", "beta", server.Path("old")}).exitCode, 0);
    const CommandResult run = RunCommand({"bash", InProject("tests/end_to_end/shares_test.sh"),
                                          ProgramFolder(), PictureFolder(std::string("shares-") + GetParam()),
                                          GetParam(), std::string(server.Root())});
    ASSERT_EQ(run.exitCode, 0) << run.output;

    EXPECT_EQ(RunCommand({"net", "conf", "listshares"}).output, "plans\n");
    EXPECT_TRUE(std::filesystem::is_directory(server.Path("old"))) << "it is only shared no more";
    // The server's own answer knows no greatest number of users.
    EXPECT_THAT(RunCommand({"net", "conf", "showshare", "plans"}).output,
                AllOf(HasSubstr("path = " + server.Path("plans") + "\n"), HasSubstr("max connections = 12\n"),
                      HasSubstr("read only = no\n")));
    EXPECT_THAT(
        RunCommand({"rpcclient", "127.0.0.1", "-U", "root%secret", "-c", "netsharegetinfo plans 502"}).output,
        AllOf(HasSubstr("netname: plans\n"), HasSubstr("remark:\tWhat we want\n")));
    // Its versions write masks differently.
    const std::string list = RunCommand({"sharesec", "plans", "--viewsddl"}).output;
    EXPECT_EQ(SddlOfParts(DescriptorOf(list.substr(0, list.find('\n'))).get(), DACL_SECURITY_INFORMATION),
              "D:(A;OICI;FA;;;BU)(A;;0x1200a9;;;WD)");
}

INSTANTIATE_TEST_SUITE_P(Hands, SharesTest, ::testing::Values("keyboard", "mouse"),
                         [](const auto& hands) { return hands.param; });

}  // namespace
}  // namespace permora::test
