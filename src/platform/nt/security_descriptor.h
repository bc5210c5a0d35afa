// A security descriptor as a plain value. Self-relative form: [MS-DTYP] 2.4.6.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/nt/acl.h"
#include "platform/nt/sid.h"

namespace permora::nt {

// Control bits that the value itself uses; every other bit is kept.
inline constexpr std::uint16_t kDaclPresent = 0x0004;
inline constexpr std::uint16_t kSaclPresent = 0x0010;
inline constexpr std::uint16_t kSaclDefaulted = 0x0020;
inline constexpr std::uint16_t kDaclAutoInheritRequest = 0x0100;
inline constexpr std::uint16_t kSaclAutoInheritRequest = 0x0200;
inline constexpr std::uint16_t kDaclAutoInherited = 0x0400;
inline constexpr std::uint16_t kSaclAutoInherited = 0x0800;
inline constexpr std::uint16_t kDaclProtected = 0x1000;
inline constexpr std::uint16_t kSaclProtected = 0x2000;
inline constexpr std::uint16_t kSelfRelative = 0x8000;

// Three states that mean three different things and are never confused.
enum class DaclState {
    kAbsent,  // the descriptor says nothing about access (everyone may do everything)
    kNull,    // present without a list: everyone may do everything
    kList,    // a list, possibly empty: nobody may do anything that no entry grants
};

struct SecurityDescriptor {
    std::uint16_t control = kSelfRelative;  // kDaclPresent and kSaclPresent follow the parts when written
    std::uint8_t resourceManagerControl = 0;
    std::optional<Sid> owner;
    std::optional<Sid> group;
    DaclState daclState = DaclState::kAbsent;
    Acl dacl;  // meaningful for DaclState::kList
    // The system access list byte for byte, padding included, so that writing another part never touches it.
    // Present but null when kSaclPresent is set and this is empty.
    std::vector<std::uint8_t> saclBytes;

    // Checks the whole descriptor first: revision 1, self-relative, every part inside `bytes`, no two parts
    // overlapping (owner and group may be the same bytes), every SID, list and entry well formed, also in the
    // system access list. A list without its flag in the control word is wrong, too, since readers interpret
    // it differently. Nothing when anything is wrong.
    static std::optional<SecurityDescriptor> FromBytes(std::span<const std::uint8_t> bytes);
    // Appends the self-relative form as the system lays it out: header, system list, DACL, owner, group, each
    // part at a multiple of four. False, with `bytes` as before, when a list is too large.
    [[nodiscard]] bool AppendTo(std::vector<std::uint8_t>& bytes) const;

    bool IsDaclProtected() const { return (control & kDaclProtected) != 0; }

    friend bool operator==(const SecurityDescriptor& one, const SecurityDescriptor& other) = default;
};

}  // namespace permora::nt
