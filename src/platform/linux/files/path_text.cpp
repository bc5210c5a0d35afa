#include "platform/linux/files/path_text.h"

#include <algorithm>
#include <utility>

namespace permora::host {
namespace {

void AddComponent(std::string_view component, PathText& text) {
    if (component.empty() || component == ".") return;
    if (component != "..")
        text.components.push_back(component);
    else if (!text.components.empty())
        text.components.pop_back();
    else if (text.start == PathText::Start::kCurrentFolder)
        ++text.ascents;
}

}  // namespace

char DriveLetterOf(std::string_view path) {
    if (path.size() < 2 || path[1] != ':') return 0;
    const char letter = path[0];
    if (letter >= 'a' && letter <= 'z') return static_cast<char>(letter - 'a' + 'A');
    return letter >= 'A' && letter <= 'Z' ? letter : '\0';
}

DWORD ParsePath(std::string_view path, PathText& text) {
    if (path.empty()) return ERROR_PATH_NOT_FOUND;
    if (path.size() > 1 && IsSeparator(path[0]) && IsSeparator(path[1])) return ERROR_BAD_NETPATH;

    PathText parsed;
    parsed.drive = DriveLetterOf(path);
    if (parsed.drive != 0) path.remove_prefix(2);
    if (!path.empty() && IsSeparator(path.front())) parsed.start = PathText::Start::kRoot;
    parsed.endsWithSeparator = !path.empty() && IsSeparator(path.back());

    while (!path.empty()) {
        const std::string_view component = path.substr(0, path.find_first_of("\\/"));
        path.remove_prefix(std::min(component.size() + 1, path.size()));
        AddComponent(component, parsed);
    }
    text = std::move(parsed);
    return ERROR_SUCCESS;
}

std::string JoinPath(char drive, const std::vector<std::string_view>& components) {
    std::string path{drive, ':'};
    if (components.empty()) path += '\\';
    for (const std::string_view component : components) {
        path += '\\';
        path += component;
    }
    return path;
}

}  // namespace permora::host
