// Questions of a window to a volume that does not answer: here a thread that waits for the test.
#include "framework/patient_work.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "framework/dialog.h"
#include "framework/native.h"
#include "framework/repeated_work.h"
#include "platform/api/errors.h"
#include "tests/framework/test_resource_ids.h"
#include "tests/support/patience.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Running = PatientWork::Running;

constexpr const char* kVolume = "a volume";
constexpr std::chrono::milliseconds kMoment{100};
constexpr std::chrono::milliseconds kNoticed{400};

class PatientWorkTest : public ::testing::Test {
  protected:
    ~PatientWorkTest() override { Answer(); }

    // Work that ends with Answer.
    PatientWork::Work Blocked() {
        return [answer = answer](Running&) { answer.wait(); };
    }
    void Answer() {
        if (isAnswered) return;
        isAnswered = true;
        promise.set_value();
        std::this_thread::sleep_for(kMoment);  // the answer is there when the window looks for it again
    }
    // Once, while the window waits.
    void Meanwhile(std::function<void()> act) {
        meanwhile.Start(kMoment, [this, act = std::move(act)] {
            if (!wait.IsWaiting()) return;
            meanwhile.Stop();
            act();
        });
    }

    UiDriver ui;
    PatientWork wait;
    std::vector<std::string> order;

  private:
    std::promise<void> promise;
    const std::shared_future<void> answer{promise.get_future()};
    bool isAnswered = false;
    RepeatedWork meanwhile;
};

TEST_F(PatientWorkTest, WhatIsGivenUpStaysSoAndTheNextWaitsForModalWindows) {
    Meanwhile([this] {
        Answer();
        EXPECT_TRUE(wait.GiveUp([this] { order.emplace_back("next"); }));
    });
    EXPECT_EQ(wait.Do(kVolume, Blocked()), ERROR_CANCELLED);
    EXPECT_FALSE(wait.GiveUp([this] { order.emplace_back("never"); }));
    ui.ExpectDialog(IDD_CONTROLS, [&](WindowDriver& window) {
        bool canBeStopped = false;
        const auto slow = [](Running&) { std::this_thread::sleep_for(kNoticed); };
        const auto progress = [&](std::size_t) { canBeStopped = canBeStopped || wait.CanBeStopped(); };
        EXPECT_EQ(wait.Do(kVolume, slow, progress), ERROR_SUCCESS);
        EXPECT_FALSE(canBeStopped);
        EXPECT_THAT(order, IsEmpty());
        window.Press("Return");
    });
    EXPECT_EQ(CDialog(IDD_CONTROLS).DoModal(), IDOK);
    ServeWindowsUntil([this] { return !order.empty(); });
    EXPECT_THAT(order, ElementsAre("next"));
}

TEST_F(PatientWorkTest, AnAnswerFromBeforeAModalWindowIsTooOld) {
    ui.ExpectDialog(IDD_CONTROLS, [&](WindowDriver& window) {
        const auto end = std::chrono::steady_clock::now() + kMoment;
        ServeWindowsUntil([&] { return std::chrono::steady_clock::now() > end; });
        Answer();
        window.Press("Return");
    });
    Meanwhile([this] {
        EXPECT_TRUE(wait.CanBeStopped());
        CDialog(IDD_CONTROLS).DoModal();
    });
    EXPECT_EQ(wait.Do(kVolume, Blocked()), ERROR_CANCELLED);
}

TEST_F(PatientWorkTest, WhoOwesAnAnswerIsAskedNothingUntilItHasCome) {
    wait.patience = kNoticed;
    EXPECT_EQ(wait.Do(kVolume, Blocked()), ERROR_TIMEOUT);
    bool isAsked = false;
    const auto ask = [&](Running&) { isAsked = true; };
    EXPECT_EQ(wait.Do(kVolume, ask), ERROR_TIMEOUT);
    EXPECT_FALSE(wait.DoAtOnce(kVolume, ask));
    EXPECT_FALSE(isAsked);
    EXPECT_FALSE(wait.DoAtOnce("another", Blocked()));
    EXPECT_FALSE(wait.DoAtOnce("another", ask));
    EXPECT_TRUE(wait.DoAtOnce("a third", ask));
    EXPECT_TRUE(isAsked);

    isAsked = false;
    wait.patience = std::chrono::minutes(1);
    Meanwhile([this] { Answer(); });
    EXPECT_EQ(wait.Do(kVolume, ask), ERROR_SUCCESS) << "paid while it waits";
    EXPECT_TRUE(isAsked);
    EXPECT_TRUE(test::Await([&] { return wait.DoAtOnce("another", ask); }));
}

}  // namespace
}  // namespace permora
