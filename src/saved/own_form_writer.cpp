#include "saved/own_form_writer.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/nt/security_descriptor.h"
#include "saved/base64.h"
#include "saved/descriptor_text.h"
#include "saved/own_form.h"
#include "saved/saved_lines.h"
#include "saved/saved_path.h"

namespace permora {
namespace {

constexpr std::uint32_t kWholeDescriptor = OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION |
                                           DACL_SECURITY_INFORMATION | SACL_SECURITY_INFORMATION;
// So many digits of the hash name a descriptor: a change of one list changes no other line.
constexpr std::size_t kIdDigits = 12;

std::string_view WordOf(SavedKind kind) {
    const auto row =
        std::ranges::find(own_form::kKindWords, kind, [](const auto& pair) { return pair.first; });
    return row == own_form::kKindWords.end() ? std::string_view() : row->second;
}

std::span<const std::uint8_t> BytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

DWORD OwnFormWriter::WriteLine() {
    line += '\n';
    hash.Add(line);
    return buffer.Write(line);
}

DWORD OwnFormWriter::Begin(const SavedHead& head) {
    line = own_form::kName;
    (line += ' ') += own_form::kVersion;
    ((line += '\n') += own_form::kSaved) += ' ' + head.time;
    (line += '\n') += own_form::kParts;
    for (const auto& [part, word] : own_form::kPartWords)
        if ((head.parts & part) != 0) (line += ' ') += word;
    return WriteLine();
}

DWORD OwnFormWriter::BeginTop(const SavedTop& top) {
    line = own_form::kTop;
    line += ' ';
    AppendWrittenTop(top.path, line);
    ((line += '\n') += own_form::kVolume) += ' ';
    AppendWrittenText(top.volume, line);
    return WriteLine();
}

DWORD OwnFormWriter::Forget() {
    known.clear();
    names.clear();
    knownBytes = 0;
    line = own_form::kForget;
    return WriteLine();
}

// The name of a descriptor, which is written before its first use.
DWORD OwnFormWriter::FindId(std::string_view descriptor, std::string_view& id) {
    std::string key(descriptor);
    if (const auto found = known.find(key); found != known.end()) {
        id = found->second;
        return ERROR_SUCCESS;
    }
    const std::optional<std::string> sddl = ExactSddl(BytesOf(descriptor), kWholeDescriptor);
    if (!sddl && !nt::SecurityDescriptor::FromBytes(BytesOf(descriptor))) return ERROR_INVALID_SECURITY_DESCR;
    Sha256 own;
    own.Add(descriptor);
    std::string name = own.Digest().substr(0, kIdDigits);
    const std::size_t cost = own_form::KnownBytesOf(descriptor.size());
    DWORD error = ERROR_SUCCESS;
    // Another descriptor may have the same first digits.
    if (knownBytes + cost > own_form::kMostKnownBytes || names.contains(name)) error = Forget();
    if (error != ERROR_SUCCESS) return error;
    line = sddl ? own_form::kList : own_form::kList64;
    ((line += ' ') += name) += ' ';
    if (sddl)
        line += *sddl;
    else
        AppendBase64(BytesOf(descriptor), line);
    error = WriteLine();
    if (error != ERROR_SUCCESS) return error;
    knownBytes += cost;
    const auto added = known.emplace(std::move(key), std::move(name)).first;
    names.emplace(added->second, &added->first);
    id = added->second;
    return ERROR_SUCCESS;
}

DWORD OwnFormWriter::Add(std::string_view path, SavedKind kind, std::span<const std::uint8_t> descriptor) {
    if (!path.empty() && !IsPathBelow(path)) return ERROR_INVALID_NAME;
    std::string_view id;
    const DWORD error = FindId({reinterpret_cast<const char*>(descriptor.data()), descriptor.size()}, id);
    if (error != ERROR_SUCCESS) return error;
    line = WordOf(kind);
    ((line += ' ') += id) += ' ';
    AppendWrittenPath(path, line);
    if (line.size() > kLongestLine) return ERROR_INVALID_NAME;
    ++objects;
    return WriteLine();
}

DWORD OwnFormWriter::AddGap(std::string_view path, SavedKind kind, DWORD error) {
    if (kind != SavedKind::kMounted) isIncomplete = true;
    if (!path.empty() && !IsPathBelow(path)) return ERROR_INVALID_NAME;
    line = WordOf(kind);
    line += ' ';
    if (kind != SavedKind::kMounted) line += std::to_string(error) + ' ';
    AppendWrittenPath(path, line);
    if (line.size() > kLongestLine) return ERROR_INVALID_NAME;
    ++objects;
    return WriteLine();
}

DWORD OwnFormWriter::MarkIncomplete() {
    isIncomplete = true;
    return ERROR_SUCCESS;
}

DWORD OwnFormWriter::End() {
    line = own_form::kEnd;
    (line += ' ') += isIncomplete ? own_form::kIncomplete : own_form::kComplete;
    (line += ' ' + std::to_string(objects) + ' ') += own_form::kSha256;
    line += ' ' + hash.Digest() + '\n';
    const DWORD error = buffer.Write(line);
    return error == ERROR_SUCCESS ? buffer.Flush() : error;
}

}  // namespace permora
