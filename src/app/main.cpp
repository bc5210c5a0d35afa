// The windowed program.
#include "app/main_app.h"
#include "platform/presenters.h"
#include "platform/process_start.h"
#include "security/message_boxes.h"

int main(int argumentCount, char** argumentTexts) {
    permora::PrepareProcess();
    permora::ReportLackOfMemory();
    permora::CMainApp application;
    permora::thePresenters.shareWizard = [] {
        static_cast<permora::CMainApp*>(permora::GetApp())->ShareFolder();
    };
    return application.Run(argumentCount, argumentTexts);
}
