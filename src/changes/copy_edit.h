// What one object has, given to others.
#pragma once

#include <cstdint>

#include "changes/descriptor_edit.h"

namespace permora {

// An object gets the source's own entries in the place of its own, and inherits or does not as the source
// does. On a file, an entry takes effect as it does on the source's own kind, without what it hands down.
//
// Below the top an object gets none of its own where its folder hands all of them down: it inherits them.
class CopyEdit : public DescriptorEdit {
  public:
    enum class Reach : std::uint8_t {
        kTop,   // what is below gets what it inherits then
        kTree,  // what is below gets the same
    };
    enum class Owner : std::uint8_t { kKeep, kCopy };
    CopyEdit(const nt::SecurityDescriptor& sourceSecurity, Reach copyReach, Owner copyOwner);

    EditedSecurity Edit(const ObjectToEdit& object) override;

  private:
    // The source's own entries as an object of this kind has them.
    const nt::Acl& OwnFor(nt::ObjectKind kind) const {
        return kind == nt::ObjectKind::kFolder ? source.dacl : forFiles;
    }
    bool IsHandedDown(const ObjectToEdit& object) const;
    void TakeList(const ObjectToEdit& object, EditedSecurity& edited) const;

    nt::SecurityDescriptor source;  // with its own entries alone
    nt::Acl forFiles;
    const Reach reach;
    const Owner owner;
};

}  // namespace permora
