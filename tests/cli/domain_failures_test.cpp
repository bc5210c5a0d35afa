// The commands while a part of the domain fails: they end in time, guess nothing, and take no silence for an
// answer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/domain_fixture.h"
#include "tests/support/patience.h"

namespace permora::test {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;

using Command = std::vector<std::string>;
using Seconds = std::chrono::duration<double>;

class DomainFailuresTest : public OnDomainMember, public testing::WithParamInterface<Outage> {
  protected:
    // Runs the program, which must end soon after the domain's time is over whatever the domain does.
    CommandResult RunWithin(Seconds domainsTime, const Command& arguments) const {
        const auto start = std::chrono::steady_clock::now();
        const CommandResult result = RunCli(arguments);
        const Seconds taken = std::chrono::steady_clock::now() - start;
        std::printf("%-22s %-10s %6.2f s, exit code %d\n", GetParam().name, arguments[0].c_str(),
                    taken.count(), result.exitCode);
        EXPECT_LE(taken, domainsTime + ownTime) << result.output;
        return result;
    }

    // What a program may add to the time in which the domain has to answer, for starting and for Samba's
    // tools: several times what these take here and now, while the domain answers.
    void MeasureOwnTime(const Command& arguments) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(RunCli(arguments).exitCode, 0);
        ownTime = std::max<Seconds>(4s, 6 * Seconds(std::chrono::steady_clock::now() - start));
    }

    void Begin() {
        Control(GetParam().begin);
        isFailing = true;
    }
    void End() {
        isFailing = false;
        Control(GetParam().end);
    }

    void TearDown() override {
        if (IsSkipped()) return;
        if (isFailing) End();
        // What the failure has left in it would last for minutes.
        Control({"stop", "winbindd"});
        Control({"start", "winbindd"});
    }

  private:
    bool isFailing = false;
    Seconds ownTime = 4s;
};

// The time in which the domain has to answer.
constexpr Seconds kNames = 2s;
constexpr Seconds kGroups = 10s;

TEST_P(DomainFailuresTest, EveryCommandEndsInTimeAndTellsWhatIsMissing) {
    const Outage& failure = GetParam();
    const std::string unseen = DomainSid(failure.unseen);
    const std::string file = Path("file");
    std::ofstream(file) << "text\n";
    ASSERT_EQ(SetDescriptorText(file, "O:BAD:P(A;;FA;;;BA)(A;;0x1200a9;;;" + DomainSid(kAnna) +
                                          ")(A;;0x1200a9;;;" + unseen + ")"),
              0U);
    const std::string before = SddlOf(file);
    // A winbindd that the test before has started anew answers for itself before it does for the domain.
    CommandResult first;
    ASSERT_TRUE(Await([&] {
        first = RunCli({"effective", file, "--account", "EXAMPLE\\anna"});
        return first.exitCode == 0;
    })) << first.output;
    MeasureOwnTime({"effective", file, "--account", "EXAMPLE\\anna"});
    ASSERT_NO_FATAL_FAILURE(Begin());

    const CommandResult shown = RunWithin(kNames, {"show", file});
    EXPECT_EQ(shown.exitCode, 0);
    EXPECT_THAT(shown.output, HasSubstr(unseen));
    EXPECT_THAT(shown.output, AnyOf(HasSubstr(DomainSid(kAnna)), HasSubstr("EXAMPLE\\anna")));
    EXPECT_THAT(shown.output, HasSubstr("permora-cli: ")) << "the domain's absence";

    const std::string name = std::string("EXAMPLE\\") + failure.unseenName;
    for (const Command& command : {Command{"grant", file, "--account", name, "--rights", "0x1200a9"},
                                   Command{"owner", file, "--set", name}}) {
        const CommandResult refused = RunWithin(kNames, command);
        EXPECT_NE(refused.exitCode, 0);
        EXPECT_THAT(refused.output, HasSubstr(name));
        EXPECT_THAT(refused.output, Not(HasSubstr("could not be matched"))) << "it may well exist";
        EXPECT_EQ(SddlOf(file), before);
    }
    const CommandResult revoked = RunWithin(kNames, {"revoke", file, "--account", unseen});
    EXPECT_EQ(revoked.exitCode, 0) << "a SID needs no domain: " << revoked.output;

    const CommandResult rights = RunWithin(kGroups, {"effective", file, "--account", unseen});
    EXPECT_EQ(rights.exitCode, 1);
    EXPECT_THAT(rights.output, Not(HasSubstr("Permission:")));
    // Groups that winbindd still knows are right, too.
    const CommandResult known = RunWithin(kGroups, {"effective", file, "--account", DomainSid(kAnna)});
    if (known.exitCode == 0)
        EXPECT_THAT(known.output, HasSubstr("List folder / Read data         yes\n"));
    else
        EXPECT_THAT(known.output, Not(HasSubstr("Permission:")));

    const CommandResult listed = RunWithin(kGroups, {"accounts"});
    EXPECT_EQ(listed.exitCode, 1);
    EXPECT_THAT(listed.output, AllOf(HasSubstr("Everyone"), HasSubstr("FILES\\Operators")));
    EXPECT_THAT(listed.output, HasSubstr("permora-cli: ")) << "the domain's absence";
}

TEST_P(DomainFailuresTest, NamesComeBackWithTheDomain) {
    const std::string file = Path("back");
    std::ofstream(file) << "text\n";
    ASSERT_EQ(SetDescriptorText(file, "O:BAD:P(A;;FA;;;BA)(A;;FA;;;" + DomainSid(kDora) + ")"), 0U);
    ASSERT_NO_FATAL_FAILURE(Begin());
    RunCli({"show", file});
    ASSERT_NO_FATAL_FAILURE(End());
    const auto deadline = std::chrono::steady_clock::now() + 90s;
    std::string shown;
    while (std::chrono::steady_clock::now() < deadline && shown.find("EXAMPLE\\dora") == shown.npos)
        shown = RunCli({"show", file}).output;
    EXPECT_THAT(shown, HasSubstr("EXAMPLE\\dora"));
}

INSTANTIATE_TEST_SUITE_P(Domain, DomainFailuresTest, testing::ValuesIn(Outages()), OutageName);

}  // namespace
}  // namespace permora::test
