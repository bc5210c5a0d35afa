// Objects that are given security on which that of others depends: recorded in batches, then written one
// after the other, through the handles that were read. Others are written faster (history/stored_writes.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_set>
#include <vector>

#include "platform/change_recorder.h"
#include "platform/held_object.h"

namespace permora {

// The changes below one top. Open descriptors and memory are those of one batch.
class StoredBatch {
  public:
    // Writes one object, in the order of Add. Without `object` it is one that the caller holds himself.
    using Write = std::function<void(const HeldObject* object, const DescriptorChange& change)>;

    // The recorder is borrowed, and learns of the top with the first batch.
    StoredBatch(ChangeRecorder& changeRecorder, ChangedTop changedTop, Write writeOne);

    // Takes an object that has just been read to keep `change.before`, and is to get `change.after`: it is
    // written at the latest by Flush. What is in the batch already, perhaps by another of its names, must not
    // be read before it is written: Flush comes first when Holds says so.
    DWORD Add(std::optional<HeldObject> object, DescriptorChange change);
    bool Holds(std::uint64_t fileNumber) const { return numbers.contains(fileNumber); }

    // Records what was taken, then writes it. A result but 0, of this and of Add, is the recorder's: nothing
    // that it was asked to record is written, and nothing may be added any more.
    DWORD Flush();

  private:
    DWORD Record();
    void Clear();

    ChangeRecorder& recorder;
    ChangedTop top;
    Write write;
    std::optional<std::uint64_t> topNumber;
    std::vector<std::optional<HeldObject>> objects;
    std::vector<DescriptorChange> changes;  // of the objects, in their order
    std::unordered_set<std::uint64_t> numbers;
    std::size_t bytes = 0;
};

}  // namespace permora
