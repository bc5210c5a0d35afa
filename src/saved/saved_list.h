// Access lists of trees that were saved as text: what such a text says, whichever of its forms it has.
//
// docs/saved-lists.md describes both forms.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/nt/security_descriptor.h"

namespace permora {

enum class SavedForm : std::uint8_t {
    kPermora,  // our own
    kIcacls,   // that of the system's tool icacls: DACLs and nothing else
};

enum class SavedKind : std::uint8_t {
    kFile,
    kFolder,
    kLink,
    kOther,     // a device, a pipe, a socket
    kUnknown,   // the form does not say
    kMounted,   // another volume is mounted there; nothing of it was saved
    kUnread,    // its descriptor could not be read
    kUnlisted,  // a folder, which came right before, whose names could not be read, or not to their end
};

// What holds for the whole text.
struct SavedHead {
    SavedForm form = SavedForm::kPermora;
    std::string time;  // when it was saved, UTC: 2026-11-26T08:02:11Z; empty where the form has none
    SECURITY_INFORMATION parts =
        0;  // which parts of the descriptors were saved: OWNER_SECURITY_INFORMATION...
};

// The object from which objects were saved downwards.
struct SavedTop {
    std::string path;    // absolute, as files.h takes it; empty where the form has none
    std::string volume;  // for people: what the volume calls itself
};

struct SavedDescriptor {
    std::vector<std::uint8_t> bytes;  // self-relative, checked
    nt::SecurityDescriptor value;     // the same
};

struct SavedObject {
    // Below the top, the names as the platform layer shows them with backslashes between them; empty: the
    // top itself. No name is empty, "." or "..", or holds a separator, a colon or a control character. A name
    // may still be none of this system's: looking it up then fails.
    std::string path;
    SavedKind kind = SavedKind::kFile;
    // Null for kMounted, kUnread and kUnlisted. Equal ones are mostly one and the same.
    std::shared_ptr<const SavedDescriptor> descriptor;
    DWORD error = ERROR_SUCCESS;  // of kUnread and kUnlisted: why
};

// Why a text is refused, or could not be read to its end.
struct SavedFault {
    std::uint64_t line = 0;  // counted from 1; 0: none in particular
    std::string reason;      // for people, without a full stop; empty: no fault
};

}  // namespace permora
