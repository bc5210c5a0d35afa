#include "history/history_texts.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "platform/api/errors.h"
#include "platform/system_message.h"
#include "tests/support/scoped_variable.h"

namespace permora {
namespace {

TEST(HistoryTexts, SayWhatAChangeWasAbout) {
    struct Case {
        ChangeKind kind;
        std::size_t tops;
        const char* firstTop;
        const char* text;
        const char* shortText;
    };
    for (const Case& each : {
             Case{ChangeKind::kPermissions, 1, R"(C:\data\letter)", R"(permissions of C:\data\letter)",
                  "permissions of letter"},
             {ChangeKind::kPermissions, 1, R"(D:\)", R"(permissions of D:\)", R"(permissions of D:\)"},
             {ChangeKind::kPermissions, 1234, R"(C:\a)", R"(permissions of 1,234 items, the first C:\a)",
              "permissions of 1,234 items"},
             {ChangeKind::kReset, 2, R"(C:\a)", R"(reset of everything in 2 folders, the first C:\a)",
              "reset of everything in 2 folders"},
             {ChangeKind::kShare, 1, "plans", "permissions of the share plans",
              "permissions of the share plans"},
             {ChangeKind::kShare, 2, "plans", "permissions of 2 shares, the first plans",
              "permissions of 2 shares"},
             {ChangeKind::kUndo, 3, R"(C:\a)", "undo of change 12", "undo of change 12"},
         }) {
        ChangeFacts facts;
        facts.kind = each.kind;
        facts.tops = each.tops;
        facts.firstTop = each.firstTop;
        facts.undoes = 12;
        EXPECT_EQ(ChangeText(facts), each.text);
        EXPECT_EQ(ShortChangeText(facts), each.shortText);
    }
}

TEST(HistoryTexts, TellTheTimeOfTheMachine) {
    const test::ScopedVariable zone("TZ", "UTC");
    tzset();
    EXPECT_EQ(ChangeTimeText(0), "1970-01-01 00:00:00");
    EXPECT_EQ(ChangeTimeText(1'795'680'312), "2026-11-26 08:05:12");
    EXPECT_EQ(ChangeTimeText(-1), "unknown");
    EXPECT_EQ(ChangeTimeText(INT64_MAX), "unknown");
}

TEST(HistoryTexts, NameTheReasonOfEveryFailure) {
    EXPECT_EQ(HistoryFailureText(ERROR_LOCK_VIOLATION), "Another program keeps the history locked.");
    const std::string system = SystemMessageLine(ERROR_ACCESS_DENIED);
    EXPECT_EQ(HistoryFailureText(ERROR_ACCESS_DENIED), system + (system.ends_with('.') ? "" : "."));
}

}  // namespace
}  // namespace permora
