// The windowed program.
#include "app/main_app.h"

namespace {

permora::CMainApp theApp;

}  // namespace

int main(int argumentCount, char** argumentTexts) {
    return theApp.Run(argumentCount, argumentTexts);
}
