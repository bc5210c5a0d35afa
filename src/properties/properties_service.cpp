#include "properties/properties_service.h"

#include <string>
#include <utility>

#include "platform/api/errors.h"
#include "platform/volume_question.h"
#include "properties/properties_dialog.h"
#include "security/message_boxes.h"
#include "security/volume_asking.h"

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
    const auto ask = [&](VolumeTask task) { return AskVolume(wait, VolumeOfPath(path), std::move(task)); };
    const auto read = [object = std::string(path)](ObjectFacts& found, PatientWork::Running&) {
        return Outcome{ReadObjectFacts(object, found)};
    };
    ObjectFacts facts;
    const Outcome outcome = FindByAsking<ObjectFacts>(ask, facts, read);
    if (outcome.code == ERROR_CANCELLED) return;
    if (!outcome.IsDone()) return ShowOutcome(owner, outcome);
    CPropertiesDlg dialog(path, facts, &mainWindow);
    dialog.editSecurity = editSecurity;
    dialog.DoModal();
}

}  // namespace permora
