#include "platform/administrator.h"

#include <gtest/gtest.h>

namespace permora {
namespace {

// This program is what is started, with its list of tests as all of its work.
TEST(Administrator, TheProgramIsStartedAgainWithItsArguments) {
    if (!IsAdministrator()) GTEST_SKIP() << "the system would ask";
    int exitCode = -1;
    EXPECT_EQ(StartAsAdministrator({"--gtest_list_tests", "--gtest_filter=a \"b\\"},
                                   AdministratorWait::kForEnd, exitCode),
              AdministratorStart::kStarted);
    EXPECT_EQ(exitCode, 0);
    EXPECT_EQ(StartAsAdministrator({"--gtest_list_tests"}, AdministratorWait::kForStart, exitCode),
              AdministratorStart::kFailed)
        << "it ends without having told of its start";
}

}  // namespace
}  // namespace permora
