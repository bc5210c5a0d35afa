#include "browser/clipboard_block.h"

#include <utility>

namespace permora {
namespace {

constexpr std::size_t kHeaderSize = 20;
constexpr std::size_t kOffsetField = 0;
constexpr std::size_t kOperationField = 12;
constexpr std::size_t kWideField = 16;

template <class Number>
Number ReadNumber(std::span<const std::uint8_t> bytes, std::size_t offset) {
    Number number = 0;
    for (std::size_t i = sizeof(Number); i > 0; --i)
        number = static_cast<Number>(static_cast<std::uint32_t>(number) << 8U | bytes[offset + i - 1]);
    return number;
}

void WriteNumber(std::span<std::uint8_t> bytes, std::size_t offset, std::uint32_t number) {
    for (std::size_t i = 0; i < sizeof number; ++i, number >>= 8U)
        bytes[offset + i] = static_cast<std::uint8_t>(number & 0xFFU);
}

template <class Unit>
Unit UnitAt(std::span<const std::uint8_t> bytes, std::size_t place) {
    if constexpr (sizeof(Unit) == 1)
        return static_cast<Unit>(bytes[place]);
    else
        return static_cast<Unit>(ReadNumber<std::uint16_t>(bytes, place * sizeof(Unit)));
}

// Up to two NULs, which must be inside `bytes`.
template <class Unit>
const char* ReadFileList(std::span<const std::uint8_t> bytes, std::basic_string<Unit>& list) {
    const std::size_t units = bytes.size() / sizeof(Unit);
    std::basic_string<Unit> read;
    read.reserve(units);
    std::size_t files = 0;
    std::size_t start = 0;  // of the path being read
    for (std::size_t place = 0; place < units; ++place) {
        read += UnitAt<Unit>(bytes, place);
        if (read.back() != Unit{0}) continue;
        if (start == place) {
            if (files == 0) return kDamagedFileList;
            list = std::move(read);
            return nullptr;
        }
        if (!IsPathOfFile(std::basic_string_view<Unit>(read).substr(start, place - start)))
            return kNoPathsOfFiles;
        if (++files > kMostFiles) return kTooManyFiles;
        start = place + 1;
    }
    return kDamagedFileList;
}

}  // namespace

std::vector<std::uint8_t> ClipboardBlockOf(TransferKind kind, const std::string& folder,
                                           std::span<const std::string> names) {
    std::vector<std::uint8_t> block(kHeaderSize);
    WriteNumber(block, kOffsetField, kHeaderSize);
    WriteNumber(block, kOperationField, kind == TransferKind::kCopy ? 1 : 0);
    const std::string list = FileListOf(folder + '\\', names);
    block.insert(block.end(), list.begin(), list.end());
    return block;
}

const char* ReadClipboardBlock(std::span<const std::uint8_t> block, FileTransfer& transfer) {
    if (block.size() < kHeaderSize) return kDamagedFileList;
    const auto offset = ReadNumber<std::uint32_t>(block, kOffsetField);
    if (offset < kHeaderSize || offset >= block.size()) return kDamagedFileList;
    FileTransfer read;
    read.kind =
        ReadNumber<std::uint32_t>(block, kOperationField) != 0 ? TransferKind::kCopy : TransferKind::kMove;
    read.isWide = ReadNumber<std::uint32_t>(block, kWideField) != 0;
    if (read.isWide && offset % sizeof(WCHAR) != 0) return kDamagedFileList;
    const auto list = block.subspan(offset);
    const char* fault = read.isWide ? ReadFileList(list, read.wideList) : ReadFileList(list, read.list);
    if (fault == nullptr) transfer = std::move(read);
    return fault;
}

}  // namespace permora
