#include "cli/mode_check.h"

#include <algorithm>

#include "platform/path_below.h"
#include "platform/security_change.h"

namespace permora {
namespace {

void AppendBytes(std::string& key, std::span<const std::uint8_t> bytes) {
    key.append(bytes.begin(), bytes.end());
}

void AppendNumber(std::string& key, std::uint64_t number) {
    key += std::to_string(number) + ' ';
}

}  // namespace

DWORD ModeCheck::Prepare() {
    const DWORD error = FindServedFolders(folders);
    isTold.assign(folders.size(), false);
    return error;
}

std::string ModeCheck::FullPath(std::string_view below) const {
    if (below.empty()) return path;
    return path + (path.ends_with('\\') ? "" : "\\") + std::string(below);
}

void ModeCheck::Run(HeldObject& top, const std::string& topPath, ModeObserver& whoListens) {
    const auto isConcerned = [&](const ServedFolder& folder) {
        return IsAtOrBelow(topPath, folder.path) || IsAtOrBelow(folder.path, topPath);
    };
    if (std::ranges::none_of(folders, isConcerned)) return;
    held = &top;
    path = topPath;
    observer = &whoListens;
    top.ExpectManyBelow();
    (void)ReadTree(top, kUsualParts, *this);  // the observer alone ends it
}

// Whether another share has said the same already.
bool ModeCheck::IsLikeEarlier(std::string_view full, std::size_t place) const {
    const ServedFolder& folder = folders[place];
    return folder.by != ServedBy::kUnknown &&
           std::any_of(folders.begin(), folders.begin() + static_cast<std::ptrdiff_t>(place),
                       [&](const ServedFolder& earlier) {
                           return earlier.by == folder.by && earlier.user == folder.user &&
                                  IsAtOrBelow(full, earlier.path);
                       });
}

bool ModeCheck::Visit(const ReadObject& object) {
    if (!observer->Begin(object.path)) return false;
    if (object.kind != SavedKind::kFile && object.kind != SavedKind::kFolder) return true;
    const std::string full = FullPath(object.path);
    HostPermissions permissions;
    bool isRead = false;
    for (std::size_t i = 0; i < folders.size(); ++i) {
        if (!IsAtOrBelow(full, folders[i].path) || IsLikeEarlier(full, i)) continue;
        if (folders[i].by == ServedBy::kUnknown) {
            if (!isTold[i]) observer->Miss(object.path, folders[i], ERROR_SUCCESS);
            isTold[i] = true;
            continue;
        }
        if (!isRead) {
            HeldObject below;
            DWORD error =
                object.path.empty() ? ERROR_SUCCESS : held->HoldBelow(std::string(object.path), below);
            if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return true;
            if (error == ERROR_SUCCESS)
                error = (object.path.empty() ? *held : below).ReadHostPermissions(permissions);
            if (error != ERROR_SUCCESS) {
                observer->Miss(object.path, folders[i], error);
                return true;
            }
            isRead = true;
        }
        Compare(object, i, permissions);
    }
    return true;
}

// Many objects have few lists and modes.
void ModeCheck::Compare(const ReadObject& object, std::size_t place, const HostPermissions& permissions) {
    std::string key;
    for (const std::uint64_t number :
         {std::uint64_t{place}, std::uint64_t{permissions.owner}, std::uint64_t{permissions.group},
          std::uint64_t{permissions.mode}, std::uint64_t{object.kind == SavedKind::kFolder},
          std::uint64_t{permissions.list.size()}})
        AppendNumber(key, number);
    AppendBytes(key, permissions.list);
    AppendBytes(key, object.descriptor);
    const auto [found, isNew] = known.try_emplace(std::move(key));
    const auto descriptor = isNew ? nt::SecurityDescriptor::FromBytes(object.descriptor) : std::nullopt;
    const nt::ObjectKind kind =
        object.kind == SavedKind::kFolder ? nt::ObjectKind::kFolder : nt::ObjectKind::kFile;
    if (descriptor) found->second = CompareWithMode(*descriptor, permissions, kind, folders[place], accounts);
    if (!found->second.empty()) observer->Take(object.path, folders[place], found->second);
}

}  // namespace permora
