#include "app/settings_dialog.h"

#include <cstddef>

#include "app/settings_store.h"
#include "framework/styles.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr std::size_t kViewCount = 4;

// In the order of `controls`: the place in the array is the view mode.
constexpr std::array<unsigned int, 9> kControlIds = {
    IDC_SETTINGS_ICONS,
    IDC_SETTINGS_SMALL_ICONS,
    IDC_SETTINGS_LIST,
    IDC_SETTINGS_DETAILS,
    IDC_SETTINGS_OWN_ICONS,
    IDC_SETTINGS_TOOL_TIPS,
    IDC_SETTINGS_ASK_BEFORE_DELETION,
    IDC_SETTINGS_INTERMEDIATE_INFO,
    IDC_SETTINGS_EXPLORER_MENU,
};

// The flags of the boxes, which follow the views.
constexpr std::array<std::uint8_t SettingsBlock::*, 5> kFlags = {
    &SettingsBlock::useOwnIcons,
    &SettingsBlock::showToolTips,
    &SettingsBlock::askBeforeSecureDeletion,
    &SettingsBlock::showIntermediateInfo,
    &SettingsBlock::explorerMenu,
};
constexpr std::size_t kExplorerMenu = 8;
static_assert(kViewCount + kFlags.size() == kControlIds.size());

}  // namespace

CSettingsDlg::CSettingsDlg(CWnd* ownerWindow) : CDialog(IDD_SETTINGS, ownerWindow) {}

bool CSettingsDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    for (std::size_t i = 0; i < controls.size(); ++i) {
        controls.at(i) = GetDlgItem<CButton>(kControlIds.at(i));
        if (controls.at(i) == nullptr) ShowFatalLastErrorBox(GetSafeHwnd());
        controls.at(i)->SetCheck(CheckState::kClear);
    }
    if (block.viewMode < kViewCount) controls.at(block.viewMode)->SetCheck(CheckState::kChecked);
    for (std::size_t i = 0; i < kFlags.size(); ++i)
        if (block.*kFlags.at(i) != 0) controls.at(kViewCount + i)->SetCheck(CheckState::kChecked);
    GetDlgItem<CButton>(IDC_SETTINGS_ASK_BEFORE_LOSSES)
        ->SetCheck(asksBeforeLosses ? CheckState::kChecked : CheckState::kClear);
    if (!HasExplorerVerb()) {
        controls.at(kExplorerMenu)->SetCheck(CheckState::kClear);
        controls.at(kExplorerMenu)->ModifyStyle(WS_VISIBLE, WS_DISABLED);
    }
    return true;
}

void CSettingsDlg::OnOK() {
    for (std::uint32_t i = 0; i < kViewCount; ++i) {
        if (!controls.at(i)->IsChecked()) continue;
        block.viewMode = i;
        break;
    }
    for (std::size_t i = 0; i < kFlags.size(); ++i)
        block.*kFlags.at(i) = controls.at(kViewCount + i)->IsChecked() ? 1 : 0;
    asksBeforeLosses = GetDlgItem<CButton>(IDC_SETTINGS_ASK_BEFORE_LOSSES)->IsChecked();
    CDialog::OnOK();
}

}  // namespace permora
