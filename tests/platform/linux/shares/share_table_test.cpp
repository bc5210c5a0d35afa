// The services for shares over the machine's own table.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <fstream>
#include <string>
#include <vector>

#include "platform/share_name.h"
#include "tests/platform/linux/shares/share_calls.h"
#include "tests/support/command.h"
#include "tests/support/own_mounts.h"

namespace permora::test {
namespace {

using host::ToAnsi;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kTable = R"(Windows Registry Editor Version 5.00

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\LanmanServer\Shares]
"whole"=hex(7):4d,00,61,00,78,00,55,00,73,00,65,00,73,00,3d,00,37,00,00,00,50,00,61,00,74,00,68,00,3d,00,43,00,3a,00,5c,00,74,00,6d,00,70,00,00,00,52,00,65,00,6d,00,61,00,72,00,6b,00,3d,00,78,00,00,00,4f,00,64,00,64,00,3d,00,31,00,00,00,00,00
"no path"=hex(7):54,00,79,00,70,00,65,00,3d,00,30,00,00,00,00,00
"no number"=hex(7):50,00,61,00,74,00,68,00,3d,00,43,00,00,00,54,00,79,00,70,00,65,00,3d,00,78,00,00,00,00,00
"Ä"=hex(7):50,00,61,00,74,00,68,00,3d,00,43,00,3a,00,5c,00,00,00,00,00
"ä"=hex(7):50,00,61,00,74,00,68,00,3d,00,43,00,3a,00,5c,00,00,00,00,00
"text"="Path=C:\\tmp"
"ipc$"=hex(7):54,00,79,00,70,00,65,00,3d,00,33,00,00,00,00,00
)";
constexpr const char* kDamagedList = R"(
[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\LanmanServer\Shares\Security]
"whole"=hex:01,00,04,80
)";

// Each test is a process of its own, in a mount namespace where /etc holds nothing but the registry.
class ShareTableTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
        ASSERT_EQ(EnterOwnMounts(), "");
        ASSERT_EQ(mount("tmpfs", "/etc", "tmpfs", 0, "mode=0755"), 0);
    }

    static void WriteTable(const std::string& text) {
        ASSERT_EQ(mkdir("/etc/permora", 0755), 0);
        std::ofstream("/etc/permora/registry.reg") << text;
    }
    static std::string Table() { return ReadWholeFile("/etc/permora/registry.reg"); }
    static std::vector<std::string> Names() {
        return TextsOfShares<1, SHARE_INFO_1>(
            [](const SHARE_INFO_1& record) { return ToAnsi(record.shi1_netname); });
    }
};

TEST_F(ShareTableTest, AMachineWithoutATableHasOneShareThatStays) {
    EXPECT_THAT(Names(), ElementsAre("IPC$"));
    EXPECT_EQ(GetShare("ipc$")->shi502_type, STYPE_IPC | STYPE_SPECIAL);
    EXPECT_EQ(DeleteShare("IPC$"), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(DeleteShare("nothing"), NERR_NetNameNotFound);
    GetShare("nothing", NERR_NetNameNotFound);
}

TEST_F(ShareTableTest, DamagedSharesAreLeftOutAndDamagedDescriptorsNeverReplaced) {
    WriteTable(std::string(kTable) + kDamagedList);
    EXPECT_THAT(Names(), ElementsAre("ipc$", "whole", "Ä")) << "each once";
    GetShare("whole", ERROR_INVALID_SECURITY_DESCR);
    GetShare("text", NERR_NetNameNotFound);
    const UniqueLocal<void> descriptor = DescriptorOf("D:(A;;FA;;;WD)");
    std::u16string name = u"whole";
    SHARE_INFO_502 record{};
    record.shi502_netname = name.data();
    record.shi502_security_descriptor = descriptor.get();
    EXPECT_EQ(SetShare(record), ERROR_INVALID_SECURITY_DESCR);
    EXPECT_EQ(Table(), std::string(kTable) + kDamagedList);
    EXPECT_EQ(AddShare("Text", "C:\\tmp"), NERR_DuplicateShare);
    EXPECT_EQ(DeleteShare("TEXT"), NERR_Success);
    EXPECT_EQ(DeleteShare("whole"), NERR_Success);
    EXPECT_EQ(Table().find("\"whole\""), std::string::npos);
}

TEST_F(ShareTableTest, AChangeTouchesWhatDiffersAndNothingElse) {
    WriteTable(kTable);
    auto record = GetShare("WHOLE");
    EXPECT_EQ(ToAnsi(record->shi502_path), "C:\\tmp");
    EXPECT_EQ(record->shi502_max_uses, 7U);
    EXPECT_EQ(record->shi502_security_descriptor, nullptr);
    const std::string before = Table();
    EXPECT_EQ(SetShare(*record), NERR_Success);
    EXPECT_EQ(Table(), before);

    const UniqueLocal<void> descriptor = DescriptorOf("O:BAD:(D;;FA;;;BG)(A;;FR;;;WD)");
    record->shi502_security_descriptor = descriptor.get();
    EXPECT_EQ(SetShare(*record), NERR_Success);
    // The line of the share, with a text that we know nothing about, is the same.
    EXPECT_EQ(Table().substr(0, before.size()), before);
    EXPECT_EQ(ShareListText("whole"), "O:BAD:(D;;FA;;;BG)(A;;FR;;;WD)");

    std::u16string remark = u"new";
    record->shi502_remark = remark.data();
    record->shi502_max_uses = 9;
    EXPECT_EQ(SetShare(*record), NERR_Success);
    EXPECT_EQ(ToAnsi(GetShare("whole")->shi502_remark), "new");
    EXPECT_THAT(Table(), HasSubstr("00,4f,00,64,00,"));  // "Odd"

    std::u16string elsewhere = u"C:\\";
    DWORD wrongField = 0;
    record->shi502_path = elsewhere.data();
    EXPECT_EQ(SetShare(*record, &wrongField), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(wrongField, SHARE_PATH_PARMNUM);
    BYTE damaged[] = {1, 0, 4, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4, 0, 0, 0};
    record = GetShare("whole");
    record->shi502_security_descriptor = damaged;
    EXPECT_EQ(SetShare(*record), ERROR_INVALID_SECURITY_DESCR);
}

// Another program may have kept a limit that no new share may have.
TEST_F(ShareTableTest, AKeptLimitOfNoUsersForbidsNoOtherChange) {
    std::string table = kTable;
    const std::string seven = "4d,00,61,00,78,00,55,00,73,00,65,00,73,00,3d,00,37,00";  // "MaxUses=7"
    ASSERT_NE(table.find(seven), std::string::npos);
    table = table.replace(table.find(seven), seven.size(), seven.substr(0, seven.size() - 5) + "30,00");
    WriteTable(table);
    const UniqueLocal<void> descriptor = DescriptorOf("D:(A;;FR;;;WD)");
    auto record = GetShare("whole");
    EXPECT_EQ(record->shi502_max_uses, 0U);
    record->shi502_security_descriptor = descriptor.get();
    EXPECT_EQ(SetShare(*record), NERR_Success);
    record = GetShare("whole");
    EXPECT_EQ(ShareListText("whole"), "D:(A;;FR;;;WD)");
    EXPECT_EQ(record->shi502_max_uses, 0U);
    record->shi502_max_uses = 7;
    EXPECT_EQ(SetShare(*record), NERR_Success);
    record->shi502_max_uses = 0;
    EXPECT_EQ(SetShare(*record), NERR_InvalidMaxUsers);
}

TEST_F(ShareTableTest, NewSharesAreChecked) {
    const struct {
        std::string name;
        std::string path;
        DWORD maxUses;
        DWORD answer;
    } cases[] = {
        {"first", "C:\\tmp\\", 3, NERR_Success},
        {"FIRST", "C:\\tmp", 3, NERR_DuplicateShare},
        {"\u00C4rger", "c:/tmp", SHI_USES_UNLIMITED, NERR_Success},
        {"\u00E4RGER", "C:\\tmp", SHI_USES_UNLIMITED, NERR_DuplicateShare},
        {"second", "C:\\tmp\\nothing of this name", 1, NERR_UnknownDevDir},
        {"second", "C:\\etc\\permora\\registry.reg", 1, NERR_UnknownDevDir},
        {"second", "tmp", 1, NERR_UnknownDevDir},
        {"second", "C:\\tmp", 0, NERR_InvalidMaxUsers},
        {"a/b", "C:\\tmp", 1, ERROR_INVALID_NAME},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(AddShare(each.name, each.path, each.maxUses, "D:(A;;FA;;;BA)"), each.answer)
            << each.name << ' ' << each.path;
    }
    EXPECT_EQ(ToAnsi(GetShare("first")->shi502_path), "C:\\tmp");
    EXPECT_EQ(ShareListText("first"), "D:(A;;FA;;;BA)");
    EXPECT_THAT(Names(), ElementsAre("first", "\u00C4rger", "IPC$"));
    // A share of the same name inherits nothing from one that was removed.
    EXPECT_EQ(DeleteShare("first"), NERR_Success);
    EXPECT_EQ(AddShare("first", "C:\\"), NERR_Success);
    EXPECT_EQ(GetShare("first")->shi502_security_descriptor, nullptr);
}

TEST_F(ShareTableTest, OrdinaryUsersSeeSharesAndChangeNone) {
    ASSERT_EQ(AddShare("first", "C:\\tmp"), NERR_Success);
    const auto answer = AsOrdinaryUser([] {
        const auto record = GetShare("first");
        record->shi502_max_uses = 2;
        return ToAnsi(record->shi502_path) + ' ' + std::to_string(SetShare(*record)) + ' ' +
               std::to_string(DeleteShare("first")) + ' ' + std::to_string(AddShare("second", "C:\\tmp"));
    });
    EXPECT_EQ(answer, "C:\\tmp 5 5 5");
}

TEST(ShareNameTest, NamesAreThoseThatANetworkTakes) {
    const struct {
        std::u16string name;
        ShareNameFault fault;
    } cases[] = {
        {u"a", ShareNameFault::kNone},
        {u"C$", ShareNameFault::kNone},
        {u"-a (b) %c 'd' \u00C4\U0001F600", ShareNameFault::kNone},
        {std::u16string(80, u'a'), ShareNameFault::kNone},
        {std::u16string(81, u'a'), ShareNameFault::kTooLong},
        {u"", ShareNameFault::kEmpty},
        {u" a", ShareNameFault::kOuterBlank},
        {u"a ", ShareNameFault::kOuterBlank},
        {u"a\nb", ShareNameFault::kForbiddenCharacter},
        {u"a]", ShareNameFault::kForbiddenCharacter},
        {u"a\"", ShareNameFault::kForbiddenCharacter},
        {u"a\xD83D", ShareNameFault::kForbiddenCharacter},
        {u"\xDE00\xD83D", ShareNameFault::kForbiddenCharacter},
        {u"ipc$", ShareNameFault::kReserved},
        {u"Pipe", ShareNameFault::kReserved},
    };
    for (const auto& each : cases)
        EXPECT_EQ(FindShareNameFault(each.name), each.fault) << ToAnsi(each.name);
}

}  // namespace
}  // namespace permora::test
