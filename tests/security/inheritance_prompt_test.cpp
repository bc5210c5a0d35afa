#include "security/inheritance_prompt.h"

#include <vector>

#include "gtest/gtest.h"
#include "tests/security/entries.h"
#include "tests/support/recording_presenter.h"

namespace permora {
namespace {

using testing::EntriesOf;
using testing::kAllow;
using testing::ShortEntry;

TEST(InheritancePrompt, CopiesDeletesOrLeavesInheritedEntriesAsAnswered) {
    const ShortEntry own = {kAllow, 'A', 1, 0};
    const ShortEntry inherited = {kAllow, 'B', 2, 0x13};
    const ShortEntry copy = {kAllow, 'B', 2, 3};
    const struct {
        int answer;
        InheritanceOffResult result;
        std::vector<ShortEntry> after;
    } cases[] = {
        {IDYES, InheritanceOffResult::kCopied, {copy, own}},
        {IDNO, InheritanceOffResult::kRemoved, {own}},
        {IDCANCEL, InheritanceOffResult::kCancelled, {own, inherited}},
    };
    testing::RecordingPresenter boxes;
    for (const auto& c : cases) {
        AccessEntryList list = testing::ListOf({own, inherited});
        boxes.AnswerNext(c.answer);
        EXPECT_EQ(TurnInheritanceOff(nullptr, list), c.result);
        EXPECT_EQ(EntriesOf(list), c.after);
        EXPECT_EQ(
            boxes.TakeBoxes(),
            (std::vector<testing::RecordedBox>{
                {"Inherited entries",
                 "Would you like to copy inherited entries into this access control list?\nClick Yes to "
                 "copy\nClick No to delete inherited entries\nClick Cancel to cancel operation",
                 MB_YESNOCANCEL | MB_ICONQUESTION}}));
    }
    AccessEntryList list = testing::ListOf({own});
    EXPECT_EQ(TurnInheritanceOff(nullptr, list), InheritanceOffResult::kNothingInherited);
    EXPECT_EQ(EntriesOf(list), std::vector<ShortEntry>{own});
}

}  // namespace
}  // namespace permora
