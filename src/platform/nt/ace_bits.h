// The numbers that entries are made of. Source: [MS-DTYP] 2.4.3 (access mask) and 2.4.4.1 (entry header).
#pragma once

#include <cstdint>

namespace permora::nt {

// clang-format off
// Entry flags.
inline constexpr std::uint8_t kObjectInherit      = 0x01;  // files inherit it
inline constexpr std::uint8_t kContainerInherit   = 0x02;  // folders inherit it
inline constexpr std::uint8_t kNoPropagateInherit = 0x04;  // those that inherit it do not hand it on
inline constexpr std::uint8_t kInheritOnly        = 0x08;  // does not apply to the object itself
inline constexpr std::uint8_t kInherited          = 0x10;  // came from the folder above

// Generic rights, and what they mean for files and folders.
inline constexpr std::uint32_t kGenericAll         = 0x10000000;
inline constexpr std::uint32_t kGenericExecute     = 0x20000000;
inline constexpr std::uint32_t kGenericWrite       = 0x40000000;
inline constexpr std::uint32_t kGenericRead        = 0x80000000;
inline constexpr std::uint32_t kGenericRights      = kGenericAll | kGenericExecute | kGenericWrite | kGenericRead;
inline constexpr std::uint32_t kFileAllAccess      = 0x001F01FF;
inline constexpr std::uint32_t kFileGenericExecute = 0x001200A0;
inline constexpr std::uint32_t kFileGenericWrite   = 0x00120116;
inline constexpr std::uint32_t kFileGenericRead    = 0x00120089;

inline constexpr std::uint8_t kAccessAllowedType  = 0x00;
inline constexpr std::uint8_t kAccessDeniedType   = 0x01;
inline constexpr std::uint8_t kMandatoryLabelType = 0x11;
// clang-format on

// Whether an entry of this type allows, or denies, to whoever it names: plain ones, those about certain
// classes of objects, those with conditions, and both.
constexpr bool IsAllowType(std::uint8_t type) {
    return type == kAccessAllowedType || type == 0x05 || type == 0x09 || type == 0x0B;
}
constexpr bool IsDenyType(std::uint8_t type) {
    return type == kAccessDeniedType || type == 0x06 || type == 0x0A || type == 0x0C;
}

}  // namespace permora::nt
