#include "security/message_boxes.h"

#include <new>
#include <string>
#include <thread>
#include <vector>

#include "gtest/gtest.h"
#include "platform/api/errors.h"
#include "platform/system_message.h"
#include "tests/security/service_fakes.h"
#include "tests/support/recording_presenter.h"

namespace permora {
namespace {

using test::RecordedBox;
using test::RecordingPresenter;

constexpr DWORD kNoSuchError = 0x2FFFFFFF;
constexpr DWORD kServerNotStarted = 2114;
constexpr DWORD kNetworkErrorWithoutText = 2999;

TEST(MessageBoxes, ShowTheirTextWithTheCaptionOfTheirKind) {
    const std::string denied = GetSystemMessageText(ERROR_ACCESS_DENIED);
    ASSERT_FALSE(denied.empty());
    RecordingPresenter boxes;
    ShowErrorBox(nullptr, "broken");
    ShowInfoBox(nullptr, "noted");
    ShowSystemErrorBox(nullptr, ERROR_ACCESS_DENIED);
    SetLastError(ERROR_ACCESS_DENIED);
    ShowLastErrorBox(nullptr);
    ShowErrorWithSystemText(nullptr, "Cannot get owner information", ERROR_ACCESS_DENIED);
    EXPECT_EQ(boxes.TakeBoxes(),
              (std::vector<RecordedBox>{
                  {"Permora Error", "broken", MB_ICONERROR},
                  {"Permora Information", "noted", MB_ICONINFORMATION},
                  {"Permora Error", denied, MB_ICONERROR},
                  {"Permora Error", denied, MB_ICONERROR},
                  {"Permora Error", "Cannot get owner information: " + denied, MB_ICONERROR},
              }));
}

TEST(MessageBoxes, ShowNothingForAnErrorWithoutText) {
    EXPECT_EQ(GetSystemMessageText(kNoSuchError), "");
    EXPECT_EQ(GetSystemMessageText(kNetworkErrorWithoutText), "");
    RecordingPresenter boxes;  // fails the test if anything is shown
    ShowSystemErrorBox(nullptr, kNoSuchError);
    ShowErrorWithSystemText(nullptr, "Cannot get owner information", kNoSuchError);
    SetLastError(kNoSuchError);
    ShowLastErrorBox(nullptr);
}

TEST(MessageBoxes, LookNetworkErrorsUpInTheNetworkLibraryAlone) {
    EXPECT_NE(GetSystemMessageText(kServerNotStarted), "");
    test::ServiceFakes services;
    int loads = 0;
    services.loadLibrary = [&](LPCSTR name) {
        EXPECT_STREQ(name, "netmsg.dll");
        ++loads;
        return nullptr;
    };
    for (const DWORD code : {2099U, 2100U, 2999U, 3000U})
        GetSystemMessageText(code);
    EXPECT_EQ(loads, 2);
    EXPECT_EQ(GetSystemMessageText(kServerNotStarted), "");
}

TEST(MessageBoxes, AFatalBoxEndsTheProcessEvenWithoutText) {
    EXPECT_EXIT(ShowFatalErrorBox(nullptr, "no way on"), ::testing::ExitedWithCode(0), "no way on");
    for (const DWORD code : {DWORD{ERROR_ACCESS_DENIED}, kNoSuchError}) {
        EXPECT_EXIT(
            {
                SetLastError(code);
                ShowFatalLastErrorBox(nullptr);
            },
            ::testing::ExitedWithCode(0), GetSystemMessageText(code).substr(0, 10));
    }
    EXPECT_EXIT(
        {
            ReportLackOfMemory();
            std::thread([] { throw std::bad_alloc(); }).join();
        },
        ::testing::ExitedWithCode(0), "Error: cannot allocate buffer");
}

}  // namespace
}  // namespace permora
