// How many threads a walk is to have: found by trying, since no list of file systems knows it. A disk of this
// machine serves as many as there are processors, a server far more, and ntfs-3g one request at a time.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace permora {

// Climbs: begins with one thread, doubles as long as that brings more objects in the same time, and goes back
// where it does not. More threads than processors must bring much more: they pay where requests wait, and
// otherwise a moment in which other programs were quieter would look like a gain. More are tried again soon,
// since the first try may have met a bad moment, and then less and less often; fewer from time to time, since
// another part of the tree, or another load of the machine, may want another number.
//
// Where objects wait for a server it leaps to the most at once, and then comes down while that costs nothing:
// the way up may begin flat. A connection that sends a small request only when the one before has been
// acknowledged takes as long for two as for one, but gathers many. One thread at a time.
class ThreadTuner {
  public:
    using Time = std::chrono::steady_clock::time_point;

    ThreadTuner(std::size_t most, std::size_t ofMachine, Time begin)
        : limit(most), processors(ofMachine), sliceBegin(begin) {}

    std::size_t Threads() const { return threads; }
    // So many objects are done by now. The number of threads that are to work from here on.
    std::size_t Update(std::uint64_t objects, Time now);

  private:
    enum class Trial { kNone, kMore, kFewer };

    void EndSlice(double speed);
    void BeginTrial();
    void Try(Trial next);
    void EndTrial();
    void GoBack();
    double LeastGain() const;

    const std::size_t limit;
    const std::size_t processors;
    std::size_t threads = 1;
    std::size_t threadsBefore = 1;  // the trial
    double speedBefore = 0;         // objects in a second
    Trial trial = Trial::kNone;
    Trial lastTrial = Trial::kFewer;
    bool isWaiting = false;  // objects, for a server, in the last slice
    bool hasLeapt = false;   // with this trial, or with the one that it follows
    int slicesToTrial = 1;
    int slicesBetweenTrials = 1;
    Time sliceBegin;
    std::uint64_t objectsBefore = 0;  // the slice
};

}  // namespace permora
