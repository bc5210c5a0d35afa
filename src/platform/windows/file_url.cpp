#include "platform/file_url.h"

#include <windows.h>

#include <shlwapi.h>
#include <wininet.h>

#include <array>

namespace permora {
namespace {

using UrlBuffer = std::array<char, INTERNET_MAX_URL_LENGTH>;

}  // namespace

std::string FileUrlOf(const std::string& path) {
    UrlBuffer url{};
    auto size = static_cast<DWORD>(url.size());
    if (PathIsRelativeA(path.c_str()) != FALSE ||
        UrlCreateFromPathA(path.c_str(), url.data(), &size, 0) != S_OK)
        return {};
    std::string text = url.data();
    if (text.ends_with('/')) text.pop_back();  // of a drive's root
    return text;
}

std::string FileUrlPart(const std::string& name) {
    UrlBuffer part{};
    auto size = static_cast<DWORD>(part.size());
    const DWORD flags = URL_ESCAPE_SEGMENT_ONLY | URL_ESCAPE_PERCENT;
    return SUCCEEDED(UrlEscapeA(name.c_str(), part.data(), &size, flags)) ? part.data() : std::string();
}

std::string PathFromFileUrl(std::string_view url) {
    std::array<char, MAX_PATH> path{};
    auto size = static_cast<DWORD>(path.size());
    const bool isFile = PathCreateFromUrlA(std::string(url).c_str(), path.data(), &size, 0) == S_OK;
    const std::string text = isFile && PathIsRelativeA(path.data()) == FALSE ? path.data() : "";
    return text.starts_with("\\\\") ? std::string() : text;  // of another computer
}

std::vector<std::string> PathsFromFileUrls(std::span<const std::string_view> urls) {
    std::vector<std::string> paths;
    paths.reserve(urls.size());
    for (const std::string_view url : urls)
        paths.push_back(PathFromFileUrl(url));
    return paths;
}

}  // namespace permora
