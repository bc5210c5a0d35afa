// The type numbers of well-known SIDs.
// Source: the SDK's WELL_KNOWN_SID_TYPE (winnt.h) as its public documentation lists it.
#pragma once

#include <optional>

#include "platform/nt/sid.h"

namespace permora::nt {

inline constexpr int kLastWellKnownSidType = 50;

// The SID of a type from 0 to kLastWellKnownSidType. Nothing for another number, and for an account of a
// domain when `domain` is null (or too long for accounts below it).
std::optional<Sid> SidOfWellKnownType(int type, const Sid* domain);

}  // namespace permora::nt
