// How rows look: views, pictures, columns, tips and order.
#include "browser/browser_view.h"
#include "browser/drive_rows.h"
#include "browser/list_presentation.h"
#include "browser/row_order.h"
#include "framework/frame_window.h"
#include "platform/api/files.h"
#include "resources/resource_ids.h"

namespace permora {
namespace {

// Positions in the frame's menu.
constexpr int kViewMenu = 2;
constexpr int kOwnIconsEntry = 2;
constexpr int kFirstModeEntry = 4;
constexpr int kLastModeEntry = 7;

constexpr std::uint32_t kViewModes = 4;

}  // namespace

// ---- View modes and icons ----

CMenu BrowserView::ViewMenu() const {
    const CFrameWnd* frame = Frame();
    const CMenu menu = frame != nullptr ? frame->GetMenu() : CMenu();
    return menu ? menu.GetSubMenu(kViewMenu) : CMenu();
}

void BrowserView::SetViewMode(ListView mode) {
    ChangeView(mode);
    if (detailsView) RefreshList();
}

void BrowserView::ChangeView(ListView mode) {
    list.SetView(mode);
    detailsView = mode == ListView::kReport;
    const int position = static_cast<int>(mode);
    if (CMenu menu = ViewMenu())
        menu.CheckRadioByPosition(kFirstModeEntry, kLastModeEntry, kFirstModeEntry + position);
    if (viewModeChosen) viewModeChosen(static_cast<std::uint32_t>(position));
}

void BrowserView::ApplyViewSettings(std::uint32_t viewMode, bool ownIcons) {
    if (viewMode < kViewModes) ChangeView(static_cast<ListView>(viewMode));
    SetOwnIcons(ownIcons);
    RefreshList();
}

void BrowserView::SetOwnIcons(bool ownIcons) {
    useOwnIcons = ownIcons;
    if (CMenu menu = ViewMenu()) menu.CheckByPosition(kOwnIconsEntry, ownIcons);
}

// ---- Pictures ----

// Icons are decoded once, however often the list is filled.
CIcon BrowserView::OwnIcon(unsigned int id) {
    const auto [place, isNew] = ownIconsLoaded.try_emplace(id);
    if (isNew) place->second = CIcon::Load(id);
    return place->second;
}

bool BrowserView::RebuildImages(std::span<const unsigned int> iconIds) {
    largeImages.DeleteImageList();
    smallImages.DeleteImageList();
    if (!largeImages.Create(LargeIconSize()) || !smallImages.Create(SmallIconSize())) return false;
    list.SetImageList(largeImages, ImageListKind::kNormal);
    list.SetImageList(smallImages, ImageListKind::kSmall);
    for (const unsigned int id : iconIds) {
        largeImages.Add(OwnIcon(id));
        smallImages.Add(OwnIcon(id));
    }
    return true;
}

bool BrowserView::InitFolderImages() {
    const bool hasPictures = OwnIcon(IDI_FOLDER) && OwnIcon(IDI_FILE);
    return RebuildImages(hasPictures ? std::span<const unsigned int>(kFolderImages)
                                     : std::span<const unsigned int>());
}

bool BrowserView::InitDriveImages() {
    return RebuildImages(kDriveImages);
}

void BrowserView::AddShellIcons(const std::string& name) {
    const ShellIcons::Pair icons = shellIcons.Find(name);
    if (largeImages.Add(icons.large) < 0) largeImages.Add(OwnIcon(IDI_FILE));
    if (smallImages.Add(icons.small) < 0) smallImages.Add(OwnIcon(IDI_FILE));
}

// ---- Texts ----

void BrowserView::FillDetails(const std::string& name, int row, const WIN32_FIND_DATAA& found) {
    list.SetItemText(row, kTypeColumn, ShellTypeName(name));
    if (KindOf(found) != EntryKind::kFolder) list.SetItemText(row, kSizeColumn, FormatSize(SizeOf(found)));
    list.SetItemText(row, kModifiedColumn, ModifiedText(found.ftLastWriteTime));
}

bool BrowserView::BuildInfoText(const std::string& name) {
    infoText.clear();
    if (sharesMode) return false;
    if (!driveListShown) return BuildEntryInfo(name);
    BuildDriveInfo(name);
    return true;
}

bool BrowserView::BuildEntryInfo(const std::string& name) {
    WIN32_FIND_DATAA found{};
    HANDLE search = FindFirstFileA(name.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return false;
    FindClose(search);
    if (const std::string type = ShellTypeName(name); !type.empty()) infoText = "Type: " + type + '\n';
    if (KindOf(found) != EntryKind::kFolder) infoText += "Size: " + FormatSize(SizeOf(found)) + '\n';
    infoText += "Modified: " + ModifiedText(found.ftLastWriteTime);
    return true;
}

// As much as the drive tells.
void BrowserView::BuildDriveInfo(const std::string& root) {
    std::array<char, 261> label{};
    std::array<char, 261> fileSystem{};
    if (GetVolumeInformationA(root.c_str(), label.data(), DWORD{label.size()}, nullptr, nullptr, nullptr,
                              fileSystem.data(), DWORD{fileSystem.size()}) == FALSE) {
        return;
    }
    const std::string fileSystemName = fileSystem.data();
    infoText = std::string("Name: ") + label.data() +
               "\nFile System: " + (fileSystemName.empty() ? "Unknown" : fileSystemName);
    ULARGE_INTEGER available{};
    ULARGE_INTEGER total{};
    if (GetDiskFreeSpaceExA(root.c_str(), &available, &total, nullptr) == FALSE) return;
    infoText += "\nTotal Space: " + FormatSize(total.QuadPart) +
                "\nAvailable Space: " + FormatSize(available.QuadPart);
}

// ---- Order ----

void BrowserView::SortByColumn(int column) {
    const int count = list.GetItemCount();
    std::vector<std::string> texts;
    texts.reserve(static_cast<std::size_t>(count));
    for (int row = 0; row < count; ++row) {
        texts.push_back(list.GetItemText(row, column));
        list.SetItemData(row, row);
    }
    list.SortItems(OrderByColumn(column, texts));
    for (int row = 0; row < count; ++row)
        list.SetItemData(row, row);
}

}  // namespace permora
