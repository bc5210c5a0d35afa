#include "framework/patient_work.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "framework/native.h"
#include "platform/api/errors.h"
#include "platform/own_directory.h"

namespace permora {
namespace {

using Clock = std::chrono::steady_clock;

// What is answered sooner is answered at once: nothing else happens in between.
constexpr std::chrono::milliseconds kUnnoticed{200};

// How long a volume may take to give an answer that it owes, before it is said to give none.
constexpr std::chrono::milliseconds kDebtPatience{2000};

constexpr std::chrono::milliseconds kNoTime{0};

// Between looks for a modal window.
constexpr std::chrono::milliseconds kLookPause{10};

// `hasEnded` may take the time that it is given.
void Serve(bool takesInput, const std::function<bool(std::chrono::milliseconds)>& hasEnded) {
    constexpr std::chrono::milliseconds kBetweenPaintings{5};
    if (!takesInput)
        ServeBusyWindowsUntil([&] { return hasEnded(kBetweenPaintings); });
    else
        ServeWindowsUntil([&] { return hasEnded(kNoTime); });
}

// Of the work and the window.
struct Shared {
    PatientWork::Work work;
    PatientWork::Running running;
    std::atomic<bool> isUndone = false;  // there is no directory for the thread

    void Run() {
        if (TakeOwnDirectory())
            work(running);
        else
            isUndone = true;
    }
};

}  // namespace

struct PatientWork::Current {
    const bool takesInput;
    VolumeQuestion question{};
    bool isGivenUp = false;
    std::function<void()> next{};

    // What is known once a modal window has been closed may be old.
    void YieldToModalWindows(RepeatedWork& look) {
        if (takesInput) look.Start(kLookPause, [this] { isGivenUp = isGivenUp || IsModalWindowOpen(); });
    }
};

bool PatientWork::CanBeStopped() const {
    return IsWaiting() && current->takesInput;
}

DWORD PatientWork::Do(const std::string& volume, Work work, const Progress& progress) {
    if (current != nullptr) return ERROR_CANCELLED;
    const auto shared = std::make_shared<Shared>();
    shared->work = std::move(work);
    Current now{.takesInput = takesInput && !IsModalWindowOpen()};
    const auto ask = [&] { return now.question.Ask(volume, [shared] { shared->Run(); }); };
    DWORD error = ask();
    bool isAnswered = error == ERROR_SUCCESS && now.question.IsAnswered(kUnnoticed);
    const bool isToWait = error == ERROR_TIMEOUT || (error == ERROR_SUCCESS && !isAnswered);
    if (isToWait) {
        auto end = Clock::now() + (error == ERROR_TIMEOUT ? std::min(patience, kDebtPatience) : patience);
        std::size_t last = 0;
        const auto isOver = [&] { return isAnswered || Clock::now() >= end; };
        current = &now;
        RepeatedWork look;
        now.YieldToModalWindows(look);
        Serve(now.takesInput, [&](std::chrono::milliseconds time) {
            if (error == ERROR_TIMEOUT && (error = ask()) == ERROR_SUCCESS) end = Clock::now() + patience;
            isAnswered = error == ERROR_SUCCESS && now.question.IsAnswered(time);
            const std::size_t done = shared->running.done;
            if (std::exchange(last, done) != done) end = Clock::now() + patience;
            if (progress) progress(done);
            return isOver() || now.isGivenUp || (error != ERROR_SUCCESS && error != ERROR_TIMEOUT);
        });
        current = nullptr;
        if (now.next) RunLater(std::move(now.next));
        if (now.isGivenUp || (!isAnswered && (error == ERROR_SUCCESS || error == ERROR_TIMEOUT))) {
            shared->running.isGivenUp = true;
            return isOver() && !now.isGivenUp ? ERROR_TIMEOUT : ERROR_CANCELLED;
        }
    }
    // There is no thread, or none with a directory of its own.
    if (!isAnswered || shared->isUndone) shared->work(shared->running);
    return ERROR_SUCCESS;
}

// Not in the loop of a modal window that a caller shows: `next` may destroy its owner.
void PatientWork::RunLater(std::function<void()> next) {
    later.Start(kLookPause, [this, next = std::move(next)] {
        if (IsModalWindowOpen()) return;
        later.Stop();
        next();
    });
}

bool PatientWork::DoAtOnce(const std::string& volume, Work work) {
    if (current != nullptr) return false;
    const auto shared = std::make_shared<Shared>();
    shared->work = std::move(work);
    VolumeQuestion question;
    const DWORD error = question.Ask(volume, [shared] { shared->Run(); });
    shared->running.isGivenUp = error == ERROR_TIMEOUT || !question.IsAnswered(kUnnoticed);
    if (shared->running.isGivenUp) return false;
    if (error != ERROR_SUCCESS || shared->isUndone) shared->work(shared->running);
    return true;
}

bool PatientWork::GiveUp(std::function<void()> next) {
    if (current == nullptr) return false;
    current->isGivenUp = true;
    current->next = std::move(next);
    return true;
}

}  // namespace permora
