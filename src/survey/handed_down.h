// Whether an object still has what its folder hands down.
#pragma once

#include <cstdint>

#include "platform/nt/inheritance.h"
#include "platform/nt/security_descriptor.h"

namespace permora {

enum class HandedDown : std::uint8_t {
    kMarked,    // its inherited entries are what the folder hands down
    kUnmarked,  // so are all its entries, without the mark of inherited ones: servers write such lists below
                // a folder that is not marked as kept up to date
    kStale,     // it has other inherited entries
};

// `object` has a list that is not protected; `above` is the list of its folder. Two lists that mean the same
// are the same: generic rights or what they stand for, one entry that takes effect and is handed on or two,
// an entry that is there twice. An entry for the CREATOR OWNER of the object may name any account, since a
// later change of the owner leaves it as it is; that of CREATOR GROUP likewise.
HandedDown CompareHandedDown(const nt::SecurityDescriptor& object, const nt::Acl& above, nt::ObjectKind kind);

}  // namespace permora
