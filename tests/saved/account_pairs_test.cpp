#include "saved/account_pairs.h"

#include <gtest/gtest.h>

namespace permora {
namespace {

TEST(AccountPairs, APairHasOneSignBetweenTwoNames) {
    AccountPair pair;
    ASSERT_TRUE(ReadAccountPair(R"(OLD\anna = S-1-5-21-1-2-3-1001)", pair));
    EXPECT_EQ(pair.old, R"(OLD\anna)");
    EXPECT_EQ(pair.other, "S-1-5-21-1-2-3-1001");
    for (const char* wrong : {"", "anna", "=anna", "anna=", "a=b=c", " = "}) {
        EXPECT_FALSE(ReadAccountPair(wrong, pair)) << wrong;
        EXPECT_EQ(pair.old, R"(OLD\anna)");
    }
}

TEST(AccountPairs, TablesOfSpreadsheetsAreRead) {
    std::vector<AccountPair> pairs;
    std::size_t badLine = 0;
    ASSERT_TRUE(
        ReadAccountTable("\xEF\xBB\xBFOld,New\r\n"
                         "anna,NEW\\anna\r\n"
                         "\r\n"
                         "\"Miller, Bert\",\"the \"\"new\"\" one\"\r\n"
                         " carl , S-1-1-0 ",
                         pairs, badLine));
    ASSERT_EQ(pairs.size(), 3U);
    EXPECT_EQ(pairs[0].other, "NEW\\anna");
    EXPECT_EQ(pairs[0].line, 2U);
    EXPECT_EQ(pairs[1].old, "Miller, Bert");
    EXPECT_EQ(pairs[1].other, "the \"new\" one");
    EXPECT_EQ(pairs[1].line, 4U);
    EXPECT_EQ(pairs[2].old, "carl");
    EXPECT_EQ(pairs[2].other, "S-1-1-0");
    EXPECT_TRUE(ReadAccountTable("", pairs, badLine));
    EXPECT_TRUE(pairs.empty());
}

TEST(AccountPairs, TheFirstBadLineOfATableIsNamed) {
    struct Row {
        const char* table;
        std::size_t line;
    };
    const Row rows[] = {
        {"anna,bert\ncarl", 2}, {"anna,bert,carl\n", 1},     {"anna,\n", 1},
        {",anna\n", 1},         {"a,b\n\n\"anna,bert\n", 3}, {"\"anna\"x,bert\n", 1},
        {"a\"nna,bert\n", 1},   {"a,b\nold,new,\n", 2},      {"a;b\n", 1},
        {"a,\"b\n\"\n", 1},     {"a,b\nc,\"d\"e\n", 2},
    };
    for (const Row& row : rows) {
        std::vector<AccountPair> pairs(1);
        std::size_t badLine = 0;
        EXPECT_FALSE(ReadAccountTable(row.table, pairs, badLine)) << row.table;
        EXPECT_EQ(badLine, row.line) << row.table;
        EXPECT_EQ(pairs.size(), 1U);
    }
}

}  // namespace
}  // namespace permora
