#include "platform/nt/acl.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/hex.h"

namespace permora::nt {
namespace {

const char* const kEveryoneFull = "00 03 1400 ff011f00 01 01 000000000001 00000000";
const char* const kTwoGuids =
    "05 02 3c00 00010000 03000000 000102030405060708090a0b0c0d0e0f 101112131415161718191a1b1c1d1e1f"
    "01 01 000000000005 0b000000 deadbeef";

TEST(Ace, TypesWithOneLayoutAreReadAlike) {
    constexpr std::uint8_t kPlain[] = {0, 1, 2, 3, 9, 10, 13, 14, 17, 18, 19, 20, 21};
    constexpr std::uint8_t kObject[] = {5, 6, 7, 8, 11, 12, 15, 16};
    for (const std::uint8_t type : kPlain) {
        auto bytes = Hex(kEveryoneFull);
        bytes[0] = type;
        EXPECT_EQ(Ace::FromBytes(bytes).value_or(Ace()).sid, Sid(1, {0})) << int{type};
    }
    for (const std::uint8_t type : kObject) {
        auto bytes = Hex(kTwoGuids);
        bytes[0] = type;
        EXPECT_EQ(Ace::FromBytes(bytes).value_or(Ace()).sid, Sid(5, {11})) << int{type};
    }
}

TEST(Ace, WritesBackTheBytesThatItRead) {
    for (
        const char* text : {
            kEveryoneFull,
            kTwoGuids,
            "06 00 1800 00010000 00000000 01 01 000000000005 0b000000",  // no GUID
            "07 40 2800 00010000 02000000 000102030405060708090a0b0c0d0e0f 01 01 000000000005 0b000000",  // one
            "09 00 1c00 ff011f00 01 01 000000000001 00000000 61727478 01020304",  // a condition
            "11 00 1400 01000000 01 01 000000000010 00300000",                    // mandatory label
            "15 00 1400 01000000 01 01 000000000001 00000000",                    // access filter
            "16 00 0400",                                                         // opaque, empty
            "ff ff 0800 ffffffff",
        }) {
        SCOPED_TRACE(text);
        const auto bytes = Hex(text);
        const auto ace = Ace::FromBytes(bytes);
        ASSERT_TRUE(ace);
        std::vector<std::uint8_t> written;
        ace->AppendTo(written);
        EXPECT_EQ(written, bytes);
    }
}

TEST(Ace, RefusesMalformedEntries) {
    for (const char* text : {
             "", "00 00 14",
             "00 00 0000 ff011f00 01 01 000000000001 00000000",           // size 0
             "16 00 0300 00000000",                                       // under the header
             "00 00 1600 ff011f00 01 01 000000000001 00000000 0000",      // not a multiple of four
             "00 00 1800 ff011f00 01 01 000000000001 00000000",           // longer than the bytes
             "00 00 1000 ff011f00 01 01 000000000001 00000000",           // SID runs out of the entry
             "00 00 0800 ff011f00",                                       // no SID
             "00 00 0400",                                                // no mask
             "00 00 1400 ff011f00 02 01 000000000001 00000000",           // SID revision
             "05 00 1800 00010000 01000000 01 01 000000000005 0b000000",  // GUID runs out of the entry
             "05 00 0800 00010000",                                       // no object flags
         })
        EXPECT_FALSE(Ace::FromBytes(Hex(text))) << text;
}

TEST(Acl, SpaceBehindTheLastEntryIsLegalAndDropped) {
    const auto acl = Acl::FromBytes(Hex("02 00 2800 0100 0000" + std::string(kEveryoneFull) +
                                        "00030800 ffffffff ffffffff"  // unused, inside AclSize
                                        "aaaaaaaa"));                 // behind the list
    ASSERT_TRUE(acl);
    ASSERT_EQ(acl->entries.size(), 1U);
    EXPECT_EQ(acl->ByteSize(), 28U);
    std::vector<std::uint8_t> written = {0xEE};
    ASSERT_TRUE(acl->AppendTo(written));
    EXPECT_EQ(written, Hex("ee 02 00 1c00 0100 0000" + std::string(kEveryoneFull)));
}

TEST(Acl, RefusesMalformedLists) {
    const struct {
        const char* header;
        int entryCount;
    } rows[] = {
        {"01 00 1c00 0100 0000", 1},  // revision
        {"05 00 1c00 0100 0000", 1},  // revision
        {"02 00 0700 0000 0000", 1},  // AclSize under the header
        {"02 00 0000 0000 0000", 1},  // AclSize 0
        {"02 00 1a00 0000 0000", 1},  // not a multiple of four
        {"02 00 2000 0100 0000", 1},  // AclSize behind the bytes
        {"02 00 1800 0100 0000", 2},  // entry crosses AclSize
        {"02 00 1c00 0200 0000", 2},  // second entry lies behind AclSize
        {"02 00 1c00 ffff 0000", 1},  // a count that cannot fit
        {"02 00 0800 0000 00", 0},    // header cut
    };
    for (const auto& row : rows) {
        std::string text = row.header;
        for (int i = 0; i < row.entryCount; ++i)
            text += kEveryoneFull;
        EXPECT_FALSE(Acl::FromBytes(Hex(text))) << text;
    }
}

TEST(Acl, WritesTheLargestListAndRefusesALargerOne) {
    Ace ace;
    ace.sid = Sid(1, {0});
    Acl acl;
    acl.entries.assign(3276, ace);  // 20 bytes each
    acl.entries.back().tail = {1, 2, 3, 4};
    ASSERT_EQ(acl.ByteSize(), Acl::kMaxBytes);
    std::vector<std::uint8_t> written;
    ASSERT_TRUE(acl.AppendTo(written));
    EXPECT_EQ(Acl::FromBytes(written), acl);

    acl.entries.push_back(ace);
    std::vector<std::uint8_t> kept = {1, 2, 3};
    EXPECT_FALSE(acl.AppendTo(kept));
    EXPECT_EQ(kept, Hex("010203"));
}

}  // namespace
}  // namespace permora::nt
