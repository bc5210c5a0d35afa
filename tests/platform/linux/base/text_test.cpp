#include "platform/api/text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/api/errors.h"

namespace {

using std::string;
using std::u16string;

struct Pair {
    u16string wide;
    string ansi;
};

// Every edge of the two encodings.
const Pair kWellFormed[] = {
    {u"a", "a"},
    {u"\u007F\u0080\u07FF", "\x7F\xC2\x80\xDF\xBF"},
    {u"\u0800\uD7FF\uE000\uFFFF", "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"},
    {u"\U00010000\U0010FFFF", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
    {u16string(u"a\0b", 3), string("a\0b", 3)},
};

TEST(Text, WellFormedTextConvertsBothWays) {
    for (const auto& [wide, ansi] : kWellFormed) {
        string toAnsi(ansi.size(), '#');
        EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, wide.data(), int(wide.size()), toAnsi.data(),
                                      int(toAnsi.size()), nullptr, nullptr),
                  int(ansi.size()));
        EXPECT_EQ(toAnsi, ansi);
        u16string toWide(wide.size(), u'#');
        EXPECT_EQ(
            MultiByteToWideChar(CP_ACP, 0, ansi.data(), int(ansi.size()), toWide.data(), int(toWide.size())),
            int(wide.size()));
        EXPECT_EQ(toWide, wide);
    }
}

TEST(Text, MalformedUtf16BecomesReplacements) {
    const string replacement = "\xEF\xBF\xBD";
    const std::pair<u16string, string> cases[] = {
        {{0xD800}, replacement},
        {{0xDC00}, replacement},
        {{u'a', 0xDBFF, u'b'}, "a" + replacement + "b"},
        {{0xDC00, 0xD800}, replacement + replacement},
        {{0xD800, 0xD800, 0xDC00}, replacement + "\xF0\x90\x80\x80"},
    };
    for (const auto& [wide, expected] : cases) {
        string ansi(expected.size(), '#');
        EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, wide.data(), int(wide.size()), ansi.data(), int(ansi.size()),
                                      nullptr, nullptr),
                  int(expected.size()));
        EXPECT_EQ(ansi, expected);
    }
}

TEST(Text, MalformedUtf8BecomesOneReplacementForEachBrokenSequence) {
    const std::pair<string, u16string> cases[] = {
        {"\x80", u"\uFFFD"},                                // a continuation byte alone
        {"\xC0\xAF", u"\uFFFD\uFFFD"},                      // an overlong slash
        {"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"},            // and a longer one
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},            // a surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond the last code point
        {"\xFF", u"\uFFFD"},
        {"\xE2\x82", u"\uFFFD"},  // cut off at the end
        {"\xF0\x90\x80", u"\uFFFD"},
        {"\xE2\x82"
         "a",
         u"\uFFFDa"},  // cut off in the middle
        {"\xF1\x80\x80\xE1\x80\xC2"
         "b\x80",
         u"\uFFFD\uFFFD\uFFFDb\uFFFD"},
    };
    for (const auto& [ansi, expected] : cases) {
        u16string wide(expected.size(), u'#');
        EXPECT_EQ(
            MultiByteToWideChar(CP_ACP, 0, ansi.data(), int(ansi.size()), wide.data(), int(wide.size())),
            int(expected.size()));
        EXPECT_EQ(wide, expected);
    }
}

TEST(Text, SizesAndFailuresFollowTheContract) {
    struct Case {
        const char* what;
        UINT codePage;
        DWORD flags;
        const char* source;
        int count;
        bool withTarget;
        int size;
        int result;
        DWORD error;
    };
    const DWORD untouched = 4711;
    const Case cases[] = {
        {"a NUL-terminated text counts its NUL", CP_ACP, 0, "ab", -1, true, 3, 3, untouched},
        {"no target asks for the size", CP_ACP, 0, "ab", -1, false, 0, 3, untouched},
        {"a size of zero asks for the size", CP_ACP, 0, "ab", 2, true, 0, 2, untouched},
        {"one unit too few", CP_ACP, 0, "ab", -1, true, 2, 0, ERROR_INSUFFICIENT_BUFFER},
        {"nothing to convert", CP_ACP, 0, "ab", 0, true, 3, 0, ERROR_INVALID_PARAMETER},
        {"a negative count", CP_ACP, 0, "ab", -2, true, 3, 0, ERROR_INVALID_PARAMETER},
        {"a negative size", CP_ACP, 0, "ab", -1, true, -1, 0, ERROR_INVALID_PARAMETER},
        {"no source", CP_ACP, 0, nullptr, -1, true, 3, 0, ERROR_INVALID_PARAMETER},
        {"no target", CP_ACP, 0, "ab", -1, false, 3, 0, ERROR_INVALID_PARAMETER},
        {"another code page", 437, 0, "ab", -1, true, 3, 0, ERROR_INVALID_PARAMETER},
        {"unknown flags", CP_ACP, 1, "ab", -1, true, 3, 0, ERROR_INVALID_FLAGS},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        u16string wide(3, u'#');
        SetLastError(untouched);
        EXPECT_EQ(MultiByteToWideChar(test.codePage, test.flags, test.source, test.count,
                                      test.withTarget ? wide.data() : nullptr, test.size),
                  test.result);
        EXPECT_EQ(GetLastError(), test.error);
        EXPECT_TRUE(test.size > 0 && test.result > 0 ? wide == u16string(u"ab\0", 3) : wide == u"###");

        string ansi(3, '#');
        const u16string source = u"ab";
        SetLastError(untouched);
        EXPECT_EQ(WideCharToMultiByte(test.codePage, test.flags,
                                      test.source != nullptr ? source.c_str() : nullptr, test.count,
                                      test.withTarget ? ansi.data() : nullptr, test.size, nullptr, nullptr),
                  test.result);
        EXPECT_EQ(GetLastError(), test.error);
        EXPECT_TRUE(test.size > 0 && test.result > 0 ? ansi == string("ab\0", 3) : ansi == "###");
    }
}

}  // namespace
