#include "platform/file_url.h"

#include <unistd.h>

#include <array>

#include "platform/ascii.h"
#include "platform/linux/base/percent_encoding.h"
#include "platform/linux/files/drives.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/path_text.h"
#include "platform/linux/files/paths.h"

namespace permora {
namespace {

constexpr std::string_view kScheme = "file:";

// Empty, or one of this machine's names.
bool IsHere(std::string_view computer) {
    std::array<char, 256> name{};
    if (computer.empty() || EqualsIgnoringCase(computer, "localhost")) return true;
    return gethostname(name.data(), name.size() - 1) == 0 && EqualsIgnoringCase(computer, name.data());
}

bool IsPlainPath(std::string_view hostPath) {
    if (!hostPath.starts_with('/')) return false;
    while (!hostPath.empty()) {
        hostPath.remove_prefix(1);
        const std::string_view component = hostPath.substr(0, hostPath.find('/'));
        if (component == "." || component == "..") return false;
        hostPath.remove_prefix(component.size());
    }
    return true;
}

std::string PathOf(std::string_view url, const std::vector<host::DriveRoot>& drives) {
    if (!EqualsIgnoringCase(url.substr(0, kScheme.size()), kScheme)) return {};
    url.remove_prefix(kScheme.size());
    if (url.starts_with("//")) {
        url.remove_prefix(2);
        const std::string_view computer = url.substr(0, url.find('/'));
        if (!IsHere(computer)) return {};
        url.remove_prefix(computer.size());
    }
    if (url.find_first_of("?#") != url.npos) return {};  // what follows them is no path
    const auto hostPath = host::PercentDecoded(url);
    return hostPath && IsPlainPath(*hostPath) ? host::PathFromHost(*hostPath, drives) : std::string();
}

}  // namespace

std::string FileUrlPart(const std::string& name) {
    std::string hostName;
    return host::DecodeName(name, hostName) ? host::PercentEncoded(hostName) : std::string();
}

std::string FileUrlOf(const std::string& path) {
    host::PathText text;
    if (host::ParsePath(path, text) != ERROR_SUCCESS || text.drive == 0 ||
        text.start != host::PathText::Start::kRoot)
        return {};
    const auto drive = host::FindDrive(text.drive);
    if (!drive) return {};
    std::string url = "file://";
    if (drive->hostRoot != "/") url += host::PercentEncoded(drive->hostRoot);
    for (const std::string_view component : text.components) {
        const std::string part = FileUrlPart(std::string(component));
        if (part.empty()) return {};
        url += '/' + part;
    }
    return url;
}

std::string PathFromFileUrl(std::string_view url) {
    return PathOf(url, host::ListDriveRoots());
}

std::vector<std::string> PathsFromFileUrls(std::span<const std::string_view> urls) {
    const std::vector<host::DriveRoot> drives = host::ListDriveRoots();
    std::vector<std::string> paths;
    paths.reserve(urls.size());
    for (const std::string_view url : urls)
        paths.push_back(PathOf(url, drives));
    return paths;
}

}  // namespace permora
