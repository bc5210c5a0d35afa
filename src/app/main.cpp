// The windowed program.
#include "app/main_app.h"
#include "platform/process_start.h"
#include "platform/share_wizard.h"

namespace {

permora::CMainApp theApp;

}  // namespace

int main(int argumentCount, char** argumentTexts) {
    permora::PrepareProcess();
    permora::SetShareWizard([] { theApp.ShareFolder(); });
    return theApp.Run(argumentCount, argumentTexts);
}
