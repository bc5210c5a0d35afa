#include "history/stored_batch.h"

#include <utility>

namespace permora {
namespace {

// Each object takes two open descriptors.
constexpr std::size_t kMostObjects = 256;
constexpr std::size_t kMostBytes = std::size_t{4} << 20;

}  // namespace

StoredBatch::StoredBatch(ChangeRecorder& changeRecorder, ChangedTop changedTop, Write writeOne)
    : recorder(changeRecorder), top(std::move(changedTop)), write(std::move(writeOne)) {}

DWORD StoredBatch::Add(std::optional<HeldObject> object, DescriptorChange change) {
    numbers.insert(change.fileNumber);
    bytes += change.path.size() + change.before.bytes.size() + change.after.bytes.size();
    objects.push_back(std::move(object));
    changes.push_back(std::move(change));
    return changes.size() < kMostObjects && bytes < kMostBytes ? ERROR_SUCCESS : Flush();
}

DWORD StoredBatch::Record() {
    if (!topNumber) {
        std::uint64_t number = 0;
        if (const DWORD error = recorder.BeginTop(top, number); error != ERROR_SUCCESS) return error;
        topNumber = number;
    }
    return recorder.Record(*topNumber, changes);
}

DWORD StoredBatch::Flush() {
    if (changes.empty()) return ERROR_SUCCESS;
    const DWORD error = Record();
    for (std::size_t i = 0; error == ERROR_SUCCESS && i < changes.size(); ++i)
        write(objects[i] ? &*objects[i] : nullptr, changes[i]);
    Clear();
    return error;
}

void StoredBatch::Clear() {
    objects.clear();
    changes.clear();
    numbers.clear();
    bytes = 0;
}

}  // namespace permora
