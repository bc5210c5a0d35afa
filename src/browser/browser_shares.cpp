// Shares mode: the machine's shares in the place of files.
#include <array>
#include <span>
#include <string>

#include "browser/browser_view.h"
#include "browser/list_presentation.h"
#include "browser/shell_items.h"
#include "framework/bars.h"
#include "framework/frame_window.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "platform/api/shares.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"
#include "security/text_conversion.h"

namespace permora {
namespace {

constexpr std::array<unsigned int, 2> kShareImages = {IDI_DRIVE_NETWORK, IDI_SHARED_FOLDER};
constexpr int kShareImage = 1;

// What the machine offers for its own services.
constexpr const char* kServiceShare = "IPC$";

// What one call for the shares handed out.
class ShareRecords {
  public:
    // The shares from `resume` on, which becomes the place of the next call.
    NET_API_STATUS Read(DWORD& resume) {
        LPBYTE block = nullptr;
        DWORD total = 0;
        const NET_API_STATUS status =
            NetShareEnum(nullptr, 1, &block, MAX_PREFERRED_LENGTH, &count, &total, &resume);
        records.reset(reinterpret_cast<SHARE_INFO_1*>(block));
        return status;
    }
    std::span<const SHARE_INFO_1> Shares() const { return {records.get(), count}; }

  private:
    UniqueNetworkBuffer<SHARE_INFO_1> records;
    DWORD count = 0;
};

// The folder that is shared under a name.
NET_API_STATUS ReadSharePath(LPWSTR name, std::string& path) {
    LPBYTE block = nullptr;
    const NET_API_STATUS status = NetShareGetInfo(nullptr, name, 2, &block);
    const UniqueNetworkBuffer<SHARE_INFO_2> record(reinterpret_cast<SHARE_INFO_2*>(block));
    if (status == NERR_Success) path = WideToAnsi(record->shi2_path);
    return status;
}

}  // namespace

// Commands that mean something else as long as shares are shown.
const MessageMap& BrowserView::SharesModeMap(const MessageMap& base) {
    static const MessageMap kMap = MakeMessageMap<BrowserView>(
        base, {
                  {ID_DELETE, Notify::kCommand, &BrowserView::RemoveSelectedShares},
                  {ID_NEW_FOLDER, Notify::kCommand, &BrowserView::CreateNewShare},
              });
    return kMap;
}

void BrowserView::EnterSharesMode() {
    sharesMode = true;
    list.SetColumnText(kTypeColumn, "Path");
    ListShares();
    ShowLocation(kShareListLocation);
}

void BrowserView::LeaveSharesMode() {
    sharesMode = false;
    list.SetColumnText(kTypeColumn, "Type");
    RefreshList();
}

bool BrowserView::ListShares() {
    if (!list.DeleteAllItems() || !RebuildImages(kShareImages)) return false;
    int row = 0;
    DWORD resume = 0;
    NET_API_STATUS status = ERROR_MORE_DATA;
    while (status == ERROR_MORE_DATA) {
        ShareRecords records;
        status = records.Read(resume);
        if (status != NERR_Success && status != ERROR_MORE_DATA) {
            ShowErrorWithSystemText(GetSafeHwnd(), "Error: cannot enumerate shared resources", status);
            return false;
        }
        for (const SHARE_INFO_1& share : records.Shares()) {
            if (WideToAnsi(share.shi1_netname) == kServiceShare) continue;
            if (!AddShareRow(row, share.shi1_netname)) return false;
            ++row;
        }
    }
    itemCount = row;
    if (statusBar != nullptr) statusBar->SetPaneText(kCountPane, "Total items: " + std::to_string(row));
    PaintStatusBar();
    return true;
}

// The machine is asked by its own name for the share, which the code page of the row may not hold.
bool BrowserView::AddShareRow(int row, LPWSTR name) {
    if (!list.InsertItem(row, WideToAnsi(name), kShareImage) || !list.SetItemData(row, row)) return false;
    std::string path;
    if (ReadSharePath(name, path) == NERR_Success) list.SetItemText(row, kTypeColumn, path);
    return true;
}

bool BrowserView::FindSharedFolder(const std::string& name, std::string& path) const {
    std::basic_string<WCHAR> wideName;
    const NET_API_STATUS status = ReadSharePath(AnsiToWide(name, wideName), path);
    if (status != NERR_Success) ShowSystemErrorBox(GetSafeHwnd(), status);
    return status == NERR_Success;
}

void BrowserView::RemoveSelectedShares() {
    if (list.GetSelectedCount() == 0) {
        ShowInfoBox(GetSafeHwnd(), kSelectItems);
        return;
    }
    if (MessageBoxA(GetSafeHwnd(), "Are you sure want to delete specified shared resource", "Deletion",
                    MB_YESNO | MB_ICONQUESTION) == IDYES) {
        RemoveShares();
    }
    RefreshList();
}

// What cannot be removed stays shared, and so does all below it in the list.
void BrowserView::RemoveShares() {
    std::basic_string<WCHAR> wideName;
    for (int row = list.NextSelected(0); row >= 0; row = list.NextSelected(row + 1)) {
        LPWSTR name = AnsiToWide(list.GetItemText(row, kNameColumn), wideName);
        if (const NET_API_STATUS status = NetShareDel(nullptr, name, 0); status != NERR_Success) {
            ShowErrorWithSystemText(GetSafeHwnd(), "Error: one or more shared resources coud not be removed",
                                    status);
            return;
        }
    }
}

// The system's own wizard may still be open when this returns, and then it is the user who lists the shares
// again.
void BrowserView::CreateNewShare() {
    HWND owner = Frame()->GetSafeHwnd();
    if (!OpenByShell(owner, "shrpubw")) ShowErrorBox(owner, "Cannot open \"Create a share folder wizard\"");
}

}  // namespace permora
