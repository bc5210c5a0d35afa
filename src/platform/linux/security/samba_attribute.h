// The extended attribute "security.NTACL", in which a Samba server with the module acl_xattr keeps an
// object's security descriptor.
//
// The form, as seen in attributes that Samba 4.17 wrote and accepted (little-endian NDR, everything on its
// alignment):
//
//     version (2 bytes), version again (2), a pointer that is not 0 (4)
//     version 2:     a pointer that is not 0 (4), hash (16)
//     versions 3, 4: a pointer that is not 0 (4), hash type (2), hash (64), and two bytes of padding (3) or
//                    a NUL-terminated description, padding to a multiple of four, a time (8), a second hash
//                    (64) (4)
//     the self-relative descriptor, whose offsets count from the start of the attribute
//
// A server that ignores the system's own access lists takes every version and looks at no hash. One that does
// not ("acl_xattr:ignore system acls = no", the default) drops a version 3 or 4 whose hash does not match
// what the file system itself says about the object, but takes version 1, which has none. So version 1 is
// what is written here.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace permora::host {

// The descriptor in an attribute, with its offsets counted from its own start; it still has to be checked.
// False, with `descriptor` as before, when the attribute is too short, of an unknown version or has an offset
// that leads in front of the descriptor's parts.
bool DescriptorFromSambaAttribute(std::span<const std::uint8_t> attribute,
                                  std::vector<std::uint8_t>& descriptor);

// Replaces `attribute` by one that holds `descriptor`, a valid self-relative one.
void MakeSambaAttribute(std::span<const std::uint8_t> descriptor, std::vector<std::uint8_t>& attribute);

}  // namespace permora::host
