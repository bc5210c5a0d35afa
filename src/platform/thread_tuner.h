// How many threads a walk is to have: found by trying, since no list of file systems knows it. A disk of this
// machine serves as many as there are processors, a server far more, and ntfs-3g one request at a time.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace permora {

// Climbs: begins with one thread, doubles as long as that brings more objects in the same time, and goes back
// where it does not. From time to time it tries more or fewer once more, since another part of the tree, or
// another load of the machine, may want another number. One thread at a time.
class ThreadTuner {
  public:
    using Time = std::chrono::steady_clock::time_point;

    ThreadTuner(std::size_t most, Time begin) : limit(most), sliceBegin(begin) {}

    std::size_t Threads() const { return threads; }
    // So many objects are done by now. The number of threads that are to work from here on.
    std::size_t Update(std::uint64_t objects, Time now);

  private:
    enum class Trial { kNone, kMore, kFewer };

    void EndSlice(double speed);
    void BeginTrial();
    void GoBack();

    const std::size_t limit;
    std::size_t threads = 1;
    std::size_t threadsBefore = 1;  // the trial
    double speedBefore = 0;         // objects in a second
    Trial trial = Trial::kNone;
    Trial lastTrial = Trial::kFewer;
    int slicesToTrial = 1;
    Time sliceBegin;
    std::uint64_t objectsBefore = 0;  // the slice
};

}  // namespace permora
