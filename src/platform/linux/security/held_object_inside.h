// What is behind a HeldObject.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/held_object.h"
#include "platform/linux/files/descriptor_support.h"
#include "platform/linux/files/object_identity.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/security/object_turn.h"

namespace permora {

// How a HeldObject opens what is held below it.
enum class OpeningBelow : std::uint8_t {
    kAsPlace,
    kAsLookedUp,  // the same, with a status that may be as old as the lookup of the name
    kToRead,      // files and folders
};

struct HeldObject::Inside {
    host::ResolvedObject target;
    std::string hostName;  // in the target's parent, when it was found by HoldBelow
    host::ObjectTurn turn;
    // For objects that are held below this one (HoldBelow), and so lie on the same mount: asked once for all.
    std::optional<host::DescriptorStoreKind> storeKind;
    std::optional<host::BirthPlace> birthPlace;
    std::shared_ptr<host::LockFiles> lockFiles;
    // HoldBelow begins here (ExpectManyBelow); empty: at the object itself.
    host::ObjectHandle withoutDevices;
    OpeningBelow openingBelow = OpeningBelow::kAsPlace;
};

}  // namespace permora
