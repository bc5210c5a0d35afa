#include "framework/property_sheet_state.h"

namespace permora {

CPropertyPage::CPropertyPage(unsigned int templateNumber, unsigned int captionNumber)
    : CDialog(templateNumber), captionId(captionNumber) {}

bool CPropertyPage::OnCmdMsg(Notification& notification) {
    // A click that waited while the sheet applied its pages may arrive after the sheet has ended.
    if (sheet != nullptr && sheet->state->hasEnded) return true;
    return CDialog::OnCmdMsg(notification);
}

void CPropertyPage::SetModified(bool isModified) {
    modified = isModified;
    if (sheet != nullptr) sheet->state->UpdateApplyButton();
}

}  // namespace permora
