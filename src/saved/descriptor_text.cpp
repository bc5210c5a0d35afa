#include "saved/descriptor_text.h"

#include <algorithm>
#include <vector>

#include "platform/nt/sddl.h"
#include "platform/nt/security_descriptor.h"
#include "platform/utf8.h"

namespace permora {
namespace {

// Far above the text of two lists of 64 KiB with usual entries. Conditions could make more of it than of
// base64.
constexpr std::size_t kLongestText = std::size_t{1} << 20;

bool BelongsInLine(std::string_view text) {
    while (!text.empty()) {
        const Utf8Character next = FirstUtf8Character(text);
        const bool isControl = next.codePoint < 0x20 || (next.codePoint >= 0x7F && next.codePoint < 0xA0);
        if (!next.isWellFormed || isControl || IsUnseenCharacter(next.codePoint)) return false;
        text.remove_prefix(next.bytes);
    }
    return true;
}

}  // namespace

std::optional<std::string> ExactSddl(std::span<const std::uint8_t> descriptor, std::uint32_t parts) {
    const std::optional<nt::SecurityDescriptor> value = nt::SecurityDescriptor::FromBytes(descriptor);
    std::optional<std::string> text = value ? nt::ToSddl(*value, parts) : std::nullopt;
    if (!text || text->size() > kLongestText || !BelongsInLine(*text)) return std::nullopt;
    const std::optional<nt::SecurityDescriptor> again = nt::FromSddl(*text);
    std::vector<std::uint8_t> bytes;
    if (!again || !again->AppendTo(bytes) || !std::ranges::equal(bytes, descriptor)) return std::nullopt;
    return text;
}

}  // namespace permora
