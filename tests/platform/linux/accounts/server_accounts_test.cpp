// What a server's tool prints about accounts, as Samba 4.17 prints it, and with what the server is asked.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "platform/linux/accounts/server_logon.h"
#include "platform/linux/accounts/server_output.h"
#include "tests/support/temporary_folder.h"

namespace permora::host {
namespace {

using testing::ElementsAre;

const std::string kServer = "S-1-5-21-11-22-33";

nt::Sid SidFrom(const std::string& text) {
    return nt::Sid::FromText(text).value_or(nt::Sid());
}

std::string Identity(const std::string& name, const std::string& sid) {
    return "Domain Name: " + name + "\nDomain Sid: " + sid + "\n";
}

TEST(ServerOutput, TellsWhoTheServerIs) {
    const std::string answer = Identity("FILES", kServer) + "more\n";
    std::string_view text = answer;
    const auto identity = TakeIdentity(text);
    ASSERT_TRUE(identity);
    EXPECT_EQ(identity->name + ' ' + identity->sid.ToText(), "FILES " + kServer);
    EXPECT_EQ(text, "more\n");
    for (const std::string& wrong :
         {std::string(), Identity("FILES", "(NULL SID)"), Identity("FILES", kServer + "-500"),
          Identity("FILES", "S-1-5-32-544"), Identity("A\\B", kServer), Identity("A;B", kServer),
          Identity("", kServer), "x\n" + Identity("FILES", kServer),
          "Domain Sid: " + kServer + "\nDomain Name: FILES\n"}) {
        text = wrong;
        EXPECT_FALSE(TakeIdentity(text)) << wrong;
        EXPECT_EQ(text, wrong);
    }
    const std::string roles = Identity("WORKGROUP", "(NULL SID)") + Identity("EXAMPLE", kServer);
    text = roles;
    EXPECT_EQ(TakeRole(text, *identity), ServerRole::kOther);
    EXPECT_EQ(TakeRole(text, *identity), ServerRole::kDomainController);
    EXPECT_EQ(TakeRole(text, *identity), std::nullopt);
}

TEST(ServerOutput, HasANameForEachSidThatWasAskedOrNone) {
    const std::vector<nt::Sid> asked = {SidFrom(kServer + "-1000"), SidFrom(kServer + "-1002"),
                                        SidFrom(kServer + "-9")};
    const std::string one = kServer + "-1000 FILES\\anna (1)\n";
    const std::string other = kServer + "-1002 FILES\\Local Team (x) (4)\n";
    const std::string nobody = kServer + "-9 *unknown*\\*unknown* (8)\n";
    const auto names = ParseServerNames(nobody + other + one, asked);
    ASSERT_TRUE(names);
    EXPECT_THAT(*names, ElementsAre(AccountName{"anna", "FILES", SidTypeUser},
                                    AccountName{"Local Team (x)", "FILES", SidTypeAlias}, AccountName{}));
    EXPECT_EQ(ParseServerNames("result was NT_STATUS_NONE_MAPPED\n", asked),
              std::vector<AccountName>(asked.size()));
    for (const std::string& wrong :
         {std::string(), one + other, one + other + nobody + one, one + one + nobody,
          one + other + kServer + "-10 FILES\\bert (1)\n", one + other + kServer + "-9 FILES (1)\n",
          one + other + kServer + "-9 FILES\\bert (11)\n", one + other + kServer + "-9 FILES\\bert\n",
          one + other + kServer + "-9 FILES\\a\\b (1)\n", one + other + kServer + "-9 FILES\\ (1)\n",
          one + other + kServer + "-9 FILES\\\x1b[2J (1)\n", one + other + nobody + "x\n",
          std::string("result was NT_STATUS_ACCESS_DENIED\n")})
        EXPECT_FALSE(ParseServerNames(wrong, asked)) << wrong;
}

TEST(ServerOutput, HasTheSidOfTheNameThatWasAsked) {
    const std::string sid = kServer + "-1002";
    EXPECT_EQ(ParseServerSid("Local Team " + sid + " (Local Group: 4)\n", "Local Team"), SidFrom(sid));
    EXPECT_EQ(ParseServerSid("FILES\\anna " + sid + " (User: 1)\n", "FILES\\anna"), SidFrom(sid));
    EXPECT_EQ(ParseServerSid("nosuch S-0-0 (UNKNOWN: 8)\n", "nosuch"), nt::Sid());
    EXPECT_EQ(ParseServerSid("result was NT_STATUS_NONE_MAPPED\n", "nosuch"), nt::Sid());
    for (const std::string& wrong :
         {std::string(), "anna " + sid + " (User: 1)\n",
          "bert " + sid + " (User: 1)\nbert " + sid + " (User: 1)\n", std::string("bert S-1-x (User: 1)\n"),
          "bert " + sid + "\n", std::string("result was NT_STATUS_ACCESS_DENIED\n")})
        EXPECT_FALSE(ParseServerSid(wrong, "bert")) << wrong;
    EXPECT_TRUE(CanBeAskedFor("Local Team"));
    for (const char* name : {"a;b", "a\"b", "a\\b", "a'b", "a\nb", ""})
        EXPECT_FALSE(CanBeAskedFor(name)) << name;
}

TEST(ServerOutput, TellsTheGroupsOfAUserWhole) {
    EXPECT_EQ(ParseGroupIds("\tgroup rid:[0x3ea]\n\tgroup rid:[0x201] attr:[0x7]\n"),
              (std::vector<std::uint32_t>{0x3ea, 0x201}));
    EXPECT_EQ(ParseGroupIds(""), std::vector<std::uint32_t>());
    for (const char* wrong :
         {"\tgroup rid:[0x3ea]\nx\n", "\tgroup rid:[0x3eg]\n", "\tgroup rid:[3ea]\n",
          "\tgroup rid:[0x3ea] x\n", "\tgroup rid:[0x123456789]\n", "result was NT_STATUS_ACCESS_DENIED\n"})
        EXPECT_FALSE(ParseGroupIds(wrong)) << wrong;
    // What the user is called says nothing.
    EXPECT_EQ(ParsePrimaryGroup(
                  "\tFull Name   :\tx\n\tgroup_rid:\t0x200\nuser_rid :\t0x3e9\n\tgroup_rid:\t0x201\n"),
              0x201U);
    EXPECT_EQ(ParsePrimaryGroup("result was NT_STATUS_NO_SUCH_USER\n"), std::nullopt);

    const ServerIdentity server{"FILES", SidFrom(kServer)};
    const std::string between = Identity("FILES", kServer);
    EXPECT_THAT(SplitAnswers("one\n" + between + between + "three\n", server, 3).value(),
                ElementsAre("one\n", "", "three\n"));
    EXPECT_FALSE(SplitAnswers("one\n" + Identity("FILES", "S-1-5-21-4-5-6") + "two\n", server, 2));
    EXPECT_FALSE(SplitAnswers(between + between, server, 2));
}

class ServerLogonTest : public testing::Test {
  protected:
    void Write(const std::string& name, const std::string& text, mode_t mode = 0600) const {
        std::ofstream(folder.Path(name)) << text;
        chmod(folder.Path(name).c_str(), mode);
    }
    // What is handed to the tool.
    std::string Logon() const {
        const auto logon = FindLogon(mount, {folder.Path("fstab"), folder.Path("own")});
        return logon ? logon->input.text : "none";
    }

    test::TemporaryFolder folder;
    MountEntry mount{.id = "1",
                     .device = "0:1",
                     .root = "/",
                     .mountPoint = "/mnt/my data",
                     .fileSystem = "cifs",
                     .source = "//Files/data",
                     .options = "rw,vers=3.1.1,username=anna,addr=127.0.0.1"};
};

TEST_F(ServerLogonTest, ComesFromTheFileOfTheMountOrFromTheUsersOwn) {
    EXPECT_EQ(Logon(), "none");
    Write("credentials", " username=Anna\nPASSWORD=a b=c,%\\\ndom=FILES\n");
    Write("fstab",
          "//files/other /mnt/my\\040data cifs credentials=/nowhere 0 0\n//files/data/ /mnt/my\\040data cifs "
          "rw,cred=" +
              folder.Path("credentials") + " 0 0\n");
    EXPECT_EQ(Logon(), "username = Anna\npassword = a b=c,%\\\ndomain = FILES\n");
    // Who is not who has mounted it.
    mount.options = "rw,username=bert";
    EXPECT_EQ(Logon(), "none");
    folder.MakeFolder("own");
    Write("own/files", "password=secret\n");
    EXPECT_EQ(Logon(), "username = bert\npassword = secret\n");
    Write("own/files", "username=FILES\\carl\npassword=\n");
    EXPECT_EQ(Logon(), "username = carl\npassword = \ndomain = FILES\n");
    for (const char* wrong : {"username=bert\n", "password= secret\n", "password=secret\r\n", ""}) {
        Write("own/files", wrong);
        EXPECT_EQ(Logon(), "none") << wrong;
    }
    mount.options = "rw,sec=krb5,cruid=" + std::to_string(geteuid());
    EXPECT_EQ(Logon(), "");
    mount.options += '1';
    EXPECT_EQ(Logon(), "none");
}

TEST_F(ServerLogonTest, IsTakenFromNoFileThatOthersCanReadOrHavePutThere) {
    folder.MakeFolder("own");
    Write("elsewhere", "password=secret\n");
    Write("own/files", "password=secret\n", 0640);
    EXPECT_EQ(Logon(), "none");
    unlink(folder.Path("own/files").c_str());
    ASSERT_EQ(symlink(folder.Path("elsewhere").c_str(), folder.Path("own/files").c_str()), 0);
    EXPECT_EQ(Logon(), "none");
    unlink(folder.Path("own/files").c_str());
    ASSERT_EQ(mkfifo(folder.Path("own/files").c_str(), 0600), 0);
    EXPECT_EQ(Logon(), "none");
}

TEST(ServerName, IsOneThatAToolMayGet) {
    const auto server = [](const std::string& source) {
        MountEntry mount;
        mount.source = source;
        return ServerOf(mount);
    };
    EXPECT_EQ(server("//Files.Example/data"), "files.example");
    EXPECT_EQ(server("\\\\FILES\\data\\folder"), "files");
    EXPECT_EQ(server("//fd00::1/data"), "fd00::1");
    for (const char* source :
         {"//-U/data", "//../data", "//a b/data", "/files/data", "///data", "//a;b/data"})
        EXPECT_EQ(server(source), "") << source;
}

}  // namespace
}  // namespace permora::host
