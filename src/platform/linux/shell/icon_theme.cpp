#include "platform/linux/shell/icon_theme.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <utility>

#include "platform/ascii.h"
#include "platform/linux/base/run_tool.h"
#include "platform/linux/base/user_folders.h"
#include "platform/linux/shell/ini_text.h"

namespace permora::host {
namespace {

constexpr const char* kThemeGroup = "Icon Theme";
// What most desktops have.
constexpr const char* kUsualTheme = "Adwaita";
// Every other theme inherits from it.
constexpr const char* kLastTheme = "hicolor";

std::vector<std::string> SplitList(std::string_view list) {
    std::vector<std::string> parts;
    while (!list.empty()) {
        const std::string_view part = TakeUntil(',', list);
        if (!part.empty()) parts.emplace_back(part);
    }
    return parts;
}

int NumberIn(const IniGroups& groups, const std::string& group, std::string_view key, int otherwise) {
    const std::string text = IniValue(groups, group, key);
    int number = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    return problem == std::errc() && number >= 0 && number <= 4096 ? number : otherwise;
}

// A name that leads out of its folder is none.
bool IsPlainName(const std::string& name) {
    return !name.empty() && name.front() != '.' && name.find('/') == name.npos;
}

bool IsPlainPath(const std::string& path) {
    return !path.starts_with('/') && ("/" + path + "/").find("/../") == path.npos;
}

std::string PictureIn(const std::string& folder, const std::string& name) {
    for (const char* extension : {".png", ".svg"}) {
        std::string path = folder + name + extension;
        if (access(path.c_str(), R_OK) == 0) return path;
    }
    return {};
}

// GNOME's choice stands in a database that its own tool reads: a text in single quotes. Empty without it.
std::string ThemeOfGnome() {
    constexpr ToolLimits kLimits{std::chrono::seconds(1), 4096};
    std::string answer;
    if (RunTool("gsettings", {"get", "org.gnome.desktop.interface", "icon-theme"}, kLimits, answer) !=
        ERROR_SUCCESS)
        return {};
    const std::size_t start = answer.find('\'');
    const std::size_t end = answer.rfind('\'');
    return start < end ? answer.substr(start + 1, end - start - 1) : "";
}

// The theme that the user chose for his desktop.
std::string ChosenTheme() {
    const std::string configuration = UserConfigurationFolder();
    const char* variable = std::getenv("XDG_CURRENT_DESKTOP");
    const std::string_view desktop = variable != nullptr ? variable : "";
    if (desktop.find("KDE") != desktop.npos) {
        std::string theme = IniValue(ReadIniFile(configuration + "/kdeglobals"), "Icons", "Theme");
        return theme.empty() ? "breeze" : theme;
    }
    if (desktop.find("GNOME") != desktop.npos) {
        if (std::string theme = ThemeOfGnome(); !theme.empty()) return theme;
    }
    for (const std::string& folder : {configuration, std::string("/etc")}) {
        std::string theme =
            IniValue(ReadIniFile(folder + "/gtk-3.0/settings.ini"), "Settings", "gtk-icon-theme-name");
        if (!theme.empty()) return theme;
    }
    return kUsualTheme;
}

bool IsInstalled(const std::string& theme, const std::vector<std::string>& dataFolders) {
    return IsPlainName(theme) &&
           std::any_of(dataFolders.begin(), dataFolders.end(), [&theme](const std::string& folder) {
               return access((folder + "/icons/" + theme + "/index.theme").c_str(), R_OK) == 0;
           });
}

}  // namespace

IconTheme::IconTheme(const std::string& name, const std::vector<std::string>& dataFolders) {
    std::vector<std::string> waiting = {name};
    std::vector<std::string> known;
    // A theme that inherits from itself ends here, since none is added twice.
    for (std::size_t i = 0; i < waiting.size(); ++i) {
        const std::string current = waiting[i];
        const bool isKnown = std::find(known.begin(), known.end(), current) != known.end();
        if (isKnown || !IsPlainName(current) || current == kLastTheme) continue;
        known.push_back(current);
        for (std::string& parent : AddTheme(current, dataFolders))
            waiting.push_back(std::move(parent));
    }
    AddTheme(kLastTheme, dataFolders);
}

const IconTheme& IconTheme::Shared() {
    static const IconTheme theme = [] {
        const std::vector<std::string> folders = DataFolders();
        const std::string chosen = ChosenTheme();
        return IconTheme(IsInstalled(chosen, folders) ? chosen : kUsualTheme, folders);
    }();
    return theme;
}

std::vector<std::string> IconTheme::AddTheme(const std::string& name,
                                             const std::vector<std::string>& dataFolders) {
    std::vector<std::string> places;
    IniGroups index;
    const std::string below = "/icons/" + name + '/';
    for (const std::string& folder : dataFolders) {
        places.push_back(folder + below);
        if (index.empty()) index = ReadIniFile(places.back() + "index.theme");
    }
    std::vector<Folder> folders;
    for (const std::string& part : SplitList(IniValue(index, kThemeGroup, "Directories"))) {
        const Sizes sizes = SizesOf(index, part);
        for (const std::string& place : places) {
            const std::string path = place + part + "/";
            if (IsPlainPath(part) && access(path.c_str(), X_OK) == 0) folders.push_back({path, sizes});
        }
    }
    themes.push_back(std::move(folders));
    return SplitList(IniValue(index, kThemeGroup, "Inherits"));
}

IconTheme::Sizes IconTheme::SizesOf(const IniGroups& index, const std::string& part) {
    constexpr int kUsualThreshold = 2;
    const std::string type = IniValue(index, part, "Type");
    const int size = NumberIn(index, part, "Size", 0);
    if (type == "Fixed") return {size, size, size};
    if (type == "Scalable") {
        return {size, NumberIn(index, part, "MinSize", size), NumberIn(index, part, "MaxSize", size)};
    }
    const int threshold = NumberIn(index, part, "Threshold", kUsualThreshold);
    return {size, size - threshold, size + threshold};
}

std::string IconTheme::FindPicture(const std::vector<std::string>& names, int size) const {
    for (const std::vector<Folder>& folders : themes) {
        for (const std::string& name : names) {
            std::string path = IsPlainName(name) ? FindIn(folders, name, size) : "";
            if (!path.empty()) return path;
        }
    }
    return {};
}

std::string IconTheme::FindIn(const std::vector<Folder>& folders, const std::string& name, int size) {
    std::string best;
    // How far the size is from what the folder's pictures are meant for, then from what they are.
    std::pair<int, int> least{std::numeric_limits<int>::max(), 0};
    for (const Folder& folder : folders) {
        const auto& [nominal, smallest, largest] = folder.sizes;
        const std::pair<int, int> distance{std::max({smallest - size, size - largest, 0}),
                                           std::abs(nominal - size)};
        if (distance >= least) continue;
        std::string path = PictureIn(folder.path, name);
        if (path.empty()) continue;
        least = distance;
        best = std::move(path);
    }
    return best;
}

}  // namespace permora::host
