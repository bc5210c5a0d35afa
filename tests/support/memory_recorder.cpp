#include "tests/support/memory_recorder.h"

#include <utility>

namespace permora::test {

DWORD MemoryRecorder::BeginTop(const ChangedTop& top, std::uint64_t& number) {
    const std::lock_guard lock(guard);
    HeldObject object;
    if (error == ERROR_SUCCESS) error = HeldObject::HoldTop(top, object);
    if (error != ERROR_SUCCESS) return error;
    number = tops.size();
    tops.push_back(top);
    held.push_back(std::move(object));
    return ERROR_SUCCESS;
}

DWORD MemoryRecorder::Record(std::uint64_t top, std::span<const DescriptorChange> batch) {
    const std::lock_guard lock(guard);
    if (error == ERROR_SUCCESS && batches == mostBatches) error = failure;
    if (error != ERROR_SUCCESS) return error;
    ++batches;
    for (const DescriptorChange& change : batch) {
        HeldObject object;
        StoredSecurity now;
        const bool isInTime = held.at(top).HoldBelow(change.path, object) == ERROR_SUCCESS &&
                              object.ReadStored(now) == ERROR_SUCCESS && now == change.before &&
                              object.FileNumber() == change.fileNumber &&
                              object.IsFolder() == change.isFolder;
        if (!isInTime) late.push_back(change.path);
        records.push_back(change);
    }
    return ERROR_SUCCESS;
}

}  // namespace permora::test
