// The services for shares, with the texts of tests.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/shares.h"
#include "platform/linux/base/wide_text.h"
#include "platform/resources.h"
#include "tests/support/access_lists.h"

namespace permora::test {

using ShareRecord = UniqueNetworkBuffer<SHARE_INFO_502>;

// A text for the record of each share.
template <DWORD kLevel, class Record, class Text>
std::vector<std::string> TextsOfShares(Text text, NET_API_STATUS expected = NERR_Success) {
    LPBYTE block = nullptr;
    DWORD read = 0;
    DWORD total = 0;
    EXPECT_EQ(NetShareEnum(nullptr, kLevel, &block, MAX_PREFERRED_LENGTH, &read, &total, nullptr), expected);
    const UniqueNetworkBuffer<Record> owned(reinterpret_cast<Record*>(block));
    std::vector<std::string> texts;
    for (DWORD i = 0; i < read; ++i)
        texts.push_back(text(owned.get()[i]));
    return texts;
}

inline ShareRecord GetShare(const std::string& name, NET_API_STATUS expected = NERR_Success) {
    LPBYTE block = nullptr;
    EXPECT_EQ(NetShareGetInfo(nullptr, host::ToWide(name).data(), 502, &block), expected) << name;
    return ShareRecord(reinterpret_cast<SHARE_INFO_502*>(block));
}

inline DWORD SetShare(SHARE_INFO_502& record, DWORD* wrongField = nullptr) {
    return NetShareSetInfo(nullptr, record.shi502_netname, 502, reinterpret_cast<LPBYTE>(&record),
                           wrongField);
}

inline DWORD SetShareRemark(SHARE_INFO_502& record, std::u16string remark) {
    record.shi502_remark = remark.data();
    return SetShare(record);
}

inline DWORD SetShareList(const std::string& name, const char* sddl) {
    const UniqueLocal<void> descriptor = DescriptorOf(sddl);
    const ShareRecord record = GetShare(name);
    record->shi502_security_descriptor = descriptor.get();
    return SetShare(*record);
}

// With the remark "made here", and without a list where there is no text.
inline DWORD AddShare(const std::string& name, const std::string& path, DWORD maxUses = SHI_USES_UNLIMITED,
                      const char* sddl = "") {
    std::u16string wideName = host::ToWide(name);
    std::u16string widePath = host::ToWide(path);
    std::u16string remark = u"made here";
    const UniqueLocal<void> descriptor = DescriptorOf(sddl);
    SHARE_INFO_502 record{};
    record.shi502_netname = wideName.data();
    record.shi502_remark = remark.data();
    record.shi502_max_uses = maxUses;
    record.shi502_path = widePath.data();
    record.shi502_security_descriptor = *sddl != '\0' ? descriptor.get() : nullptr;
    return NetShareAdd(nullptr, 502, reinterpret_cast<LPBYTE>(&record), nullptr);
}

inline DWORD DeleteShare(const std::string& name) {
    return NetShareDel(nullptr, host::ToWide(name).data(), 0);
}

// Owner and list of a share; "none" where it has no descriptor.
inline std::string ShareListText(const std::string& name) {
    const ShareRecord record = GetShare(name);
    return record ? SddlOfParts(record->shi502_security_descriptor,
                                OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION)
                  : "none";
}

}  // namespace permora::test
