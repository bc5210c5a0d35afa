#include "platform/linux/base/foreign_environment.h"

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string_view>

#include "platform/ascii.h"
#include "platform/linux/base/spawn_plan.h"
#include "platform/linux/base/user_folders.h"

namespace permora::host {
namespace {

// Whole families, since each library reads more variables than it documents: Qt, GTK and GLib (which Qt's
// themes load), the C library, graphics drivers, X, fonts, TLS, the desktop's base directories.
constexpr std::array<std::string_view, 40> kFamilies{
    "__EGL",       "__GL",     "EGL_",     "FC_",    "FONTCONFIG_",  "GALLIUM_", "GBM_",    "GCONV_PATH",
    "GDK_",        "GIO_",     "GLX",      "GNOME_", "GSETTINGS",    "GTK",      "HOME",    "HOSTALIASES",
    "ICU_",        "KDE",      "LANGUAGE", "LIBGL_", "LIBVA_",       "LOCPATH",  "MESA_",   "NLSPATH",
    "OPENSSL_",    "PATH",     "PLASMA_",  "QML",    "QT",           "SSL_",     "VDPAU_",  "VK_",
    "XAPPLRESDIR", "XCOMPOSE", "XCURSOR",  "XDG_",   "XENVIRONMENT", "XKB",      "XLOCALE", "TZDIR"};

// Suffixes of variables that hold only places. In these a bare name is a place, too.
constexpr std::string_view kPlaceEnds[] = {
    "PATH",       "DIR",       "DIRS",   "HOME",    "FILE",          "FILES",           "ROOT",
    "CONF",       "FILENAMES", "PREFIX", "ENGINES", "EXTRA_MODULES", "OPENSSL_MODULES", "XENVIRONMENT",
    "HOSTALIASES"};

bool IsOfFamily(std::string_view name) {
    return std::ranges::any_of(kFamilies,
                               [name](std::string_view family) { return name.starts_with(family); });
}

enum class Contents { kPlacesOnly, kAnything };

Contents ContentsOf(std::string_view name) {
    const bool isForPlaces =
        std::ranges::any_of(kPlaceEnds, [name](std::string_view end) { return name.ends_with(end); });
    return isForPlaces ? Contents::kPlacesOnly : Contents::kAnything;
}

// "key=/place" and "FILE:/place" name a place, too. In a variable that holds only places, "=" is part of the
// name.
bool IsPartHarmless(std::string_view part, Contents contents) {
    if (const std::size_t sign = part.find('='); contents == Contents::kAnything && sign < part.find('/'))
        part.remove_prefix(sign + 1);
    if (part.find('/') == part.npos) return contents == Contents::kAnything;
    return IsRootsAlone(std::string(part));
}

bool IsHarmless(std::string_view name, std::string_view value) {
    const Contents contents = ContentsOf(name);
    // Some programs read an empty element as the current directory.
    if (contents == Contents::kPlacesOnly &&
        (value.starts_with(':') || value.ends_with(':') || value.find("::") != value.npos))
        return false;
    while (!value.empty())
        if (!IsPartHarmless(TakeUntil(':', value), contents)) return false;
    return true;
}

// A Wayland display without a path is found through this folder. It may belong to another user: it leads to a
// screen, not to code.
void KeepDisplay() {
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    const char* display = std::getenv("WAYLAND_DISPLAY");
    if (folder == nullptr || display == nullptr || *display == '/' || *display == '\0') return;
    setenv("WAYLAND_DISPLAY", (std::string(folder) + '/' + display).c_str(), 1);
}

void Forget(const std::string& name) {
    if (name == "XDG_RUNTIME_DIR") KeepDisplay();
    unsetenv(name.c_str());
    if (name == "PATH") setenv("PATH", kToolPath + sizeof "PATH", 1);
    if (name == "HOME") {
        if (const std::string home = HomeOfAccount(); !home.empty()) setenv("HOME", home.c_str(), 1);
    }
}

// --- Paths.

bool MayOthersWrite(const struct stat& status) {
    return (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

// A user may have volumes of their own mounted and choose what belongs to root there; such mounts are nosuid.
// Memory file systems are nosuid, too, but they start empty.
bool MayBeUsersVolume(const std::string& place) {
    struct statfs status {};
    if (statfs(place.c_str(), &status) != 0) return true;
    return (status.f_flags & ST_NOSUID) != 0 && status.f_type != TMPFS_MAGIC;
}

enum class Step { kTaken, kMissing, kForeign };

// Continues to `name` in `place` (a path without links and without its last separator). The target of a link
// is put in front of the `rest` instead.
Step Take(const std::string& name, std::string& place, std::string& rest) {
    const std::string next = place + '/' + name;
    struct stat status {};
    if (lstat(next.c_str(), &status) != 0) return errno == ENOENT ? Step::kMissing : Step::kForeign;
    if (status.st_uid != 0) return Step::kForeign;
    if (S_ISLNK(status.st_mode)) {
        std::string target(PATH_MAX, '\0');
        const ssize_t length = readlink(next.c_str(), target.data(), target.size());
        if (length <= 0) return Step::kForeign;
        target.resize(static_cast<std::size_t>(length));
        if (target.front() == '/') place.clear();
        rest = target + '/' + rest;
        return Step::kTaken;
    }
    // Nobody can remove root's own object from a sticky folder. The last component is checked there.
    const bool isSticky = S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0;
    if ((MayOthersWrite(status) && !isSticky) || MayBeUsersVolume(next)) return Step::kForeign;
    place = next;
    return Step::kTaken;
}

// Whether others may create something in the folder, or write to the file, that the walk has reached.
bool IsOpenToOthers(const std::string& place) {
    const std::string whole = place.empty() ? "/" : place;
    struct stat status {};
    return lstat(whole.c_str(), &status) != 0 || status.st_uid != 0 || MayOthersWrite(status) ||
           MayBeUsersVolume(whole);
}

}  // namespace

bool IsRootsAlone(const std::string& path) {
    constexpr int kMostSteps = 1000;  // links may go round
    // Libraries may resolve ".." in the text alone, and so reach another place than the system.
    if (!path.starts_with('/') || path.find("/..") != path.npos) return false;
    std::string place;
    std::string rest = path;
    for (int step = 0; step < kMostSteps; ++step) {
        rest.erase(0, rest.find_first_not_of('/'));
        if (rest.empty()) return !IsOpenToOthers(place);
        const std::string name = rest.substr(0, rest.find('/'));
        rest.erase(0, name.size());
        if (name == "..") {
            place.resize(place.empty() ? 0 : place.rfind('/'));
        } else if (name != ".") {
            const Step taken = Take(name, place, rest);
            if (taken == Step::kForeign) return false;
            if (taken == Step::kMissing) return !IsOpenToOthers(place);  // root alone can make it
        }
    }
    return false;
}

std::vector<std::string> ForgetForeignPlaces() {
    std::vector<std::string> foreign;
    if (geteuid() != 0) return foreign;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text(*entry);
        const std::string_view name = text.substr(0, text.find('='));
        if (name.size() == text.size() || !IsOfFamily(name)) continue;
        if (!IsHarmless(name, text.substr(name.size() + 1))) foreign.emplace_back(name);
    }
    for (const std::string& name : foreign)
        Forget(name);
    return foreign;
}

}  // namespace permora::host
