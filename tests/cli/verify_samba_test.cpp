// verify on a real server's shares: what it says about mode bits agrees with whom the server lets in.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/samba_fixture.h"

namespace permora::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

constexpr std::array kUsers = {"daemon", "bin", "games"};
constexpr uid_t kBin = 2;
constexpr gid_t kDaemons = 1;

// Objects of bin's in the group daemon, which has one member; games is a stranger.
struct ListRow {
    const char* list;
    std::map<std::string, std::string> rights;  // that it gives to each user
};
const std::vector<ListRow>& Lists() {
    static const std::vector<ListRow> kLists = {
        {"D:P(A;;FA;;;WD)", {{"daemon", "rw"}, {"bin", "rw"}, {"games", "rw"}}},
        {"D:P(A;;0x1201bf;;;S-1-22-1-1)(A;;0x1200a9;;;WD)", {{"daemon", "rw"}, {"bin", "r"}, {"games", "r"}}},
        {"D:P(D;;0x1201bf;;;S-1-22-1-2)(A;;0x1201bf;;;AU)", {{"daemon", "rw"}, {"bin", ""}, {"games", "rw"}}},
        {"D:P(A;;0x1201bf;;;S-1-22-2-1)(A;;0x1200a9;;;S-1-22-1-5)",
         {{"daemon", "rw"}, {"bin", ""}, {"games", "r"}}},
    };
    return kLists;
}

// Whoever may write may read: the client opens what it writes for both.
constexpr std::array<mode_t, 9> kModes = {0000, 0004, 0006, 0040, 0060, 0400, 0604, 0660, 0666};
constexpr std::array<mode_t, 6> kFolderModes = {0000, 0744, 0711, 0705, 0750, 0777};

class VerifySambaTest : public WithSambaServer {
  protected:
    void SetUp() override {
        WithSambaServer::SetUp();
        if (IsSkipped()) return;
        for (const char* user : kUsers)
            ASSERT_EQ(RunCommand({"smbpasswd", "-a", "-s", user}, "secret\nsecret\n").exitCode, 0);
        std::filesystem::create_directory(kTop);
        ASSERT_EQ(chmod(kTop, 0777), 0);
        ASSERT_EQ(SetDescriptorText(kTop, "D:P(A;;FA;;;WD)"), 0U);
    }

    static void Share(const std::string& name, const std::string& setting, const std::string& value,
                      const std::string& path = kTop) {
        ASSERT_EQ(RunCommand({"net", "conf", "addshare", name, path, "writeable=y", "guest_ok=n"}).exitCode,
                  0);
        if (!setting.empty())
            ASSERT_EQ(RunCommand({"net", "conf", "setparm", name, setting, value}).exitCode, 0);
    }

    static void Make(const std::string& name, mode_t mode, const std::string& list) {
        const std::string path = kTop + ('/' + name);
        if (name.front() == 'd') {
            std::filesystem::create_directory(path);
            std::ofstream(path + "/in_" + name) << "text\n";
            ASSERT_EQ(chmod((path + "/in_" + name).c_str(), 0777), 0);
            ASSERT_EQ(SetDescriptorText(path + "/in_" + name, "D:P(A;;FA;;;WD)"), 0U);
        } else {
            std::ofstream(path) << "text\n";
        }
        ASSERT_EQ(SetDescriptorText(path, list), 0U);
        ASSERT_EQ(chown(path.c_str(), kBin, kDaemons), 0);
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
    }

    static constexpr const char* kTop = "/run/samba/modes";
};

// What smbclient said to several commands.
std::string Ask(const std::string& share, const std::string& user, const std::string& commands) {
    return RunCommand(
               {"smbclient", "//127.0.0.1/" + share, "-U", user + "%secret", "-m", "SMB3", "-c", commands})
        .output;
}

// Whether what verify has found about an object in a share changes what the list gives to a user. A user who
// has no entry of their own is a part of everyone.
void Apply(const json& faults, const std::string& path, const std::string& share, const std::string& user,
           std::string& rights) {
    for (const json& fault : faults) {
        if (fault["path"] != path || !fault.contains("share") || fault["share"] != share) continue;
        const auto isUser = [&](const json& who) {
            return who["account"].get<std::string>().ends_with('\\' + user);
        };
        const auto isOpen = [](const json& who) { return who["isOpenGroup"].get<bool>(); };
        const json& accounts = fault["accounts"];
        auto found = std::find_if(accounts.begin(), accounts.end(), isUser);
        if (found == accounts.end() && user == "games")
            found = std::find_if(accounts.begin(), accounts.end(), isOpen);
        if (found == accounts.end()) continue;
        const bool isOut = fault["code"] == "mode-keeps-out";
        for (const auto& [letter, key] : {std::pair{'r', "reading"}, std::pair{'w', "writing"}}) {
            if (!(*found)[key].get<bool>()) continue;
            // "Everyone" are those whom the list does not name otherwise.
            std::erase(rights, letter);
            if (!isOut) rights += letter;
        }
    }
}

TEST_F(VerifySambaTest, SaysWhomTheServerLetsInOtherwiseThanTheList) {
    Share("listed", "acl_xattr:ignore system acls", "yes");
    Share("alone", "vfs objects", "catia");
    std::map<std::string, const ListRow*> objects;
    for (const ListRow& row : Lists()) {
        for (const mode_t mode : kModes)
            Make(objects.emplace("f" + std::to_string(objects.size()), &row).first->first, mode, row.list);
        for (const mode_t mode : kFolderModes)
            Make(objects.emplace("d" + std::to_string(objects.size()), &row).first->first, mode, row.list);
    }
    const json faults = ResultsIn(RunCli({"verify", kTop, "--json"}).output);
    std::string reads;
    std::string writes;
    const std::string local = kTop + std::string("/../written");
    std::ofstream(local) << "text\n";
    for (const auto& [name, row] : objects) {
        reads += name.front() == 'd' ? "ls " + name + "\\*;" : "get " + name + " /dev/null;";
        writes += name.front() == 'd' ? "" : "put " + local + ' ' + name + ';';
    }
    std::size_t differing = 0;
    for (const std::string share : {"listed", "alone"}) {
        for (const std::string user : kUsers) {
            const std::string got = Ask(share, user, reads);
            const std::string put = Ask(share, user, writes);
            for (const auto& [name, row] : objects) {
                const bool isFolder = name.front() == 'd';
                std::string served;
                if (got.find(isFolder ? "  in_" + name + ' ' : "getting file \\" + name + ' ') != got.npos)
                    served += 'r';
                if (put.find(" as \\" + name + ' ') != put.npos) served += 'w';
                std::string said = row->rights.at(user);
                if (served != said) ++differing;
                Apply(faults, kTop + ('/' + name), share, user, said);
                if (isFolder) std::erase(said, 'w');
                std::ranges::sort(said);
                EXPECT_EQ(said, served) << share << ' ' << user << ' ' << name << ' ' << row->list;
            }
        }
    }
    EXPECT_GT(differing, 100U) << "the mode bits matter";
}

TEST_F(VerifySambaTest, WhatIsNotFollowedIsSaidAndNothingIsRepaired) {
    Share("admins", "admin users", "daemon");
    Make("file", 0600, "D:P(A;;FA;;;WD)");
    const CommandResult found = RunCli({"verify", std::string(kTop) + "/file", "--repair", "--no-history"});
    EXPECT_EQ(found.exitCode, 1);
    EXPECT_THAT(found.output, HasSubstr("the share admins lets users in as others"));
    EXPECT_THAT(found.output, HasSubstr("mode bits are not repaired"));
    struct stat status {};
    ASSERT_EQ(stat("/run/samba/modes/file", &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(VerifySambaTest, ShowSaysWhichSharesObeyAListAndWhomTheModeBitsKeepOut) {
    // A volume with a drive letter, by which nobody may know it.
    const std::string volume = "/mnt";
    ASSERT_EQ(mount("none", volume.c_str(), "tmpfs", 0, nullptr), 0);
    for (const std::string name : {"open", "closed"}) {
        std::ofstream(volume + '/' + name) << "text\n";
        ASSERT_EQ(SetDescriptorText(volume + '/' + name, "D:P(A;;FA;;;WD)"), 0U);
        ASSERT_EQ(chmod((volume + '/' + name).c_str(), name == "open" ? 0666 : 0600), 0);
    }
    EXPECT_THAT(
        RunCli({"show", volume + "/open"}).output,
        HasSubstr("  Kept: for Samba; no share is known to hold the object\n  Mode bits: rw-rw-rw-\n"));
    Share("obeying", "", "", volume);
    Share("blind", "vfs objects", "catia", volume);
    Share("guarded", "admin users", "daemon", volume);
    const json shown = ResultsIn(RunCli({"show", volume + "/open", volume + "/closed", "--json"}).output);
    ASSERT_EQ(shown.size(), 2U);
    std::map<std::string, std::string> goesBy;
    for (const json& share : shown[0]["kept"]["shares"])
        goesBy[share["share"]] = share["goesBy"];
    const std::map<std::string, std::string> expected = {
        {"obeying", "list-and-mode"}, {"blind", "mode"}, {"guarded", "unknown"}};
    EXPECT_EQ(goesBy, expected);
    EXPECT_THAT(shown[0]["kept"]["text"].get<std::string>(),
                AllOf(HasSubstr("for Samba; the share obeying obeys it beside the mode bits; "),
                      HasSubstr("the share blind does not look at it; "),
                      HasSubstr("whether the share guarded obeys it is not known")));
    EXPECT_TRUE(shown[0]["kept"]["notes"].empty());
    EXPECT_THAT(shown[1]["kept"]["notes"][0].get<std::string>(),
                HasSubstr("the mode bits keep out whom the list lets in: "));
    EXPECT_THAT(RunCli({"verify", volume + "/closed"}).output, HasSubstr(", in the share obeying: "));
    EXPECT_EQ(umount2(volume.c_str(), MNT_DETACH), 0);
}

}  // namespace
}  // namespace permora::test
