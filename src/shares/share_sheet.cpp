#include "shares/share_sheet.h"

#include <string>

namespace permora {

void CShareSheet::SetUp(CWnd* owner) {
    Construct("Security Editor", owner);
    AddPage(permissionsPage);
}

void CShareSheet::SetShares(std::span<const char* const> names) {
    SetTitle(std::string("Security Editor - ") + names.front());
    permissionsPage.names = names;
}

bool CShareSheet::OnInitDialog() {
    const bool result = CPropertySheet::OnInitDialog();
    SetFocus();
    return result;
}

}  // namespace permora
