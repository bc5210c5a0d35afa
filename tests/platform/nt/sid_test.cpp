#include "platform/nt/sid.h"

#include <gtest/gtest.h>

#include "tests/support/hex.h"

namespace permora::nt {
namespace {

TEST(Sid, BytesAndTextAgree) {
    struct Row {
        const char* text;
        const char* bytes;
    };
    const Row rows[] = {
        {"S-1-0-0", "01 01 000000000000 00000000"},
        {"S-1-5-32-544", "01 02 000000000005 20000000 20020000"},
        {"S-1-5-21-1004336348-1177238915-682003330-512",
         "01 05 000000000005 15000000 dcf4dc3b 833d2b46 828ba628 00020000"},
        {"S-1-5", "01 00 000000000005"},
        {"S-1-4294967295-4294967295", "01 01 0000ffffffff ffffffff"},
        {"S-1-0x010000000005", "01 00 010000000005"},
        {"S-1-0x0a0b0c0d0e0f-1", "01 01 0a0b0c0d0e0f 01000000"},
        {"S-1-5-1-2-3-4-5-6-7-8-9-10-11-12-13-14-15",
         "01 0f 000000000005 01000000 02000000 03000000 04000000 05000000 06000000 07000000 08000000 09000000"
         "0a000000 0b000000 0c000000 0d000000 0e000000 0f000000"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        const auto bytes = Hex(row.bytes);
        const auto fromText = Sid::FromText(row.text);
        const auto fromBytes = Sid::FromBytes(bytes);
        ASSERT_TRUE(fromText && fromBytes);
        EXPECT_EQ(*fromText, *fromBytes);
        EXPECT_EQ(fromBytes->ToText(), row.text);
        EXPECT_TRUE(std::ranges::equal(fromText->Bytes(), bytes));
    }
}

TEST(Sid, ReadsOnlyAsManyBytesAsItHas) {
    const auto sid = Sid::FromBytes(Hex("01 01 000000000001 00000000 ffffffff"));
    ASSERT_TRUE(sid);
    EXPECT_EQ(*sid, Sid(1, {0}));
}

TEST(Sid, RefusesMalformedBytes) {
    std::vector<std::uint8_t> sixteenSubAuthorities(8 + 16 * 4);
    sixteenSubAuthorities[0] = 1;
    sixteenSubAuthorities[1] = 16;
    const std::vector<std::uint8_t> rows[] = {
        {},
        Hex("01 00 0000000000"),
        Hex("02 01 000000000001 00000000"),
        Hex("00 01 000000000001 00000000"),
        Hex("01 02 000000000005 20000000 200200"),
        Hex("01 ff 000000000005 20000000"),
        sixteenSubAuthorities,
    };
    for (const auto& row : rows)
        EXPECT_FALSE(Sid::FromBytes(row)) << testing::PrintToString(row);
}

TEST(Sid, ReadsTextInEitherNotationOfTheAuthority) {
    EXPECT_EQ(Sid::FromText("S-1-0x5-32-544"), Sid(5, {32, 544}));
    EXPECT_EQ(Sid::FromText("S-1-0X00000000000A"), Sid(10, {}));
    EXPECT_EQ(Sid::FromText("S-1-281474976710655"), Sid(0xFFFFFFFFFFFF, {}));
}

TEST(Sid, RefusesMalformedText) {
    // clang-format off
    for (const char* text : {
             "", "S", "S-1", "S-1-", "S-2-5-32", "s-1-5-32", "S-1-5-", "S-1-5--32", "S-1-5-32-", "S-1-5-32 ", " S-1-5-32",
             "S-1-5-4294967296", "S-1-281474976710656", "S-1-0x", "S-1-0x1000000000000", "S-1-0x-1", "S-1-5-0x20",
             "S-1-5-+1", "S-1--5", "S-1-5-32x", "S-1-5-99999999999999999999999999",
             "S-1-5-1-2-3-4-5-6-7-8-9-10-11-12-13-14-15-16"})
        EXPECT_FALSE(Sid::FromText(text)) << text;
    // clang-format on
    EXPECT_FALSE(Sid::FromText(std::string_view("S-1-5\0", 6)));
}

TEST(Sid, FamilyRelations) {
    const Sid machine(5, {21, 1, 2, 3});
    const Sid user = machine.Append(1000).value_or(Sid());
    EXPECT_EQ(user.ToText(), "S-1-5-21-1-2-3-1000");
    EXPECT_TRUE(user.IsDirectlyBelow(machine));
    EXPECT_FALSE(machine.IsDirectlyBelow(machine));
    EXPECT_FALSE(user.Append(1)->IsDirectlyBelow(machine));
    EXPECT_FALSE(Sid(5, {21, 1, 2, 4, 1000}).IsDirectlyBelow(machine));
    EXPECT_FALSE(Sid(4, {21, 1, 2, 3, 1000}).IsDirectlyBelow(machine));
    EXPECT_FALSE(Sid(5, {}).IsDirectlyBelow(Sid(5, {})));

    const Sid full(5, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    EXPECT_FALSE(full.Append(16));
}

TEST(Sid, ShorterIsNotEqualToItsZeroExtension) {
    EXPECT_NE(Sid(5, {}), Sid(5, {0}));
    EXPECT_NE(Sid(5, {32}), Sid(5, {32, 0}));
}

}  // namespace
}  // namespace permora::nt
