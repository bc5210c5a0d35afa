// Takes pictures of the security wizard's pages at work: permora-wizard-pictures FOLDER writes
// "wizard-<page>-<light|dark>-<100|200>.png".
#include <QApplication>
#include <QPushButton>
#include <QRadioButton>
#include <array>
#include <filesystem>

#include "framework/native.h"
#include "platform/api/files.h"
#include "platform/host_path.h"
#include "tests/screenshots/looks.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"
#include "wizard/wizard_sheet.h"

namespace permora {
namespace {

template <class Button>
void ClickButton(const char* text) {
    for (Button* button : QApplication::activeModalWidget()->findChildren<Button*>()) {
        if (button->text() == QLatin1String(text)) button->click();
    }
}

// Takes the picture of the wizard on `names`, after `goOn` has led to the page, and closes it.
void TakePage(const std::string& name, std::span<const char* const> names, void (*goOn)(),
              const Series& series) {
    CWizard wizard;
    wizard.SetUp(nullptr);
    wizard.SetItems({.names = names, .askBeforeSecureDeletion = false});
    PostLater(kMillisecondsToShow, goOn);
    PostLater(3 * kMillisecondsToShow, [&] {
        QWidget* window = QApplication::activeModalWidget();
        Save(*window, name, series);
        window->close();
    });
    wizard.DoModal();
}

void TakePictures(const Series& series) {
    const test::TemporaryFolder folder;
    test::SetDescriptorText(folder.MakeFolder("Reports"), "D:P(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;AU)");
    test::SetDescriptorText(folder.MakeFolder("Reports/2009"), "D:(A;OICI;0x1301bf;;;BU)(D;OICI;SD;;;BG)");
    folder.MakeFile("Reports/2009/March.odt");
    folder.MakeFolder("Reports/Minutes & plans");
    std::filesystem::permissions(folder.MakeFile("Reports/Minutes & plans/read only"),
                                 std::filesystem::perms::owner_read);
    SetCurrentDirectoryA(PathFromArgument(folder.Path("Reports").c_str()).c_str());
    static constexpr std::array<const char*, 3> kNames = {"2009", "Minutes & plans", "gone"};
    TakePage(
        "wizard-task", kNames, [] {}, series);
    TakePage(
        "wizard-permissions", kNames, [] { ClickButton<QPushButton>("&Next >"); }, series);
    TakePage(
        "wizard-deletion", kNames,
        [] {
            ClickButton<QRadioButton>("Secure deletion of folders and files");
            ClickButton<QPushButton>("&Next >");
        },
        series);
}

}  // namespace
}  // namespace permora

int main(int argumentCount, char** arguments) {
    return permora::TakeInAllLooks(argumentCount, arguments, permora::TakePictures);
}
