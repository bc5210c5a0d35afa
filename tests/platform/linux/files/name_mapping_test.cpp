#include "platform/linux/files/name_mapping.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace permora::host {
namespace {

// What a shown name must never hold, whatever the host's name is.
bool IsSafe(const std::string& name) {
    constexpr std::string_view kForbidden("\0/\\:*?\"<>|", 10);
    return name.find_first_of(kForbidden) == name.npos && !name.empty() && name.back() != '.' &&
           name.back() != ' ';
}

void ExpectRoundTrip(const std::string& hostName) {
    const std::string name = EncodeName(hostName);
    std::string decoded;
    ASSERT_TRUE(IsSafe(name)) << testing::PrintToString(hostName);
    ASSERT_TRUE(DecodeName(name, decoded)) << testing::PrintToString(hostName);
    ASSERT_EQ(decoded, hostName);
}

// Coming back whole also proves that no two host names share a text.
TEST(NameMapping, EveryHostNameIsShownAsOneTextThatLeadsBackToIt) {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte)
        if (byte != '/') bytes += static_cast<char>(byte);
    for (const char first : bytes) {
        for (const char second : bytes) {
            const std::string pair{first, second};
            if (pair != "..") ExpectRoundTrip(pair);
            ExpectRoundTrip("a" + pair);
            ExpectRoundTrip(pair + "z");
        }
        // Beginnings of longer sequences, broken at each place, and the block that escapes are made of.
        for (const char* around :
             {"\xE2\x82", "\xF0\x9F\x98", "\xEF\x80", "\xEF\x83", "\xED\xA0", "\xF4\x90\x80"}) {
            ExpectRoundTrip(std::string(around) + first);
            ExpectRoundTrip(std::string(around) + first + around);
        }
    }
}

TEST(NameMapping, OrdinaryNamesOfAllScriptsAreShownAsTheyAre) {
    for (const char* name :
         {"Letter to Anna.txt", ".profile", "..three", "a  b", "größe", "Документы", "文件夹", "قائمة",
          "emoji 😀", "\xEE\x80\x80 private", "\xEF\x80\x80", "'$%&()+,;=@[]^_`{}~#!-"}) {
        EXPECT_EQ(EncodeName(name), name);
        ExpectRoundTrip(name);
    }
}

TEST(NameMapping, BytesThatNamesCannotHoldAreShownInThePrivateBlock) {
    EXPECT_EQ(EncodeName("a\\b"), "a\uF05Cb");
    EXPECT_EQ(EncodeName("a:b"), "a\uF03Ab");
    EXPECT_EQ(EncodeName("tab\t"), "tab\uF009");
    EXPECT_EQ(EncodeName("end."), "end\uF02E");
    EXPECT_EQ(EncodeName("end. "), "end.\uF020");
    EXPECT_EQ(EncodeName("latin \xE9"), "latin \uF0E9");
    EXPECT_EQ(EncodeName("\x7F\xC2\x9B"), "\uF07F\uF0C2\uF09B");  // would steer a terminal
    EXPECT_EQ(EncodeName("\uF05C"), "\uF0EF\uF081\uF09C");        // not to be taken for a backslash
}

TEST(NameMapping, TextsThatNoHostNameShowsAsLeadNowhere) {
    using namespace std::string_view_literals;
    std::string hostName = "before";
    // clang-format off
    for (const std::string_view name : {
             ""sv, "."sv, ".."sv, "a/b"sv, "a\\b"sv, "a\0b"sv, "\uF02E"sv, "\uF02E\uF02E"sv, ".\uF02E"sv, "\uF02F"sv,
             "..\uF02Fetc"sv, "end."sv, "end "sv, "*"sv, "\uF061"sv, "\uF02Ea"sv, "\uF0C3\uF0A9"sv, "latin \xE9"sv,
             "\xED\xA0\x80"sv, "\xC0\xAE"sv, "\x01"sv}) {
        EXPECT_FALSE(DecodeName(name, hostName)) << testing::PrintToString(name);
        EXPECT_EQ(hostName, "before");
    }
    // clang-format on
}

}  // namespace
}  // namespace permora::host
