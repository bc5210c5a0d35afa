#include "security/text_conversion.h"

#include "gtest/gtest.h"

namespace permora {
namespace {

TEST(TextConversion, KeepsTheWholeTextBothWays) {
    const struct {
        const char* ansi;
        const char16_t* wide;
    } cases[] = {
        {"", u""},
        {"plain", u"plain"},
        {"Gr\u00fc\u00dfe \u20ac", u"Gr\u00fc\u00dfe \u20ac"},
        {"\U0001F512", u"\U0001F512"},
    };
    std::basic_string<WCHAR> buffer(100, u'x');
    for (const auto& c : cases) {
        EXPECT_EQ(WideToAnsi(c.wide), c.ansi);
        // Compared up to the NUL, which must follow the last character.
        EXPECT_EQ(std::u16string(AnsiToWide(c.ansi, buffer)), c.wide);
        EXPECT_EQ(buffer, c.wide);
    }
    EXPECT_EQ(WideToAnsi(nullptr), "");
    EXPECT_EQ(std::u16string(AnsiToWide("a\xFF\xFE", buffer)), u"a\uFFFD\uFFFD");
}

}  // namespace
}  // namespace permora
