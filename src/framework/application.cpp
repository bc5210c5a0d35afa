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
    return RunToolkit(
        argc, argv, [this] { return InitInstance(); },
        [this] {
            if (mainWindow != nullptr) mainWindow->DestroyWindow();
        });
}

CWinApp* GetApp() {
    return theApplication;
}

}  // namespace permora
