// "effective" against what a real server grants to users of its domain, for generated access lists.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/domain_fixture.h"
#include "tests/support/patience.h"
#include "tests/support/project_folders.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr std::size_t kLists = 300;
constexpr std::uint32_t kReadAttributes = 0x80;
constexpr const char* kLocalUser = "games";  // of the member; it has no domain

struct User {
    std::string name;     // as the server's clients give it
    std::string account;  // as Permora takes it
};

const std::vector<User>& Users() {
    static const std::vector<User> kUsers = {
        {"EXAMPLE\\anna", DomainSid(kAnna)},
        {"EXAMPLE\\bert", DomainSid(kBert)},
        {"EXAMPLE\\carla", DomainSid(kCarla)},
        {"EXAMPLE\\dora", DomainSid(kDora)},
        {std::string("FILES\\") + kLocalUser, std::string("FILES\\") + kLocalUser}};
    return kUsers;
}

// S-1-22-1-<user>, S-1-22-2-<group>: how the server numbers the domain's accounts.
std::string UnixSidText(unsigned kind, unsigned relativeId) {
    return "S-1-22-" + std::to_string(kind) + '-' + std::to_string(100000 + relativeId);
}

// Whom a generated entry may be for.
std::vector<std::string> Candidates() {
    std::vector<std::string> sids = {
        "S-1-1-0",             // Everyone
        "S-1-5-11",            // Authenticated Users
        "S-1-3-0",             // CREATOR OWNER
        "S-1-3-4",             // OWNER RIGHTS
        "S-1-5-7",             // ANONYMOUS LOGON
        "S-1-5-32-544",        // BUILTIN\Administrators
        "S-1-5-32-545",        // BUILTIN\Users
        "S-1-5-32-546",        // BUILTIN\Guests
        "S-1-5-21-7-8-9-513",  // of another domain
        kOperatorsSid,
        "S-1-22-2-60",   // games
        DomainSid(512),  // Domain Admins
        DomainSid(kDomainUsers),
    };
    for (const unsigned account : {kAnna, kBert, kCarla, kDora, kDeleted}) {
        sids.push_back(DomainSid(account));
        sids.push_back(UnixSidText(1, account));
    }
    for (const unsigned group : {kDomainUsers, kEngineering, kPlatform, kPayroll, kAuditors, kLeavers}) {
        sids.push_back(DomainSid(group));
        sids.push_back(UnixSidText(2, group));
    }
    return sids;
}

// One to eight entries in any order, for the same rights more often than not.
std::string GeneratedList(std::mt19937& random) {
    static const std::vector<std::string> kCandidates = Candidates();
    static constexpr std::array kMasks = {0x1f01ffU, 0x1200a9U, 0x120089U, 0x120116U, 0x1301bfU};
    std::ostringstream list;
    list << "D:P" << std::hex;
    for (unsigned entries = 1 + random() % 8; entries > 0; --entries) {
        const bool isDenial = random() % 3 == 0;
        const bool isInheritOnly = random() % 12 == 0;
        const std::uint32_t mask =
            random() % 2 == 0 ? kMasks.at(random() % kMasks.size()) : random() & 0x1f01ffU;
        list << '(' << (isDenial ? 'D' : 'A') << (isInheritOnly ? ";IO" : ";") << ";0x" << (mask | 1U)
             << ";;;" << kCandidates.at(random() % kCandidates.size()) << ')';
    }
    return list.str();
}

using Masks = std::vector<std::uint32_t>;

std::uint32_t Number(const std::string& hexadecimal) {
    return static_cast<std::uint32_t>(std::stoul(hexadecimal, nullptr, 16));
}

class DomainRightsTest : public OnDomainMember {
  protected:
    static void SetUpTestSuite() {
        std::filesystem::create_directory(Path("lists"));
        std::filesystem::permissions(Path("lists"), std::filesystem::perms(0777));
        // Whoever may delete children of the folder could delete files whatever their lists say.
        ASSERT_EQ(SetDescriptorText(Path("lists"), "O:BAD:P(A;;0x1200a9;;;WD)"), 0U);
        std::mt19937 random(20);
        for (std::size_t list = 0; list < kLists; ++list) {
            const std::string path = Path(NameOf(list));
            std::ofstream(path) << "text\n";
            std::filesystem::permissions(path, std::filesystem::perms(0666));
            lists.push_back(GeneratedList(random));
            ASSERT_EQ(SetDescriptorText(path, "O:BA" + lists.back()), 0U) << lists.back();
        }
        ASSERT_EQ(RunCommand({"smbpasswd", "-a", "-s", kLocalUser}, "Passw0rd!\nPassw0rd!\n").exitCode, 0);
        const CommandResult joined =
            RunCommand({"net", "sam", "addmem", "Operators", std::string("FILES\\") + kLocalUser});
        ASSERT_EQ(joined.exitCode, 0) << joined.output;
    }

    static std::string NameOf(std::size_t list) { return "lists/" + std::to_string(list); }

    // What "effective" says of each file; where it says nothing, its messages are a failure.
    static Masks Effective(const User& user, const std::vector<std::string>& options = {}) {
        std::vector<std::string> arguments = {"effective", "--json", "--account", user.account};
        arguments.insert(arguments.end(), options.begin(), options.end());
        for (std::size_t list = 0; list < kLists; ++list)
            arguments.push_back(Path(NameOf(list)));
        // On a busy machine the domain may not answer in time.
        CommandResult shown;
        EXPECT_TRUE(Await([&] {
            shown = RunCli(arguments);
            return shown.exitCode == 0;
        })) << user.name
            << ' ' << shown.output.substr(0, 1000);
        const Json objects = ResultsIn(shown.output);
        Masks masks;
        for (const Json& object : objects.is_array() ? objects : Json::array()) {
            const std::uint32_t synchronize = object.at("synchronize").get<bool>() ? 0x100000U : 0U;
            masks.push_back(Number(object.at("mask").get<std::string>()) | synchronize);
        }
        return masks;
    }

    static Masks Granted(const User& user) {
        std::string names;
        for (std::size_t list = 0; list < kLists; ++list)
            names += NameOf(list) + '\n';
        const CommandResult judged = RunCommand(
            {"python3", InProject("tests/support/granted_rights.py"), user.name + "%Passw0rd!", "data"},
            names);
        EXPECT_EQ(judged.exitCode, 0) << judged.output;
        Masks masks;
        std::istringstream lines(judged.output);
        for (std::string line; std::getline(lines, line);)
            masks.push_back(Number(line));
        return masks;
    }

    // The server lets everyone read the attributes of what he may list.
    static void ExpectSame(const User& user, const Masks& effective, const Masks& granted) {
        ASSERT_EQ(effective.size(), kLists);
        ASSERT_EQ(granted.size(), kLists);
        for (std::size_t list = 0; list < kLists; ++list) {
            EXPECT_EQ(effective[list] | kReadAttributes, granted[list] | kReadAttributes)
                << user.name << ' ' << lists[list];
        }
    }

    // Real reads and writes, in one session: those lists whose files the user could read, and could write.
    struct Uses {
        std::set<std::size_t> reads;
        std::set<std::size_t> writes;
    };
    static Uses Use(const User& user) {
        const TemporaryFolder folder;
        const std::string text = "written by " + user.name + '\n';
        std::ofstream(folder.Path("text")) << text;
        std::string commands = "lcd " + folder.Path();
        for (std::size_t list = 0; list < kLists; ++list) {
            commands += "; get " + NameOf(list) + ' ' + std::to_string(list);
            commands += "; put text " + NameOf(list);
        }
        RunCommand({"smbclient", "//127.0.0.1/data", "-U", user.name + "%Passw0rd!", "-c", commands});
        Uses uses;
        for (std::size_t list = 0; list < kLists; ++list) {
            if (!ReadWholeFile(folder.Path(std::to_string(list))).empty()) uses.reads.insert(list);
            if (ReadWholeFile(Path(NameOf(list))) == text) uses.writes.insert(list);
        }
        return uses;
    }

    // The client asks for more than reading or writing data.
    static void ExpectUses(const User& user, const Masks& effective, const Uses& uses) {
        constexpr std::uint32_t kClientReads = 0x120089;
        constexpr std::uint32_t kClientWrites = 0x12019f;
        ASSERT_EQ(effective.size(), kLists);
        EXPECT_FALSE(uses.reads.empty() || uses.writes.empty()) << user.name;
        for (std::size_t list = 0; list < kLists; ++list) {
            const std::uint32_t rights = effective[list] | kReadAttributes;
            EXPECT_EQ((rights & kClientReads) == kClientReads, uses.reads.contains(list)) << lists[list];
            EXPECT_EQ((rights & kClientWrites) == kClientWrites, uses.writes.contains(list)) << lists[list];
        }
    }

    // What the server's own client says of some of the lists, which it can only when it may read the list.
    static void ExpectMaximumAccess(const User& user, const Masks& effective) {
        constexpr std::size_t kEach = 20;
        ASSERT_EQ(effective.size(), kLists);
        for (std::size_t list = 0; list < kLists; list += kEach) {
            if ((effective[list] & READ_CONTROL) == 0) continue;
            const std::string told = RunCommand({"smbcacls", "//127.0.0.1/data", NameOf(list), "-U",
                                                 user.name + "%Passw0rd!", "--maximum-access"})
                                         .output;
            constexpr std::string_view kLabel = "Maximum access: ";
            const std::size_t place = told.find(kLabel);
            ASSERT_NE(place, told.npos) << told;
            EXPECT_EQ(effective[list] | kReadAttributes, Number(told.substr(place + kLabel.size())))
                << user.name << ' ' << lists[list];
        }
    }

    static inline std::vector<std::string> lists;
};

// The first of all tests: nobody has logged on yet, after which the server's own memory is another.
TEST_F(DomainRightsTest, EffectiveRightsAreWhatTheServerGrants) {
    std::vector<Masks> before;
    for (const User& user : Users())
        before.push_back(Effective(user));
    for (std::size_t number = 0; number < Users().size(); ++number) {
        const User& user = Users()[number];
        const Masks exact = Effective(user, {"--exact"});
        const Masks granted = Granted(user);
        ExpectSame(user, exact, granted);
        // Before her first logon dora is taken for one of Domain Users.
        if (user.account != DomainSid(kDora)) ExpectSame(user, before[number], granted);
        ExpectSame(user, Effective(user), granted);
        ExpectUses(user, exact, Use(user));
        ExpectMaximumAccess(user, exact);
    }
}

TEST_F(DomainRightsTest, OnlyTheExactAnswerKnowsWhatChangedAfterTheLastLogon) {
    const User& carla = Users()[2];
    const Masks asOfLogon = Granted(carla);
    Control({"on", "controller", "samba-tool", "group", "addmembers", "Platform", "carla"});
    const CommandResult usual = RunCli({"effective", Path(NameOf(0)), "--account", carla.account});
    EXPECT_THAT(usual.output, HasSubstr("last logon"));
    ExpectSame(carla, Effective(carla), asOfLogon);
    const Masks exact = Effective(carla, {"--exact"});
    EXPECT_NE(exact, asOfLogon);
    ExpectSame(carla, exact, Granted(carla));
}

TEST_F(DomainRightsTest, SaysWhatTheAnswerRestsOn) {
    const CommandResult local = RunCli({"effective", Path(NameOf(0)), "--account", "FILES\\games"});
    EXPECT_THAT(local.output, Not(HasSubstr("logon")));
    const CommandResult group =
        RunCli({"effective", Path(NameOf(0)), "--exact", "--account", DomainSid(kPayroll)});
    EXPECT_EQ(group.exitCode, 1) << "nobody logs on as a group: " << group.output;
}

}  // namespace
}  // namespace permora::test
