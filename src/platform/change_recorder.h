// Who is told of every change of a security descriptor before it is made, so that it can be taken back.
//
// Whatever replaces descriptors in this layer first hands over what was there and what is about to be there.
// The recorder makes that durable; only then the objects are written, through the handles that were read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/api/errors.h"

namespace permora {

// Where the security of an object is kept. The numbers are part of stored data.
enum class SecurityForm : std::uint8_t {
    kNone = 0,    // nothing is stored: owner, group and mode of the host count
    kVolume = 1,  // in the volume itself: NTFS, and everything on Windows
    kSamba = 2,   // in the attribute of a Samba server, in that server's form
    kUser = 3,    // in the attribute of an ordinary user
    kShare = 4,   // with the share's record
};

// The security of an object exactly as it is kept, so that it can be put back byte for byte.
struct StoredSecurity {
    SecurityForm form = SecurityForm::kNone;
    std::vector<std::uint8_t> bytes;         // as they are stored; of kNone: empty
    std::optional<std::uint32_t> hostOwner;  // the host's owner beside the descriptor's, where there is one

    bool operator==(const StoredSecurity&) const = default;
};

// Whether the system access list is among what is read where it is handed out apart from the rest and takes a
// right of its own: on other servers. Everywhere else it is kept with the rest, and comes with it.
enum class SystemList : std::uint8_t { kLeftOut, kIncluded };

// The object on which a change begins: the one that the user has named.
struct ChangedTop {
    // Absolute, as files.h takes it; the name of a share. Empty when no path leads to the object, which
    // nobody can find again then.
    std::string path;
    bool isFolder = false;
    std::vector<std::uint8_t> mark;  // what knows it again (HeldObject::Mark); empty for a share
};

// One object, before it is written.
struct DescriptorChange {
    // Below the top, the names with backslashes between them; empty: the top itself.
    std::string path;
    bool isFolder = false;
    std::uint64_t fileNumber = 0;  // the volume's own number of the object
    StoredSecurity before;
    StoredSecurity after;
};

// All calls may come on any thread, several at the same time.
class ChangeRecorder {
  public:
    virtual ~ChangeRecorder() = default;

    // Before the first batch of each top. `number` stands for the top in what follows; the same top gets the
    // same number again.
    virtual DWORD BeginTop(const ChangedTop& top, std::uint64_t& number) = 0;

    // 0: the batch is durable and may be written, in this order or any other. Another code: nothing of it may
    // be written, and the change ends with that code. An object may come again, when it gets something else
    // than was announced before.
    virtual DWORD Record(std::uint64_t top, std::span<const DescriptorChange> batch) = 0;

    // How many objects are best handed over at once, since a batch takes about as long as one object to make
    // durable. 0: nothing is kept, so the calls above may be left out.
    virtual std::size_t BatchSize() const { return 512; }

    // The first failure of these calls, or 0. It tells a change that could not be recorded from one that
    // could not be written.
    virtual DWORD Error() const = 0;
};

// For changes that nobody wants to take back.
class NoRecord : public ChangeRecorder {
  public:
    DWORD BeginTop(const ChangedTop& /*top*/, std::uint64_t& number) override {
        number = 0;
        return ERROR_SUCCESS;
    }
    DWORD Record(std::uint64_t /*top*/, std::span<const DescriptorChange> /*batch*/) override {
        return ERROR_SUCCESS;
    }
    std::size_t BatchSize() const override { return 0; }
    DWORD Error() const override { return ERROR_SUCCESS; }
};
inline ChangeRecorder& Unrecorded() {
    static NoRecord kNobody;
    return kNobody;
}

}  // namespace permora
