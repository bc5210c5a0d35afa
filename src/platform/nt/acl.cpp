#include "platform/nt/acl.h"

#include <algorithm>
#include <cassert>

#include "platform/nt/byte_io.h"

namespace permora::nt {
namespace {

constexpr std::size_t kAceHeaderBytes = 4;
constexpr std::size_t kMaskBytes = 4;

// The first four bytes of an object entry's own part say which GUIDs follow them.
constexpr std::size_t kObjectFlagsBytes = 4;
constexpr std::uint32_t kObjectTypePresent = 1;
constexpr std::uint32_t kInheritedObjectTypePresent = 2;

// Removes the GUID that `flag` announces from `rest`; false when it does not fit.
bool TakeGuid(std::uint32_t flag, ObjectTypes& types, std::optional<Guid>& guid,
              std::span<const std::uint8_t>& rest) {
    if ((types.otherFlags & flag) == 0) return true;
    if (rest.size() < sizeof(Guid)) return false;
    std::ranges::copy(rest.first<sizeof(Guid)>(), guid.emplace().begin());
    types.otherFlags &= ~flag;
    rest = rest.subspan(sizeof(Guid));
    return true;
}

// Removes the fields between mask and SID of an object entry from `rest`; nothing when they are cut off.
std::optional<ObjectTypes> TakeObjectTypes(std::span<const std::uint8_t>& rest) {
    const auto flags = ReadU32(rest, 0);
    if (!flags) return std::nullopt;
    rest = rest.subspan(kObjectFlagsBytes);
    ObjectTypes types{{}, {}, *flags};
    if (!TakeGuid(kObjectTypePresent, types, types.objectType, rest) ||
        !TakeGuid(kInheritedObjectTypePresent, types, types.inheritedObjectType, rest))
        return std::nullopt;
    return types;
}

std::size_t ByteSizeOf(const ObjectTypes& types) {
    return kObjectFlagsBytes + (types.objectType ? sizeof(Guid) : 0) +
           (types.inheritedObjectType ? sizeof(Guid) : 0);
}

void AppendObjectTypes(std::vector<std::uint8_t>& bytes, const ObjectTypes& types) {
    AppendU32(bytes, types.otherFlags | (types.objectType ? kObjectTypePresent : 0) |
                         (types.inheritedObjectType ? kInheritedObjectTypePresent : 0));
    for (const std::optional<Guid>& guid : {types.objectType, types.inheritedObjectType})
        if (guid) AppendBytes(bytes, *guid);
}

// Fills the fields after the header. Bytes that cannot be read stay in `rest`.
void TakeBody(Ace& ace, std::span<const std::uint8_t>& rest) {
    const AceShape shape = ShapeOfAceType(ace.type);
    const auto mask = ReadU32(rest, 0);
    if (shape == AceShape::kOpaque || !mask) return;
    ace.mask = *mask;
    rest = rest.subspan(kMaskBytes);
    if (shape == AceShape::kObject) {
        ace.object = TakeObjectTypes(rest);
        if (!ace.object) return;
    }
    ace.sid = Sid::FromBytes(rest);
    if (ace.sid) rest = rest.subspan(ace.sid->ByteSize());
}

// Fills `ace`, a new one, in place, since lists have many. False unless the bytes hold a whole entry.
bool ReadEntry(std::span<const std::uint8_t> bytes, Ace& ace) {
    const auto size = Ace::SizeIn(bytes);
    if (!size) return false;
    ace.type = bytes[0];
    ace.flags = bytes[1];
    auto rest = bytes.first(*size).subspan(kAceHeaderBytes);
    TakeBody(ace, rest);
    ace.tail.assign(rest.begin(), rest.end());
    return true;
}

}  // namespace

AceShape ShapeOfAceType(std::uint8_t type) {
    switch (type) {
        case 0x00:  // access allowed
        case 0x01:  // access denied
        case 0x02:  // system audit
        case 0x03:  // system alarm
        case 0x09:  // access allowed, callback
        case 0x0A:  // access denied, callback
        case 0x0D:  // system audit, callback
        case 0x0E:  // system alarm, callback
        case 0x11:  // mandatory label
        case 0x12:  // resource attribute
        case 0x13:  // scoped policy
        case 0x14:  // process trust label
        case 0x15:  // access filter
            return AceShape::kMaskAndSid;
        case 0x05:  // access allowed, object
        case 0x06:  // access denied, object
        case 0x07:  // system audit, object
        case 0x08:  // system alarm, object
        case 0x0B:  // access allowed, callback, object
        case 0x0C:  // access denied, callback, object
        case 0x0F:  // system audit, callback, object
        case 0x10:  // system alarm, callback, object
            return AceShape::kObject;
        default:
            return AceShape::kOpaque;
    }
}

std::optional<std::size_t> Ace::SizeIn(std::span<const std::uint8_t> bytes) {
    const auto size = ReadU16(bytes, 2);
    if (!size || *size < kAceHeaderBytes || *size % 4 != 0 || *size > bytes.size()) return std::nullopt;
    return *size;
}

std::optional<Ace> Ace::FromDamagedBytes(std::span<const std::uint8_t> bytes) {
    std::optional<Ace> ace(std::in_place);
    if (!ReadEntry(bytes, *ace)) ace.reset();
    return ace;
}

bool Ace::IsDamaged() const {
    return ShapeOfAceType(type) != AceShape::kOpaque && !sid;
}

std::optional<Ace> Ace::FromBytes(std::span<const std::uint8_t> bytes) {
    auto ace = FromDamagedBytes(bytes);
    if (ace && ace->IsDamaged()) ace.reset();
    return ace;
}

std::size_t Ace::ByteSize() const {
    std::size_t size = kAceHeaderBytes + tail.size();
    if (sid) size += kMaskBytes + (object ? ByteSizeOf(*object) : 0) + sid->ByteSize();
    return RoundUpToFour(size);
}

void Ace::AppendTo(std::vector<std::uint8_t>& bytes) const {
    const std::size_t size = ByteSize();
    assert(size <= Acl::kMaxBytes && !IsDamaged());
    const std::size_t end = bytes.size() + size;
    bytes.push_back(type);
    bytes.push_back(flags);
    AppendU16(bytes, static_cast<std::uint16_t>(size));
    if (sid) {
        AppendU32(bytes, mask);
        if (object) AppendObjectTypes(bytes, *object);
        AppendBytes(bytes, sid->Bytes());
    }
    AppendBytes(bytes, tail);
    bytes.resize(end);
}

std::optional<Acl> Acl::FromBytes(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < kHeaderBytes) return std::nullopt;
    const std::size_t size = ReadU16(bytes, 2).value_or(0);
    const std::size_t count = ReadU16(bytes, 4).value_or(0);
    if (bytes[0] < kLowestRevision || bytes[0] > kHighestRevision) return std::nullopt;
    if (size < kHeaderBytes || size % 4 != 0 || size > bytes.size()) return std::nullopt;
    // Before memory is allocated for entries that cannot exist.
    if (count > (size - kHeaderBytes) / kAceHeaderBytes) return std::nullopt;

    Acl acl;
    acl.revision = bytes[0];
    acl.entries.reserve(count);
    auto rest = bytes.first(size).subspan(kHeaderBytes);
    for (std::size_t i = 0; i < count; ++i) {
        Ace& entry = acl.entries.emplace_back();
        if (!ReadEntry(rest, entry) || entry.IsDamaged()) return std::nullopt;
        rest = rest.subspan(entry.ByteSize());
    }
    return acl;
}

std::size_t Acl::ByteSize() const {
    std::size_t size = kHeaderBytes;
    for (const Ace& entry : entries)
        size += entry.ByteSize();
    return size;
}

bool Acl::AppendTo(std::vector<std::uint8_t>& bytes) const {
    const std::size_t size = ByteSize();
    if (size > kMaxBytes) return false;
    bytes.reserve(bytes.size() + size);
    bytes.push_back(revision);
    bytes.push_back(0);
    AppendU16(bytes, static_cast<std::uint16_t>(size));
    AppendU16(bytes, static_cast<std::uint16_t>(entries.size()));
    AppendU16(bytes, 0);
    for (const Ace& entry : entries)
        entry.AppendTo(bytes);
    return true;
}

}  // namespace permora::nt
