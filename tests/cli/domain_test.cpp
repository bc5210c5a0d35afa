// The commands on the member server of a real domain.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/security/samba_attribute.h"
#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/domain_fixture.h"
#include "tests/support/patience.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using Json = nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StrCaseEq;

constexpr uid_t kFirstId = 100000;  // of the domain's accounts on the member: this and the relative id

class DomainTest : public OnDomainMember {
  protected:
    // A new file of the share, which an administrator has full control of.
    static std::string MakeFile(const std::string& name) {
        std::ofstream(Path(name)) << "text\n";
        EXPECT_EQ(SetDescriptorText(Path(name), "O:BAD:P(A;;FA;;;BA)(A;;FA;;;S-1-22-1-0)"), 0U);
        return Path(name);
    }

    static void Add(const std::string& name, const std::string& entry) {
        const CommandResult added = SmbcaclsAs("Administrator", name, {"--add", entry});
        EXPECT_EQ(added.exitCode, 0) << added.output;
    }

    // Until it succeeds: on a busy machine the domain may not answer in time, and nothing is changed then.
    static CommandResult Run(const std::vector<std::string>& arguments) {
        CommandResult done;
        EXPECT_TRUE(Await([&] {
            done = RunCli(arguments);
            return done.exitCode == 0;
        })) << done.output;
        return done;
    }

    static uid_t OwnerId(const std::string& path) {
        struct stat status {};
        EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
        return status.st_uid;
    }

    // With "winbind use default domain" the domain's users look like the host's own.
    static void UseDefaultDomain() {
        Control({"on", "member", "sed", "-i", R"(s/^\[data\]/winbind use default domain = yes\n&/)",
                 "/etc/samba/smb.conf"});
        RestartWinbindd();
    }
    static void UseNoDefaultDomain() {
        Control({"on", "member", "sed", "-i", "/use default domain/d", "/etc/samba/smb.conf"});
        RestartWinbindd();
    }
    static void RestartWinbindd() {
        Control({"stop", "winbindd"});
        Control({"start", "winbindd"});
    }
};

TEST_F(DomainTest, TakesEveryFormOfNameAndShowsTheAccountsUnderTheirDomain) {
    const struct {
        std::string form;
        std::string sid;
        std::string shown;
    } kCases[] = {
        {"EXAMPLE\\anna", DomainSid(kAnna), "EXAMPLE\\anna"},
        {"example\\ANNA", DomainSid(kAnna), "EXAMPLE\\anna"},
        {"EXAMPLE.TEST\\anna", DomainSid(kAnna), "EXAMPLE\\anna"},
        {"anna@example.test", DomainSid(kAnna), "EXAMPLE\\anna"},
        {"Bert@EXAMPLE.TEST", DomainSid(kBert), "EXAMPLE\\bert"},
        {"carla", DomainSid(kCarla), "EXAMPLE\\carla"},
        {"EXAMPLE\\dora", DomainSid(kDora), "EXAMPLE\\dora"},
        {"EXAMPLE\\Engineering", DomainSid(kEngineering), "EXAMPLE\\Engineering"},
        {"platform", DomainSid(kPlatform), "EXAMPLE\\Platform"},
        {"EXAMPLE\\Payroll", DomainSid(kPayroll), "EXAMPLE\\Payroll"},
        {"EXAMPLE\\Auditors", DomainSid(kAuditors), "EXAMPLE\\Auditors"},
        {"EXAMPLE\\Domain Users", DomainSid(kDomainUsers), "EXAMPLE\\Domain Users"},
        {"EXAMPLE\\WS1$", DomainSid(kComputer), "EXAMPLE\\WS1$"},
        {"WS1$", DomainSid(kComputer), "EXAMPLE\\WS1$"},
        {DomainSid(kLeavers), DomainSid(kLeavers), "EXAMPLE\\Leavers"},
        {"FILES\\Operators", kOperatorsSid, "FILES\\Operators"},
        {"Operators", kOperatorsSid, "FILES\\Operators"},
        {DomainSid(kDeleted), DomainSid(kDeleted), DomainSid(kDeleted)},
        {"S-1-5-21-7-8-9-1001", "S-1-5-21-7-8-9-1001", "S-1-5-21-7-8-9-1001"},
    };
    const std::string file = MakeFile("named");
    const std::string before = EntriesOf(file);
    for (const auto& row : kCases) {
        Run({"grant", file, "--account", row.form, "--rights", "0x1200a9"});
        // On a busy machine the domain may not answer in time, which is said beside the JSON.
        Json shown;
        std::string output;
        ASSERT_TRUE(Await([&] {
            output = RunCli({"show", "--json", file}).output;
            shown = ResultsIn(output);
            return shown.size() == 1;
        })) << row.form
            << '\n'
            << output;
        bool isFound = false;
        for (const Json& entry : shown[0]["entries"]) {
            if (entry["sid"] != row.sid) continue;
            isFound = entry["type"] == "Allow" && entry["mask"] == "0x200a9";
            EXPECT_THAT(entry["account"].get<std::string>(), StrCaseEq(row.shown)) << row.form;
        }
        EXPECT_TRUE(isFound) << row.form;
        Run({"revoke", file, "--account", row.form});
    }
    EXPECT_EQ(EntriesOf(file), before);
}

TEST_F(DomainTest, WritesNothingUnderANameThatMeansNobodyOrTwo) {
    Control({"on", "member", "net", "sam", "createlocalgroup", "Auditors"});
    const std::string file = MakeFile("unnamed");
    const std::string before = SddlOf(file);
    for (const char* name : {"EXAMPLE\\nobody here", "EXAMPLE\\emil", "OTHER\\anna", "anna@other.test",
                             "FILES\\anna", "BUILTIN\\anna", "emil", "nobody-here", "Auditors"}) {
        const CommandResult refused = RunCli({"grant", file, "--account", name, "--rights", "0x1200a9"});
        EXPECT_NE(refused.exitCode, 0) << name;
        EXPECT_THAT(refused.output, HasSubstr(name));
        EXPECT_EQ(SddlOf(file), before) << name;
    }
    Run({"grant", file, "--account", "EXAMPLE\\Auditors", "--rights", "0x1200a9"});
    EXPECT_THAT(EntriesOf(file), HasSubstr(DomainSid(kAuditors)));
}

// The bytes of each entry in the attribute in which the server keeps the list.
std::multiset<std::string> StoredEntries(const std::string& path) {
    std::vector<std::uint8_t> attribute(65536);
    const ssize_t size = getxattr(path.c_str(), "security.NTACL", attribute.data(), attribute.size());
    attribute.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    std::vector<std::uint8_t> descriptor;
    EXPECT_TRUE(host::DescriptorFromSambaAttribute(attribute, descriptor)) << path;
    constexpr std::size_t kListOffset = 16;
    constexpr std::size_t kListHeader = 8;
    std::uint32_t list = 0;
    std::memcpy(&list, descriptor.data() + kListOffset, sizeof list);
    std::uint16_t count = 0;
    std::memcpy(&count, descriptor.data() + list + 4, sizeof count);
    std::multiset<std::string> entries;
    std::size_t place = list + kListHeader;
    for (; count > 0; --count) {
        std::uint16_t length = 0;
        std::memcpy(&length, descriptor.data() + place + 2, sizeof length);
        entries.emplace(reinterpret_cast<const char*>(descriptor.data()) + place, length);
        place += length;
    }
    return entries;
}

TEST_F(DomainTest, StoresTheSameEntriesAsTheServersOwnTool) {
    const struct {
        std::string name;
        std::vector<std::string> command;
        std::string tools;  // how the other tool writes the entry; Permora never denies to synchronize
    } kCases[] = {
        {"same1",
         {"grant", "--account", "EXAMPLE\\Engineering"},
         "EXAMPLE\\Engineering:ALLOWED/0x0/0x1200a9"},
        {"same2", {"deny", "--account", "anna@example.test"}, "EXAMPLE\\anna:DENIED/0x0/0x200a9"},
        {"same3", {"grant", "--account", "EXAMPLE\\Payroll"}, "EXAMPLE\\Payroll:ALLOWED/0x0/0x1200a9"},
        {"same4", {"grant", "--account", "EXAMPLE\\WS1$"}, "EXAMPLE\\WS1$:ALLOWED/0x0/0x1200a9"},
        {"same5", {"grant", "--account", "FILES\\Operators"}, "FILES\\Operators:ALLOWED/0x0/0x1200a9"},
        {"folder1",
         {"grant", "--scope", "1", "--account", "EXAMPLE\\Auditors"},
         "EXAMPLE\\Auditors:ALLOWED/OI|CI/0x1200a9"},
        {"folder2", {"deny", "--scope", "4", "--account", "carla"}, "EXAMPLE\\carla:DENIED/OI|CI|IO/0x200a9"},
    };
    for (const auto& row : kCases) {
        for (const std::string& name : {row.name, row.name + "b"}) {
            if (row.name.starts_with("folder")) ASSERT_EQ(mkdir(Path(name).c_str(), 0777), 0);
            MakeFile(name);
        }
        Add(row.name, "ACL:" + row.tools);
        std::vector<std::string> command = row.command;
        command.insert(command.end(), {"--rights", "0x1200a9", Path(row.name + "b")});
        Run(command);
        EXPECT_EQ(StoredEntries(Path(row.name + "b")), StoredEntries(Path(row.name))) << row.tools;
    }
}

TEST_F(DomainTest, GivesAnObjectToADomainsAccountAsTheServerDoes) {
    const std::string theirs = MakeFile("theirs");
    const std::string ours = MakeFile("ours");
    for (const auto& account : {std::pair("EXAMPLE\\anna", kAnna), std::pair("EXAMPLE\\bert", kBert)}) {
        const std::string name = account.first;
        const uid_t user = kFirstId + account.second;
        EXPECT_EQ(SmbcaclsAs("Administrator", "theirs", {"--chown", name}).exitCode, 0);
        Run({"owner", ours, "--set", name});
        EXPECT_EQ(OwnerId(theirs), user);
        EXPECT_EQ(OwnerId(ours), user);
        EXPECT_EQ(DescriptorText(ours, OWNER_SECURITY_INFORMATION),
                  DescriptorText(theirs, OWNER_SECURITY_INFORMATION));
        std::string shown;
        EXPECT_TRUE(Await([&] {
            shown = RunCli({"owner", theirs}).output;
            return testing::Matches(StrCaseEq(theirs + ": " + name + "\n"))(shown);
        })) << shown;
    }
    // A file that its user has made, and that no list was ever stored for.
    std::ofstream(Path("made")) << "text\n";
    ASSERT_EQ(chown(Path("made").c_str(), kFirstId + kCarla, kFirstId + kDomainUsers), 0);
    const std::string shown = RunCli({"show", Path("made")}).output;
    EXPECT_THAT(shown, AllOf(HasSubstr("Owner: EXAMPLE\\carla\n"), Not(HasSubstr("S-1-22-"))));
}

TEST_F(DomainTest, EffectiveRightsCountTheGroupsOfTheDomainOrAreAnError) {
    UseDefaultDomain();
    const std::string file = MakeFile("granted");
    Add("granted", "ACL:EXAMPLE\\Engineering:ALLOWED/0x0/READ");
    EXPECT_EQ(SmbclientAs("anna", "get granted /dev/null").exitCode, 0);
    for (const std::string account :
         {"anna", "EXAMPLE\\anna", "anna@example.test", "Unix User\\anna", "S-1-22-1-101103"}) {
        const CommandResult shown = Run({"effective", file, "--account", account});
        EXPECT_THAT(shown.output, HasSubstr("  List folder / Read data         yes\n")) << account;
    }
    for (const std::string& account :
         {std::string("S-1-22-2-101107"), std::string("S-1-22-1-4711"), std::string("S-1-5-21-7-8-9-513"),
          DomainSid(kEngineering), DomainSid(kDeleted)}) {
        const CommandResult shown = RunCli({"effective", file, "--account", account});
        EXPECT_EQ(shown.exitCode, 1) << account;
        // Winbind was just started, and says of a deleted account what it says of an absent domain.
        EXPECT_THAT(shown.output, AllOf(HasSubstr(account == DomainSid(kDeleted) ? " are not known"
                                                                                 : " are not known here\n"),
                                        Not(HasSubstr("Permission:"))))
            << account;
    }
    EXPECT_THAT(RunCli({"effective", file, "--account", "Unix User\\root"}).output,
                HasSubstr("Permission: Full control\n"));
    UseNoDefaultDomain();
}

// bert is in Platform, which is in Engineering.
TEST_F(DomainTest, AReportFindsThePeopleInTheDomainsGroups) {
    const std::string file = MakeFile("reported");
    Add("reported", "ACL:EXAMPLE\\Engineering:ALLOWED/0x0/READ");
    const CommandResult report = Run({"report", file, "--members"});
    // Winbind gives a name in the spelling in which somebody has asked for it last.
    EXPECT_THAT(report.output, testing::ContainsRegex("  EXAMPLE.[Ee]ngineering\n    EXAMPLE.anna\n"
                                                      "    EXAMPLE.bert through EXAMPLE.[Pp]latform\n"));
    EXPECT_THAT(report.output, testing::ContainsRegex("EXAMPLE.anna +1 "));
}

// The tool that lists Samba's groups fails, as it does while another program holds their database.
TEST_F(DomainTest, AListOfAccountsIsNotShortenedInSilence) {
    constexpr const char* kTool = "/usr/bin/net";
    const TemporaryFolder tools;
    const std::string real = tools.Path("net");
    const std::string failing = tools.MakeFile("failing");
    ASSERT_TRUE(std::filesystem::copy_file(kTool, real));
    std::ofstream(failing) << "#!/bin/sh\ncase \"$*\" in *groupmap*) exit 1;; esac\nexec " << real
                           << " \"$@\"\n";
    ASSERT_EQ(chmod(failing.c_str(), 0755), 0);
    Run({"accounts"});
    // Winbind has kept by now that nobody has this number.
    const std::string file = MakeFile("left");
    Run({"grant", file, "--account", DomainSid(kDeleted), "--rights", "Read permissions"});
    const CommandResult found = RunCli({"find", file, "--unresolved"});
    EXPECT_EQ(found.exitCode, 0);
    EXPECT_THAT(found.output, AllOf(HasSubstr(file), Not(HasSubstr("does not answer"))));
    ASSERT_EQ(mount(failing.c_str(), kTool, nullptr, MS_BIND, nullptr), 0);
    const CommandResult listed = RunCli({"accounts"});
    ASSERT_EQ(umount(kTool), 0);
    EXPECT_EQ(listed.exitCode, 1);
    EXPECT_THAT(listed.output,
                AllOf(HasSubstr("EXAMPLE\\anna"), HasSubstr("The accounts of FILES are missing: ")));
}

}  // namespace
}  // namespace permora::test
