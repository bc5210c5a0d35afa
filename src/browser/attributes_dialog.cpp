#include "browser/attributes_dialog.h"

#include <utility>

#include "framework/styles.h"
#include "platform/api/files.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

// In the order of AttributeBox. The last three are never shown: they carry the first item's state.
constexpr std::array<unsigned int, kAttributeBoxCount> kControlIds = {
    IDC_ARCHIVE,   IDC_READONLY, IDC_HIDDEN,     IDC_SYSTEM,    IDC_ALLOW_INDEXING,
    IDC_TEMPORARY, IDC_OFFLINE,  IDC_COMPRESSED, IDC_ENCRYPTED,
};

}  // namespace

CAttributesDlg::CAttributesDlg(std::string itemName, DWORD attributes, CWnd* ownerWindow)
    : CDialog(IDD_ATTRIBUTES, ownerWindow),
      boxes(BoxesOf(attributes)),
      name(std::move(itemName)),
      isFolder((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {}

bool CAttributesDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        buttons.at(i) = GetDlgItem<CButton>(kControlIds.at(i));
        if (buttons.at(i) == nullptr) ShowFatalErrorBox(GetSafeHwnd(), "Error: cannot initialize dialog box");
    }
    SetWindowText("File Attributes - " + name);
    for (std::size_t i = 0; i < buttons.size(); ++i)
        buttons.at(i)->SetCheck(boxes.test(i) ? CheckState::kChecked : CheckState::kClear);
    // Only files are temporary. The state of the box is written nevertheless.
    buttons.at(static_cast<std::size_t>(AttributeBox::kTemporary))->EnableWindow(!isFolder);
    return true;
}

void CAttributesDlg::OnOK() {
    for (std::size_t i = 0; i < buttons.size(); ++i)
        boxes.set(i, buttons.at(i)->IsChecked());
    CDialog::OnOK();
}

}  // namespace permora
