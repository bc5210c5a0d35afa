// Access control entries and lists as plain values. Binary forms: [MS-DTYP] 2.4.4 (ACE) and 2.4.5 (ACL).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/nt/guid_text.h"
#include "platform/nt/sid.h"

namespace permora::nt {

// How the bytes after an entry's four-byte header are laid out; decided by the type alone.
enum class AceShape {
    kMaskAndSid,  // mask, SID, then application data
    kObject,      // mask, object flags, up to two GUIDs, SID, then application data
    kOpaque,      // a type without known layout; kept as bytes
};
AceShape ShapeOfAceType(std::uint8_t type);

// What an object entry is about.
struct ObjectTypes {
    std::optional<Guid> objectType;           // none: everything
    std::optional<Guid> inheritedObjectType;  // the class of objects that inherit the entry; none: all
    std::uint32_t otherFlags = 0;             // the stored flags that announce no GUID

    friend bool operator==(const ObjectTypes& one, const ObjectTypes& other) = default;
};

// One entry of any type. Reading and writing it again gives the same bytes.
struct Ace {
    std::uint8_t type = 0;
    std::uint8_t flags = 0;
    std::uint32_t mask = 0;             // 0 for opaque entries
    std::optional<Sid> sid;             // nothing for opaque and for damaged entries
    std::optional<ObjectTypes> object;  // of kObject entries alone
    // What follows the SID (kMaskAndSid, kObject), or everything after the header (kOpaque).
    std::vector<std::uint8_t> tail;

    // The size of the entry at the start of `bytes`, which may be longer. Nothing when the size is under that
    // of a header, not a multiple of four or beyond `bytes`.
    static std::optional<std::size_t> SizeIn(std::span<const std::uint8_t> bytes);
    // The entry at the start of `bytes`; nothing when SizeIn gives nothing or the entry is damaged.
    static std::optional<Ace> FromBytes(std::span<const std::uint8_t> bytes);
    // The same for showing a damaged entry: the readable parts, and the rest in `tail`.
    static std::optional<Ace> FromDamagedBytes(std::span<const std::uint8_t> bytes);
    // Whether a part is missing that the type has: SID, object flags or a GUID that these announce.
    bool IsDamaged() const;

    // A multiple of four: a tail of another length is followed by zeros when it is written.
    std::size_t ByteSize() const;
    // Appends the binary form of an entry of at most Acl::kMaxBytes.
    void AppendTo(std::vector<std::uint8_t>& bytes) const;

    friend bool operator==(const Ace& one, const Ace& other) = default;
};

// An ordered list of entries.
struct Acl {
    static constexpr std::size_t kHeaderBytes = 8;
    static constexpr std::size_t kMaxBytes = 0xFFFC;  // AclSize has 16 bits and is a multiple of four
    // Of ordinary lists and of those with object entries; compound entries had the one between.
    static constexpr std::uint8_t kLowestRevision = 2;
    static constexpr std::uint8_t kHighestRevision = 4;

    std::uint8_t revision = kLowestRevision;
    std::vector<Ace> entries;

    // The list at the start of `bytes`, which may be longer. Nothing when the revision is not 2 to 4, AclSize
    // does not fit or is not a multiple of four, or the counted entries do not lie inside AclSize. Unused
    // space after the last entry is legal (volume roots have it) and is dropped.
    static std::optional<Acl> FromBytes(std::span<const std::uint8_t> bytes);
    std::size_t ByteSize() const;
    // Appends the binary form. False, with `bytes` as before, when the list is larger than kMaxBytes.
    [[nodiscard]] bool AppendTo(std::vector<std::uint8_t>& bytes) const;

    friend bool operator==(const Acl& one, const Acl& other) = default;
};

}  // namespace permora::nt
