#include "saved/saved_path.h"

#include <gtest/gtest.h>

namespace permora {
namespace {

TEST(SavedPath, EveryPathStandsOnOneLineAndIsReadBack) {
    const struct {
        const char* path;
        const char* written;
    } rows[] = {
        {"", "."},
        {"a\\b c\\.d", "a/b c/.d"},
        {"\xC3\xA4\xE2\x82\xAC", "\xC3\xA4\xE2\x82\xAC"},
        // A line feed, a quote and a byte that is no UTF-8, as the platform layer shows them.
        {"a\xEF\x80\x8A\xEF\x80\xA2\xEF\x83\xBF", "a\\u{f00a}\\u{f022}\\u{f0ff}"},
        {" a \\b ", "\\u{20}a /b\\u{20}"},
        {"a\xC2\x85", "a\\u{85}"},
        {"a\xE2\x80\xAE"
         "b",
         "a\\u{202e}b"},
        {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
        {"%41$(x)\\u{41}", "%41$(x)/u{41}"},
    };
    for (const auto& row : rows) {
        std::string written;
        AppendWrittenPath(row.path, written);
        EXPECT_EQ(written, row.written);
        EXPECT_EQ(PathFromWritten(written), row.path) << written;
    }
}

TEST(SavedPath, RefusesWhatIsNoPathBelowTheTop) {
    for (const char* written : {"",
                                "..",
                                "a/..",
                                "../a",
                                "a/../b",
                                "./a",
                                "a/.",
                                "/a",
                                "a/",
                                "a//b",
                                "C:",
                                "C:/a",
                                "a:b",
                                "a\\b",
                                "a*",
                                "a?",
                                "a\"",
                                "a<",
                                "a|b",
                                "\x01",
                                "a\nb",
                                "a\\u{5c}b",
                                "a\\u{2f}b",
                                "\\u{2e}\\u{2e}",
                                "\\u{41}",
                                "\\u{f00A}",
                                "\\u{0f00a}",
                                "\\u{}",
                                "\\u{110000}",
                                "\\u{d800}",
                                "\\u{20}b\\u{20}c",
                                "a\xE2\x80\xAE",
                                "\xFF",
                                " a",
                                "a ",
                                "\xEF\x80\x8A",
                                "\\u{f00a",
                                "\\u{3a}"})
        EXPECT_FALSE(PathFromWritten(written)) << written;
}

TEST(SavedPath, TopsAreAbsolute) {
    for (const char* path : {"C:\\", "D:\\a b\\c", "\\\\server\\share\\x"}) {
        std::string written;
        AppendWrittenTop(path, written);
        EXPECT_EQ(TopFromWritten(written), path) << written;
    }
    for (const char* written : {"", "a", "/a", "C:", "C:a", "C:/..", "C:/a/", "//", "1:/a", "C:/a:b"})
        EXPECT_FALSE(TopFromWritten(written)) << written;
}

TEST(SavedPath, AFolderComesBeforeItsContentsAndTheyBeforeItsNeighbours) {
    const char* ordered[] = {"", "a", "a\\b", "a\\b\\c", "a\\c", "a b", "a!", "ab", "b", "\xC3\xA4"};
    for (std::size_t i = 0; i < std::size(ordered); ++i)
        for (std::size_t j = 0; j < std::size(ordered); ++j)
            EXPECT_EQ(ComesBefore(ordered[i], ordered[j]), i < j) << ordered[i] << ", " << ordered[j];
}

}  // namespace
}  // namespace permora
