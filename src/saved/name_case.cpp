#include "saved/name_case.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/text.h"
#include "saved/saved_folders.h"

namespace permora {

std::string InCapitals(const std::string& name) {
    // Mostly there is nothing to convert.
    if (std::ranges::all_of(name, [](unsigned char c) { return c < 0x80; })) {
        std::string capitals = name;
        for (char& c : capitals)
            if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        return capitals;
    }
    const int bytes = static_cast<int>(name.size());
    std::vector<WCHAR> wide(name.size());
    const int units = MultiByteToWideChar(CP_ACP, 0, name.data(), bytes, wide.data(), bytes);
    if (units <= 0) return name;
    CharUpperBuffW(wide.data(), static_cast<DWORD>(units));
    std::string capitals(wide.size() * 3, '\0');
    const int length = WideCharToMultiByte(CP_ACP, 0, wide.data(), units, capitals.data(),
                                           static_cast<int>(capitals.size()), nullptr, nullptr);
    if (length <= 0) return name;
    capitals.resize(static_cast<std::size_t>(length));
    return capitals;
}

namespace {

std::string PathIn(const std::string& folder, const std::string& name) {
    return folder.empty() ? name : folder + '\\' + name;
}

bool IsBelow(const std::string& path, const std::string& folder) {
    return folder.empty() ||
           (path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '\\');
}

}  // namespace

NamesInAnyCase::Answer NamesInAnyCase::FindIn(const Level& level, const std::string& name,
                                              std::string& present) {
    const auto alike = level.names.find(InCapitals(name));
    if (alike == level.names.end()) return Answer::kNone;
    const bool isThere = std::ranges::find(alike->second, name) != alike->second.end();
    if (!isThere && alike->second.size() > 1) return Answer::kSeveral;
    present = PathIn(level.present, isThere ? name : alike->second.front());
    return Answer::kOne;
}

DWORD NamesInAnyCase::List(const std::string& path, std::string present) {
    FolderHandle listed;
    FolderEntry entry;
    Level level{path, std::move(present), {}};
    DWORD error = OpenFolderBelow(folder, level.present, listed);
    while (error == ERROR_SUCCESS && (error = listed.NextEntry(entry)) == ERROR_SUCCESS)
        level.names[InCapitals(entry.name)].push_back(entry.name);
    if (error != ERROR_NO_MORE_FILES) return error;
    levels.push_back(std::move(level));
    return ERROR_SUCCESS;
}

// Lists the folder, unless one on the way to it is not there.
DWORD NamesInAnyCase::Enter(const std::string& path, Answer& answer) {
    while (!levels.empty() && levels.back().path != path && !IsBelow(path, levels.back().path))
        levels.pop_back();
    DWORD error = levels.empty() ? List("", "") : ERROR_SUCCESS;
    answer = Answer::kOne;
    while (error == ERROR_SUCCESS && answer == Answer::kOne && levels.back().path != path) {
        const Level& level = levels.back();
        const std::size_t begin = level.path.empty() ? 0 : level.path.size() + 1;
        const std::string next = path.substr(0, path.find('\\', begin));
        std::string present;
        answer = FindIn(level, next.substr(begin), present);
        if (answer == Answer::kOne) error = List(next, std::move(present));
    }
    return error;
}

DWORD NamesInAnyCase::Find(const std::string& path, std::string& present, Answer& answer) {
    const std::size_t end = path.rfind('\\');
    const DWORD error = Enter(end == path.npos ? "" : path.substr(0, end), answer);
    if (error == ERROR_SUCCESS && answer == Answer::kOne)
        answer = FindIn(levels.back(), path.substr(end == path.npos ? 0 : end + 1), present);
    return error;
}

}  // namespace permora
