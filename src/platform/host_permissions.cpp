#include "platform/host_permissions.h"

#include <algorithm>
#include <span>

namespace permora {
namespace {

enum Tag : std::uint16_t {
    kOwner = 0x01,
    kUser = 0x02,
    kOwningGroup = 0x04,
    kGroup = 0x08,
    kMask = 0x10,
    kOther = 0x20,
};

struct Entry {
    std::uint16_t tag;
    std::uint16_t bits;
    std::uint32_t id;
};

constexpr std::uint32_t kVersion = 2;
constexpr std::size_t kHeadSize = 4;
constexpr std::size_t kEntrySize = 8;
constexpr std::uint32_t kAllBits = 7;

std::uint32_t Number(std::span<const std::uint8_t> bytes, std::size_t at, std::size_t size) {
    std::uint32_t value = 0;
    for (std::size_t i = size; i > 0; --i)
        value = value << 8U | bytes[at + i - 1];
    return value;
}

bool ParseList(std::span<const std::uint8_t> bytes, std::vector<Entry>& entries) {
    if (bytes.size() < kHeadSize || (bytes.size() - kHeadSize) % kEntrySize != 0) return false;
    if (Number(bytes, 0, 4) != kVersion) return false;
    for (std::size_t at = kHeadSize; at < bytes.size(); at += kEntrySize)
        entries.push_back({static_cast<std::uint16_t>(Number(bytes, at, 2)),
                           static_cast<std::uint16_t>(Number(bytes, at + 2, 2)), Number(bytes, at + 4, 4)});
    return true;
}

// What a mode without a list amounts to.
std::vector<Entry> EntriesOfMode(std::uint32_t mode) {
    const auto bits = [mode](unsigned shift) { return static_cast<std::uint16_t>(mode >> shift & kAllBits); };
    return {{kOwner, bits(6), 0}, {kOwningGroup, bits(3), 0}, {kOther, bits(0), 0}};
}

}  // namespace

// The first class of entries that knows the account decides; of its groups, one that gives all the bits.
std::optional<bool> HostAllows(const HostPermissions& permissions, const HostAccount& account,
                               std::uint32_t bits) {
    std::vector<Entry> entries;
    if (permissions.list.empty())
        entries = EntriesOfMode(permissions.mode);
    else if (!ParseList(permissions.list, entries))
        return std::nullopt;
    std::uint32_t mask = kAllBits;
    for (const Entry& entry : entries)
        if (entry.tag == kMask) mask = entry.bits;
    const auto isIn = [&](std::uint32_t group) {
        return std::ranges::find(account.groups, group) != account.groups.end();
    };
    bool isOfGroup = false;
    bool isAllowed = false;
    bool isDecided = false;
    std::uint32_t others = 0;
    for (const Entry& entry : entries) {
        if (entry.tag == kOther) others = entry.bits;
        if (isDecided) continue;
        const bool isOwner = entry.tag == kOwner && account.user == permissions.owner;
        const bool isUser = entry.tag == kUser && account.user == entry.id;
        if (isOwner || isUser) {
            isDecided = true;
            isAllowed = (entry.bits & (isOwner ? kAllBits : mask) & bits) == bits;
        }
        const bool isGroup =
            (entry.tag == kOwningGroup && isIn(permissions.group)) || (entry.tag == kGroup && isIn(entry.id));
        if (!isGroup) continue;
        isOfGroup = true;
        isDecided = isAllowed = (entry.bits & mask & bits) == bits;
    }
    if (isDecided || isOfGroup) return isAllowed;
    return (others & bits) == bits;
}

}  // namespace permora
