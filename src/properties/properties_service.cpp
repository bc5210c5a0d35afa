#include "properties/properties_service.h"

#include <utility>

#include "platform/api/errors.h"
#include "properties/properties_dialog.h"
#include "security/message_boxes.h"

namespace permora {

PropertiesService::PropertiesService(CWnd& ownerWindow,
                                     std::function<void(const std::string& path)> securityEditor)
    : mainWindow(ownerWindow),
      editSecurity(std::move(securityEditor)),
      before(thePresenters.properties.exchange(this)) {}

PropertiesService::~PropertiesService() {
    thePresenters.properties = before;
}

void PropertiesService::Present(HWND owner, const char* path) {
    ObjectFacts facts;
    if (const DWORD error = ReadObjectFacts(path, facts); error != ERROR_SUCCESS) {
        ShowSystemErrorBox(owner, error);
        return;
    }
    CPropertiesDlg dialog(path, facts, &mainWindow);
    dialog.editSecurity = editSecurity;
    dialog.DoModal();
}

}  // namespace permora
