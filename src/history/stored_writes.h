// Objects that are given security which they had at another time or which comes from elsewhere: recorded in
// batches, then written through the handles that were read.
//
// One batch is filled while the one before is recorded and the one before that is written, on threads of
// their own where there may be any: they wait for the disk in different ways.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <optional>
#include <unordered_set>
#include <vector>

#include "platform/change_recorder.h"
#include "platform/held_object.h"
#include "platform/thread_tuner.h"

namespace permora {

// The changes below one top. Open descriptors and memory are those of three batches. One thread at a time.
class StoredWrites {
  public:
    // Writes one object: the result is a system error code. On any thread, for several objects at a time
    // (StoredWrites finds out how many help), and in no certain order between two calls of Flush. Without
    // `object` it is one that the caller holds himself, which is written during a call of Add, Flush or
    // Finish.
    using Write =
        std::function<DWORD(const std::optional<HeldObject>& object, const DescriptorChange& change)>;
    // What has become of one, in the order of Add, on the thread that calls Add, Flush or Finish. After one
    // that says that the volume is lost (IsVolumeLost), no more are written, and have that result, too.
    using Done = std::function<void(const DescriptorChange& change, DWORD result)>;

    // The recorder is borrowed, and learns of the top with the first batch.
    StoredWrites(ChangeRecorder& changeRecorder, ChangedTop changedTop, Write writeOne, Done whenDone);

    // Takes an object that has just been read to keep `change.before`, and is to get `change.after`: it is
    // written at the latest by Flush. What was taken before, perhaps by another of its names, must not be
    // read before it is written: Flush comes first when Holds says so.
    DWORD Add(std::optional<HeldObject> object, DescriptorChange change);
    bool Holds(std::uint64_t fileNumber) const;

    // Records what was taken, then writes it. A result but 0, of this and of the other calls, is the
    // recorder's: from then on nothing is written, and nothing may be added any more.
    DWORD Flush();
    // Brings to its end what is being recorded and written already. The rest waits for Flush, and is
    // forgotten without it.
    DWORD Finish();

  private:
    struct Batch {
        std::vector<std::optional<HeldObject>> objects;
        bool holdsAll = true;                   // or the caller must do nothing with his own meanwhile
        std::vector<DescriptorChange> changes;  // of the objects, in their order
        std::unordered_set<std::uint64_t> numbers;
        std::size_t bytes = 0;
        std::vector<DWORD> results;  // of writing the first of the objects
    };

    DWORD Advance(Batch batch);
    DWORD Record();
    void BeginWriting();
    void EndWriting();
    void WriteNext();
    void Report(const Batch& batch) const;

    ChangeRecorder& recorder;
    const ChangedTop top;
    const Write write;
    const Done done;
    std::optional<std::uint64_t> topNumber;   // as soon as the recorder has given one
    std::atomic<bool> hasFailed = false;      // the recorder
    DWORD error = ERROR_SUCCESS;              // its code
    std::atomic<DWORD> lost = ERROR_SUCCESS;  // why nothing more can be written
    std::size_t batchObjects;
    Batch filled;
    Batch recorded;
    Batch written;
    std::atomic<std::size_t> next = 0;  // of `written`, to be written
    std::future<DWORD> recording;       // uses `recorded`
    std::vector<std::future<void>> writing;
    std::uint64_t tried = 0;  // so many objects, of all batches before `written`
    ThreadTuner tuner;
};

}  // namespace permora
