#include "platform/thread_tuner.h"

#include <algorithm>

namespace permora {
namespace {

// Long enough that starting a thread and the scheduler's turns do not decide, short enough to be through all
// steps in a fraction of a second. A slow server needs some objects to have a speed at all; but each of them
// may take a second there, so no more are waited for than tell it.
constexpr std::chrono::milliseconds kSlice(20);
constexpr std::uint64_t kObjectsOfSlice = 8;
constexpr std::uint64_t kObjectsOfThread = 2;
constexpr int kMostSlicesBetweenTrials = 32;

// Twice the threads must bring so much, half of them may cost so much.
constexpr double kGain = 1.1;
constexpr double kGainBeyondProcessors = 1.4;
constexpr double kLoss = 0.95;

}  // namespace

std::size_t ThreadTuner::Update(std::uint64_t objects, Time now) {
    const std::uint64_t done = objects - objectsBefore;
    if (now - sliceBegin < kSlice || done < std::max(kObjectsOfSlice, kObjectsOfThread * threads))
        return threads;
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
            if (speed < LeastGain() * speedBefore) return GoBack();
            speedBefore = speed;
            BeginTrial();
            return;
        case Trial::kFewer:
            if (speed < kLoss * speedBefore) return GoBack();
            EndTrial();
            return;
    }
}

double ThreadTuner::LeastGain() const {
    return threads > processors ? kGainBeyondProcessors : kGain;
}

// More again while more helps; otherwise more, and fewer by turns once trials have become rare.
void ThreadTuner::BeginTrial() {
    const bool isClimbing = trial == Trial::kMore;
    const bool isTurnOfMore =
        lastTrial == Trial::kFewer || slicesBetweenTrials < kMostSlicesBetweenTrials || threads == 1;
    if (isClimbing) slicesBetweenTrials = 1;
    if (threads < limit && (isClimbing || isTurnOfMore))
        trial = Trial::kMore;
    else if (isClimbing || threads == 1)
        return EndTrial();
    else
        trial = Trial::kFewer;
    lastTrial = trial;
    threadsBefore = threads;
    threads = trial == Trial::kMore ? std::min(limit, threads * 2) : threads / 2;
}

void ThreadTuner::EndTrial() {
    trial = Trial::kNone;
    slicesBetweenTrials = std::min(slicesBetweenTrials * 2, kMostSlicesBetweenTrials);
    slicesToTrial = slicesBetweenTrials;
}

void ThreadTuner::GoBack() {
    threads = threadsBefore;
    EndTrial();
}

}  // namespace permora
