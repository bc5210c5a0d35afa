#include "platform/linux/files/mount_table.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <utility>

#include "platform/ascii.h"

namespace permora::host {
namespace {

bool IsOctal(char character) {
    return character >= '0' && character <= '7';
}

// Blanks, tabs, line ends and backslashes are written as a backslash and three octal digits.
std::string Unescape(std::string_view field) {
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        const bool isEscape = field[i] == '\\' && field.size() - i > 3 &&
                              std::all_of(field.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                                          field.begin() + static_cast<std::ptrdiff_t>(i) + 4, IsOctal);
        if (!isEscape) {
            text += field[i];
            continue;
        }
        text +=
            static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0'));
        i += 3;
    }
    return text;
}

std::optional<MountEntry> ParseLine(std::string_view line) {
    MountEntry entry;
    entry.id = TakeUntil(' ', line);
    TakeUntil(' ', line);  // the mount that holds this one
    entry.device = TakeUntil(' ', line);
    entry.root = Unescape(TakeUntil(' ', line));
    entry.mountPoint = Unescape(TakeUntil(' ', line));
    TakeUntil(' ', line);  // options of the mount point
    // Any number of optional fields, ended by a hyphen.
    while (!line.empty() && TakeUntil(' ', line) != "-") {
    }
    entry.fileSystem = Unescape(TakeUntil(' ', line));
    entry.source = Unescape(TakeUntil(' ', line));
    entry.options = Unescape(TakeUntil(' ', line));
    const bool isComplete = !entry.mountPoint.empty() && entry.mountPoint.front() == '/' &&
                            !entry.root.empty() && !entry.fileSystem.empty();
    if (!isComplete) return std::nullopt;
    return entry;
}

}  // namespace

std::vector<MountEntry> ParseMountTable(std::string_view mountInfo) {
    std::vector<MountEntry> entries;
    while (!mountInfo.empty())
        if (auto entry = ParseLine(TakeLine(mountInfo))) entries.push_back(std::move(*entry));
    return entries;
}

bool IsAtOrBelow(std::string_view hostPath, std::string_view folder) {
    if (folder == "/") return true;
    return hostPath.starts_with(folder) &&
           (hostPath.size() == folder.size() || hostPath[folder.size()] == '/');
}

std::string ReadMountTable() {
    std::ifstream file("/proc/self/mountinfo", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::optional<std::uint64_t> MountIdOf(const ObjectHandle& object) {
    struct statx status {};
    if (statx(object.Descriptor(), "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_MNT_ID, &status) != 0)
        return std::nullopt;
    if ((status.stx_mask & STATX_MNT_ID) == 0) return std::nullopt;
    return status.stx_mnt_id;
}

std::optional<MountEntry> MountOf(const ObjectHandle& object) {
    const std::optional<std::uint64_t> number = MountIdOf(object);
    if (!number) return std::nullopt;
    const std::string id = std::to_string(*number);
    for (MountEntry& entry : ParseMountTable(ReadMountTable()))
        if (entry.id == id) return std::move(entry);
    return std::nullopt;
}

bool AreOnOneMount(const ObjectHandle& one, const ObjectHandle& other) {
    return one.Status().st_dev == other.Status().st_dev && MountIdOf(one) == MountIdOf(other);
}

}  // namespace permora::host
