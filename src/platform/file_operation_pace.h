// FileOperationPace: how far a file operation has come, and how long it will still take.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "platform/file_operation_presenter.h"

namespace permora {

// Bytes and items both count, since many small files take time too. The speed is an average of the last
// seconds, in which older ones weigh less, so that the time left follows changes without jumping.
class FileOperationPace {
  public:
    using Time = std::chrono::steady_clock::time_point;

    // `now` never goes back.
    void Add(Time now, const FileOperationProgress& progress);
    // The operation waits for its user: the time until the next Add does not count.
    void Pause() { last.reset(); }

    // The completed part, from 0 to 1. Nothing while the total is not known.
    std::optional<double> Fraction() const;
    // Nothing in the first seconds.
    std::optional<std::chrono::seconds> TimeLeft() const;

  private:
    std::optional<Time> last;  // when `done` was so
    double done = 0;           // in bytes, or what takes as long
    double total = 0;
    bool isTotalKnown = false;
    double speed = 0;   // per second, not yet divided by `weight`
    double weight = 0;  // of what `speed` is made of; comes near 1
    double seconds = 0;
};

// "About 2 minutes"; "Being estimated" while it is not known.
std::string TimeLeftText(std::optional<std::chrono::seconds> left);
// "4.0 GB", "512 bytes".
std::string ByteText(ULONGLONG bytes);

}  // namespace permora
