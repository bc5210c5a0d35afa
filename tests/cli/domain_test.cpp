// The commands on the member server of a real domain.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/cli/cli_program.h"
#include "tests/support/domain_fixture.h"

namespace permora::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class DomainTest : public OnDomainMember {
  protected:
    // A new file of the share with one entry beside those that the server gives it.
    static std::string MakeFile(const std::string& name, const std::string& entry) {
        std::ofstream(Path(name)) << "text\n";
        const CommandResult added = SmbcaclsAs("Administrator", name, {"--add", entry});
        EXPECT_EQ(added.exitCode, 0) << added.output;
        return Path(name);
    }
};

// With "winbind use default domain" the domain's users look like the host's own.
TEST_F(DomainTest, EffectiveRightsCountTheGroupsOfTheDomainOrAreAnError) {
    Control({"on", "member", "sed", "-i", R"(s/^\[data\]/winbind use default domain = yes\n&/)",
             "/etc/samba/smb.conf"});
    Control({"stop", "winbindd"});
    Control({"start", "winbindd"});
    const std::string file = MakeFile("granted", "ACL:EXAMPLE\\Engineering:ALLOWED/0x0/READ");
    EXPECT_EQ(SmbclientAs("anna", "get granted /dev/null").exitCode, 0);
    for (const std::string account :
         {"anna", "EXAMPLE\\anna", "anna@example.test", "Unix User\\anna", "S-1-22-1-101103"}) {
        const CommandResult shown = RunCli({"effective", file, "--account", account});
        EXPECT_EQ(shown.exitCode, 0) << account;
        EXPECT_THAT(shown.output, HasSubstr("  List folder / Read data         yes\n")) << account;
    }
    for (const std::string& account :
         {std::string("S-1-22-2-101107"), std::string("S-1-22-1-4711"), std::string("S-1-5-21-7-8-9-513"),
          DomainSid(kEngineering), DomainSid(kDeleted)}) {
        const CommandResult shown = RunCli({"effective", file, "--account", account});
        EXPECT_EQ(shown.exitCode, 1) << account;
        EXPECT_THAT(shown.output, AllOf(HasSubstr(" are not known here\n"), Not(HasSubstr("Permission:"))))
            << account;
    }
    EXPECT_THAT(RunCli({"effective", file, "--account", "Unix User\\root"}).output,
                HasSubstr("Permission: Full control\n"));
    Control({"on", "member", "sed", "-i", "/use default domain/d", "/etc/samba/smb.conf"});
    Control({"stop", "winbindd"});
    Control({"start", "winbindd"});
}

}  // namespace
}  // namespace permora::test
