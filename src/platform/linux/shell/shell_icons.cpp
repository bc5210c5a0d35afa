#include "platform/shell_icons.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "platform/linux/shell/icon_theme.h"
#include "platform/linux/shell/mime_database.h"
#include "platform/linux/shell/object_type.h"

namespace permora {
namespace {

using Picture = std::shared_ptr<const ShellPicture>;

// No icon of 32 pixels is larger.
constexpr std::uintmax_t kLargestFile = std::uintmax_t{1} << 20;

Picture ReadPicture(const std::string& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error || size == 0 || size > kLargestFile) return nullptr;
    auto picture = std::make_shared<ShellPicture>();
    picture->file.resize(size);
    std::ifstream stream(path, std::ios::binary);
    stream.read(reinterpret_cast<char*>(picture->file.data()), static_cast<std::streamsize>(size));
    return stream ? picture : nullptr;
}

Picture PictureOf(const std::vector<std::string>& names, int pixels) {
    const std::string path = host::IconTheme::Shared().FindPicture(names, pixels);
    return path.empty() ? nullptr : ReadPicture(path);
}

ShellIcon LoadIcon(const std::string& type) {
    const std::vector<std::string> names = host::MimeDatabase::Shared().IconsOf(type);
    return {PictureOf(names, 32), PictureOf(names, 16)};
}

}  // namespace

ShellIcon FindShellIcon(LPCSTR path) {
    static std::mutex mutex;
    static std::map<std::string, ShellIcon> icons;  // by type
    std::string type;
    if (host::TypeOfObject(path, type) != ERROR_SUCCESS) return {};
    const std::lock_guard lock(mutex);
    const auto [entry, isNew] = icons.try_emplace(type);
    if (isNew) entry->second = LoadIcon(type);
    return entry->second;
}

}  // namespace permora
