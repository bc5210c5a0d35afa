#include "platform/thread_tuner.h"

#include <algorithm>

namespace permora {
namespace {

// Long enough that starting a thread and the scheduler's turns do not decide, short enough to be through all
// steps in a fraction of a second. A slow server needs some objects to have a speed at all.
constexpr std::chrono::milliseconds kSlice(20);
constexpr std::uint64_t kObjectsOfSlice = 32;
constexpr int kSlicesBetweenTrials = 25;

// Twice the threads must bring so much, half of them may cost so much.
constexpr double kGain = 1.1;
constexpr double kLoss = 0.95;

}  // namespace

std::size_t ThreadTuner::Update(std::uint64_t objects, Time now) {
    const std::uint64_t done = objects - objectsBefore;
    if (now - sliceBegin < kSlice || done < kObjectsOfSlice) return threads;
    EndSlice(static_cast<double>(done) / std::chrono::duration<double>(now - sliceBegin).count());
    sliceBegin = now;
    objectsBefore = objects;
    return threads;
}

void ThreadTuner::EndSlice(double speed) {
    switch (trial) {
        case Trial::kNone:
            speedBefore = speed;
            if (--slicesToTrial <= 0) BeginTrial();
            return;
        case Trial::kMore:
            if (speed < kGain * speedBefore) return GoBack();
            speedBefore = speed;
            BeginTrial();
            return;
        case Trial::kFewer:
            if (speed < kLoss * speedBefore) return GoBack();
            trial = Trial::kNone;
            slicesToTrial = kSlicesBetweenTrials;
            return;
    }
}

// More again while more helps; otherwise more and fewer by turns.
void ThreadTuner::BeginTrial() {
    const bool isClimbing = trial == Trial::kMore;
    const bool mayClimb = threads < limit;
    trial = mayClimb && (isClimbing || lastTrial == Trial::kFewer || threads == 1) ? Trial::kMore
            : isClimbing || threads == 1                                           ? Trial::kNone
                                                                                   : Trial::kFewer;
    slicesToTrial = kSlicesBetweenTrials;
    if (trial == Trial::kNone) return;
    lastTrial = trial;
    threadsBefore = threads;
    threads = trial == Trial::kMore ? std::min(limit, threads * 2) : threads / 2;
}

void ThreadTuner::GoBack() {
    threads = threadsBefore;
    trial = Trial::kNone;
    slicesToTrial = kSlicesBetweenTrials;
}

}  // namespace permora
