// Tests on the member server of a domain; they are skipped in a program that was not started there.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/domain_member.h"

namespace permora::test {

class OnDomainMember : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = NotOnDomainMemberReason(); !reason.empty()) GTEST_SKIP() << reason;
    }

    // ControlDomain, which must succeed.
    static void Control(const std::vector<std::string>& command) {
        const CommandResult done = ControlDomain(command);
        ASSERT_EQ(done.exitCode, 0) << done.output;
    }

    // The path of `name` in the share, as the host writes paths.
    static std::string Path(const std::string& name) { return std::string(kSharedFolder) + '/' + name; }
};

}  // namespace permora::test
