#include "properties/properties_service.h"

#include <atomic>
#include <memory>
#include <string>
#include <utility>

#include "browser/drive_rows.h"
#include "platform/api/errors.h"
#include "platform/volume_question.h"
#include "properties/properties_dialog.h"
#include "security/message_boxes.h"

namespace permora {

PropertiesService::PropertiesService(CWnd& ownerWindow, PatientWork& patientWork,
                                     std::function<void(const std::string& path)> securityEditor)
    : mainWindow(ownerWindow),
      wait(patientWork),
      editSecurity(std::move(securityEditor)),
      before(thePresenters.properties.exchange(this)) {}

PropertiesService::~PropertiesService() {
    thePresenters.properties = before;
}

void PropertiesService::Present(HWND owner, const char* path) {
    struct Read {
        ObjectFacts facts;
        DWORD error = ERROR_SUCCESS;
    };
    const auto read = std::make_shared<Read>();
    const std::string volume = VolumeOfPath(path);
    const auto ask = [read, object = std::string(path)](PatientWork::Running&) {
        read->error = ReadObjectFacts(object, read->facts);
    };
    DWORD error = wait.Do(volume, ask);
    if (error == ERROR_CANCELLED) return;
    if (error == ERROR_TIMEOUT) return ShowErrorBox(owner, NoAnswerText(volume).c_str());
    if (error == ERROR_SUCCESS) error = read->error;
    if (error != ERROR_SUCCESS) return ShowSystemErrorBox(owner, error);
    CPropertiesDlg dialog(path, read->facts, &mainWindow);
    dialog.editSecurity = editSecurity;
    dialog.DoModal();
}

}  // namespace permora
