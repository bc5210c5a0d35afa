#include "platform/linux/shares/share_records.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <vector>

#include "platform/api/memory.h"
#include "platform/linux/base/wide_text.h"

namespace permora::host {

namespace {

// Level 502 begins like level 2, and level 2 like level 1, so all are filled in the same way.
static_assert(offsetof(SHARE_INFO_2, shi2_remark) == offsetof(SHARE_INFO_1, shi1_remark));
static_assert(offsetof(SHARE_INFO_502, shi502_path) == offsetof(SHARE_INFO_2, shi2_path));

// In descriptors numbers have four bytes.
constexpr std::size_t kDescriptorAlignment = 4;

std::size_t RecordBytes(DWORD level) {
    if (level == 1) return sizeof(SHARE_INFO_1);
    return level == 2 ? sizeof(SHARE_INFO_2) : sizeof(SHARE_INFO_502);
}

// The memory to which a record points.
struct RecordParts {
    std::array<std::u16string, 3> texts;  // name, remark, path
    std::span<const std::uint8_t> descriptor;

    std::size_t DescriptorBytes() const {
        return (descriptor.size() + kDescriptorAlignment - 1) / kDescriptorAlignment * kDescriptorAlignment;
    }
    std::size_t TextBytes() const {
        std::size_t bytes = 0;
        for (const std::u16string& text : texts)
            bytes += (text.size() + 1) * sizeof(WCHAR);
        return bytes;
    }
};

RecordParts RecordPartsOf(const Share& share, DWORD level) {
    RecordParts parts{{ToWide(share.name), ToWide(share.remark), ToWide(level == 1 ? "" : share.path)}, {}};
    if (level == 502) parts.descriptor = share.descriptor;
    return parts;
}

LPWSTR StoreText(const std::u16string& text, LPBYTE& place) {
    auto* stored = reinterpret_cast<LPWSTR>(place);
    std::memcpy(place, text.c_str(), (text.size() + 1) * sizeof(WCHAR));
    place += (text.size() + 1) * sizeof(WCHAR);
    return stored;
}

}  // namespace

LPBYTE MakeShareRecords(std::span<const Share> shares, DWORD level) {
    std::vector<RecordParts> parts;
    std::size_t descriptors = 0;
    std::size_t texts = 0;
    for (const Share& share : shares) {
        parts.push_back(RecordPartsOf(share, level));
        descriptors += parts.back().DescriptorBytes();
        texts += parts.back().TextBytes();
    }
    const std::size_t records = shares.size() * RecordBytes(level);
    auto* block = static_cast<LPBYTE>(LocalAlloc(LPTR, records + descriptors + texts));
    if (block == nullptr) return nullptr;
    // In this order, all of them are aligned.
    LPBYTE record = block;
    LPBYTE descriptor = block + records;
    LPBYTE text = descriptor + descriptors;
    for (std::size_t i = 0; i < shares.size(); ++i, record += RecordBytes(level)) {
        const Share& share = shares[i];
        SHARE_INFO_502 whole{};
        whole.shi502_netname = StoreText(parts[i].texts[0], text);
        whole.shi502_type = share.type;
        whole.shi502_remark = StoreText(parts[i].texts[1], text);
        whole.shi502_permissions = share.permissions;
        whole.shi502_max_uses = share.maxUses;
        whole.shi502_current_uses = share.currentUses;
        whole.shi502_path = StoreText(parts[i].texts[2], text);
        if (const auto bytes = parts[i].descriptor; !bytes.empty()) {
            std::memcpy(descriptor, bytes.data(), bytes.size());
            whole.shi502_security_descriptor = descriptor;
            descriptor += parts[i].DescriptorBytes();
        }
        std::memcpy(record, &whole, RecordBytes(level));
    }
    return block;
}

}  // namespace permora::host
