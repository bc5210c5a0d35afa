#include "platform/api/text.h"

#include <gtest/gtest.h>

#include <string>

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

string ToAnsi(const u16string& wide, std::size_t room) {
    string ansi(room, '#');
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, wide.data(), int(wide.size()), ansi.data(), int(room), nullptr,
                                  nullptr),
              int(room));
    return ansi;
}

u16string ToWide(const string& ansi, std::size_t room) {
    u16string wide(room, u'#');
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, ansi.data(), int(ansi.size()), wide.data(), int(room)),
              int(room));
    return wide;
}

TEST(Text, WellFormedTextConvertsBothWays) {
    for (const auto& [wide, ansi] : kWellFormed) {
        EXPECT_EQ(ToAnsi(wide, ansi.size()), ansi);
        EXPECT_EQ(ToWide(ansi, wide.size()), wide);
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
    for (const auto& [wide, expected] : cases)
        EXPECT_EQ(ToAnsi(wide, expected.size()), expected);
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
    for (const auto& [ansi, expected] : cases)
        EXPECT_EQ(ToWide(ansi, expected.size()), expected);
}

TEST(Text, SizesAndFailuresFollowTheContract) {
    constexpr DWORD kUntouched = 4711;
    const struct {
        const char* what;
        DWORD flags;
        int count;
        bool withTarget;
        int size;
        int result;
        DWORD error;
    } cases[] = {
        {"a NUL-terminated text counts its NUL", 0, -1, true, 3, 3, kUntouched},
        {"no target asks for the size", 0, -1, false, 0, 3, kUntouched},
        {"a size of zero asks for the size", 0, 2, true, 0, 2, kUntouched},
        {"one unit too few", 0, -1, true, 2, 0, ERROR_INSUFFICIENT_BUFFER},
        {"a negative count", 0, -2, true, 3, 0, ERROR_INVALID_PARAMETER},
        {"unknown flags", 1, -1, true, 3, 0, ERROR_INVALID_FLAGS},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        const bool isConverted = each.size > 0 && each.result > 0;
        u16string wide(3, u'#');
        string ansi(3, '#');
        SetLastError(kUntouched);
        EXPECT_EQ(MultiByteToWideChar(CP_ACP, each.flags, "ab", each.count,
                                      each.withTarget ? wide.data() : nullptr, each.size),
                  each.result);
        EXPECT_EQ(GetLastError(), each.error);
        EXPECT_EQ(wide, isConverted ? u16string(u"ab\0", 3) : u"###");
        SetLastError(kUntouched);
        EXPECT_EQ(WideCharToMultiByte(CP_ACP, each.flags, u"ab", each.count,
                                      each.withTarget ? ansi.data() : nullptr, each.size, nullptr, nullptr),
                  each.result);
        EXPECT_EQ(GetLastError(), each.error);
        EXPECT_EQ(ansi, isConverted ? string("ab\0", 3) : "###");
    }
}

}  // namespace
