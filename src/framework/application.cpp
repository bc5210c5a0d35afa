// The application object.
#include "framework/frame_window.h"
#include "framework/native.h"

namespace permora {
namespace {

CWinApp* theApplication = nullptr;

}  // namespace

CWinApp::CWinApp() {
    theApplication = this;
}

CWinApp::~CWinApp() {
    theApplication = nullptr;
}

int CWinApp::Run(int argc, char** argv) {
    bool hasStarted = false;
    return RunToolkit(
        argc, argv, [&] { return hasStarted = InitInstance(); },
        [&] {
            if (mainWindow == nullptr || !mainWindow->HasWindow()) return;
            if (hasStarted) OnEndSession();
            mainWindow->DestroyWindow();
        });
}

CWinApp* GetApp() {
    return theApplication;
}

}  // namespace permora
