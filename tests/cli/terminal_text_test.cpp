#include "cli/terminal_text.h"

#include <gtest/gtest.h>

namespace permora {
namespace {

using namespace std::string_literals;

TEST(TerminalTextTest, NothingReachesTheTerminalThatCouldSteerOrMislead) {
    struct Case {
        std::string text;
        std::string printable;
        std::size_t width;
    };
    const Case cases[] = {
        {"DOMAIN\\name", "DOMAIN\\name", 11},
        {"Müller", "Müller", 6},
        {"e\u0301", "e\u0301", 1},  // a letter and the accent that stands above it
        {"日本", "日本", 4},
        {"\x1b[31mred\r\n", "\\u{1b}[31mred\\u{d}\\u{a}", 23},
        {"a\0b"s, "a\\u{0}b", 7},
        {"\u009b31m", "\\u{9b}31m", 9},
        {"evil\xe2\x80\xaetxt.exe", "evil\\u{202e}txt.exe", 19},
        {"zero\xe2\x80\x8bwidth", "zero\\u{200b}width", 17},
        {"\xff\xc3(\xe2\x82", "\\xff\\xc3(\\xe2\\x82", 17},
        {"\xed\xa0\x80", "\\xed\\xa0\\x80", 12},  // half of a surrogate pair is no character
    };
    UseUtf8Terminal();
    for (const Case& row : cases) {
        EXPECT_EQ(PrintableText(row.text), row.printable);
        EXPECT_EQ(DisplayWidth(row.printable), row.width) << row.printable;
    }
}

TEST(TerminalTextTest, ColumnsAlignWhateverTheirScript) {
    UseUtf8Terminal();
    EXPECT_EQ(
        AlignedTable({{"Type", "Name", "Apply To"}, {"Allow", "日本\x07", "Files only"}, {"Deny", "Ü", ""}},
                     "  "),
        "  Type   Name       Apply To\n"
        "  Allow  日本\\u{7}  Files only\n"
        "  Deny   Ü\n");
}

}  // namespace
}  // namespace permora
