// The descriptors of shares as they are kept, for taking a change back.
#include "shares/share_security.h"

#include <gtest/gtest.h>

#include "platform/api/errors.h"
#include "tests/shares/share_table.h"

namespace permora::test {
namespace {

class StoredShareTest : public WithShareTable {};

StoredSecurity Stored(const std::string& name) {
    StoredSecurity stored;
    EXPECT_EQ(ReadStoredShare(name, stored), ERROR_SUCCESS);
    return stored;
}

TEST_F(StoredShareTest, WhatWasThereComesBackAlsoNothing) {
    AddShare("listed", "O:BAG:BAD:(D;;FA;;;BG)(A;;FR;;;WD)");
    AddShare("bare", nullptr);
    const StoredSecurity listed = Stored("listed");
    const StoredSecurity bare = Stored("bare");
    EXPECT_EQ(listed.form, SecurityForm::kShare);
    EXPECT_EQ(bare, StoredSecurity());

    EXPECT_EQ(WriteStoredShare("bare", listed, listed), ERROR_REVISION_MISMATCH);
    EXPECT_EQ(ListOf("bare"), "none");
    EXPECT_EQ(WriteStoredShare("bare", bare, listed), ERROR_SUCCESS);
    EXPECT_EQ(Stored("BARE"), listed);
    StoredSecurity damaged = bare;
    damaged.form = SecurityForm::kShare;
    EXPECT_EQ(WriteStoredShare("bare", listed, damaged), ERROR_INVALID_SECURITY_DESCR);
    EXPECT_EQ(WriteStoredShare("bare", listed, bare), ERROR_SUCCESS);
    EXPECT_EQ(ListOf("bare"), "none");
    EXPECT_EQ(FactsOf("bare"), "T:\\bare, for bare, 7");
    EXPECT_EQ(ReadStoredShare("gone", damaged), NERR_NetNameNotFound);
}

TEST_F(StoredShareTest, OnlyTheListSaysWhoGetsIn) {
    struct Row {
        const char* one;
        const char* other;
        bool areSame;
    };
    constexpr Row kRows[] = {
        {"O:BAD:(A;;FR;;;WD)", "O:SYD:P(A;;FR;;;WD)", true},
        {"D:(A;;FR;;;WD)", "D:(A;;FA;;;WD)", false},
        {"D:NO_ACCESS_CONTROL", nullptr, true},
        {"D:", nullptr, false},
        {"D:", "D:NO_ACCESS_CONTROL", false},
    };
    int number = 0;
    for (const Row& row : kRows) {
        const std::string name = "share" + std::to_string(number++);
        AddShare(name, row.one);
        AddShare(name + "b", row.other);
        EXPECT_EQ(HaveSameList(Stored(name), Stored(name + "b")), row.areSame) << row.one;
    }
    StoredSecurity damaged;
    damaged.form = SecurityForm::kShare;
    EXPECT_FALSE(HaveSameList(damaged, {}));
}

}  // namespace
}  // namespace permora::test
