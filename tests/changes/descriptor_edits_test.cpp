// What edits of trees make of single descriptors.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "changes/account_edits.h"
#include "changes/copy_edit.h"
#include "platform/nt/entry_effects.h"
#include "platform/nt/sddl.h"

namespace permora::test {
namespace {

constexpr auto kTop = EditPlace::kTop;
constexpr auto kBelow = EditPlace::kBelow;
constexpr auto kFile = nt::ObjectKind::kFile;
constexpr auto kFolder = nt::ObjectKind::kFolder;
constexpr const char* kUnknown = nullptr;
constexpr std::uint32_t kOwnerGroupAndList = 7;

struct Row {
    const char* present;
    const char* aboveBefore;
    const char* aboveAfter;  // the same text: its list stays
    EditPlace place;
    nt::ObjectKind kind;
    const char* expected;  // with what is reported after a blank
};

nt::SecurityDescriptor Descriptor(const char* sddl) {
    const auto descriptor = nt::FromSddl(sddl);
    EXPECT_TRUE(descriptor) << sddl;
    return descriptor.value_or(nt::SecurityDescriptor());
}

std::string Result(DescriptorEdit& edit, const Row& row) {
    const nt::SecurityDescriptor present = Descriptor(row.present);
    std::optional<nt::Acl> before;
    nt::Acl after;
    if (row.aboveBefore != kUnknown) {
        before = Descriptor(row.aboveBefore).dacl;
        after = Descriptor(row.aboveAfter).dacl;
    }
    const nt::Acl& unchanged = before ? *before : after;
    const ListsAbove lists = {unchanged, after == unchanged ? unchanged : after};
    const EditedSecurity edited = edit.Edit({present, row.kind, row.place, before ? &lists : nullptr});
    return nt::ToSddl(edited.wanted, kOwnerGroupAndList).value_or("no text") +
           (edited.inheritedStay ? " inherited" : "") + (edited.otherTypesStay ? " others" : "") +
           (edited.fault == EditFault::kUnknownFolder ? " unknown" : "") +
           (edited.fault == EditFault::kHiddenAccount ? " hidden" : "");
}

// BG goes, BU takes its place.
TEST(DescriptorEditsTest, AccountsAreReplacedAndWhatIsInheritedFollows) {
    const Row rows[] = {
        {"O:BGG:BGD:P(D;;FX;;;BG)(A;OICI;FR;;;BG)(A;;FA;;;BA)", kUnknown, kUnknown, kTop, kFolder,
         "O:BUG:BUD:P(D;;FX;;;BU)(A;OICI;FR;;;BU)(A;;FA;;;BA)"},
        // Joined, but not what was there twice before.
        {"D:P(A;;FR;;;BG)(A;;FA;;;BA)(A;;FA;;;BA)(A;;FR;;;BU)", kUnknown, kUnknown, kTop, kFile,
         "D:P(A;;FR;;;BU)(A;;FA;;;BA)(A;;FA;;;BA)"},
        {"D:P(A;;FR;;;BU)(A;;FR;;;BG)(D;;FR;;;BG)", kUnknown, kUnknown, kTop, kFile,
         "D:P(A;;FR;;;BU)(D;;FR;;;BU)"},
        {"D:P(XA;;FR;;;WD;(Member_of {SID(BG)}))(XD;;FX;;;BG;(@USER.a == 1))", kUnknown, kUnknown, kTop,
         kFile, "D:P(XA;;FR;;;WD;(Member_of {SID(BU)}))(XD;;FX;;;BU;(@USER.a == 1))"},
        {"D:P(A;ID;FR;;;BG)", kUnknown, kUnknown, kBelow, kFile, "D:P(A;ID;FR;;;BU)"},
        {"O:BGD:NO_ACCESS_CONTROL", kUnknown, kUnknown, kTop, kFile, "O:BUD:NO_ACCESS_CONTROL"},
        // What was right follows its folder; so does what was not, where it is about BG.
        {"D:AI(A;;FX;;;BG)(A;ID;FR;;;BG)", "D:(A;OI;FR;;;BG)", "D:(A;OI;FR;;;BU)", kBelow, kFile,
         "D:AI(A;;FX;;;BU)(A;ID;FR;;;BU)"},
        {"D:AI(A;ID;FR;;;BG)(A;ID;FR;;;BU)", "D:(A;OI;FR;;;BG)(A;OI;FR;;;BU)", "D:(A;OI;FR;;;BU)", kBelow,
         kFile, "D:AI(A;ID;FR;;;BU)"},
        {"D:AI(A;ID;FR;;;BG)", "D:(A;OI;FX;;;BA)", "D:(A;OI;FX;;;BA)", kBelow, kFile, "D:AI(A;ID;FX;;;BA)"},
        {"D:AI(A;ID;FR;;;BA)", "D:(A;OI;FR;;;BG)", "D:(A;OI;FR;;;BU)", kBelow, kFile, "D:AI(A;ID;FR;;;BA)"},
        {"O:BGG:BAD:AI(A;ID;FA;;;BG)", "D:(A;OIIO;FA;;;CO)", "D:(A;OIIO;FA;;;CO)", kBelow, kFile,
         "O:BUG:BAD:AI(A;ID;FA;;;BU)"},
        // An order that is not the usual one stays.
        {"D:AI(A;ID;FR;;;BA)(A;;FR;;;BA)(D;;FX;;;BG)", "D:(A;OI;FR;;;BA)", "D:(A;OI;FR;;;BA)", kBelow, kFile,
         "D:AI(A;ID;FR;;;BA)(A;;FR;;;BA)(D;;FX;;;BU)"},
        // From outside.
        {"D:AI(A;;FR;;;BG)(A;ID;FX;;;BG)", "D:(A;OI;FX;;;BG)", "D:(A;OI;FX;;;BG)", kTop, kFile,
         "D:AI(A;;FR;;;BU)(A;ID;FX;;;BG) inherited"},
        {"D:AI(A;;FR;;;BG)(A;ID;FX;;;BG)", "D:(A;OI;FX;;;BA)", "D:(A;OI;FX;;;BA)", kTop, kFile,
         "D:AI(A;;FR;;;BU)(A;ID;FX;;;BG) inherited"},
        {"D:AI(A;ID;FR;;;BG)", kUnknown, kUnknown, kBelow, kFile, "D:AI(A;ID;FR;;;BG) inherited"},
    };
    nt::AccountExchange exchange;
    ASSERT_TRUE(exchange.Add(nt::Sid(5, {32, 546}), nt::Sid(5, {32, 545})));
    ReplaceEdit edit(exchange, ReplaceEdit::Manner::kReplace);
    for (const Row& row : rows)
        EXPECT_EQ(Result(edit, row), row.expected) << row.present;

    ReplaceEdit inLists(exchange, ReplaceEdit::Manner::kReplaceInLists);
    EXPECT_EQ(Result(inLists, {"O:BGG:BGD:P(A;;FR;;;BG)", kUnknown, kUnknown, kTop, kFile, ""}),
              "O:BGG:BGD:P(A;;FR;;;BU)");

    const Row copies[] = {
        {"O:BGG:BGD:P(D;;FX;;;BG)(A;;FR;;;BG)(A;;FA;;;BA)(A;;FR;;;BU)", kUnknown, kUnknown, kTop, kFile,
         "O:BGG:BGD:P(D;;FX;;;BG)(D;;FX;;;BU)(A;;FR;;;BG)(A;;FA;;;BA)(A;;FR;;;BU)"},
        {"D:AI(A;ID;FR;;;BG)", "D:(A;OI;FR;;;BG)", "D:(A;OI;FR;;;BG)(A;OI;FR;;;BU)", kBelow, kFile,
         "D:AI(A;ID;FR;;;BG)(A;ID;FR;;;BU)"},
        {"D:AI(A;ID;FR;;;BG)(A;ID;FR;;;BU)", "D:(A;OI;FR;;;BG)(A;OI;FR;;;BU)",
         "D:(A;OI;FR;;;BG)(A;OI;FR;;;BU)", kBelow, kFile, "D:AI(A;ID;FR;;;BG)(A;ID;FR;;;BU)"},
    };
    ReplaceEdit copy(exchange, ReplaceEdit::Manner::kCopy);
    for (const Row& row : copies)
        EXPECT_EQ(Result(copy, row), row.expected) << row.present;
}

TEST(DescriptorEditsTest, AccountsThatStandWhereTheyCannotBeReplacedAreReported) {
    nt::SecurityDescriptor present = Descriptor("O:BGG:BGD:P(A;;FR;;;BG)");
    nt::Ace entry;
    entry.type = 4;
    const nt::Sid old(5, {32, 546});
    entry.tail.assign(old.Bytes().begin(), old.Bytes().end());
    present.dacl.entries.push_back(entry);
    nt::AccountExchange exchange;
    ASSERT_TRUE(exchange.Add(old, nt::Sid(5, {32, 545})));
    const EditedSecurity edited =
        ReplaceEdit(exchange, ReplaceEdit::Manner::kReplace).Edit({present, kFile, kTop, nullptr});
    EXPECT_EQ(edited.fault, EditFault::kHiddenAccount);
    EXPECT_EQ(edited.wanted, present);
}

TEST(DescriptorEditsTest, EntriesOfRevokedAccountsGo) {
    const auto isRevoked = [](const nt::Sid& sid) { return sid == nt::Sid(5, {32, 546}); };
    struct RevokeRow {
        RevokeEdit::Types types;
        Row row;
    };
    constexpr auto kPlain = RevokeEdit::Types::kAllowAndDeny;
    const RevokeRow rows[] = {
        {kPlain,
         {"O:BGG:BGD:P(D;;FX;;;BG)(A;;FA;;;BA)(A;;FR;;;BG)", kUnknown, kUnknown, kTop, kFile,
          "O:BGG:BGD:P(A;;FA;;;BA)"}},
        {kPlain,
         {"D:P(A;;FR;;;BG)(XA;;FR;;;BG;(@USER.a == 1))", kUnknown, kUnknown, kTop, kFile,
          "D:P(XA;;FR;;;BG;(@USER.a == 1)) others"}},
        {RevokeEdit::Types::kAll,
         {"D:P(A;;FR;;;BG)(XA;;FR;;;BG;(@USER.a == 1))(XA;;FR;;;WD;(@USER.a == 1))", kUnknown, kUnknown, kTop,
          kFile, "D:P(XA;;FR;;;WD;(@USER.a == 1))"}},
        {kPlain,
         {"D:AI(A;;FX;;;BG)(A;ID;FR;;;BG)(A;ID;FR;;;BA)", "D:(A;OI;FR;;;BG)(A;OI;FR;;;BA)",
          "D:(A;OI;FR;;;BA)", kBelow, kFile, "D:AI(A;ID;FR;;;BA)"}},
        {kPlain,
         {"D:AI(A;ID;FR;;;BG)", "D:(A;OI;FR;;;BG)", "D:(A;OI;FR;;;BG)", kTop, kFile,
          "D:AI(A;ID;FR;;;BG) inherited"}},
    };
    for (const RevokeRow& each : rows) {
        RevokeEdit edit(isRevoked, each.types);
        EXPECT_EQ(Result(edit, each.row), each.row.expected) << each.row.present;
    }
}

TEST(DescriptorEditsTest, ObjectsGetWhatTheSourceHas) {
    struct CopyRow {
        const char* source;
        CopyEdit::Reach reach;
        CopyEdit::Owner owner;
        Row row;
    };
    constexpr auto kAlone = CopyEdit::Reach::kTop;
    constexpr auto kTree = CopyEdit::Reach::kTree;
    constexpr auto kKeep = CopyEdit::Owner::kKeep;
    const char* const inheriting = "O:BAD:AI(A;OICI;FR;;;BG)(A;OICIIO;FA;;;CO)(A;OICIID;FX;;;WD)";
    const char* const closed = "O:BAD:PAI(A;OICI;FR;;;BG)";
    const char* const closedForFolders = "O:BAD:PAI(A;CI;FR;;;BG)";
    const CopyRow rows[] = {
        {inheriting,
         kAlone,
         kKeep,
         {"O:BUG:BUD:PAI(A;;FA;;;BU)", "D:(A;OICI;FW;;;BA)", "D:(A;OICI;FW;;;BA)", kTop, kFolder,
          "O:BUG:BUD:AI(A;OICI;FR;;;BG)(A;OICIIO;FA;;;CO)(A;OICIID;FW;;;BA)"}},
        {inheriting,
         kAlone,
         CopyEdit::Owner::kCopy,
         {"O:BUG:BUD:AI(A;ID;FW;;;BA)", "D:(A;OICI;FW;;;BA)", "D:(A;OICI;FW;;;BA)", kTop, kFile,
          "O:BAG:BUD:AI(A;;FR;;;BG)(A;ID;FW;;;BA)"}},
        {inheriting,
         kAlone,
         kKeep,
         {"D:PAI(A;;FA;;;BU)", kUnknown, kUnknown, kTop, kFile, "D:PAI(A;;FA;;;BU) unknown"}},
        {closed,
         kAlone,
         kKeep,
         {"D:AI(A;;FW;;;BU)(A;ID;FW;;;BA)", kUnknown, kUnknown, kTop, kFolder, "D:PAI(A;OICI;FR;;;BG)"}},
        {"D:NO_ACCESS_CONTROL",
         kAlone,
         kKeep,
         {"D:AI(A;;FW;;;BU)", kUnknown, kUnknown, kTop, kFile, "D:AINO_ACCESS_CONTROL"}},
        // Below: own entries stay without --tree, and what is inherited follows.
        {closed,
         kAlone,
         kKeep,
         {"D:AI(A;;FW;;;BU)(A;ID;FW;;;BA)", "D:(A;OICI;FW;;;BA)", "D:P(A;OICI;FR;;;BG)", kBelow, kFile,
          "D:AI(A;;FW;;;BU)(A;ID;FR;;;BG)"}},
        {closed,
         kAlone,
         kKeep,
         {"D:PAI(A;;FW;;;BU)", "D:(A;OICI;FW;;;BA)", "D:P(A;OICI;FR;;;BG)", kBelow, kFile,
          "D:PAI(A;;FW;;;BU)"}},
        // With it they go; what the folder hands down is inherited, the rest given.
        {closed,
         kTree,
         kKeep,
         {"D:PAI(A;;FW;;;BU)", "D:(A;OICI;FW;;;BA)", "D:P(A;OICI;FR;;;BG)", kBelow, kFile,
          "D:AI(A;ID;FR;;;BG)"}},
        {inheriting,
         kTree,
         kKeep,
         {"O:BUG:BUD:PAI(A;;FA;;;BU)", "D:", "D:(A;OICI;FR;;;BG)(A;OICIIO;FA;;;CO)(A;OICIID;FW;;;BA)", kBelow,
          kFolder, "O:BUG:BUD:AI(A;OICIID;FR;;;BG)(A;ID;FA;;;BU)(A;OICIIOID;FA;;;CO)(A;OICIID;FW;;;BA)"}},
        {closedForFolders,
         kTree,
         kKeep,
         {"D:AI(A;;FW;;;BU)", "D:", "D:P(A;CI;FR;;;BG)", kBelow, kFile, "D:PAI(A;;FR;;;BG)"}},
    };
    for (const CopyRow& each : rows) {
        CopyEdit edit(Descriptor(each.source), each.reach, each.owner);
        EXPECT_EQ(Result(edit, each.row), each.row.expected) << each.source << ' ' << each.row.present;
    }
}

TEST(DescriptorEditsTest, WhoIsLockedOut) {
    struct LockRow {
        const char* sddl;
        bool letsNobodyIn;
    };
    const LockRow rows[] = {
        {"D:NO_ACCESS_CONTROL", false},
        {"O:BA", false},
        {"D:P", true},
        {"D:P(A;OICIIO;FA;;;BA)", true},
        {"D:P(D;;FA;;;BG)", true},
        {"D:P(D;;FA;;;WD)(A;;FR;;;BA)", true},
        {"D:P(D;;FW;;;WD)(A;;FR;;;BA)", false},
        {"D:P(A;;FR;;;BA)(D;;FA;;;WD)", false},
        {"D:P(XA;;FR;;;BA;(@USER.a == 1))", false},
    };
    for (const LockRow& row : rows)
        EXPECT_EQ(LetsNobodyIn(Descriptor(row.sddl)), row.letsNobodyIn) << row.sddl;
}

}  // namespace
}  // namespace permora::test
