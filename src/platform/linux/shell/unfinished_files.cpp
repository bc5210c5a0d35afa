#include "platform/linux/shell/unfinished_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/folder_listing.h"

namespace permora::host {
namespace {

constexpr std::string_view kPrefix = ".permora-";
constexpr std::size_t kDigits = 16;

bool IsTemporaryName(std::string_view name) {
    const auto isDigit = [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); };
    return name.size() == kPrefix.size() + kDigits && name.starts_with(kPrefix) &&
           std::ranges::all_of(name.substr(kPrefix.size()), isDigit);
}

// All names first: removing files during a listing may make it skip others.
std::vector<std::string> TemporaryNamesIn(const ObjectHandle& folder) {
    std::vector<std::string> names;
    UniqueFd opened;
    DWORD error = folder.OpenForListing(opened);
    if (error != ERROR_SUCCESS) return names;
    FolderListing listing(std::move(opened));
    for (FolderListing::Entry entry{}; listing.Next(entry, error);)
        if (IsTemporaryName(entry.name)) names.emplace_back(entry.name);
    return names;
}

// Whether no process works on the file any more. From now on, `mark` keeps others away from it.
bool IsForsaken(const ObjectHandle& file, UniqueFd& mark) {
    constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    mark.Reset(open(DescriptorPath(file.Descriptor()).Text(), kFlags));
    return mark && flock(mark.Get(), LOCK_EX | LOCK_NB) == 0;
}

}  // namespace

std::string TemporaryName() {
    std::uint64_t number = 0;
    // It needs no secrecy: guessing the name can only make the creation of the file fail.
    if (getrandom(&number, sizeof number, 0) != sizeof number) number = static_cast<std::uint64_t>(getpid());
    std::array<char, kDigits + 1> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(number));
    return std::string(kPrefix) + digits.data();
}

bool MarkUnfinished(int descriptor) {
    return flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

bool IsUnfinished(const ObjectHandle& folder, const std::string& name, const ObjectHandle& object) {
    struct stat status {};
    return fstatat(folder.Descriptor(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           AreOneObject(status, object.Status());
}

void RemoveUnfinished(const ObjectHandle& folder, const std::string& name, const ObjectHandle& object) {
    if (IsUnfinished(folder, name, object)) unlinkat(folder.Descriptor(), name.c_str(), 0);
}

void SweepUnfinished(const ObjectHandle& folder) {
    for (const std::string& name : TemporaryNamesIn(folder)) {
        ObjectHandle found;
        if (ObjectHandle::OpenUnmountedAt(folder.Descriptor(), name.c_str(), found) != ERROR_SUCCESS)
            continue;
        const bool isOurs = found.Status().st_uid == geteuid();
        UniqueFd mark;
        const bool isForsaken =
            found.IsLink() || (isOurs && S_ISREG(found.Status().st_mode) && IsForsaken(found, mark));
        if (isOurs && isForsaken) RemoveUnfinished(folder, name, found);
    }
}

}  // namespace permora::host
