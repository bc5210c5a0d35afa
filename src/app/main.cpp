// The windowed program.
#include "app/main_app.h"
#include "platform/process_start.h"
#include "platform/share_wizard.h"
#include "shares/new_share_dialog.h"

namespace {

permora::CMainApp theApp;

}  // namespace

int main(int argumentCount, char** argumentTexts) {
    permora::PrepareProcess();
    permora::SetShareWizard([] { permora::CNewShareDlg(theApp.mainWindow).DoModal(); });
    return theApp.Run(argumentCount, argumentTexts);
}
