// Access lists in the notation of lists: "(D;;0x1;;;WD)(A;OICI;FA;;;BA)".
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "gtest/gtest.h"
#include "platform/nt/sddl.h"
#include "platform/nt/sddl_ace.h"
#include "security/access_entry_list.h"

namespace permora::test {

inline AccountRecord AccountOf(std::string_view sid) {
    AccountRecord account;
    account.sid = nt::SidFromSddl(sid);
    EXPECT_TRUE(account.sid) << sid;
    return account;
}

inline AccessEntryList ListOf(const std::string& text) {
    const auto descriptor = nt::FromSddl("D:" + text);
    EXPECT_TRUE(descriptor) << text;
    return descriptor ? AccessEntryList(descriptor->dacl.entries) : AccessEntryList();
}

// An entry without an account is written with S-1-0-0.
inline std::string TextOf(std::span<const AccessEntry> entries) {
    std::string text;
    for (const AccessEntry& entry : entries) {
        nt::Ace ace{entry.aceType, entry.aceFlags, entry.mask, entry.account.sid.value_or(nt::Sid()), {}, {}};
        text += '(';
        EXPECT_TRUE(nt::AppendAceAsSddl(ace, nt::SddlWords::kAbbreviations, text)) << int{entry.aceType};
        text += ')';
    }
    return text;
}

inline std::string TextOf(const AccessEntryList& list) {
    return TextOf(list.Entries());
}

// The same list as TextOf writes it.
inline std::string Canonical(const std::string& text) {
    return TextOf(ListOf(text));
}

}  // namespace permora::test
