#include "saved/icacls_writer.h"

#include <algorithm>
#include <optional>

#include "platform/api/security.h"
#include "saved/descriptor_text.h"
#include "saved/saved_path.h"
#include "saved/utf16.h"

namespace permora {

DWORD IcaclsWriter::Begin(const SavedHead& head) {
    return head.parts == DACL_SECURITY_INFORMATION ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_NOT_SUPPORTED};
}

DWORD IcaclsWriter::BeginTop(const SavedTop& top) {
    const std::string name = top.path.substr(top.path.rfind('\\') + 1);
    if (!IsPathBelow(name)) return ERROR_NOT_SUPPORTED;
    topName = name;
    return ERROR_SUCCESS;
}

DWORD IcaclsWriter::Add(std::string_view path, SavedKind /*kind*/, std::span<const std::uint8_t> descriptor) {
    constexpr std::string_view kLineEnd = "\r\n";
    if (!path.empty() && !IsPathBelow(path)) return ERROR_INVALID_NAME;
    if (lastSddl.empty() || !std::ranges::equal(descriptor, lastDescriptor)) {
        std::optional<std::string> sddl = ExactSddl(descriptor, DACL_SECURITY_INFORMATION);
        // No list at all has no text that could be told from a mistake.
        if (!sddl || sddl->empty()) return ERROR_NOT_SUPPORTED;
        lastSddl = std::move(*sddl);
        lastDescriptor.assign(descriptor.begin(), descriptor.end());
    }
    std::string lines = topName;
    if (!path.empty()) (lines += '\\') += path;
    ((lines += kLineEnd) += lastSddl) += kLineEnd;
    pair.clear();
    if (!AppendUtf16(lines, pair)) return ERROR_INVALID_NAME;
    return buffer.Write(pair);
}

DWORD IcaclsWriter::AddGap(std::string_view /*path*/, SavedKind kind, DWORD /*error*/) {
    return kind == SavedKind::kMounted ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_NOT_SUPPORTED};
}

DWORD IcaclsWriter::MarkIncomplete() {
    return ERROR_NOT_SUPPORTED;
}

DWORD IcaclsWriter::End() {
    return buffer.Flush();
}

}  // namespace permora
