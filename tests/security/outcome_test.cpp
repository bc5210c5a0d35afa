#include "security/outcome.h"

#include <gtest/gtest.h>

#include "platform/system_message.h"

namespace permora {
namespace {

constexpr DWORD kUnknownError = 0x2FFFFFFF;

TEST(Outcome, IsSaidInABoxAndInALine) {
    const std::string denied = GetSystemMessageText(ERROR_ACCESS_DENIED);
    const std::string reason = SystemMessageLine(ERROR_ACCESS_DENIED);
    const struct {
        Outcome outcome;
        std::string box;
        std::string line;
    } cases[] = {
        {{ERROR_ACCESS_DENIED}, denied, denied},
        {{kUnknownError}, "", "system error " + std::to_string(kUnknownError)},
        {{ERROR_ACCESS_DENIED, Step::kReadOwner},
         "Cannot get owner information: " + denied,
         "Cannot get owner information: " + denied},
        {{ERROR_ACCESS_DENIED, Step::kOpenPolicy},
         "Error: cannot open local security policy",
         "Error: cannot open local security policy"},
        {{ERROR_FILE_INVALID, Step::kFindAgain, "docs"},
         "\"docs\" is left alone: another object has this name since it was shown here.",
         "left alone: another object has this name by now"},
        {{ERROR_ACCESS_DENIED, Step::kRemoveFolder, "{more}"},
         "Error: deleting \"{more}\": " + denied,
         "cannot remove directory: " + denied},
        {{kUnknownError, Step::kRemoveFolder, "docs"},
         "",
         "cannot remove directory: system error " + std::to_string(kUnknownError)},
        {{ERROR_ACCESS_DENIED, Step::kGiveBack, "a", "new"},
         "Error: deleting \"a\": " + denied,
         "left in the new folder \"new\", it cannot go back: " + denied},
        {{ERROR_ACCESS_DENIED, Step::kCarryDown, "top\\a", "top"},
         reason + "\n\nThis is about \"top\\a\". \"top\" itself was changed.",
         reason},
        {{ERROR_ACCESS_DENIED, Step::kRecord, "docs"},
         "The change was stopped at \"docs\", because the history of changes cannot be written: " + denied +
             "\nWhat was changed before can be undone.",
         "the change was stopped here, because the history of changes cannot be written: " + reason +
             " What was changed before can be undone"},
        {{ERROR_NOT_SAME_DEVICE, Step::kPassOverMounted, "top\\a"},
         "Something is mounted on \"top\\a\". What is mounted is a volume of its own and was left as it is.",
         "something is mounted on it, which is a volume of its own"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(BoxText(each.outcome), each.box);
        EXPECT_EQ(LineText(each.outcome), each.line);
    }
    EXPECT_EQ(NamedBoxText({ERROR_ACCESS_DENIED, Step::kRemoveFolder, "docs"}),
              "Error: deleting \"docs\": " + denied);
    EXPECT_EQ(NamedBoxText({ERROR_ACCESS_DENIED, Step::kNone, "docs"}), denied + "\ndocs");
    EXPECT_EQ(NamedBoxText({ERROR_ACCESS_DENIED, Step::kCloseFile, "docs"}),
              "Error: cannot close file\ndocs");
}

}  // namespace
}  // namespace permora
