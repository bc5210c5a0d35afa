#include "platform/nt/conditional_expression.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/hex.h"

namespace permora::nt {
namespace {

std::optional<std::string> TextOf(const std::vector<std::uint8_t>& stored) {
    return ConditionToText(stored, SddlWords::kAbbreviations);
}

// Tokens between signature and padding, with the pieces that most of them need.
const std::string kSignature = "61727478";
const std::string kA = "f9 02000000 6100";  // @USER.a
const std::string kOne = "04 0100000000000000 03 02";

std::vector<std::uint8_t> Stored(const std::string& tokens) {
    std::vector<std::uint8_t> bytes = Hex(kSignature + tokens);
    bytes.resize((bytes.size() + 3) / 4 * 4);
    return bytes;
}

TEST(ConditionalExpression, MeansTheBytesThatTheSystemStores) {
    const struct {
        const char* text;
        std::string tokens;
    } rows[] = {
        {"(@USER.Title == \"PM\")", "f9 0a000000 5400690074006c006500 10 04000000 50004d00 80"},
        {"(@USER.Title == \"\")", "f9 0a000000 5400690074006c006500 10 00000000 80"},
        {"(!(!(Member_of {SID(AA)})))",
         "50 15000000 51 10000000 0102000000000005 20000000 43020000 89 a2 a2"},
        {"(Member_of_any SID(S-1-222-333))", "51 0c000000 01010000000000de 4d010000 8b"},
        {"((Device_Member_of {SID(WR)}) || (Exists x))",
         "50 11000000 51 0c000000 0101000000000005 21000000 8a f8 02000000 7800 87 a1"},
        {"(((@USER.A) && (@DEVICE.B)) || (@USER.C))",
         "f9 02000000 4100 fb 02000000 4200 a0 f9 02000000 4300 a1"},
        {"((@USER.A) || ((@DEVICE.B) && (@USER.C)))",
         "f9 02000000 4100 fb 02000000 4200 f9 02000000 4300 a0 a1"},
        {"(@DEVICE.c == {\"o\", 1, #00ff, SID(WD)})",
         "fb 02000000 6300 50 2a000000 10 02000000 6f00 04 0100000000000000 03 02 18 02000000 00ff"
         "51 0c000000 0101000000000001 00000000 80"},
        {"(c Contains @RESOURCE.c)", "f8 02000000 6300 fa 02000000 6300 86"},
        // Numbers keep their sign and base.
        {"(a >= 1)", "f8 02000000 6100 04 0100000000000000 03 02 85"},
        {"(a < 0xfffffffff)", "f8 02000000 6100 04 ffffffff0f000000 03 03 82"},
        {"(a <= 0xffffffffffffffff)", "f8 02000000 6100 04 ffffffffffffffff 03 03 83"},
        {"(a > -017)", "f8 02000000 6100 04 f1ffffffffffffff 02 01 84"},
        {"(a != +0)", "f8 02000000 6100 04 0000000000000000 01 02 81"},
        {"(a == 00)", "f8 02000000 6100 04 0000000000000000 03 01 80"},
        {"(a == -9223372036854775808)", "f8 02000000 6100 04 0000000000000080 02 02 80"},
        // Names: forbidden characters are escaped, and all characters outside ASCII.
        {"(@USER.ad://x_[y]%0020%d83d == \"\xC3\xA4\xF0\x9F\x98\x80\")",
         "f9 18000000 610064003a002f002f0078005f005b0079005d0020003dd8 10 06000000 e4003dd800de 80"},
        {"(a%005b@b == 1)", "f8 08000000 61005b0040006200 04 0100000000000000 03 02 80"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const auto stored = Stored(row.tokens);
        EXPECT_EQ(ConditionFromText(row.text), stored);
        EXPECT_EQ(TextOf(stored), row.text);
    }
}

TEST(ConditionalExpression, WritesWhatItReadsInTheSystemsForm) {
    const struct {
        const char* read;
        const char* written;
    } rows[] = {
        {" ( @user.a==1 ) ", "(@USER.a == 1)"},
        {"(mEMBER_oF{SID(S-1-1-0),SID(BA)})", "(Member_of {SID(WD), SID(BA)})"},
        {"(Not_Device_Member_of_any(sid(WD)))", "(Not_Device_Member_of_Any SID(WD))"},
        {"(((@User.a)))", "(@USER.a)"},
        {"((x) == SID(BA))", "(x == SID(BA))"},
        {"(a==@user.b==@resource.c)", "((a == @USER.b) == @RESOURCE.c)"},
        {"(a && b && c || d)", "((((a) && (b)) && (c)) || (d))"},
        {"(17pq == 3||2a==@USER.7)", "((17pq == 3) || (2a == @USER.7))"},
        {"(!(a)&&not_exists b)", "((!(a)) && (Not_Exists b))"},
        {"(Exists.x == 1)", "(Exists.x == 1)"},
        {"(@User.\xC3\xA4 == 1)", "(@USER.%00e4 == 1)"},
        {"(a Any_of{ }\t)", "(a Any_of {})"},
        {"(a == #1#2#3##)", "(a == #01020300)"},
        {"(a == ##1#2#3##)", "(a == #01020300)"},
        {"(a == #AbC)", "(a == #0abc)"},
        {"(a == #)", "(a == #)"},
        {"(a == \")(\")", "(a == \")(\")"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.read);
        const auto stored = ConditionFromText(row.read);
        ASSERT_TRUE(stored);
        EXPECT_EQ(TextOf(*stored), row.written);
        EXPECT_EQ(ConditionFromText(row.written), stored);
    }
    const Sid machine(5, {21, 7, 8, 9});
    EXPECT_EQ(TextOf(*ConditionFromText("(Member_of SID(LA))", SddlAccounts(machine))),
              "(Member_of SID(S-1-5-21-7-8-9-500))");
    EXPECT_EQ(ConditionToText(*ConditionFromText("(Member_of SID(BA))"), SddlWords::kNumbers),
              "(Member_of SID(S-1-5-32-544))");
}

TEST(ConditionalExpression, RefusesWhatBreaksTheGrammar) {
    const char* const kTexts[] = {
        "",
        "()",
        "(",
        "(a",
        "a",
        "(a))",
        "(a)(b)",
        "(a b)",
        "(a ==)",
        "(== 1)",
        "(a = 1)",
        "(a == 1 2)",
        "(1 ==)",
        "(\"a\" == 1)",
        "(a == a)",
        "(a == (@USER.a < 1))",
        "(a == !(b))",
        "(!a)",
        "(!!(a))",
        "(!)",
        "(! Member_of SID(WD))",
        "(a &&)",
        "(&& a)",
        "(a & b)",
        "(a | b)",
        "(a !b)",
        "(Member_of)",
        "(Member_of @USER.a)",
        "(Member_ofSID(WD))",
        "(Member_of_AnySID(WD))",
        "(Exists 1 == 1)",
        "(Exists)",
        "(Exists \"a\")",
        "(Contains 3)",
        "(@Nobody.a)",
        "(@USER.)",
        "(@USER)",
        "(@a == 1)",
        "(a == {1,})",
        "(a == {,})",
        "(a == {1 2})",
        "(a == {{1}})",
        "(a == {@USER.b})",
        "(a == {1)",
        "(a == SID())",
        "(a == SID(ZZ))",
        "(a == SID(LA))",
        "(a == SID(WD)",
        "(a == \"b)",
        "(a == #0g)",
        "(a == 0x)",
        "(a == 08)",
        "(a == 9223372036854775808)",
        "(a == -9223372036854775809)",
        "(a == 0x10000000000000000)",
        "(a == +0xffffffffffffffff)",
        "(a == 1x)",
        "(a == - 1)",
        "(a%00 == 1)",
        "(a%0000 == 1)",
        "(a%00zz == 1)",
        "(@USER.\xC3 == 1)",
        "(a == \"\xFF\")",
    };
    for (const char* text : kTexts)
        EXPECT_FALSE(ConditionFromText(text)) << text;
    EXPECT_FALSE(ConditionFromText(std::string_view("(a == \"\0\")", 10)));
}

TEST(ConditionalExpression, RefusesMalformedBytes) {
    ASSERT_EQ(TextOf(Stored(kA + kOne + "80")), "(@USER.a == 1)");
    const struct {
        const char* what;
        std::string tokens;
    } rows[] = {
        {"nothing", ""},
        {"a value alone", kOne},
        {"an operand too few", kOne + "80"},
        {"an operand too many", kA + kA},
        {"a token that is none", kA + kOne + "7f"},
        {"an attribute that is none", "fc 02000000 6100"},
        {"more behind the padding", kA + kOne + "80 00 80"},
        {"a name that ends too late", "f9 04000000 6100"},
        {"a name of half a character", "f9 03000000 610062"},
        {"no name", "f9 00000000"},
        {"NUL in a name", "f9 04000000 61000000"},
        {"a value on the left", kOne + kA + "80"},
        {"a local attribute on the right", kA + "f8 02000000 6100 80"},
        {"a result on the right", kA + kA + kOne + "80 80"},
        {"a value among conditions", kA + kOne + "a0"},
        {"a value negated", kOne + "a2"},
        {"membership in an attribute", kA + "89"},
        {"existence of a value", kOne + "87"},
        {"existence of a result", kA + "87 87"},
        {"a sign that is none", kA + "04 0100000000000000 04 02 80"},
        {"a base that is none", kA + "04 0100000000000000 03 00 80"},
        {"plus before a negative number", kA + "04 ffffffffffffffff 01 02 80"},
        {"minus before a positive number", kA + "04 0100000000000000 02 02 80"},
        {"no sign before a negative decimal", kA + "04 ffffffffffffffff 03 02 80"},
        {"a short number", kA + "04 01000000"},
        {"a list in a list", kA + "50 05000000 50 00000000 80"},
        {"an attribute in a list", kA + "50 07000000" + kA + "80"},
        {"a list whose element ends too late", kA + "50 06000000 10 02000000 61 80"},
        {"a SID with bytes behind it", kA + "51 10000000 0101000000000001 00000000 00000000 80"},
        {"a SID that is none", kA + "51 04000000 01010000 80"},
        {"quotation marks in a string", kA + "10 02000000 2200 80"},
        {"NUL in a string", kA + "10 02000000 0000 80"},
        {"half a surrogate pair in a string", kA + "10 02000000 3dd8 80"},
        {"half a character in a string", kA + "10 01000000 61 80"},
    };
    for (const auto& row : rows)
        EXPECT_FALSE(TextOf(Stored(row.tokens))) << row.what;
    EXPECT_FALSE(TextOf(Hex("61727479 f9 02000000 6100"))) << "another signature";
    EXPECT_FALSE(TextOf(Hex("617274")));
}

TEST(ConditionalExpression, RefusesWhatIsTooDeep) {
    const auto negations = [](std::size_t count) {
        std::vector<std::uint8_t> stored = Hex(kSignature + kA);
        stored.insert(stored.end(), count, 0xA2);
        return stored;
    };
    EXPECT_TRUE(TextOf(negations(kMaxConditionDepth)));
    EXPECT_FALSE(TextOf(negations(kMaxConditionDepth + 1)));
    EXPECT_FALSE(TextOf(negations(60'000)));

    const auto chain = [](std::size_t operators, const char* what) {
        std::string text = "(a";
        for (std::size_t i = 0; i < operators; ++i)
            text += what;
        return ConditionFromText(text + ')');
    };
    const auto deepest = chain(kMaxConditionDepth, "&&a");
    ASSERT_TRUE(deepest);
    EXPECT_EQ(ConditionFromText(*TextOf(*deepest)), deepest);
    EXPECT_FALSE(chain(kMaxConditionDepth + 1, "&&a"));

    EXPECT_FALSE(ConditionFromText(std::string(1'000'000, '(')));
    EXPECT_FALSE(ConditionFromText("(a == " + std::string(1'000'000, '(')));
}

}  // namespace
}  // namespace permora::nt
