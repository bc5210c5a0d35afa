#include "platform/network_path.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/ascii.h"
#include "platform/host_path.h"
#include "platform/linux/base/letter_case.h"
#include "platform/linux/files/file_system_types.h"
#include "platform/linux/files/mount_table.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/paths.h"

namespace permora {
namespace {

constexpr std::string_view kSeparators = "\\/";
constexpr std::size_t kServerAndShare = 2;

// Between quotes a shell takes everything else as it is.
std::string InQuotes(const std::string& text) {
    std::string quoted = "'";
    for (const char character : text)
        quoted += character == '\'' ? R"('\'')" : std::string(1, character);
    return quoted + '\'';
}

std::vector<std::string_view> NamesIn(std::string_view path) {
    std::vector<std::string_view> names;
    while (!path.empty()) {
        const std::string_view name = path.substr(0, path.find_first_of(kSeparators));
        path.remove_prefix(std::min(name.size() + 1, path.size()));
        if (!name.empty()) names.push_back(name);
    }
    return names;
}

// Server, share, and the names below; "." and ".." are worked off and do not lead out of the share. Fewer
// than two: no share is named.
std::vector<std::string_view> SharePartsOf(std::string_view networkPath) {
    std::vector<std::string_view> parts;
    for (const std::string_view name : NamesIn(networkPath)) {
        if (parts.size() >= kServerAndShare && name == ".") continue;
        if (parts.size() < kServerAndShare || name != "..")
            parts.push_back(name);
        else if (parts.size() > kServerAndShare)
            parts.pop_back();
    }
    return parts;
}

bool AreSame(std::string_view one, std::string_view other) {
    return host::InSmallLetters(one) == host::InSmallLetters(other);
}

using Mounts = std::vector<host::MountEntry>;

// Server, share, and the folder of it that is mounted there; views into `mount`. Empty: that is not certain.
//
// A folder that was mounted without the rest of its share is named by the source, and is the root of its own
// volume. Kernels that make one volume of all mounts of a share give all of them the source of the first, and
// tell the folder as the root of the mount.
std::vector<std::string_view> MountedParts(const host::MountEntry& mount, const Mounts& all) {
    std::vector<std::string_view> parts = NamesIn(mount.source);
    const std::vector<std::string_view> root = NamesIn(mount.root);
    if (parts.size() < kServerAndShare) return {};
    const std::span folder = std::span(parts).subspan(kServerAndShare);
    const bool isFolderInRoot =
        root.size() >= folder.size() && std::ranges::equal(folder, std::span(root).first(folder.size()));
    const bool isVolumeOfShare = std::ranges::any_of(all, [&mount](const host::MountEntry& other) {
        return other.device == mount.device && other.root != "/";
    });
    if (!isFolderInRoot) return root.empty() && !isVolumeOfShare ? parts : std::vector<std::string_view>();
    parts.resize(kServerAndShare);
    parts.insert(parts.end(), root.begin(), root.end());
    return parts;
}

// How many of `parts` lead to what is mounted there; 0 when they lead elsewhere.
std::size_t LengthOf(const host::MountEntry& mount, const Mounts& all,
                     const std::vector<std::string_view>& parts) {
    const std::vector<std::string_view> names = MountedParts(mount, all);
    if (names.empty() || names.size() > parts.size()) return 0;
    return std::ranges::equal(names, std::span(parts).first(names.size()), AreSame) ? names.size() : 0;
}

// A place where a share is mounted, and what of a network path lies below it.
struct Candidate {
    std::string mountPoint;
    std::size_t partsAbove = 0;
};

// Of what is mounted at one place, the last hides the others.
std::vector<Candidate> FindCandidates(const std::vector<std::string_view>& parts) {
    const Mounts mounts = host::ParseMountTable(host::ReadMountTable());
    std::vector<Candidate> candidates;
    for (std::size_t i = 0; i < mounts.size(); ++i) {
        const auto later = std::span(mounts).subspan(i + 1);
        const bool isHidden = std::ranges::any_of(later, [&](const host::MountEntry& other) {
            return host::IsAtOrBelow(mounts[i].mountPoint, other.mountPoint);
        });
        const std::size_t length =
            host::IsSmbMount(mounts[i]) && !isHidden ? LengthOf(mounts[i], mounts, parts) : 0;
        if (length > 0) candidates.push_back({mounts[i].mountPoint, length});
    }
    return candidates;
}

// The SMB mount that holds an object; nothing for other objects. The last one at or above it is what is seen
// there.
std::optional<host::MountEntry> HolderOf(const std::string& hostPath, const Mounts& mounts) {
    const auto holder = std::find_if(mounts.rbegin(), mounts.rend(), [&](const host::MountEntry& mount) {
        return host::IsAtOrBelow(hostPath, mount.mountPoint);
    });
    const bool isHeld = !hostPath.empty() && holder != mounts.rend() && host::IsSmbMount(*holder);
    return isHeld ? std::optional(*holder) : std::nullopt;
}

bool MayEnter(const Candidate& candidate) {
    return faccessat(AT_FDCWD, candidate.mountPoint.c_str(), R_OK | X_OK, AT_EACCESS) == 0;
}

}  // namespace

bool IsNetworkPath(std::string_view text) {
    return text.size() > 2 && text.starts_with("\\\\") && kSeparators.find(text[2]) == kSeparators.npos &&
           text[2] != '?' && text[2] != '.';
}

std::string PathFromNetwork(std::string_view networkPath) {
    if (!IsNetworkPath(networkPath)) return {};
    const std::vector<std::string_view> parts = SharePartsOf(networkPath);
    const std::vector<Candidate> candidates = FindCandidates(parts);
    if (candidates.empty()) return {};
    const auto usable =
        candidates.size() == 1 ? candidates.begin() : std::ranges::find_if(candidates, MayEnter);
    const Candidate& chosen = usable == candidates.end() ? candidates.front() : *usable;
    std::string path = host::PathFromHost(chosen.mountPoint);
    for (const std::string_view name : std::span(parts).subspan(chosen.partsAbove)) {
        if (path.back() != '\\') path += '\\';
        path += name;
    }
    if (kSeparators.find(networkPath.back()) != kSeparators.npos && path.back() != '\\') path += '\\';
    return path;
}

std::string NetworkFromPath(const std::string& path) {
    const std::string hostPath = HostPathFromPath(path);
    const Mounts mounts = host::ParseMountTable(host::ReadMountTable());
    const std::optional<host::MountEntry> holder = HolderOf(hostPath, mounts);
    if (!holder) return {};
    const std::vector<std::string_view> above = MountedParts(*holder, mounts);
    if (above.empty()) return {};
    std::string networkPath(1, '\\');
    for (const std::string_view name : above)
        networkPath += '\\' + std::string(name);
    std::string_view below = std::string_view(hostPath).substr(holder->mountPoint.size());
    while (!below.empty())
        if (const std::string_view name = TakeUntil('/', below); !name.empty())
            networkPath += '\\' + host::EncodeName(name);
    return networkPath;
}

std::string ServerOfPath(const std::string& path) {
    const std::optional<host::MountEntry> holder =
        HolderOf(HostPathFromPath(path), host::ParseMountTable(host::ReadMountTable()));
    const std::vector<std::string_view> parts =
        holder ? NamesIn(holder->source) : std::vector<std::string_view>();
    return parts.empty() ? std::string() : "\\\\" + std::string(parts.front());
}

std::string MountCommandFor(std::string_view networkPath) {
    const std::vector<std::string_view> parts = SharePartsOf(networkPath);
    if (!IsNetworkPath(networkPath) || parts.size() < kServerAndShare) return {};
    return "mount -t cifs " + InQuotes("//" + std::string(parts[0]) + '/' + std::string(parts[1])) +
           " FOLDER -o username=USER";
}

}  // namespace permora
