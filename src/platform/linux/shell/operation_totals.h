// How much there is to do in a file operation, counted while it already runs.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/files/object_handle.h"

namespace permora::host {

class OperationTotals {
  public:
    // Counting that is not done yet is given up.
    ~OperationTotals();

    // Items that are worked on as a whole.
    void AddItems(std::uint64_t count) { items += count; }
    // Items that are worked through with all that is in them, by their paths (platform/api/files.h). What
    // cannot be looked at is not counted, what is mounted below neither.
    void AddTrees(std::vector<std::string> paths);

    std::uint64_t Items() const { return items; }
    std::uint64_t Bytes() const { return bytes; }
    bool AreKnown() const { return uncounted == 0; }

    // One object, on any thread. False when the counting is given up.
    bool CountObject(const ObjectHandle& object);

  private:
    void CountAll();
    void Count(const std::vector<std::string>& paths);

    std::atomic<std::uint64_t> items = 0;
    std::atomic<std::uint64_t> bytes = 0;
    std::atomic<int> uncounted = 0;
    std::atomic<bool> isGivenUp = false;
    std::mutex guard;
    std::deque<std::vector<std::string>> waiting;
    bool isCounting = false;
    std::thread counter;
};

}  // namespace permora::host
