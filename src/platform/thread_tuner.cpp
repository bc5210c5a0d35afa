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

// An object that keeps its thread for so long waits for a server. A driver of this machine needs a
// tenth of it.
constexpr double kWaitForServer = 0.002;  // seconds

// Twice the threads must bring so much, half of them may cost so much.
constexpr double kGain = 1.1;
constexpr double kGainBeyondProcessors = 1.4;
constexpr double kLoss = 0.95;

}  // namespace

std::size_t ThreadTuner::Update(std::uint64_t objects, Time now) {
    const std::uint64_t done = objects - objectsBefore;
    if (now - sliceBegin < kSlice || done < kObjectsOfThread * threads) return threads;
    const double speed = static_cast<double>(done) / std::chrono::duration<double>(now - sliceBegin).count();
    isWaiting = static_cast<double>(threads) > kWaitForServer * speed;
    const bool isToldEarly = isWaiting && objectsBefore == 0;
    if (done < kObjectsOfSlice && !isToldEarly) return threads;
    EndSlice(speed);
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
            slicesBetweenTrials = 1;
            return hasLeapt ? Try(Trial::kFewer) : BeginTrial();
        case Trial::kFewer:
            if (speed < kLoss * speedBefore) return GoBack();
            speedBefore = std::max(speedBefore, speed);
            return hasLeapt && threads > 1 ? Try(Trial::kFewer) : EndTrial();
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
    if (threads < limit && (isClimbing || isTurnOfMore)) {
        hasLeapt = isWaiting;
        Try(Trial::kMore);
    } else if (isClimbing || threads == 1) {
        EndTrial();
    } else {
        Try(Trial::kFewer);
    }
}

void ThreadTuner::Try(Trial next) {
    trial = lastTrial = next;
    threadsBefore = threads;
    if (next == Trial::kFewer)
        threads /= 2;
    else
        threads = hasLeapt ? limit : std::min(limit, threads * 2);
}

void ThreadTuner::EndTrial() {
    trial = Trial::kNone;
    hasLeapt = false;
    slicesBetweenTrials = std::min(slicesBetweenTrials * 2, kMostSlicesBetweenTrials);
    slicesToTrial = slicesBetweenTrials;
}

void ThreadTuner::GoBack() {
    threads = threadsBefore;
    EndTrial();
}

}  // namespace permora
