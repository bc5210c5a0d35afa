#include <gtest/gtest.h>

#include <cstdio>

#include "platform/api/errors.h"
#include "platform/api/messages.h"

namespace {

TEST(MessageBox, WithNobodyToAskGoesToStandardErrorAndChangesNothing) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxA(nullptr, "It failed.\r\n", "Permora Error", MB_ICONERROR), IDOK);
    EXPECT_EQ(MessageBoxA(nullptr, "Keep?\nSure?", "Question", MB_YESNO), IDNO);
    EXPECT_EQ(MessageBoxA(nullptr, "Copy?", "Question", MB_YESNOCANCEL | MB_ICONQUESTION), IDCANCEL);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Permora Error: It failed.\nQuestion: Keep?\nSure?\nQuestion: Copy?\n");
    EXPECT_EQ(MessageBoxA(nullptr, "Which?", "Question", 0x0F), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_MSGBOX_STYLE);
}

TEST(ExitProcessDeathTest, WritesOutWhatIsBufferedAndNeverHidesAFailure) {
    const auto end = [](UINT code) {
        std::setvbuf(stderr, nullptr, _IOFBF, BUFSIZ);
        std::fputs("last words", stderr);
        ExitProcess(code);
    };
    EXPECT_EXIT(end(0), testing::ExitedWithCode(0), "last words");
    EXPECT_EXIT(end(3), testing::ExitedWithCode(3), "last words");
    EXPECT_EXIT(end(0x100), testing::ExitedWithCode(1), "last words");
}

}  // namespace
