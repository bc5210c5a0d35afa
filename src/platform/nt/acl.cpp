#include "platform/nt/acl.h"

#include <cassert>

#include "platform/guid_text.h"
#include "platform/nt/ace_bits.h"
#include "platform/nt/byte_io.h"

namespace permora::nt {
namespace {

constexpr std::size_t kAceHeaderBytes = 4;
constexpr std::size_t kMaskBytes = 4;

constexpr std::uint8_t kMinAclRevision = 2;
constexpr std::uint8_t kMaxAclRevision = 4;

// The bytes between mask and SID of the object entry `bytes`: flags that say which GUIDs follow, and the
// GUIDs.
std::optional<std::span<const std::uint8_t>> ReadObjectPart(std::span<const std::uint8_t> bytes) {
    constexpr std::size_t kOffset = kAceHeaderBytes + kMaskBytes;
    const auto flags = ReadU32(bytes, kOffset);
    if (!flags) return std::nullopt;
    std::size_t size = kObjectFlagsBytes;
    if ((*flags & kObjectTypePresent) != 0) size += kGuidBytes;
    if ((*flags & kInheritedObjectTypePresent) != 0) size += kGuidBytes;
    return Slice(bytes, kOffset, size);
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

std::optional<Ace> Ace::FromBytes(std::span<const std::uint8_t> bytes) {
    const auto size = ReadU16(bytes, 2);
    if (!size || *size < kAceHeaderBytes || *size % 4 != 0 || *size > bytes.size()) return std::nullopt;
    const auto entry = bytes.first(*size);

    Ace ace;
    ace.type = entry[0];
    ace.flags = entry[1];
    const AceShape shape = ShapeOfAceType(ace.type);
    std::size_t offset = kAceHeaderBytes;
    if (shape != AceShape::kOpaque) {
        const auto mask = ReadU32(entry, offset);
        if (!mask) return std::nullopt;
        ace.mask = *mask;
        offset += kMaskBytes;
        if (shape == AceShape::kObject) {
            const auto objectPart = ReadObjectPart(entry);
            if (!objectPart) return std::nullopt;
            ace.objectPart.assign(objectPart->begin(), objectPart->end());
            offset += objectPart->size();
        }
        const auto sid = Sid::FromBytes(entry.subspan(offset));
        if (!sid) return std::nullopt;
        ace.sid = *sid;
        offset += sid->ByteSize();
    }
    const auto tail = entry.subspan(offset);
    ace.tail.assign(tail.begin(), tail.end());
    return ace;
}

std::size_t Ace::ByteSize() const {
    std::size_t size = kAceHeaderBytes + tail.size();
    if (ShapeOfAceType(type) != AceShape::kOpaque) size += kMaskBytes + objectPart.size() + sid.ByteSize();
    return RoundUpToFour(size);
}

void Ace::AppendTo(std::vector<std::uint8_t>& bytes) const {
    const std::size_t size = ByteSize();
    assert(size <= Acl::kMaxBytes);
    const std::size_t end = bytes.size() + size;
    bytes.push_back(type);
    bytes.push_back(flags);
    AppendU16(bytes, static_cast<std::uint16_t>(size));
    if (ShapeOfAceType(type) != AceShape::kOpaque) {
        AppendU32(bytes, mask);
        AppendBytes(bytes, objectPart);
        AppendBytes(bytes, sid.Bytes());
    }
    AppendBytes(bytes, tail);
    bytes.resize(end);
}

std::optional<Acl> Acl::FromBytes(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < kHeaderBytes) return std::nullopt;
    const std::size_t size = ReadU16(bytes, 2).value_or(0);
    const std::size_t count = ReadU16(bytes, 4).value_or(0);
    if (bytes[0] < kMinAclRevision || bytes[0] > kMaxAclRevision) return std::nullopt;
    if (size < kHeaderBytes || size % 4 != 0 || size > bytes.size()) return std::nullopt;
    // Before anything is allocated for entries that cannot be there.
    if (count > (size - kHeaderBytes) / kAceHeaderBytes) return std::nullopt;

    Acl acl;
    acl.revision = bytes[0];
    acl.entries.reserve(count);
    auto rest = bytes.first(size).subspan(kHeaderBytes);
    for (std::size_t i = 0; i < count; ++i) {
        auto entry = Ace::FromBytes(rest);
        if (!entry) return std::nullopt;
        rest = rest.subspan(entry->ByteSize());
        acl.entries.push_back(std::move(*entry));
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
