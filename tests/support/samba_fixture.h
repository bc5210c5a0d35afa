// One Samba server for all tests of a program; they are skipped where it cannot run.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "tests/support/samba_server.h"

namespace permora::test {

class WithSambaServer : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        if (SambaServer::SkipReason().empty()) server = std::make_unique<SambaServer>();
    }
    static void TearDownTestSuite() { server.reset(); }

    void SetUp() override {
        if (!server) GTEST_SKIP() << SambaServer::SkipReason();
        ASSERT_EQ(server->Problem(), "");
    }

    static inline std::unique_ptr<SambaServer> server;
};

}  // namespace permora::test
