// Access lists in a notation short enough for tables.
#pragma once

#include <cstdint>
#include <ostream>
#include <vector>

#include "platform/nt/acl.h"
#include "security/access_entry_list.h"

namespace permora::test {

// An entry for the account `letter`, whose SID ends in that letter; '-' for an entry without a SID.
struct ShortEntry {
    BYTE type;
    char letter;
    DWORD mask;
    BYTE flags;

    friend bool operator==(const ShortEntry& one, const ShortEntry& other) = default;
};

inline void PrintTo(const ShortEntry& entry, std::ostream* stream) {
    *stream << "{type " << int{entry.type} << ", " << entry.letter << std::hex << ", 0x" << entry.mask
            << ", 0x" << int{entry.flags} << '}' << std::dec;
}

inline constexpr BYTE kAllow = ACCESS_ALLOWED_ACE_TYPE;
inline constexpr BYTE kDeny = ACCESS_DENIED_ACE_TYPE;
inline constexpr BYTE kAllowObject = 5;  // its SID stands behind object flags

inline nt::Sid SidOf(char letter) {
    return {5, {21, 1, 2, 3, static_cast<std::uint32_t>(letter)}};
}

inline AccountRecord AccountOf(const nt::Sid& sid) {
    AccountRecord account;
    std::vector<std::uint8_t> bytes(sid.Bytes().begin(), sid.Bytes().end());
    static_cast<void>(account.SetSid(bytes.data(), {}));
    return account;
}

inline AccountRecord AccountOf(char letter) {
    return AccountOf(SidOf(letter));
}

inline std::vector<std::uint8_t> DaclBytes(const std::vector<ShortEntry>& entries) {
    nt::Acl acl;
    for (const ShortEntry& entry : entries) {
        nt::Ace ace{entry.type, entry.flags, entry.mask, SidOf(entry.letter), {}, {}};
        if (entry.type == kAllowObject) {
            // No GUIDs. Read as a SID, these flags would begin a valid one.
            ace.objectPart = {1, 0, 0, 0};
            ace.objectPart.resize(4 + 16);
        }
        acl.entries.push_back(std::move(ace));
    }
    std::vector<std::uint8_t> bytes;
    static_cast<void>(acl.AppendTo(bytes));
    return bytes;
}

inline PACL AclIn(std::vector<std::uint8_t>& bytes) {
    return static_cast<PACL>(static_cast<void*>(bytes.data()));
}

inline AccessEntryList ListOf(const std::vector<ShortEntry>& entries) {
    std::vector<std::uint8_t> bytes = DaclBytes(entries);
    AccessEntryList list;
    list.LoadFromDacl(AclIn(bytes));
    return list;
}

inline std::vector<ShortEntry> EntriesOf(const AccessEntryList& list) {
    std::vector<ShortEntry> entries;
    for (const AccessEntry& entry : list.Entries()) {
        char letter = '-';
        if (void* sid = entry.account.sid.get(); sid != nullptr)
            letter = static_cast<char>(*GetSidSubAuthority(sid, 4));
        entries.push_back({entry.aceType, letter, entry.mask, entry.aceFlags});
    }
    return entries;
}

}  // namespace permora::test
