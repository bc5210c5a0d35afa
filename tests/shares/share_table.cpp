#include "tests/shares/share_table.h"

#include <sys/mount.h>

#include "platform/linux/files/drives.h"
#include "platform/resources.h"
#include "security/text_conversion.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/own_mounts.h"

extern "C" {

NET_API_STATUS __real_NetShareSetInfo(LPWSTR server, LPWSTR name, DWORD level, LPBYTE record,
                                      LPDWORD wrongField);

NET_API_STATUS __wrap_NetShareSetInfo(LPWSTR server, LPWSTR name, DWORD level, LPBYTE record,
                                      LPDWORD wrongField) {
    if (const auto answer = permora::test::setInfoAnswer) return *answer;
    return __real_NetShareSetInfo(server, name, level, record, wrongField);
}

}  // extern "C"

namespace permora::test {
namespace {

using WideText = std::basic_string<WCHAR>;

std::string ErrorText(NET_API_STATUS status) {
    return "error " + std::to_string(status);
}

NET_API_STATUS Read(const std::string& name, UniqueNetworkBuffer<SHARE_INFO_502>& record) {
    WideText wideName;
    LPBYTE block = nullptr;
    const NET_API_STATUS status = NetShareGetInfo(nullptr, AnsiToWide(name, wideName), 502, &block);
    record.reset(reinterpret_cast<SHARE_INFO_502*>(block));
    return status;
}

}  // namespace

// In a mount namespace of the test's own, where there is no server, and the machine's registry is empty.
void WithShareTable::SetUp() {
    if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    ASSERT_EQ(test::EnterOwnMounts(), "");
    for (const char* place : {"/etc/permora", "/etc/samba"}) {
        ASSERT_EQ(test::RunCommand({"mkdir", "-p", place}).exitCode, 0);
        ASSERT_EQ(mount("tmpfs", place, "tmpfs", 0, "mode=0755"), 0) << place;
    }
    ASSERT_TRUE(host::PinDrive('T', folder.Path()));
}

void WithShareTable::AddShare(const std::string& name, const char* sddl) {
    folder.MakeFolder(name);
    const UniqueLocal<void> descriptor = sddl != nullptr ? test::DescriptorOf(sddl) : nullptr;
    ASSERT_EQ(descriptor != nullptr, sddl != nullptr) << sddl;
    WideText wideName;
    WideText remark;
    WideText path;
    SHARE_INFO_502 record{};
    record.shi502_netname = AnsiToWide(name, wideName);
    record.shi502_remark = AnsiToWide("for " + name, remark);
    record.shi502_max_uses = 7;
    record.shi502_path = AnsiToWide("T:\\" + name, path);
    record.shi502_security_descriptor = descriptor.get();
    ASSERT_EQ(NetShareAdd(nullptr, 502, reinterpret_cast<LPBYTE>(&record), nullptr), NERR_Success) << name;
}

std::string WithShareTable::ListOf(const std::string& name) {
    UniqueNetworkBuffer<SHARE_INFO_502> record;
    if (const NET_API_STATUS status = Read(name, record); status != NERR_Success) return ErrorText(status);
    return test::SddlOfParts(record->shi502_security_descriptor, DACL_SECURITY_INFORMATION);
}

std::string WithShareTable::FactsOf(const std::string& name) {
    UniqueNetworkBuffer<SHARE_INFO_502> record;
    if (const NET_API_STATUS status = Read(name, record); status != NERR_Success) return ErrorText(status);
    return WideToAnsi(record->shi502_path) + ", " + WideToAnsi(record->shi502_remark) + ", " +
           std::to_string(record->shi502_max_uses);
}

void WithShareTable::RemoveShare(const std::string& name) {
    WideText wideName;
    EXPECT_EQ(NetShareDel(nullptr, AnsiToWide(name, wideName), 0), NERR_Success) << name;
}

}  // namespace permora::test
