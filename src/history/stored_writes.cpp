#include "history/stored_writes.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "platform/volume_loss.h"

namespace permora {
namespace {

// Each object is held open, and its descriptors are in memory. The first batch is small: where few objects
// can be held open, the recorder must open what it needs before they are.
constexpr std::size_t kFirstWrites = 16;
constexpr std::size_t kMostWrites = 1024;
constexpr std::size_t kMostWriteBytes = std::size_t{1} << 20;

// While one is waiting for the volume, another has something to do.
constexpr std::size_t kLeastWriters = 2;
constexpr std::size_t kMostWriters = 16;

}  // namespace

StoredWrites::StoredWrites(ChangeRecorder& changeRecorder, ChangedTop changedTop, Write writeOne,
                           Done whenDone)
    : recorder(changeRecorder),
      top(std::move(changedTop)),
      write(std::move(writeOne)),
      done(std::move(whenDone)),
      batchObjects(kFirstWrites),
      tuner(kMostWriters, std::thread::hardware_concurrency(), ThreadTuner::Time::clock::now()) {}

DWORD StoredWrites::Add(std::optional<HeldObject> object, DescriptorChange change) {
    filled.holdsAll = filled.holdsAll && object.has_value();
    filled.numbers.insert(change.fileNumber);
    filled.bytes += change.path.size() + change.before.bytes.size() + change.after.bytes.size();
    filled.objects.push_back(std::move(object));
    filled.changes.push_back(std::move(change));
    if (filled.changes.size() < batchObjects && filled.bytes < kMostWriteBytes) return error;
    batchObjects = std::min(2 * batchObjects, kMostWrites);
    return topNumber ? Advance(std::exchange(filled, {})) : Flush();
}

bool StoredWrites::Holds(std::uint64_t fileNumber) const {
    return filled.numbers.contains(fileNumber) || recorded.numbers.contains(fileNumber) ||
           written.numbers.contains(fileNumber);
}

DWORD StoredWrites::Flush() {
    Advance(std::exchange(filled, {}));
    return Finish();
}

DWORD StoredWrites::Finish() {
    Advance({});
    return Advance({});
}

// One step further with all batches; `batch` is recorded from now on.
DWORD StoredWrites::Advance(Batch batch) {
    EndWriting();
    tuner.Update(tried += written.results.size(), ThreadTuner::Time::clock::now());
    if (recording.valid()) error = recording.get();
    const Batch finished = std::exchange(written, {});
    if (error == ERROR_SUCCESS) {
        written = std::exchange(recorded, std::move(batch));
        BeginWriting();
        if (!recorded.changes.empty()) recording = std::async([this] { return Record(); });
    }
    Report(finished);
    return error;
}

DWORD StoredWrites::Record() {
    DWORD result = ERROR_SUCCESS;
    if (!topNumber) {
        std::uint64_t number = 0;
        result = recorder.BeginTop(top, number);
        if (result == ERROR_SUCCESS) topNumber = number;
    }
    if (result == ERROR_SUCCESS) result = recorder.Record(*topNumber, recorded.changes);
    hasFailed = result != ERROR_SUCCESS;
    return result;
}

void StoredWrites::BeginWriting() {
    next = 0;
    written.results.resize(written.changes.size());
    if (written.changes.empty()) return;
    const std::size_t threads = std::max(kLeastWriters, tuner.Threads());
    while (writing.size() < threads)
        writing.push_back(std::async([this] { WriteNext(); }));
    if (!written.holdsAll) EndWriting();
}

void StoredWrites::EndWriting() {
    for (std::future<void>& thread : writing)
        thread.get();
    writing.clear();
    written.results.resize(std::min<std::size_t>(next, written.results.size()));
}

// What was taken is written, so that the results have no gaps after a failure.
void StoredWrites::WriteNext() {
    while (!hasFailed) {
        const std::size_t i = next++;
        if (i >= written.changes.size()) return;
        const DWORD known = lost;
        written.results[i] = known != ERROR_SUCCESS ? known : write(written.objects[i], written.changes[i]);
        if (IsVolumeLost(written.results[i])) lost = written.results[i];
    }
}

void StoredWrites::Report(const Batch& batch) const {
    for (std::size_t i = 0; i < batch.results.size(); ++i)
        done(batch.changes[i], batch.results[i]);
}

}  // namespace permora
