#include "platform/host_path.h"

#include <algorithm>
#include <string_view>

#include "platform/api/files.h"
#include "platform/windows/code_page.h"
#include "platform/windows/folder_entry.h"

namespace permora {
namespace {

constexpr std::string_view kSeparators = "\\/";

}  // namespace

// The host is the system: it knows both kinds of separators.
std::string PathFromTyped(const std::string& text) {
    return text;
}

std::string HostPathFromPath(const std::string& path) {
    return path;
}

std::string PathBelowArgument(const std::string& argument, std::string_view below) {
    if (below.empty()) return argument;
    const bool endsWithSeparator = argument.find_last_of(kSeparators) + 1 == argument.size();
    return argument + (endsWithSeparator ? "" : "\\") + std::string(below);
}

DWORD FullPathOf(const std::string& path, std::string& full) {
    std::wstring wide;
    DWORD error = ToWide(path, wide);
    if (error == ERROR_SUCCESS) error = MakeFullPath(wide);
    return error == ERROR_SUCCESS ? ToAnsi(wide, full) : error;
}

std::string PathFromArgument(const char* argument) {
    std::string path = argument;
    std::ranges::replace(path, '/', '\\');
    // "folder\." asks for a folder, as a separator at the end does.
    if (path.ends_with("\\.")) path.pop_back();
    return path;
}

std::optional<std::string> PathBelowCurrent(const char* argument) {
    const std::string text = PathFromArgument(argument);
    std::string_view rest = text;
    // "C:name" is relative to the current directory of that drive, and "name:stream" names no object.
    if (rest.empty() || rest.front() == '\\' || rest.find(':') != rest.npos) return std::nullopt;
    std::string path;
    while (!rest.empty()) {
        const std::string_view component = rest.substr(0, rest.find_first_of(kSeparators));
        rest.remove_prefix(std::min(component.size() + 1, rest.size()));
        if (component.empty() || component == ".") continue;
        // The system drops dots and blanks at the end of a name; relative to a handle they would count.
        if (component != ".." && (component.back() == '.' || component.back() == ' ')) return std::nullopt;
        if (component == "..") {
            if (path.empty()) return std::nullopt;
            const std::size_t separator = path.rfind('\\');
            path.resize(separator == path.npos ? 0 : separator);
        } else {
            path += (path.empty() ? "" : "\\") + std::string(component);
        }
    }
    return path;
}

bool IsNameHere(const char* argument) {
    return GetFileAttributesA(argument) != INVALID_FILE_ATTRIBUTES;
}

// A path with a drive letter is never a name in the current directory: names have no colon and no separator.
bool IsAmbiguousArgument(const char* /*argument*/) {
    return false;
}

}  // namespace permora
