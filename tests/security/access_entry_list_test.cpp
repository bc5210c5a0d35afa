#include "security/access_entry_list.h"

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "gtest/gtest.h"
#include "platform/api/errors.h"
#include "security/access_rights.h"
#include "tests/security/entries.h"

namespace permora {
namespace {

using test::AccountOf;
using test::AclIn;
using test::EntriesOf;
using test::kAllow;
using test::kAllowObject;
using test::kDeny;
using test::ListOf;
using test::ShortEntry;
using Entries = std::vector<ShortEntry>;

constexpr DWORD kSync = SYNCHRONIZE;

TEST(AccessEntryList, ReadsEveryEntryInItsOrderAsItStands) {
    constexpr BYTE kAudit = SYSTEM_AUDIT_ACE_TYPE;
    constexpr BYTE kCallback = 9;
    const Entries entries = {{kAllow, 'A', 0x1F01FF, 0x13},  {kAllowObject, 'B', 0x3, 0},
                             {kDeny, 'C', 0x91100201, 0x1F}, {kCallback, 'D', 0x100000, 0},
                             {kAudit, 'E', 0, 0x40},         {kAllow, 'F', 1, 0x40}};
    AccessEntryList list = ListOf(entries);
    Entries read = entries;
    read[1].letter = '-';  // an object entry's SID is not where the others have it
    EXPECT_EQ(EntriesOf(list), read);
    EXPECT_EQ(list.OtherTypeCount(), 3U);
    EXPECT_EQ(list.UnacceptableCount(), 1U) << "flags of audit entries";
    list.LoadFromDacl(nullptr);
    EXPECT_TRUE(list.Entries().empty());
}

TEST(AccessEntryList, ReadsNoSidBeyondItsEntry) {
    // Revision 2, 28 bytes, 1 entry: allow, 20 bytes, mask 1, then a SID.
    const std::vector<std::uint8_t> whole = {2, 0, 28, 0, 1, 0, 0, 0, 0, 0, 20, 0, 1, 0,
                                             0, 0, 1,  1, 0, 0, 0, 0, 0, 5, 18, 0, 0, 0};
    constexpr std::size_t kAceSize = 10;
    constexpr std::size_t kSidRevision = 16;
    constexpr std::size_t kSubAuthorityCount = 17;
    const struct {
        const char* what;
        std::size_t offset;
        std::uint8_t value;
        bool hasSid;
    } cases[] = {
        {"as it should be", kAceSize, 20, true},
        {"more sub-authorities than fit", kSubAuthorityCount, 2, false},
        {"more sub-authorities than any SID has", kSubAuthorityCount, 255, false},
        {"a SID of another revision", kSidRevision, 2, false},
        {"an entry of its header alone", kAceSize, 4, false},
        {"an entry without a SID", kAceSize, 8, false},
        {"half a SID's header", kAceSize, 12, false},
    };
    for (const auto& c : cases) {
        std::vector<std::uint8_t> bytes = whole;
        bytes[c.offset] = c.value;
        AccessEntryList list;
        list.LoadFromDacl(AclIn(bytes));
        ASSERT_EQ(list.Entries().size(), 1U) << c.what;
        EXPECT_EQ(list.Entries()[0].account.sid != nullptr, c.hasSid) << c.what;
        EXPECT_EQ(list.Entries()[0].mask, bytes[kAceSize] >= 8 ? 1U : 0U) << c.what;
    }
}

TEST(AccessEntryList, MergesOrPlacesAnAddedEntry) {
    const struct {
        const char* what;
        Entries before;
        ShortEntry added;
        Entries after;
    } cases[] = {
        {"an allow entry stands before allow entries and after deny entries",
         {{kDeny, 'A', 1, 0}, {kAllow, 'B', 2, 0}, {kAllow, 'C', 4, 0x10}},
         {kAllow, 'D', 8, 0},
         {{kDeny, 'A', 1, 0}, {kAllow, 'D', kSync | 8, 0}, {kAllow, 'B', 2, 0}, {kAllow, 'C', 4, 0x10}}},
        {"an allow entry stands before inherited deny entries",
         {{kDeny, 'A', 1, 0}, {kDeny, 'B', 2, 0x10}},
         {kAllow, 'D', 8, 0},
         {{kDeny, 'A', 1, 0}, {kAllow, 'D', kSync | 8, 0}, {kDeny, 'B', 2, 0x10}}},
        {"an allow entry stands at the end of deny entries",
         {{kDeny, 'A', 1, 0}},
         {kAllow, 'D', 8, 0},
         {{kDeny, 'A', 1, 0}, {kAllow, 'D', kSync | 8, 0}}},
        {"a deny entry goes to the top, above earlier ones",
         {{kDeny, 'A', 1, 0}, {kAllow, 'B', 2, 0}},
         {kDeny, 'D', 8, 0},
         {{kDeny, 'D', 8, 0}, {kDeny, 'A', 1, 0}, {kAllow, 'B', 2, 0}}},
        {"it joins the same account, type and flags where they stand",
         {{kAllow, 'A', 1, 0}, {kAllow, 'B', 2, 3}, {kAllow, 'B', 4, 3}},
         {kAllow, 'B', 8, 3},
         {{kAllow, 'A', 1, 0}, {kAllow, 'B', kSync | 10, 3}, {kAllow, 'B', 4, 3}}},
        {"it joins neither other flags nor another type nor an inherited entry",
         {{kDeny, 'B', 1, 3}, {kAllow, 'B', 2, 2}, {kAllow, 'B', 4, 0x13}},
         {kAllow, 'B', 8, 3},
         {{kDeny, 'B', 1, 3}, {kAllow, 'B', kSync | 8, 3}, {kAllow, 'B', 2, 2}, {kAllow, 'B', 4, 0x13}}},
        {"a denial that had SYNCHRONIZE keeps it",
         {{kDeny, 'A', kSync | 1, 0}},
         {kDeny, 'A', 2, 0},
         {{kDeny, 'A', kSync | 3, 0}}},
        {"a denial gets it with the last of the rights",
         {{kDeny, 'A', 0xE01FF, 0}},
         {kDeny, 'A', 0x10000, 0},
         {{kDeny, 'A', kSync | FULL_CONTROL_RIGHTS, 0}}},
        {"generic rights that meant nothing do not begin to",
         {{kAllow, 'A', GENERIC_ALL, 3}, {kAllow, 'A', GENERIC_ALL, 0x0B}},
         {kAllow, 'A', 1, 3},
         {{kAllow, 'A', kSync | 1, 3}, {kAllow, 'A', GENERIC_ALL, 3}, {kAllow, 'A', GENERIC_ALL, 0x0B}}},
        {"where they are handed down they have a meaning",
         {{kAllow, 'A', GENERIC_ALL, 0x0B}},
         {kAllow, 'A', 1, 0x0B},
         {{kAllow, 'A', kSync | GENERIC_ALL | 1, 0x0B}}},
        {"unusual bits stay",
         {{kAllow, 'A', 0x01000200, 0}},
         {kAllow, 'A', 1, 0},
         {{kAllow, 'A', kSync | 0x01000201, 0}}},
    };
    for (const auto& c : cases) {
        AccessEntryList list = ListOf(c.before);
        list.AddEntry(AccountOf(c.added.letter), c.added.mask, c.added.flags, c.added.type);
        EXPECT_EQ(EntriesOf(list), c.after) << c.what;
    }
}

TEST(AccessEntryList, CopiesAndRemovesInheritedEntries) {
    const struct {
        const char* what;
        Entries before;
        Entries copied;
        Entries removed;  // after the copying
    } cases[] = {
        {"allow before deny",
         {{kAllow, 'A', 1, 0x13}, {kDeny, 'B', 2, 0x10}},
         {{kDeny, 'B', 2, 0}, {kAllow, 'A', 1, 3}, {kAllow, 'A', 1, 0x13}, {kDeny, 'B', 2, 0x10}},
         {{kDeny, 'B', 2, 0}, {kAllow, 'A', 1, 3}}},
        {"the copy stands before explicit allow entries",
         {{kAllow, 'A', 1, 0}, {kAllow, 'B', 2, 0x13}},
         {{kAllow, 'B', 2, 3}, {kAllow, 'A', 1, 0}, {kAllow, 'B', 2, 0x13}},
         {{kAllow, 'B', 2, 3}, {kAllow, 'A', 1, 0}}},
        {"the copy joins an explicit entry, two of one account join each other",
         {{kAllow, 'A', 1, 3}, {kAllow, 'A', 2, 0x13}, {kAllow, 'A', 4, 0x13}},
         {{kAllow, 'A', 7, 3}, {kAllow, 'A', 2, 0x13}, {kAllow, 'A', 4, 0x13}},
         {{kAllow, 'A', 7, 3}}},
        {"every bit is copied",
         {{kDeny, 'A', kSync | 0x10000201, 0x12}},
         {{kDeny, 'A', kSync | 0x10000201, 2}, {kDeny, 'A', kSync | 0x10000201, 0x12}},
         {{kDeny, 'A', kSync | 0x10000201, 2}}},
        {"an entry of another type whose account is unknown is copied once",
         {{kAllowObject, '-', 1, 0x10}},
         {{kAllowObject, '-', 1, 0}, {kAllowObject, '-', 1, 0x10}},
         {{kAllowObject, '-', 1, 0}}},
    };
    for (const auto& c : cases) {
        AccessEntryList list = ListOf(c.before);
        list.CopyInheritedEntries();
        EXPECT_EQ(EntriesOf(list), c.copied) << c.what;
        list.RemoveInheritedEntries();
        EXPECT_EQ(EntriesOf(list), c.removed) << c.what;
        EXPECT_FALSE(list.HasInheritedEntries()) << c.what;
    }
}

TEST(AccessEntryList, AnEditReplacesAnExplicitEntryAndAddsToAnInheritedOne) {
    const Entries two = {{kDeny, 'D', 0x10000, 0}, {kAllow, 'A', 3, 3}};
    const Entries inherited = {{kAllow, 'A', kSync | 0x20000, 0x12}, {kDeny, 'D', kSync | 2, 0x10}};
    const Entries generic = {{kAllow, 'A', GENERIC_ALL, 0x1B}};
    const Entries unusual = {{kAllow, 'A', 0x10000201, 3},
                             {kDeny, 'D', kSync | 0x10000202, 3},
                             {kDeny, 'D', kSync | FULL_CONTROL_RIGHTS, 7}};
    const struct {
        const char* what;
        Entries before;
        std::size_t index;
        DWORD allowMask;
        DWORD denyMask;
        int applyIndex;
        char account;
        bool childrenOnly;
        Entries after;
    } cases[] = {
        // clang-format off
        {"an allow entry splits", two, 1, 1, 2, 1, 'A', false,
         {{kDeny, 'A', 2, 3}, {kDeny, 'D', 0x10000, 0}, {kAllow, 'A', kSync | 1, 3}}},
        {"a deny entry splits", two, 0, 4, 0x10000, 0, 'D', false,
         {{kDeny, 'D', 0x10000, 0}, {kAllow, 'D', kSync | 4, 0}, {kAllow, 'A', 3, 3}}},
        {"all boxes cleared", two, 1, 0, 0, 1, 'A', false,
         {{kDeny, 'D', 0x10000, 0}}},
        {"other account, scope and reach", two, 1, 3, 0, 6, 'B', true,
         {{kDeny, 'D', 0x10000, 0}, {kAllow, 'B', kSync | 3, 0x0D}}},
        {"an index that is no scope", two, 1, 3, 0, -1, 'A', false,
         {{kDeny, 'D', 0x10000, 0}, {kAllow, 'A', kSync | 3, 0}}},
        {"it joins an entry that was there", {{kAllow, 'A', 1, 0}, {kAllow, 'A', 2, 3}}, 1, 4, 0, 0, 'A', false,
         {{kAllow, 'A', kSync | 5, 0}}},
        {"inherited and unchanged", inherited, 0, 0x20000, 0, 2, 'A', false,
         inherited},
        {"inherited allow with more of both", inherited, 0, 0x20001, 0x10000, 2, 'A', false,
         {{kDeny, 'A', 0x10000, 2}, {kAllow, 'A', kSync | 1, 2}, inherited[0], inherited[1]}},
        {"inherited deny with more of both", inherited, 1, 8, 6, 0, 'D', false,
         {{kDeny, 'D', 4, 0}, {kAllow, 'D', kSync | 8, 0}, inherited[0], inherited[1]}},
        {"generic rights have no box and come back as an explicit entry", generic, 0, 0, 0, 4, 'A', false,
         {{kAllow, 'A', kSync | GENERIC_ALL, 0x0B}, generic[0]}},
        {"but do not apply to the object itself by that", generic, 0, 1, 0, 0, 'A', false,
         {{kAllow, 'A', kSync | 1, 0}, generic[0]}},
        {"unless they mean nothing there", {{kAllow, 'A', GENERIC_ALL, 0x13}}, 0, 0, 0, 1, 'A', false,
         {{kAllow, 'A', GENERIC_ALL, 0x13}}},
        {"opened and closed, it keeps what no box shows", unusual, 0, 1, 0, 1, 'A', false,
         unusual},
        {"the same of a denial", unusual, 1, 0, 2, 1, 'D', false,
         unusual},
        {"a denial keeps SYNCHRONIZE", unusual, 1, 0, 4, 1, 'D', false,
         {{kDeny, 'D', kSync | 4, 3}, unusual[0], unusual[2]}},
        {"also where nothing else is left of it", unusual, 1, 8, 0, 1, 'D', false,
         {{kAllow, 'D', kSync | 8, 3}, unusual[0], unusual[2]}},
        {"but not what it had for denying all", unusual, 2, 0, 4, 1, 'D', true,
         {{kDeny, 'D', 4, 7}, unusual[0], unusual[1]}},
        {"denying all", unusual, 0, 0, FULL_CONTROL_RIGHTS, 1, 'A', false,
         {{kDeny, 'A', kSync | FULL_CONTROL_RIGHTS, 3}, unusual[1], unusual[2]}},
        // clang-format on
    };
    for (const auto& c : cases) {
        AccessEntryList list = ListOf(c.before);
        list.EditEntry(c.index,
                       {AccountOf(c.account), c.allowMask, c.denyMask, c.applyIndex, c.childrenOnly});
        EXPECT_EQ(EntriesOf(list), c.after) << c.what;
    }
}

TEST(AccessEntryList, KnowsTheCanonicalOrder) {
    const struct {
        Entries entries;
        bool canonical;
    } cases[] = {
        {{}, true},
        {{{kDeny, 'A', 1, 0}, {kAllow, 'A', 1, 0}, {kAllow, 'A', 1, 0x10}, {kDeny, 'A', 1, 0x10}}, true},
        {{{kAllow, 'A', 1, 0}, {kAllowObject, 'A', 1, 0}, {kAllow, 'A', 1, 0x10}}, true},
        {{{kAllow, 'A', 1, 0}, {kDeny, 'A', 1, 0}}, false},
        {{{kDeny, 'A', 1, 0x10}, {kDeny, 'A', 1, 0}}, false},
        {{{kAllowObject, 'A', 1, 0x10}, {kAllow, 'A', 1, 0}}, false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ListOf(c.entries).IsInCanonicalOrder(), c.canonical) << ::testing::PrintToString(c.entries);
}

}  // namespace
}  // namespace permora
