#include "editor/explanation_dialog.h"

#include <iterator>

#include "editor/required_control.h"
#include "framework/list_ctrl.h"
#include "resources/resource_ids.h"

namespace permora {
namespace {

constexpr int kExplanationWidths[] = {200, 60, 230, 140, 180};
static_assert(std::size(kExplanationWidths) == kExplanationTitles.size());

constexpr int kExplanationRemarkWidth = 800;

void InsertRow(CListCtrl& list, const ExplanationRow& row) {
    const int position = list.GetItemCount();
    list.InsertItem(position, row.front());
    for (std::size_t column = 1; column < row.size(); ++column)
        list.SetItemText(position, static_cast<int>(column), row.at(column));
}

}  // namespace

CExplanationDlg::CExplanationDlg(CWnd* ownerWindow) : CDialog(IDD_RIGHTS_EXPLANATION, ownerWindow) {}

bool CExplanationDlg::OnInitDialog() {
    RequiredControl<CEdit>(*this, IDC_EXPLAINED_ACCOUNT).SetWindowText(account);
    CListCtrl& rights = RequiredControl<CListCtrl>(*this, IDC_EXPLAINED_RIGHTS);
    for (std::size_t column = 0; column < kExplanationTitles.size(); ++column)
        rights.InsertColumn(static_cast<int>(column), kExplanationTitles.at(column),
                            kExplanationWidths[column]);
    rights.SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kLabelTips);
    for (const ExplanationRow& row : rows)
        InsertRow(rights, row);
    CListCtrl& others = RequiredControl<CListCtrl>(*this, IDC_EXPLANATION_REMARKS);
    others.InsertColumn(0, "Remark", kExplanationRemarkWidth);
    others.SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kLabelTips);
    for (const std::string& remark : remarks)
        others.InsertItem(others.GetItemCount(), remark);
    rights.SetSelected(0, true);
    rights.SetFocus();
    return false;  // the list has the focus
}

}  // namespace permora
