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

// A part of the domain that does not answer, and the commands that begin and end it.
struct Outage {
    const char* name;
    std::vector<std::string> begin;
    std::vector<std::string> end;
    // An account that nothing has looked up before: each outage has its own.
    unsigned unseen;
    const char* unseenName;
};

inline const std::vector<Outage>& Outages() {
    static const std::vector<Outage> kOutages = {
        {"winbindd_stopped", {"stop", "winbindd"}, {"start", "winbindd"}, kEngineering, "Engineering"},
        {"winbindd_frozen", {"freeze", "winbindd"}, {"thaw", "winbindd"}, kPlatform, "Platform"},
        {"controller_stopped", {"stop", "controller"}, {"start", "controller"}, kPayroll, "Payroll"},
        {"controller_frozen", {"freeze", "controller"}, {"thaw", "controller"}, kLeavers, "Leavers"},
        {"controller_unplugged", {"unplug"}, {"plug"}, kBert, "bert"},
    };
    return kOutages;
}

inline std::string OutageName(const testing::TestParamInfo<Outage>& outage) {
    return outage.param.name;
}

}  // namespace permora::test
