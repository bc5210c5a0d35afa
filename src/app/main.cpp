// The windowed program.
#include "app/main_app.h"
#include "platform/process_start.h"
#include "platform/share_wizard.h"
#include "security/message_boxes.h"

namespace {

permora::CMainApp theApp;

}  // namespace

int main(int argumentCount, char** argumentTexts) {
    permora::PrepareProcess();
    permora::ReportLackOfMemory();
    permora::SetShareWizard([] { theApp.ShareFolder(); });
    return theApp.Run(argumentCount, argumentTexts);
}
