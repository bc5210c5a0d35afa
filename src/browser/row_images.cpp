#include "browser/row_images.h"

#include <algorithm>

#include "resources/resource_ids.h"

namespace permora {

bool RowImages::Rebuild(CListCtrl& list, std::span<const unsigned int> iconIds) {
    largeImages.DeleteImageList();
    smallImages.DeleteImageList();
    if (!largeImages.Create(LargeIconSize()) || !smallImages.Create(SmallIconSize())) return false;
    list.SetImageList(largeImages, ImageListKind::kNormal);
    list.SetImageList(smallImages, ImageListKind::kSmall);
    if (!std::ranges::all_of(iconIds, [this](unsigned int id) { return static_cast<bool>(OwnIcon(id)); }))
        return true;
    for (const unsigned int id : iconIds) {
        largeImages.Add(OwnIcon(id));
        smallImages.Add(OwnIcon(id));
    }
    return true;
}

int RowImages::AddShellIcon(const std::string& kind) {
    const ShellIcon icon = FindShellIcon(kind);
    if (smallImages.Add(IconOf(icon.small)) < 0) smallImages.Add(OwnIcon(IDI_FILE));
    const int image = largeImages.Add(IconOf(icon.large));
    return image >= 0 ? image : largeImages.Add(OwnIcon(IDI_FILE));
}

CIcon RowImages::OwnIcon(unsigned int id) {
    const auto [place, isNew] = ownIcons.try_emplace(id);
    if (isNew) place->second = CIcon::Load(id);
    return place->second;
}

CIcon RowImages::IconOf(const Picture& picture) {
    // If each object has a picture of its own, keeping them all would only fill the memory.
    constexpr std::size_t kMostIcons = 1000;
    if (!picture) return {};
    if (shellIcons.size() >= kMostIcons) shellIcons.clear();
    const auto [entry, isNew] = shellIcons.try_emplace(picture);
    if (isNew) entry->second = CIcon::FromPixels({picture->width, picture->height}, picture->pixels);
    return entry->second;
}

}  // namespace permora
