#include "platform/windows/link_text.h"

#include <winioctl.h>

#include <cstring>
#include <utility>

#include "platform/api/errors.h"

namespace permora {
namespace {

using Block = std::span<const std::byte>;

// Places of the fields in bytes, from the beginning of the block.
constexpr std::size_t kTag = 0;
constexpr std::size_t kDataLength = 4;
constexpr std::size_t kHeader = 8;
constexpr std::size_t kSubstituteOffset = 8;
constexpr std::size_t kSubstituteLength = 10;
constexpr std::size_t kFlags = 16;  // of a symbolic link alone
constexpr std::size_t kJunctionNames = 16;
constexpr std::size_t kLinkNames = 20;
constexpr DWORD kIsRelative = 1;

// The caller has checked that the field is there.
template <class Number>
Number FieldAt(Block block, std::size_t place) {
    Number number{};
    std::memcpy(&number, block.data() + place, sizeof number);
    return number;
}

}  // namespace

DWORD ReadLinkText(Block block, LinkText& link) {
    if (block.size() < kHeader) return ERROR_INVALID_REPARSE_DATA;
    const auto tag = FieldAt<DWORD>(block, kTag);
    const bool isLink = tag == IO_REPARSE_TAG_SYMLINK;
    if (!isLink && tag != IO_REPARSE_TAG_MOUNT_POINT) return ERROR_INVALID_FUNCTION;
    const std::size_t end = kHeader + FieldAt<WORD>(block, kDataLength);
    const std::size_t names = isLink ? kLinkNames : kJunctionNames;
    if (end > block.size() || end < names) return ERROR_INVALID_REPARSE_DATA;
    const std::size_t from = names + FieldAt<WORD>(block, kSubstituteOffset);
    const std::size_t length = FieldAt<WORD>(block, kSubstituteLength);
    if (from + length > end || length == 0 || length % sizeof(wchar_t) != 0)
        return ERROR_INVALID_REPARSE_DATA;
    LinkText read;
    read.text.resize(length / sizeof(wchar_t));
    std::memcpy(read.text.data(), block.data() + from, length);
    if (read.text.find(L'\0') != read.text.npos) return ERROR_INVALID_REPARSE_DATA;
    read.isRelative = isLink && (FieldAt<DWORD>(block, kFlags) & kIsRelative) != 0;
    link = std::move(read);
    return ERROR_SUCCESS;
}

}  // namespace permora
