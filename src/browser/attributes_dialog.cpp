#include "browser/attributes_dialog.h"

#include <string>
#include <utility>

#include "framework/styles.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/api/messages.h"
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

CAttributesDlg::CAttributesDlg(Place items, CWnd* ownerWindow)
    : CDialog(IDD_ATTRIBUTES, ownerWindow), place(std::move(items)) {}

bool CAttributesDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        boxes.at(i) = GetDlgItem<CButton>(kControlIds.at(i));
        if (boxes.at(i) == nullptr) ShowFatalErrorBox(GetSafeHwnd(), "Error: cannot initialize dialog box");
    }
    SetWindowText("File Attributes - " + place.names.front());
    WIN32_FILE_ATTRIBUTE_DATA first{};
    DWORD error = place.folder->MakeCurrent();
    if (error == ERROR_SUCCESS &&
        GetFileAttributesExA(place.names.front().c_str(), GetFileExInfoStandard, &first) == FALSE)
        error = GetLastError();
    if (error != ERROR_SUCCESS) {
        ShowErrorWithSystemText(GetSafeHwnd(), "Retrieving file attributes", error);
        EndDialog(IDCANCEL);
        return true;
    }
    shown = BoxesOf(first.dwFileAttributes);
    for (std::size_t i = 0; i < boxes.size(); ++i)
        boxes.at(i)->SetCheck(shown.test(i) ? CheckState::kChecked : CheckState::kClear);
    // Only files are temporary. The state of the box is written nevertheless.
    const bool isFolder = (first.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    boxes.at(static_cast<std::size_t>(AttributeBox::kTemporary))->EnableWindow(!isFolder);
    return true;
}

void CAttributesDlg::OnOK() {
    CheckedBoxes chosen;
    for (std::size_t i = 0; i < boxes.size(); ++i)
        chosen.set(i, boxes.at(i)->IsChecked());
    if (const DWORD error = AssignAttributes(place, chosen, shown); error != ERROR_SUCCESS)
        ShowErrorWithSystemText(GetSafeHwnd(), "Attributes assignment", error);
    CDialog::OnOK();
}

}  // namespace permora
