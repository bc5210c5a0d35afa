#include "platform/host_permissions.h"

#include <algorithm>
#include <span>

namespace permora {
namespace {

enum HostListTag : std::uint16_t {
    kTagOwner = 0x01,
    kTagUser = 0x02,
    kTagOwningGroup = 0x04,
    kTagGroup = 0x08,
    kTagMask = 0x10,
    kTagOther = 0x20,
};

struct HostListEntry {
    std::uint16_t tag;
    std::uint16_t bits;
    std::uint32_t id;
};

constexpr std::uint32_t kHostListVersion = 2;
constexpr std::size_t kHostListHead = 4;
constexpr std::size_t kHostListEntrySize = 8;
constexpr std::uint32_t kAllHostBits = 7;

std::uint32_t HostNumber(std::span<const std::uint8_t> bytes, std::size_t at, std::size_t size) {
    std::uint32_t value = 0;
    for (std::size_t i = size; i > 0; --i)
        value = value << 8U | bytes[at + i - 1];
    return value;
}

bool ParseHostList(std::span<const std::uint8_t> bytes, std::vector<HostListEntry>& entries) {
    if (bytes.size() < kHostListHead || (bytes.size() - kHostListHead) % kHostListEntrySize != 0)
        return false;
    if (HostNumber(bytes, 0, 4) != kHostListVersion) return false;
    for (std::size_t at = kHostListHead; at < bytes.size(); at += kHostListEntrySize)
        entries.push_back({static_cast<std::uint16_t>(HostNumber(bytes, at, 2)),
                           static_cast<std::uint16_t>(HostNumber(bytes, at + 2, 2)),
                           HostNumber(bytes, at + 4, 4)});
    return true;
}

// What a mode without a list amounts to.
std::vector<HostListEntry> EntriesOfMode(std::uint32_t mode) {
    const auto bits = [mode](unsigned shift) {
        return static_cast<std::uint16_t>(mode >> shift & kAllHostBits);
    };
    return {{kTagOwner, bits(6), 0}, {kTagOwningGroup, bits(3), 0}, {kTagOther, bits(0), 0}};
}

}  // namespace

std::string ModeText(std::uint32_t mode) {
    std::string text = "rwxrwxrwx";
    for (std::size_t i = 0; i < text.size(); ++i)
        if ((mode >> (text.size() - 1 - i) & 1U) == 0) text[i] = '-';
    return text;
}

// The first class of entries that knows the account decides; of its groups, one that gives all the bits.
std::optional<bool> HostAllows(const HostPermissions& permissions, const HostAccount& account,
                               std::uint32_t bits) {
    std::vector<HostListEntry> entries;
    if (permissions.list.empty())
        entries = EntriesOfMode(permissions.mode);
    else if (!ParseHostList(permissions.list, entries))
        return std::nullopt;
    std::uint32_t mask = kAllHostBits;
    for (const HostListEntry& entry : entries)
        if (entry.tag == kTagMask) mask = entry.bits;
    const auto isIn = [&](std::uint32_t group) {
        return std::ranges::find(account.groups, group) != account.groups.end();
    };
    bool isOfGroup = false;
    bool isAllowed = false;
    bool isDecided = false;
    std::uint32_t others = 0;
    for (const HostListEntry& entry : entries) {
        if (entry.tag == kTagOther) others = entry.bits;
        if (isDecided) continue;
        const bool isOwner = entry.tag == kTagOwner && account.user == permissions.owner;
        const bool isUser = entry.tag == kTagUser && account.user == entry.id;
        if (isOwner || isUser) {
            isDecided = true;
            isAllowed = (entry.bits & (isOwner ? kAllHostBits : mask) & bits) == bits;
        }
        const bool isGroup = (entry.tag == kTagOwningGroup && isIn(permissions.group)) ||
                             (entry.tag == kTagGroup && isIn(entry.id));
        if (!isGroup) continue;
        isOfGroup = true;
        isDecided = isAllowed = (entry.bits & mask & bits) == bits;
    }
    if (isDecided || isOfGroup) return isAllowed;
    return (others & bits) == bits;
}

}  // namespace permora
