#include "policy/path_pattern.h"

#include <gtest/gtest.h>

#include <string>

namespace permora {
namespace {

TEST(PathPattern, MeansNamesStarsAndAnyNumberOfFolders) {
    const struct {
        const char* pattern;
        const char* path;
        bool matches;
    } kCases[] = {
        {"*", "a", true},
        {"*", "a\\b", false},
        {"a/b", "a\\b", true},
        {"a/b", "a", false},
        {"**", "a\\b\\c", true},
        {"a/**", "a", true},
        {"a/**", "b\\a", false},
        {"**/c", "c", true},
        {"**/c", "a\\b\\c", true},
        {"**/c", "a\\c\\b", false},
        {"a/**/c/**/e", "a\\b\\c\\d\\c\\e", true},
        {"a/**/c/*", "a\\c\\c\\e", true},
        {"*.bak", "x.bak.bak", true},
        {"*.bak", "x.bakk", false},
        {"a*b*c", "a-b-bc", true},
        {"?", "\xC3\xA4", true},
        {"??", "\xC3\xA4", false},
        {"*?", "\xff", true},
        {"A", "a", false},
        {"[a]", "a", false},
        {"**a", "ba", true},
    };
    for (const auto& [pattern, path, matches] : kCases)
        EXPECT_EQ(MatchesPattern(pattern, path), matches) << pattern << ' ' << path;
    EXPECT_TRUE(MayMatchBelow("a/*", "") && MayMatchBelow("a/*", "a") && MayMatchBelow("**", "a\\b"));
    EXPECT_TRUE(MayMatchBelow("a/**/c/d", "a\\b\\c") && MayMatchBelow("**/x", "x"));
    EXPECT_FALSE(MayMatchBelow("*", "a") || MayMatchBelow("a/*", "b") || MayMatchBelow("a/*/c", "a\\b\\c"));
    // Neither takes time without end.
    std::string stars;
    std::string folders;
    for (int i = 0; i < 1000; ++i) {
        stars += "*a";
        folders += "**/a/";
    }
    EXPECT_FALSE(MatchesPattern(stars + 'b', std::string(4000, 'a')));
    std::string path = "a";
    for (int i = 0; i < 1000; ++i)
        path += "\\a";
    EXPECT_FALSE(MatchesPattern(folders + 'b', path));
    EXPECT_TRUE(MayMatchBelow(folders + 'b', path));
}

}  // namespace
}  // namespace permora
