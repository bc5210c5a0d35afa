// effective over the network: what it says of a real server's shares is what clients can do.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/samba_fixture.h"

namespace permora::test {
namespace {

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;

constexpr const char* kServedTop = "/run/samba/rights";
constexpr std::array kVisitors = {"daemon", "bin", "games", "root"};

// Whoever may write may read: the client opens what it writes for both.
struct Kept {
    const char* list;
    mode_t mode;
};
constexpr Kept kFolders[] = {{"D:P(A;;FA;;;WD)", 0777},
                             {"D:P(A;;0x1200a9;;;WD)", 0777},
                             {"D:P(A;;FA;;;WD)", 0755},
                             {"D:P(A;;FA;;;WD)", 01777},
                             {"D:P(A;;FA;;;WD)", 0700}};
// Of bin's and the group daemon, which has one member.
constexpr Kept kFiles[] = {{"D:P(A;;FA;;;WD)", 0666},
                           {"D:P(A;;FA;;;WD)", 0640},
                           {"D:P(A;;0x1301bf;;;S-1-22-1-1)(A;;0x1200a9;;;WD)", 0666},
                           {"D:P(A;;0x1301bf;;;S-1-22-1-1)(A;;0x1200a9;;;WD)", 0600},
                           {"D:P(D;;SD;;;S-1-22-1-2)(A;;0x1301bf;;;AU)", 0664},
                           {"D:P(A;;0x1200a9;;;S-1-22-2-1)", 0666}};

std::string FileName(std::size_t folder, std::size_t file) {
    return 'd' + std::to_string(folder) + "/f" + std::to_string(file);
}

std::string PathOf(const std::string& name) {
    return std::string(kServedTop) + '/' + name;
}

void Keep(const std::string& path, const Kept& kept, uid_t owner, gid_t group) {
    ASSERT_EQ(SetDescriptorText(path, kept.list), 0U);
    ASSERT_EQ(chown(path.c_str(), owner, group), 0);
    ASSERT_EQ(chmod(path.c_str(), kept.mode), 0);
}

// Makes what is not there.
std::vector<std::string> MakeTree() {
    std::vector<std::string> names;
    for (std::size_t folder = 0; folder < std::size(kFolders); ++folder) {
        const std::string path = PathOf('d' + std::to_string(folder));
        if (std::filesystem::create_directories(path)) Keep(path, kFolders[folder], 0, 0);
        for (std::size_t file = 0; file < std::size(kFiles); ++file) {
            names.push_back(FileName(folder, file));
            if (std::filesystem::exists(PathOf(names.back()))) continue;
            std::ofstream(PathOf(names.back())) << "text\n";
            Keep(PathOf(names.back()), kFiles[file], 2, 1);
        }
    }
    return names;
}

std::string AskAs(const std::string& share, const std::string& user, const std::string& commands) {
    return RunCommand(
               {"smbclient", "//127.0.0.1/" + share, "-U", user + "%secret", "-m", "SMB3", "-c", commands})
        .output;
}

class EffectiveSambaTest : public WithSambaServer {
  protected:
    void SetUp() override {
        WithSambaServer::SetUp();
        if (IsSkipped()) return;
        for (const char* user : kVisitors)
            ASSERT_EQ(RunCommand({"smbpasswd", "-a", "-s", user}, "secret\nsecret\n").exitCode, 0);
        std::filesystem::create_directory(kServedTop);
        // What the shares take back.
        std::ofstream("/etc/samba/smb.conf", std::ios::app) << "[global]\nguest only = yes\n";
        ASSERT_EQ(chmod(kServedTop, 0755), 0);
        ASSERT_EQ(SetDescriptorText(kServedTop, "D:P(A;;FA;;;WD)"), 0U);
    }

    static void Share(const std::string& name, const char* writeable, const std::string& setting,
                      const std::string& value) {
        const std::string allowed = std::string("writeable=") + writeable;
        ASSERT_EQ(RunCommand({"net", "conf", "addshare", name, kServedTop, allowed, "guest_ok=n"}).exitCode,
                  0);
        for (const auto& [each, its] :
             {std::pair{std::string("guest only"), std::string("no")}, {setting, value}})
            ASSERT_EQ(RunCommand({"net", "conf", "setparm", name, each, its}).exitCode, 0);
    }

    static json AnswersFor(const std::vector<std::string>& names) {
        std::vector<std::string> arguments = {"effective", "--json"};
        for (const char* user : kVisitors)
            arguments.insert(arguments.end(), {"--account", user});
        arguments.insert(arguments.end(), {"--account", "Guests"});
        for (const std::string& name : names)
            arguments.push_back(PathOf(name));
        return ResultsIn(RunCli(arguments).output);
    }
};

TEST_F(EffectiveSambaTest, SaysWhatClientsCanDo) {
    constexpr const char* kIgnore = "acl_xattr:ignore system acls";
    Share("r-listed", "y", kIgnore, "yes");
    Share("r-guests", "y", "guest only", "yes");
    Share("r-alone", "y", "vfs objects", "catia");
    Share("r-readonly", "n", kIgnore, "yes");
    Share("r-guarded", "y", kIgnore, "yes");
    Share("r-forced", "y", "force user", "daemon");
    Share("r-some", "y", "valid users", "daemon");
    Share("r-admins", "y", "admin users", "daemon");
    for (const auto& [account, right] : {std::pair{"daemon", "Create files / Write data"}, {"bin", "Delete"}})
        ASSERT_EQ(RunCli({"deny", "--share", "r-guarded", "--account", account, "--rights", right}).exitCode,
                  0);
    const std::vector<std::string> names = MakeTree();
    const json answers = AnswersFor(names);
    constexpr std::size_t kAccounts = kVisitors.size() + 1;
    ASSERT_EQ(answers.size(), names.size() * kAccounts);
    // Of d0/f1, which is its group's to read.
    const auto saysOf = [&](std::size_t account, const char* share) {
        for (const json& each : answers[kAccounts + account]["shares"])
            if (each["share"] == std::string("\\\\PERMORATEST\\") + share)
                return each["text"].get<std::string>();
        return std::string();
    };
    EXPECT_THAT(saysOf(0, "r-listed"),
                EndsWith(", because the mode bits do not let PERMORATEST\\daemon write"));
    EXPECT_THAT(saysOf(2, "r-listed"), EndsWith(" let PERMORATEST\\games read or write"));
    EXPECT_THAT(saysOf(2, "r-readonly"),
                HasSubstr(", because the share is read only for everybody, and because "));
    EXPECT_THAT(saysOf(0, "r-some"), HasSubstr("r-some: at most "));
    EXPECT_THAT(saysOf(0, "r-some"), EndsWith("; the share's setting \"valid users\" is not followed here"));
    EXPECT_THAT(saysOf(0, "r-admins"),
                HasSubstr("r-admins: not known: the share's setting \"admin users\" "));
    EXPECT_THAT(saysOf(0, "r-guests"), HasSubstr("r-guests: not known: the share's setting \"guest only\" "));
    EXPECT_THAT(saysOf(2, "r-forced"), EndsWith("; the server works as PERMORATEST\\daemon for everybody"));
    EXPECT_THAT(saysOf(4, "r-listed"),
                HasSubstr("; the mode bits decide for each user of the machine, and "));
    const std::string local = PathOf("../local");
    std::ofstream(local) << "text\n";
    std::string uses;
    std::string removals;
    for (const std::string& name : names) {
        uses += "get " + name + " /dev/null;put " + local + ' ' + name + ';';
        removals += "rm " + name + ';';
    }
    for (const char* share : {"r-listed", "r-alone", "r-readonly", "r-guarded", "r-forced"}) {
        for (std::size_t user = 0; user < kVisitors.size(); ++user) {
            const std::string used = AskAs(share, kVisitors.at(user), uses);
            AskAs(share, kVisitors.at(user), removals);
            for (std::size_t i = 0; i < names.size(); ++i) {
                std::string windows = names[i];
                windows[2] = '\\';
                std::string served;
                if (used.find("getting file \\" + windows + ' ') != used.npos) served += 'r';
                if (used.find(" as \\" + windows + ' ') != used.npos) served += 'w';
                if (!std::filesystem::exists(PathOf(names[i]))) served += 'd';
                const json& all = answers[i * kAccounts + user]["shares"];
                const auto said = std::find_if(all.begin(), all.end(), [&](const json& each) {
                    return each["share"].get<std::string>().ends_with(std::string("\\") + share);
                });
                ASSERT_NE(said, all.end());
                ASSERT_EQ((*said)["answer"], "rights") << *said;
                std::string letters;
                for (const auto& [letter, right] : {std::pair{'r', "List folder / Read data"},
                                                    {'w', "Create files / Write data"},
                                                    {'d', "Delete"}})
                    if (std::ranges::find((*said)["rights"], right) != (*said)["rights"].end())
                        letters += letter;
                EXPECT_EQ(letters, served) << kVisitors.at(user) << ' ' << names[i] << ' ' << *said;
            }
            MakeTree();
        }
    }
}

}  // namespace
}  // namespace permora::test
