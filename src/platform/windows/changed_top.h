// The object on which a change begins, for its records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/change_recorder.h"
#include "platform/resources.h"

namespace permora {

// The volume's own number of an object that is open for FILE_READ_ATTRIBUTES.
DWORD NumberOf(HANDLE object, std::uint64_t& number);

// What distinguishes the object from all others, at all times: its volume's serial number, its own number (16
// bytes) and the time of its creation, as the system gives them.
DWORD LastingMarkOf(HANDLE object, std::vector<std::uint8_t>& mark);

// As HeldObject::FindTop.
DWORD FindTopOf(HANDLE object, bool isFolder, ChangedTop& top);

// The folder that holds an object, open for READ_CONTROL; none for the root of a volume or of a share.
// ERROR_FILE_INVALID when others rename the object all the time.
DWORD OpenFolderOf(HANDLE object, UniqueHandle& folder);

// Records what a change does to an object and to what is below it. The recorder hears of the object with the
// first record.
class RecordedTop {
  public:
    // Both outlive this. `object` is open for FILE_READ_ATTRIBUTES.
    RecordedTop(ChangeRecorder& changes, HANDLE object, bool folder)
        : recorder(changes), top(object), isFolder(folder) {}

    DWORD Record(std::span<const DescriptorChange> batch);
    std::size_t BatchSize() const { return recorder.BatchSize(); }
    // The first failure of Record, or 0.
    DWORD Error() const { return firstError; }

  private:
    ChangeRecorder& recorder;
    const HANDLE top;
    const bool isFolder;
    std::optional<std::uint64_t> number;
    DWORD firstError = ERROR_SUCCESS;
};

}  // namespace permora
