// Where the changes of one object, and of all below it, are recorded.
#pragma once

#include <cstdint>
#include <span>

#include "platform/change_recorder.h"
#include "platform/held_object.h"

namespace permora::host {

class RecordedTop {
  public:
    // Nothing is kept.
    RecordedTop() = default;
    // Names the object to the recorder, which must outlive this. 0 or the recorder's code.
    DWORD Begin(const HeldObject& object, ChangeRecorder& changeRecorder);

    // How many objects are to be handed over at once; 0 when nothing is kept, and Record need not be called.
    std::size_t BatchSize() const { return recorder->BatchSize(); }
    DWORD Record(std::span<const DescriptorChange> batch) const { return recorder->Record(number, batch); }

  private:
    ChangeRecorder* recorder = &Unrecorded();
    std::uint64_t number = 0;
};

}  // namespace permora::host
