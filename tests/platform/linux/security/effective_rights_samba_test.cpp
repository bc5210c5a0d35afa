// The rights that lists grant to accounts, with a real Samba server as the judge: it is asked, as each user,
// how far the user may go with a folder that has the list.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <array>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/api/effective_rights.h"
#include "platform/api/errors.h"
#include "platform/host_path.h"
#include "platform/linux/accounts/account_directory.h"
#include "platform/resources.h"
#include "tests/support/access_lists.h"
#include "tests/support/effort.h"
#include "tests/support/samba_fixture.h"

namespace permora::test {
namespace {

// Where the two are not defined alike (docs/platform.md, "Effective rights"): the server grants to read
// attributes in any case, and the tool wants to read the list before it asks.
constexpr DWORD kNotCompared = FILE_READ_ATTRIBUTES | READ_CONTROL;

constexpr std::array kUsers = {"anna", "bert", "cleo"};
constexpr int kLists = Tries(90);

// Lines at the end of a file of the host, for this process and the server alone.
bool Extend(const TemporaryFolder& folder, const std::string& file, const std::string& lines) {
    const std::string copy = folder.MakeFile("copy-of-" + file);
    std::ofstream(copy) << ReadWholeFile("/etc/" + file) << lines;
    return chmod(copy.c_str(), 0644) == 0 &&
           mount(copy.c_str(), ("/etc/" + file).c_str(), nullptr, MS_BIND, nullptr) == 0;
}

class EffectiveRightsAndSamba : public WithSambaServer {
  protected:
    // anna: staff (a host's group), writers (a local group of Samba). bert: writers. cleo: none. Samba's
    // group "Editors" has the local group among its members, and "Administrators" has anna.
    void SetUp() override {
        WithSambaServer::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        std::string passwords;
        for (std::size_t i = 0; i < kUsers.size(); ++i) {
            const std::string id = std::to_string(5001 + i);
            passwords += std::string(kUsers[i]) + ":x:" + id + ":5009::/:/bin/false\n";
        }
        ASSERT_TRUE(Extend(folder, "passwd", passwords));
        ASSERT_TRUE(Extend(folder, "group",
                           "everybody:x:5009:\npermorastaff:x:5010:anna\n"
                           "permorawriters:x:5011:anna,bert\npermoraeditors:x:5012:\n"
                           "permoraadmins:x:5013:\n"));
        for (const char* user : kUsers)
            Run({"smbpasswd", "-a", "-s", user}, "secret\nsecret\n");
        Run({"net", "groupmap", "add", "ntgroup=Writers", "unixgroup=permorawriters", "type=local"});
        Run({"net", "groupmap", "add", "ntgroup=Editors", "unixgroup=permoraeditors", "type=local"});
        Run({"net", "groupmap", "add", "sid=S-1-5-32-544", "unixgroup=permoraadmins", "type=builtin"});
        Run({"net", "groupmap", "addmem", Sid("Editors"), Sid("Writers")});
        Run({"net", "groupmap", "addmem", "S-1-5-32-544", Sid("anna")});
        // The kernel looks at the way to the share as well.
        const std::string way = server->Root().substr(0, server->Root().rfind('/'));
        ASSERT_EQ(chmod(way.c_str(), 0755), 0);
        // Nobody may delete from it, so that each object's own list decides.
        ASSERT_EQ(SetDescriptorText(server->Root(), "O:BAG:BUD:P(A;;0x1200a9;;;WD)"), ERROR_SUCCESS);
    }

    static void Run(const std::vector<std::string>& command, std::string_view input = {}) {
        const CommandResult result = RunCommand(command, input);
        ASSERT_EQ(result.exitCode, 0) << result.output;
    }

    static nt::Sid SidOf(const std::string& name) {
        nt::Sid sid;
        EXPECT_EQ(host::FindAccountSid(name, sid), ERROR_SUCCESS) << name;
        return sid;
    }
    static std::string Sid(const std::string& name) { return SidOf(name).ToText(); }

    static DWORD Ours(const std::string& object, const std::string& user) {
        ReadParts parts;
        EXPECT_EQ(Held(server->Path(object)).ReadSecurity(DACL_SECURITY_INFORMATION, parts), ERROR_SUCCESS);
        const nt::Sid sid = SidOf(user);
        TRUSTEE_A trustee{};
        BuildTrusteeWithSidA(&trustee, const_cast<std::uint8_t*>(sid.Bytes().data()));
        DWORD rights = 0;
        EXPECT_EQ(GetEffectiveRightsFromAclA(parts.dacl, &trustee, &rights), ERROR_SUCCESS);
        return rights;
    }

    static DWORD Sambas(const std::string& object, const std::string& user) {
        const std::string output = RunCommand({"smbcacls", "//127.0.0.1/share", object, "-U",
                                               user + "%secret", "-m", "SMB3", "--maximum-access"})
                                       .output;
        constexpr std::string_view kLabel = "Maximum access: ";
        const std::size_t place = output.find(kLabel);
        if (place == std::string::npos) ADD_FAILURE() << object << ": " << output;
        return place == std::string::npos
                   ? 0
                   : static_cast<DWORD>(std::stoul(output.substr(place + kLabel.size()), nullptr, 16));
    }

    // The lists stand in any order, allow before deny and after, and name the accounts by all SIDs that they
    // have.
    static std::string MadeUpList(std::mt19937& random) {
        static const std::vector<std::string> accounts = {
            Sid("anna"),     Sid("bert"),     Sid("cleo"),     Sid("Writers"),       Sid("Editors"),
            "S-1-22-1-5001", "S-1-22-2-5010", "S-1-22-2-5009", "S-1-22-2-5011",      "S-1-5-32-544",
            "S-1-5-11",      "S-1-5-32-545",  "S-1-1-0",       "S-1-5-21-7-8-9-1001"};
        constexpr std::array kFlags = {"", "", "OICI", "NPCI", "OICIIO", "CIIO"};
        const auto choose = [&random](std::size_t count) { return random() % count; };
        std::string sddl = "O:SYG:BUD:P(A;;RC;;;WD)";  // no user is its owner, who may do more
        for (std::size_t entry = 0, count = 1 + choose(7); entry < count; ++entry) {
            const auto mask = static_cast<DWORD>(random()) & FILE_ALL_ACCESS & ~SYNCHRONIZE;
            std::ostringstream text;
            text << (choose(3) == 0 ? "(D;" : "(A;") << kFlags.at(choose(kFlags.size())) << ";0x" << std::hex
                 << (mask | FILE_READ_DATA) << ";;;" << accounts[choose(accounts.size())] << ')';
            sddl += text.str();
        }
        return sddl;
    }

    TemporaryFolder folder;
};

TEST_F(EffectiveRightsAndSamba, AgreeOnMadeUpListsForUsersOfManyGroups) {
    std::mt19937 random(20070415);
    std::vector<std::string> lists;
    for (int i = 0; i < kLists; ++i) {
        lists.push_back(MadeUpList(random));
        const std::string path = server->Path("list" + std::to_string(i));
        ASSERT_EQ(mkdir(path.c_str(), 0777), 0);
        ASSERT_EQ(SetDescriptorText(path, lists.back()), ERROR_SUCCESS) << lists.back();
    }
    std::vector<std::array<DWORD, kUsers.size()>> judged(lists.size());
    const auto judge = [&](std::size_t first) {
        for (std::size_t i = first; i < lists.size(); i += 2)
            for (std::size_t user = 0; user < kUsers.size(); ++user)
                judged[i][user] = Sambas("list" + std::to_string(i), kUsers.at(user));
    };
    std::thread other([&] { judge(1); });
    judge(0);
    other.join();
    std::size_t grants = 0;
    for (std::size_t i = 0; i < lists.size(); ++i) {
        for (std::size_t user = 0; user < kUsers.size(); ++user) {
            const DWORD ours = Ours("list" + std::to_string(i), kUsers.at(user)) & ~kNotCompared;
            EXPECT_EQ(ours, judged[i][user] & ~kNotCompared) << kUsers.at(user) << ' ' << lists[i];
            if (ours != 0) ++grants;
        }
    }
    EXPECT_GT(grants, lists.size()) << "the lists say too little";
}

}  // namespace
}  // namespace permora::test
