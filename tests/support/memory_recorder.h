// A recorder that keeps what it is told, and looks whether it is told in time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <mutex>
#include <string>
#include <vector>

#include "platform/change_recorder.h"
#include "platform/held_object.h"

namespace permora::test {

// For changes on one disk; a record of an object that is already changed is noted as late.
class MemoryRecorder : public ChangeRecorder {
  public:
    explicit MemoryRecorder(std::size_t batch = 512) : batchSize(batch) {}

    DWORD BeginTop(const ChangedTop& top, std::uint64_t& number) override;
    DWORD Record(std::uint64_t top, std::span<const DescriptorChange> batch) override;
    std::size_t BatchSize() const override { return batchSize; }
    DWORD Error() const override { return error; }

    std::size_t mostBatches = std::numeric_limits<std::size_t>::max();  // the next one fails with `failure`
    DWORD failure = ERROR_DISK_FULL;

    std::vector<ChangedTop> tops;
    std::vector<DescriptorChange> records;
    std::size_t batches = 0;
    std::vector<std::string> late;  // paths

  private:
    const std::size_t batchSize;
    std::mutex guard;
    std::vector<HeldObject> held;  // the tops
    DWORD error = ERROR_SUCCESS;
};

}  // namespace permora::test
