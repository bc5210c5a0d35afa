#include "platform/nt/inheritance.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/nt/sddl.h"

namespace permora::nt {
namespace {

const Sid kOwner(5, {21, 1, 2, 3, 1001});
const Sid kGroup(5, {21, 1, 2, 3, 513});
constexpr auto kDaclPart = static_cast<std::uint32_t>(SddlParts::kDacl);

Acl List(const std::string& text) {
    const auto descriptor = FromSddl("D:" + text);
    EXPECT_TRUE(descriptor) << text;
    return descriptor ? descriptor->dacl : Acl();
}

std::string Text(const Acl& acl) {
    SecurityDescriptor descriptor;
    descriptor.daclState = DaclState::kList;
    descriptor.dacl = acl;
    return ToSddl(descriptor, kDaclPart).value_or("D:no text").substr(2);
}

TEST(Inheritance, WhatOneEntryOfTheParentBecomes) {
    struct Row {
        const char* parent;
        const char* file;
        const char* folder;
    };
    const Row rows[] = {
        // Without inheritance flags an entry is the parent's own affair, whether inherited itself or not.
        {"(A;;FA;;;BA)", "", ""},
        {"(A;ID;FA;;;BA)", "", ""},
        {"(A;NP;FA;;;BA)", "", ""},
        // Each kind of child takes what is meant for it; a folder keeps the files' entries for the files
        // below.
        {"(A;OICI;FA;;;BA)", "(A;ID;FA;;;BA)", "(A;OICIID;FA;;;BA)"},
        {"(A;CI;FA;;;BA)", "", "(A;CIID;FA;;;BA)"},
        {"(A;OI;FA;;;BA)", "(A;ID;FA;;;BA)", "(A;OIIOID;FA;;;BA)"},
        // "Inherit only" keeps it from the parent alone.
        {"(A;OICIIO;FA;;;BA)", "(A;ID;FA;;;BA)", "(A;OICIID;FA;;;BA)"},
        {"(A;CIIO;FA;;;BA)", "", "(A;CIID;FA;;;BA)"},
        {"(A;OIIO;FA;;;BA)", "(A;ID;FA;;;BA)", "(A;OIIOID;FA;;;BA)"},
        // "No propagate" ends at the first level.
        {"(A;OICINP;FA;;;BA)", "(A;ID;FA;;;BA)", "(A;ID;FA;;;BA)"},
        {"(A;CINPIO;FA;;;BA)", "", "(A;ID;FA;;;BA)"},
        {"(A;OINP;FA;;;BA)", "(A;ID;FA;;;BA)", ""},
        // Inherited entries are handed on like the others.
        {"(D;OICIID;FW;;;WD)", "(D;ID;FW;;;WD)", "(D;OICIID;FW;;;WD)"},
        // Generic rights are mapped where the entry takes effect, and split from what is handed on.
        {"(A;OICI;GA;;;BA)", "(A;ID;FA;;;BA)", "(A;ID;FA;;;BA)(A;OICIIOID;GA;;;BA)"},
        {"(A;OICIIO;GXGR;;;BU)", "(A;ID;0x1200a9;;;BU)", "(A;ID;0x1200a9;;;BU)(A;OICIIOID;GXGR;;;BU)"},
        {"(A;CI;SDGW;;;BU)", "", "(A;ID;0x130116;;;BU)(A;CIIOID;SDGW;;;BU)"},
        {"(A;OI;GR;;;BU)", "(A;ID;FR;;;BU)", "(A;OIIOID;GR;;;BU)"},
        {"(A;CINP;GR;;;BU)", "", "(A;ID;FR;;;BU)"},
        // Creators are replaced by the child's owner and group, and split likewise.
        {"(A;OICIIO;FA;;;CO)", "(A;ID;FA;;;S-1-5-21-1-2-3-1001)",
         "(A;ID;FA;;;S-1-5-21-1-2-3-1001)(A;OICIIOID;FA;;;CO)"},
        {"(A;OICI;GR;;;CG)", "(A;ID;FR;;;S-1-5-21-1-2-3-513)",
         "(A;ID;FR;;;S-1-5-21-1-2-3-513)(A;OICIIOID;GR;;;CG)"},
        {"(A;OI;FA;;;CO)", "(A;ID;FA;;;S-1-5-21-1-2-3-1001)", "(A;OIIOID;FA;;;CO)"},
        {"(D;CINP;SD;;;CO)", "", "(D;ID;SD;;;S-1-5-21-1-2-3-1001)"},
        // Accounts that only look like creators.
        {"(A;OICI;RC;;;OW)(A;OICI;RC;;;S-1-3-2)(A;OICI;RC;;;S-1-3-3)",
         "(A;ID;RC;;;OW)(A;ID;RC;;;S-1-3-2)(A;ID;RC;;;S-1-3-3)",
         "(A;OICIID;RC;;;OW)(A;OICIID;RC;;;S-1-3-2)(A;OICIID;RC;;;S-1-3-3)"},
        // Entries for one class of directory objects pass files and folders by; other object entries do not.
        {"(OA;OICI;RP;;bf967aba-0de6-11d0-a285-00aa003049e2;AU)", "", ""},
        {"(OA;OICI;RP;bf967aba-0de6-11d0-a285-00aa003049e2;;AU)",
         "(OA;ID;RP;bf967aba-0de6-11d0-a285-00aa003049e2;;AU)",
         "(OA;OICIID;RP;bf967aba-0de6-11d0-a285-00aa003049e2;;AU)"},
        // Auditing's own flags are no inheritance flags.
        {"(AU;OICIIOSAFA;GA;;;WD)", "(AU;IDSAFA;FA;;;WD)", "(AU;IDSAFA;FA;;;WD)(AU;OICIIOIDSAFA;GA;;;WD)"},
        // The parent's order is kept.
        {"(A;OICI;FR;;;BU)(D;OICI;FW;;;BG)(A;OICI;FA;;;BA)", "(A;ID;FR;;;BU)(D;ID;FW;;;BG)(A;ID;FA;;;BA)",
         "(A;OICIID;FR;;;BU)(D;OICIID;FW;;;BG)(A;OICIID;FA;;;BA)"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.parent);
        const Acl parent = List(row.parent);
        EXPECT_EQ(Text(InheritedEntries(parent, ObjectKind::kFile, kOwner, kGroup)), row.file);
        EXPECT_EQ(Text(InheritedEntries(parent, ObjectKind::kFolder, kOwner, kGroup)), row.folder);
    }
}

TEST(Inheritance, EntriesWithoutKnownLayoutKeepTheirBytes) {
    Ace opaque;
    opaque.type = 0x04;
    opaque.flags = 0x03;
    opaque.tail = {1, 2, 3, 4};
    Acl parent;
    parent.entries = {opaque};

    const Acl file = InheritedEntries(parent, ObjectKind::kFile, kOwner, kGroup);
    ASSERT_EQ(file.entries.size(), 1U);
    EXPECT_EQ(file.entries[0].flags, 0x10);
    EXPECT_EQ(file.entries[0].tail, opaque.tail);
    const Acl folder = InheritedEntries(parent, ObjectKind::kFolder, kOwner, kGroup);
    ASSERT_EQ(folder.entries.size(), 1U);
    EXPECT_EQ(folder.entries[0].flags, 0x13);
}

TEST(Inheritance, MergingKeepsExplicitEntriesAndReplacesInheritedOnes) {
    struct Row {
        const char* child;
        const char* parent;
        const char* merged;
    };
    const Row rows[] = {
        {"", "", ""},
        {"(A;;FA;;;BA)(A;ID;FR;;;BU)", "", "(A;;FA;;;BA)"},
        {"(A;ID;FR;;;BU)(A;OICI;FA;;;BA)", "(A;OICI;FX;;;WD)", "(A;OICI;FA;;;BA)(A;OICIID;FX;;;WD)"},
        {"(D;;FW;;;BG)(A;;FR;;;BU)", "(A;;FA;;;BA)(A;CI;GA;;;CO)",
         "(D;;FW;;;BG)(A;;FR;;;BU)(A;ID;FA;;;S-1-5-21-1-2-3-1001)(A;CIIOID;GA;;;CO)"},
    };
    for (const Row& row : rows) {
        const Acl parent = List(row.parent);
        const Acl merged = MergeInherited(List(row.child), parent, ObjectKind::kFolder, kOwner, kGroup);
        EXPECT_EQ(Text(merged), row.merged);
        EXPECT_EQ(MergeInherited(merged, parent, ObjectKind::kFolder, kOwner, kGroup), merged)
            << "merging again must change nothing";
    }
}

TEST(Inheritance, AListThatTakesOverObjectEntriesSaysSoAndElseKeepsItsRevision) {
    const Acl parent = List("(OA;OICI;RP;bf967aba-0de6-11d0-a285-00aa003049e2;;AU)");
    EXPECT_EQ(MergeInherited(List("(A;;FA;;;BA)"), parent, ObjectKind::kFile, kOwner, kGroup).revision, 4);
    EXPECT_EQ(MergeInherited(List("(A;;FA;;;BA)"), List("(A;OI;FA;;;SY)"), ObjectKind::kFile, kOwner, kGroup)
                  .revision,
              2);
    Acl newer = List("(A;;FA;;;BA)");
    newer.revision = 4;
    EXPECT_EQ(MergeInherited(newer, Acl(), ObjectKind::kFile, kOwner, kGroup).revision, 4);
}

TEST(Inheritance, GenericRightsAreMappedInEntriesThatApply) {
    EXPECT_EQ(MapGenericRights(0xF0000000), 0x1F01FFU);
    EXPECT_EQ(MapGenericRights(0x01000001), 0x01000001U);
    const Acl list = List("(A;;GA;;;SY)(A;OICIIO;GA;;;CO)(D;CI;SDGW;;;WD)(A;;;;;WD)");
    EXPECT_EQ(Text(MapGenericRights(list, {})),
              "(A;;FA;;;SY)(A;OICIIO;GA;;;CO)(D;CI;0x130116;;;WD)(A;;;;;WD)");
    EXPECT_EQ(Text(MapGenericRights(list, List("(A;ID;GA;;;SY)(D;;SDGW;;;WD)"))),
              "(A;;GA;;;SY)(A;OICIIO;GA;;;CO)(D;CI;0x130116;;;WD)(A;;;;;WD)");
}

TEST(Inheritance, ANewObjectSaysWhereItsListCameFrom) {
    struct Row {
        const char* parent;
        DaclState state;
        const char* expected;
    };
    const std::string ownerAndGroup = "O:S-1-5-21-1-2-3-1001G:S-1-5-21-1-2-3-513";
    const Row rows[] = {
        {"O:SYD:PAI(A;OICI;FA;;;BA)S:(AU;OICISA;FA;;;WD)", DaclState::kList, "D:AI(A;ID;FA;;;BA)"},
        {"D:(A;CI;FA;;;BA)", DaclState::kAbsent, ""},
        {"D:", DaclState::kAbsent, ""},
        {"D:NO_ACCESS_CONTROL", DaclState::kAbsent, ""},
        {"O:SY", DaclState::kAbsent, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.parent);
        const auto parent = FromSddl(row.parent);
        ASSERT_TRUE(parent);
        const SecurityDescriptor made = NewObjectDescriptor(*parent, ObjectKind::kFile, kOwner, kGroup);
        EXPECT_EQ(made.daclState, row.state);
        EXPECT_EQ(ToSddl(made, 15), ownerAndGroup + row.expected);
    }
}

}  // namespace
}  // namespace permora::nt
