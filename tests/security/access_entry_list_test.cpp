#include "security/access_entry_list.h"

#include <optional>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "platform/raw_security.h"
#include "tests/security/entries.h"

namespace permora {
namespace {

using test::AccountOf;
using test::Canonical;
using test::ListOf;
using test::TextOf;

TEST(AccessEntryList, ReadsEveryEntryInItsOrderAsItStands) {
    const std::string text =
        "(A;OICIID;FA;;;BA)(OA;;0x3;;;S-1-0-0)(D;OICINPIOID;0x91100201;;;BG)(FL;;0x100000;;;WD)"
        "(AU;SA;;;;AU)(A;SA;0x1;;;SY)";
    AccessEntryList list = ListOf(text);
    const auto read = nt::FromSddl("D:" + text).value_or(nt::SecurityDescriptor()).dacl.entries;
    ASSERT_EQ(list.Entries().size(), read.size());
    for (std::size_t i = 0; i < read.size(); ++i) {
        const AccessEntry& entry = list.Entries()[i];
        EXPECT_EQ(nt::Ace({entry.aceType, entry.aceFlags, entry.mask, entry.account.sid, {}, {}}),
                  nt::Ace({read[i].type,
                           read[i].flags,
                           read[i].mask,
                           read[i].object ? std::nullopt : read[i].sid,
                           {},
                           {}}))
            << i;
    }
    EXPECT_EQ(list.OtherTypeCount(), 3U);
    EXPECT_EQ(list.UnacceptableCount(), 1U) << "flags of audit entries";
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
        const AccessEntryList list(AcesOf(reinterpret_cast<PACL>(bytes.data())));
        ASSERT_EQ(list.Entries().size(), 1U) << c.what;
        EXPECT_EQ(list.Entries()[0].account.sid.has_value(), c.hasSid) << c.what;
        EXPECT_EQ(list.Entries()[0].mask, bytes[kAceSize] >= 8 ? 1U : 0U) << c.what;
    }
}

TEST(AccessEntryList, MergesOrPlacesAnAddedEntry) {
    const struct {
        const char* what;
        const char* before;
        const char* added;
        const char* after;
    } cases[] = {
        {"an allow entry stands before allow entries and after deny entries",
         "(D;;0x1;;;BA)(A;;0x2;;;BU)(A;ID;0x4;;;BG)", "(A;;0x8;;;WD)",
         "(D;;0x1;;;BA)(A;;0x100008;;;WD)(A;;0x2;;;BU)(A;ID;0x4;;;BG)"},
        {"an allow entry stands before inherited deny entries", "(D;;0x1;;;BA)(D;ID;0x2;;;BU)",
         "(A;;0x8;;;WD)", "(D;;0x1;;;BA)(A;;0x100008;;;WD)(D;ID;0x2;;;BU)"},
        {"an allow entry stands at the end of deny entries", "(D;;0x1;;;BA)", "(A;;0x8;;;WD)",
         "(D;;0x1;;;BA)(A;;0x100008;;;WD)"},
        {"a deny entry goes to the top, above earlier ones", "(D;;0x1;;;BA)(A;;0x2;;;BU)", "(D;;0x8;;;WD)",
         "(D;;0x8;;;WD)(D;;0x1;;;BA)(A;;0x2;;;BU)"},
        {"it joins the same account, type and flags where they stand",
         "(A;;0x1;;;BA)(A;OICI;0x2;;;BU)(A;OICI;0x4;;;BU)", "(A;OICI;0x8;;;BU)",
         "(A;;0x1;;;BA)(A;OICI;0x10000a;;;BU)(A;OICI;0x4;;;BU)"},
        {"it joins neither other flags nor another type nor an inherited entry",
         "(D;OICI;0x1;;;BU)(A;CI;0x2;;;BU)(A;OICIID;0x4;;;BU)", "(A;OICI;0x8;;;BU)",
         "(D;OICI;0x1;;;BU)(A;OICI;0x100008;;;BU)(A;CI;0x2;;;BU)(A;OICIID;0x4;;;BU)"},
        {"a denial that had SYNCHRONIZE keeps it", "(D;;0x100001;;;BA)", "(D;;0x2;;;BA)",
         "(D;;0x100003;;;BA)"},
        {"a denial gets it with the last of the rights", "(D;;0xe01ff;;;BA)", "(D;;0x10000;;;BA)",
         "(D;;FA;;;BA)"},
        {"generic rights that meant nothing do not begin to", "(A;OICI;GA;;;BA)(A;OICIIO;GA;;;BA)",
         "(A;OICI;0x1;;;BA)", "(A;OICI;0x100001;;;BA)(A;OICI;GA;;;BA)(A;OICIIO;GA;;;BA)"},
        {"where they are handed down they have a meaning", "(A;OICIIO;GA;;;BA)", "(A;OICIIO;0x1;;;BA)",
         "(A;OICIIO;0x10100001;;;BA)"},
        {"unusual bits stay", "(A;;0x1000200;;;BA)", "(A;;0x1;;;BA)", "(A;;0x1100201;;;BA)"},
    };
    for (const auto& c : cases) {
        AccessEntryList list = ListOf(c.before);
        const AccessEntry added = ListOf(c.added).Entries().front();
        list.AddEntry(added.account, added.mask, added.aceFlags, added.aceType);
        EXPECT_EQ(TextOf(list), Canonical(c.after)) << c.what;
    }
}

TEST(AccessEntryList, CopiesAndRemovesInheritedEntries) {
    const struct {
        const char* what;
        const char* before;
        const char* copied;
        const char* removed;  // after the copying
    } cases[] = {
        {"allow before deny", "(A;OICIID;0x1;;;BA)(D;ID;0x2;;;BU)",
         "(D;;0x2;;;BU)(A;OICI;0x1;;;BA)(A;OICIID;0x1;;;BA)(D;ID;0x2;;;BU)",
         "(D;;0x2;;;BU)(A;OICI;0x1;;;BA)"},
        {"the copy stands before explicit allow entries", "(A;;0x1;;;BA)(A;OICIID;0x2;;;BU)",
         "(A;OICI;0x2;;;BU)(A;;0x1;;;BA)(A;OICIID;0x2;;;BU)", "(A;OICI;0x2;;;BU)(A;;0x1;;;BA)"},
        {"the copy joins an explicit entry, two of one account join each other",
         "(A;OICI;0x1;;;BA)(A;OICIID;0x2;;;BA)(A;OICIID;0x4;;;BA)",
         "(A;OICI;0x7;;;BA)(A;OICIID;0x2;;;BA)(A;OICIID;0x4;;;BA)", "(A;OICI;0x7;;;BA)"},
        {"every bit is copied", "(D;CIID;0x10100201;;;BA)", "(D;CI;0x10100201;;;BA)(D;CIID;0x10100201;;;BA)",
         "(D;CI;0x10100201;;;BA)"},
        {"an entry of another type whose account is unknown is copied once", "(OA;ID;0x1;;;WD)",
         "(OA;;0x1;;;WD)(OA;ID;0x1;;;WD)", "(OA;;0x1;;;WD)"},
    };
    for (const auto& c : cases) {
        AccessEntryList list = ListOf(c.before);
        list.CopyInheritedEntries();
        EXPECT_EQ(TextOf(list), Canonical(c.copied)) << c.what;
        list.RemoveInheritedEntries();
        EXPECT_EQ(TextOf(list), Canonical(c.removed)) << c.what;
        EXPECT_FALSE(list.HasInheritedEntries()) << c.what;
    }
}

TEST(AccessEntryList, AnEditReplacesAnExplicitEntryAndAddsToAnInheritedOne) {
    const std::string two = "(D;;0x10000;;;WD)(A;OICI;0x3;;;BA)";
    const std::string inherited = "(A;CIID;0x120000;;;BA)(D;ID;0x100002;;;WD)";
    const std::string generic = "(A;OICIIOID;GA;;;BA)";
    const std::string allowed = "(A;OICI;0x10000201;;;BA)";
    const std::string denied = "(D;OICI;0x10100202;;;WD)";
    const std::string deniedAll = "(D;OICINP;FA;;;WD)";
    const std::string unusual = allowed + denied + deniedAll;
    const struct {
        const char* what;
        std::string before;
        std::size_t index;
        DWORD allowMask;
        DWORD denyMask;
        int applyIndex;
        const char* account;
        bool childrenOnly;
        std::string after;
    } cases[] = {
        // clang-format off
        {"an allow entry splits", two, 1, 1, 2, 1, "BA", false,
         "(D;OICI;0x2;;;BA)(D;;0x10000;;;WD)(A;OICI;0x100001;;;BA)"},
        {"a deny entry splits", two, 0, 4, 0x10000, 0, "WD", false,
         "(D;;0x10000;;;WD)(A;;0x100004;;;WD)(A;OICI;0x3;;;BA)"},
        {"all boxes cleared", two, 1, 0, 0, 1, "BA", false,
         "(D;;0x10000;;;WD)"},
        {"other account, scope and reach", two, 1, 3, 0, 6, "BU", true,
         "(D;;0x10000;;;WD)(A;OINPIO;0x100003;;;BU)"},
        {"an index that is no scope", two, 1, 3, 0, -1, "BA", false,
         "(D;;0x10000;;;WD)(A;;0x100003;;;BA)"},
        {"it joins an entry that was there", "(A;;0x1;;;BA)(A;OICI;0x2;;;BA)", 1, 4, 0, 0, "BA", false,
         "(A;;0x100005;;;BA)"},
        {"inherited and unchanged", inherited, 0, 0x20000, 0, 2, "BA", false,
         inherited},
        {"inherited allow with more of both", inherited, 0, 0x20001, 0x10000, 2, "BA", false,
         "(D;CI;0x10000;;;BA)(A;CI;0x100001;;;BA)" + inherited},
        {"inherited deny with more of both", inherited, 1, 8, 6, 0, "WD", false,
         "(D;;0x4;;;WD)(A;;0x100008;;;WD)" + inherited},
        {"generic rights have no box and come back as an explicit entry", generic, 0, 0, 0, 4, "BA", false,
         "(A;OICIIO;0x10100000;;;BA)" + generic},
        {"but do not apply to the object itself by that", generic, 0, 1, 0, 0, "BA", false,
         "(A;;0x100001;;;BA)" + generic},
        {"unless they mean nothing there", "(A;OICIID;GA;;;BA)", 0, 0, 0, 1, "BA", false,
         "(A;OICIID;GA;;;BA)"},
        {"opened and closed, it keeps what no box shows", unusual, 0, 1, 0, 1, "BA", false,
         unusual},
        {"the same of a denial", unusual, 1, 0, 2, 1, "WD", false,
         unusual},
        {"a denial keeps SYNCHRONIZE", unusual, 1, 0, 4, 1, "WD", false,
         "(D;OICI;0x100004;;;WD)" + allowed + deniedAll},
        {"also where nothing else is left of it", unusual, 1, 8, 0, 1, "WD", false,
         "(A;OICI;0x100008;;;WD)" + allowed + deniedAll},
        {"but not what it had for denying all", unusual, 2, 0, 4, 1, "WD", true,
         "(D;OICINP;0x4;;;WD)" + allowed + denied},
        {"denying all", unusual, 0, 0, FULL_CONTROL_RIGHTS, 1, "BA", false,
         "(D;OICI;FA;;;BA)" + denied + deniedAll},
        // clang-format on
    };
    for (const auto& c : cases) {
        AccessEntryList list = ListOf(c.before);
        list.EditEntry(c.index,
                       {AccountOf(c.account), c.allowMask, c.denyMask, c.applyIndex, c.childrenOnly});
        EXPECT_EQ(TextOf(list), Canonical(c.after)) << c.what;
    }
}

TEST(AccessEntryList, KnowsTheCanonicalOrder) {
    const struct {
        const char* entries;
        bool canonical;
    } cases[] = {
        {"", true},
        {"(D;;0x1;;;BA)(A;;0x1;;;BA)(A;ID;0x1;;;BA)(D;ID;0x1;;;BA)", true},
        {"(A;;0x1;;;BA)(OA;;0x1;;;BA)(A;ID;0x1;;;BA)", true},
        {"(A;;0x1;;;BA)(D;;0x1;;;BA)", false},
        {"(D;ID;0x1;;;BA)(D;;0x1;;;BA)", false},
        {"(OA;ID;0x1;;;BA)(A;;0x1;;;BA)", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ListOf(c.entries).IsInCanonicalOrder(), c.canonical) << c.entries;
}

}  // namespace
}  // namespace permora
