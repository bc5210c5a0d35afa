#include "platform/nt/security_descriptor.h"

#include "platform/nt/byte_io.h"

namespace permora::nt {
namespace {

constexpr std::uint8_t kDescriptorRevision = 1;
constexpr std::size_t kHeaderBytes = 20;
constexpr std::size_t kControlOffset = 2;
constexpr std::size_t kOwnerOffset = 4;
constexpr std::size_t kGroupOffset = 8;
constexpr std::size_t kSaclOffset = 12;
constexpr std::size_t kDaclOffset = 16;

// The range of a part in the descriptor; empty for a missing part.
struct Extent {
    std::size_t begin = 0;
    std::size_t end = 0;

    friend bool operator==(const Extent& one, const Extent& other) = default;
};

bool Overlap(const Extent& one, const Extent& other) {
    return one.begin < other.end && other.begin < one.end;
}

struct Extents {
    Extent owner;
    Extent group;
    Extent sacl;
    Extent dacl;

    // Owner and group may be the same bytes, since some writers store one SID for both. No system writes
    // other overlapping parts.
    bool AreSeparate() const {
        const bool ownerIsGroup = owner == group;
        return (ownerIsGroup || !Overlap(owner, group)) && !Overlap(owner, sacl) && !Overlap(owner, dacl) &&
               !Overlap(group, sacl) && !Overlap(group, dacl) && !Overlap(sacl, dacl);
    }
};

// The bytes from `offset` on; nothing when it points into the header or past the end.
std::optional<std::span<const std::uint8_t>> PartAt(std::span<const std::uint8_t> bytes, std::size_t offset) {
    if (offset < kHeaderBytes || offset >= bytes.size()) return std::nullopt;
    return bytes.subspan(offset);
}

// The SID whose offset is stored at `field`; none when that is 0. False when it is malformed.
bool ReadSid(std::span<const std::uint8_t> bytes, std::size_t field, std::optional<Sid>& sid,
             Extent& extent) {
    const std::size_t offset = ReadU32(bytes, field).value_or(0);
    if (offset == 0) return true;
    const auto part = PartAt(bytes, offset);
    if (!part) return false;
    sid = Sid::FromBytes(*part);
    if (!sid) return false;
    extent = {offset, offset + sid->ByteSize()};
    return true;
}

// The list whose offset is stored at `field`, with its bytes; nothing when it is malformed.
std::optional<Acl> ReadAcl(std::span<const std::uint8_t> bytes, std::size_t field, Extent& extent) {
    const std::size_t offset = ReadU32(bytes, field).value_or(0);
    const auto part = PartAt(bytes, offset);
    if (!part) return std::nullopt;
    auto acl = Acl::FromBytes(*part);
    if (acl) extent = {offset, offset + ReadU16(*part, 2).value_or(0)};
    return acl;
}

bool ReadDacl(std::span<const std::uint8_t> bytes, SecurityDescriptor& descriptor, Extent& extent) {
    const bool hasOffset = ReadU32(bytes, kDaclOffset) != 0U;
    if ((descriptor.control & kDaclPresent) == 0) {
        // Without the flag in the control word, some would read the list, and others "everyone".
        return !hasOffset;
    }
    descriptor.daclState = DaclState::kNull;
    if (!hasOffset) return true;
    auto acl = ReadAcl(bytes, kDaclOffset, extent);
    if (!acl) return false;
    descriptor.daclState = DaclState::kList;
    descriptor.dacl = std::move(*acl);
    return true;
}

bool ReadSacl(std::span<const std::uint8_t> bytes, SecurityDescriptor& descriptor, Extent& extent) {
    const bool hasOffset = ReadU32(bytes, kSaclOffset) != 0U;
    if ((descriptor.control & kSaclPresent) == 0) return !hasOffset;
    if (!hasOffset) return true;
    if (!ReadAcl(bytes, kSaclOffset, extent)) return false;
    const auto sacl = bytes.subspan(extent.begin, extent.end - extent.begin);
    descriptor.saclBytes.assign(sacl.begin(), sacl.end());
    return true;
}

// The control word that fits the existing parts.
std::uint16_t ControlToWrite(const SecurityDescriptor& descriptor) {
    unsigned control = descriptor.control | kSelfRelative;
    if (descriptor.daclState == DaclState::kAbsent)
        control &= ~unsigned{kDaclPresent};
    else
        control |= kDaclPresent;
    if (!descriptor.saclBytes.empty()) control |= kSaclPresent;
    return static_cast<std::uint16_t>(control);
}

// The offset for a part of `size` bytes, 0 for a missing part; `next` moves past the part.
std::uint32_t Place(std::size_t size, std::size_t& next) {
    if (size == 0) return 0;
    const std::size_t offset = next;
    next += RoundUpToFour(size);
    return static_cast<std::uint32_t>(offset);
}

}  // namespace

std::optional<SecurityDescriptor> SecurityDescriptor::FromBytes(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < kHeaderBytes || bytes[0] != kDescriptorRevision) return std::nullopt;
    SecurityDescriptor descriptor;
    descriptor.resourceManagerControl = bytes[1];
    descriptor.control = ReadU16(bytes, kControlOffset).value_or(0);
    if ((descriptor.control & kSelfRelative) == 0) return std::nullopt;

    Extents extents;
    if (!ReadSid(bytes, kOwnerOffset, descriptor.owner, extents.owner) ||
        !ReadSid(bytes, kGroupOffset, descriptor.group, extents.group) ||
        !ReadSacl(bytes, descriptor, extents.sacl) || !ReadDacl(bytes, descriptor, extents.dacl) ||
        !extents.AreSeparate())
        return std::nullopt;
    return descriptor;
}

bool SecurityDescriptor::AppendTo(std::vector<std::uint8_t>& bytes) const {
    if (saclBytes.size() > Acl::kMaxBytes) return false;

    // The order in which the system itself lays out a self-relative descriptor: lists first.
    std::size_t next = kHeaderBytes;
    const std::uint32_t saclOffset = Place(saclBytes.size(), next);
    const std::uint32_t daclOffset = Place(daclState == DaclState::kList ? dacl.ByteSize() : 0, next);
    const std::uint32_t ownerOffset = Place(owner ? owner->ByteSize() : 0, next);
    const std::uint32_t groupOffset = Place(group ? group->ByteSize() : 0, next);

    const std::size_t start = bytes.size();
    bytes.reserve(start + next);
    bytes.push_back(kDescriptorRevision);
    bytes.push_back(resourceManagerControl);
    AppendU16(bytes, ControlToWrite(*this));
    for (const std::uint32_t offset : {ownerOffset, groupOffset, saclOffset, daclOffset})
        AppendU32(bytes, offset);
    AppendBytes(bytes, saclBytes);
    bytes.resize(start + RoundUpToFour(bytes.size() - start));
    if (daclState == DaclState::kList && !dacl.AppendTo(bytes)) {
        bytes.resize(start);
        return false;
    }
    if (owner) AppendBytes(bytes, owner->Bytes());
    if (group) AppendBytes(bytes, group->Bytes());
    return true;
}

}  // namespace permora::nt
