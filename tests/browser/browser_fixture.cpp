#include "tests/browser/browser_fixture.h"

#include <unistd.h>

#include <functional>
#include <mutex>

#include "platform/api/directory_search.h"
#include "platform/api/errors.h"
#include "platform/api/shell.h"
#include "platform/linux/files/drives.h"
#include "resources/resource_ids.h"

namespace permora::test {

Faults& TheFaults() {
    static Faults faults;
    return faults;
}

bool BrowserFrame::OnCreate() {
    view.Create(*this, 1, commandLine);
    if (!addressBar.Create(*this, IDD_ADDRESS_BAR) || !reBar.Create(*this) ||
        !reBar.AddBar(addressBar, addressBar.LeastWidth()) || !statusBar.Create(*this))
        return false;
    statusBar.SetIndicators({CStatusBar::kSeparator, IDS_ITEM_COUNT_PANE, CStatusBar::kSeparator});
    view.AttachBars(addressBar, statusBar);
    SetView(view);
    return true;
}

const MessageMap& BrowserFrame::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<BrowserFrame>(
        CFrameWnd::GetMessageMap(), {
                                        {ID_GO_TO_LOCATION, Notify::kCommand, &BrowserFrame::OnGoToLocation},
                                        // Commands without a handler would be grey in every menu.
                                        {ID_PERMISSIONS, Notify::kCommand, &BrowserFrame::OnOther},
                                        {ID_SECURE_DELETION, Notify::kCommand, &BrowserFrame::OnOther},
                                        {ID_WIZARD, Notify::kCommand, &BrowserFrame::OnOther},
                                    });
    return kMap;
}

std::mutex faultsGuard;

// The threads that read folders for the tree may be at work still.
void BrowserTest::Reset() {
    const std::lock_guard lock(faultsGuard);
    TheFaults() = {};
}

BrowserTest::BrowserTest() {
    Reset();
    EXPECT_TRUE(host::PinDrive('T', folder.Path()));
}

BrowserTest::~BrowserTest() {
    Reset();
    host::PinDrive('T', "");
    EXPECT_EQ(chdir("/"), 0);
}

void BrowserTest::Start(const std::string& path) {
    frame.commandLine = path.empty() ? R"("permora")" : R"("permora" ")" + path + '"';
    ASSERT_TRUE(frame.LoadFrame(IDR_MAIN_FRAME));
    frame.SetPlacement({{20, 30, 720, 530}, ShowState::kNormal});
    EXPECT_TRUE(Window().WaitUntil([this] { return Window().HasFocus(BrowserView::kListId); }));
}

std::vector<std::string> BrowserTest::Names() {
    std::vector<std::string> names;
    for (int row = 0; row < view.List().GetItemCount(); ++row) {
        // A drive keeps its place in the system's list, which has drives that are not shown.
        EXPECT_GE(view.List().GetItemData(row), row);
        EXPECT_TRUE(view.IsShowing(PlaceKind::kDrives) || view.List().GetItemData(row) == row);
        names.push_back(view.List().GetItemText(row, 0));
    }
    return names;
}

void BrowserTest::ExpectError(const std::string& text) {
    ui.ExpectError(::testing::StartsWith(text));
}

void BrowserTest::Open(const std::string& name) {
    view.List().SetSelectionMark(Row(name));
    view.OpenSelected();
}

}  // namespace permora::test

using permora::test::TheFaults;

extern "C" {

HANDLE __real_FindFirstFileA(LPCSTR pattern, WIN32_FIND_DATAA* data);
BOOL __real_FindNextFileA(HANDLE search, WIN32_FIND_DATAA* data);

HANDLE __wrap_FindFirstFileA(LPCSTR pattern, WIN32_FIND_DATAA* data) {
    std::function<void(const std::string&)> onSearch;
    {
        const std::lock_guard lock(permora::test::faultsGuard);
        onSearch = TheFaults().onSearch;
    }
    if (onSearch) onSearch(pattern);
    return __real_FindFirstFileA(pattern, data);
}

BOOL __wrap_FindNextFileA(HANDLE search, WIN32_FIND_DATAA* data) {
    if (TheFaults().searchFailsAfter > 0 && --TheFaults().searchFailsAfter == 0) {
        SetLastError(ERROR_IO_DEVICE);
        return FALSE;
    }
    return __real_FindNextFileA(search, data);
}

HINSTANCE __wrap_ShellExecuteA(HWND, LPCSTR operation, LPCSTR file, LPCSTR, LPCSTR, int) {
    TheFaults().opened = std::string(operation) + ' ' + file;
    const bool isMissing = std::string(file) == "missing";
    return reinterpret_cast<HINSTANCE>(std::uintptr_t{isMissing ? 2U : 33U});
}

}  // extern "C"
