// Replaces the shell's sheet of properties where the system has none.
#pragma once

#include <functional>
#include <string>

#include "framework/patient_work.h"
#include "framework/window.h"
#include "platform/presenters.h"

namespace permora {

// While it lives SHObjectProperties shows CPropertiesDlg.
class PropertiesService : public PropertiesPresenter {
  public:
    // `ownerWindow` is the program's main window, and `patientWork` its questions to volumes;
    // `securityEditor` runs the editor on the object of a full path.
    PropertiesService(CWnd& ownerWindow, PatientWork& patientWork,
                      std::function<void(const std::string& path)> securityEditor);
    ~PropertiesService() override;
    PropertiesService(const PropertiesService&) = delete;
    PropertiesService& operator=(const PropertiesService&) = delete;

    void Present(HWND owner, const char* path) override;

  private:
    CWnd& mainWindow;
    PatientWork& wait;
    std::function<void(const std::string& path)> editSecurity;
    PropertiesPresenter* before;
};

}  // namespace permora
