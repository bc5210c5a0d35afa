#include "shares/share_sheet.h"

#include <utility>

namespace permora {

void CShareSheet::SetUp(CWnd* owner) {
    Construct("Security Editor", owner);
    AddPage(permissionsPage);
}

void CShareSheet::SetPlace(Place shares) {
    SetTitle("Security Editor - " + shares.names.front());
    permissionsPage.names = std::move(shares.names);
}

bool CShareSheet::OnInitDialog() {
    const bool result = CPropertySheet::OnInitDialog();
    SetFocus();
    return result;
}

}  // namespace permora
