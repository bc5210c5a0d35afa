// The services for shares over the machine's own table.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <fstream>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/shares.h"
#include "platform/linux/base/wide_text.h"
#include "platform/resources.h"
#include "platform/share_name.h"
#include "tests/support/access_lists.h"
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
        LPBYTE block = nullptr;
        DWORD read = 0;
        DWORD total = 0;
        EXPECT_EQ(NetShareEnum(nullptr, 1, &block, MAX_PREFERRED_LENGTH, &read, &total, nullptr),
                  NERR_Success);
        const UniqueNetworkBuffer<SHARE_INFO_1> owned(reinterpret_cast<SHARE_INFO_1*>(block));
        std::vector<std::string> names;
        for (DWORD i = 0; i < read; ++i)
            names.push_back(ToAnsi(owned.get()[i].shi1_netname));
        return names;
    }

    static UniqueNetworkBuffer<SHARE_INFO_502> Get(std::u16string name, DWORD expected = NERR_Success) {
        LPBYTE block = nullptr;
        EXPECT_EQ(NetShareGetInfo(nullptr, name.data(), 502, &block), expected);
        return UniqueNetworkBuffer<SHARE_INFO_502>(reinterpret_cast<SHARE_INFO_502*>(block));
    }

    static DWORD Add(std::u16string name, std::u16string path, DWORD maxUses = SHI_USES_UNLIMITED,
                     PSECURITY_DESCRIPTOR descriptor = nullptr) {
        std::u16string remark = u"for tests";
        SHARE_INFO_502 record{.shi502_netname = name.data(),
                              .shi502_type = STYPE_DISKTREE,
                              .shi502_remark = remark.data(),
                              .shi502_permissions = 0,
                              .shi502_max_uses = maxUses,
                              .shi502_current_uses = 0,
                              .shi502_path = path.data(),
                              .shi502_passwd = nullptr,
                              .shi502_reserved = 0,
                              .shi502_security_descriptor = descriptor};
        return NetShareAdd(nullptr, 502, reinterpret_cast<LPBYTE>(&record), nullptr);
    }

    static DWORD Set(SHARE_INFO_502& record, DWORD* wrongField = nullptr) {
        return NetShareSetInfo(nullptr, record.shi502_netname, 502, reinterpret_cast<LPBYTE>(&record),
                               wrongField);
    }

    static DWORD Delete(std::u16string name) { return NetShareDel(nullptr, name.data(), 0); }

    static std::string Sddl(PSECURITY_DESCRIPTOR descriptor) {
        return SddlOfParts(descriptor, DACL_SECURITY_INFORMATION);
    }
};

TEST_F(ShareTableTest, AMachineWithoutATableHasOneShareThatStays) {
    EXPECT_THAT(Names(), ElementsAre("IPC$"));
    EXPECT_EQ(Get(u"ipc$")->shi502_type, STYPE_IPC | STYPE_SPECIAL);
    EXPECT_EQ(Delete(u"IPC$"), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(Delete(u"nothing"), NERR_NetNameNotFound);
    Get(u"nothing", NERR_NetNameNotFound);
}

TEST_F(ShareTableTest, DamagedSharesAreLeftOutAndDamagedDescriptorsNeverReplaced) {
    WriteTable(kTable);
    EXPECT_THAT(Names(), ElementsAre("ipc$", "whole", "Ä")) << "each once";
    Get(u"whole", ERROR_INVALID_SECURITY_DESCR);
    Get(u"text", NERR_NetNameNotFound);
    const UniqueLocal<void> descriptor = DescriptorOf("D:(A;;FA;;;WD)");
    std::u16string name = u"whole";
    SHARE_INFO_502 record{};
    record.shi502_netname = name.data();
    record.shi502_security_descriptor = descriptor.get();
    EXPECT_EQ(Set(record), ERROR_INVALID_SECURITY_DESCR);
    EXPECT_EQ(Table(), kTable);
    EXPECT_EQ(Add(u"Text", u"C:\\tmp"), NERR_DuplicateShare);
    EXPECT_EQ(Delete(u"TEXT"), NERR_Success);
    EXPECT_EQ(Delete(u"whole"), NERR_Success);
    EXPECT_EQ(Table().find("\"whole\""), std::string::npos);
}

TEST_F(ShareTableTest, AChangeTouchesWhatDiffersAndNothingElse) {
    WriteTable(std::string(kTable).substr(0, std::string(kTable).find("\n[HKEY_LOCAL_MACHINE\\SYSTEM\\"
                                                                      "CurrentControlSet\\Services\\"
                                                                      "LanmanServer\\Shares\\Security")));
    auto record = Get(u"WHOLE");
    EXPECT_EQ(ToAnsi(record->shi502_path), "C:\\tmp");
    EXPECT_EQ(record->shi502_max_uses, 7U);
    EXPECT_EQ(record->shi502_security_descriptor, nullptr);
    const std::string before = Table();
    EXPECT_EQ(Set(*record), NERR_Success);
    EXPECT_EQ(Table(), before);

    const UniqueLocal<void> descriptor = DescriptorOf("O:BAD:(D;;FA;;;BG)(A;;FR;;;WD)");
    record->shi502_security_descriptor = descriptor.get();
    EXPECT_EQ(Set(*record), NERR_Success);
    // The line of the share, with a text that we know nothing about, is the same.
    EXPECT_EQ(Table().substr(0, before.size()), before);
    EXPECT_EQ(Sddl(Get(u"whole")->shi502_security_descriptor), "D:(D;;FA;;;BG)(A;;FR;;;WD)");

    std::u16string remark = u"new";
    record->shi502_remark = remark.data();
    record->shi502_max_uses = 9;
    EXPECT_EQ(Set(*record), NERR_Success);
    EXPECT_EQ(ToAnsi(Get(u"whole")->shi502_remark), "new");
    EXPECT_THAT(Table(), HasSubstr("00,4f,00,64,00,"));  // "Odd"

    std::u16string elsewhere = u"C:\\";
    DWORD wrongField = 0;
    record->shi502_path = elsewhere.data();
    EXPECT_EQ(Set(*record, &wrongField), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(wrongField, SHARE_PATH_PARMNUM);
    BYTE damaged[] = {1, 0, 4, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4, 0, 0, 0};
    record = Get(u"whole");
    record->shi502_security_descriptor = damaged;
    EXPECT_EQ(Set(*record), ERROR_INVALID_SECURITY_DESCR);
}

// Another program may have kept a limit that no new share may have.
TEST_F(ShareTableTest, AKeptLimitOfNoUsersForbidsNoOtherChange) {
    std::string table = kTable;
    const std::string seven = "4d,00,61,00,78,00,55,00,73,00,65,00,73,00,3d,00,37,00";  // "MaxUses=7"
    ASSERT_NE(table.find(seven), std::string::npos);
    table = table.replace(table.find(seven), seven.size(), seven.substr(0, seven.size() - 5) + "30,00");
    WriteTable(table.substr(0, table.find("\n[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\"
                                          "LanmanServer\\Shares\\Security")));
    const UniqueLocal<void> descriptor = DescriptorOf("D:(A;;FR;;;WD)");
    auto record = Get(u"whole");
    EXPECT_EQ(record->shi502_max_uses, 0U);
    record->shi502_security_descriptor = descriptor.get();
    EXPECT_EQ(Set(*record), NERR_Success);
    record = Get(u"whole");
    EXPECT_EQ(Sddl(record->shi502_security_descriptor), "D:(A;;FR;;;WD)");
    EXPECT_EQ(record->shi502_max_uses, 0U);
    record->shi502_max_uses = 7;
    EXPECT_EQ(Set(*record), NERR_Success);
    record->shi502_max_uses = 0;
    EXPECT_EQ(Set(*record), NERR_InvalidMaxUsers);
}

TEST_F(ShareTableTest, NewSharesAreChecked) {
    const UniqueLocal<void> descriptor = DescriptorOf("D:(A;;FA;;;BA)");
    const struct {
        std::u16string name;
        std::u16string path;
        DWORD maxUses;
        DWORD answer;
    } cases[] = {
        {u"first", u"C:\\tmp\\", 3, NERR_Success},
        {u"FIRST", u"C:\\tmp", 3, NERR_DuplicateShare},
        {u"\u00C4rger", u"c:/tmp", SHI_USES_UNLIMITED, NERR_Success},
        {u"\u00E4RGER", u"C:\\tmp", SHI_USES_UNLIMITED, NERR_DuplicateShare},
        {u"second", u"C:\\tmp\\nothing of this name", 1, NERR_UnknownDevDir},
        {u"second", u"C:\\etc\\permora\\registry.reg", 1, NERR_UnknownDevDir},
        {u"second", u"tmp", 1, NERR_UnknownDevDir},
        {u"second", u"C:\\tmp", 0, NERR_InvalidMaxUsers},
        {u"a/b", u"C:\\tmp", 1, ERROR_INVALID_NAME},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(Add(each.name, each.path, each.maxUses, descriptor.get()), each.answer)
            << ToAnsi(each.name) << ' ' << ToAnsi(each.path);
    }
    EXPECT_EQ(ToAnsi(Get(u"first")->shi502_path), "C:\\tmp");
    EXPECT_EQ(Sddl(Get(u"first")->shi502_security_descriptor), "D:(A;;FA;;;BA)");
    EXPECT_THAT(Names(), ElementsAre("first", "\u00C4rger", "IPC$"));
    // A share of the same name inherits nothing from one that was removed.
    EXPECT_EQ(Delete(u"first"), NERR_Success);
    EXPECT_EQ(Add(u"first", u"C:\\"), NERR_Success);
    EXPECT_EQ(Get(u"first")->shi502_security_descriptor, nullptr);
}

TEST_F(ShareTableTest, OrdinaryUsersSeeSharesAndChangeNone) {
    ASSERT_EQ(Add(u"first", u"C:\\tmp"), NERR_Success);
    const auto answer = AsOrdinaryUser([] {
        const auto record = Get(u"first");
        record->shi502_max_uses = 2;
        return ToAnsi(record->shi502_path) + ' ' + std::to_string(Set(*record)) + ' ' +
               std::to_string(Delete(u"first")) + ' ' + std::to_string(Add(u"second", u"C:\\tmp"));
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
