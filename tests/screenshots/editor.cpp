// Takes pictures of the security editor at work: permora-editor-pictures FOLDER. The lists shown are those of
// a temporary folder, the accounts those of this machine.
#include <QApplication>
#include <QPushButton>
#include <cstdlib>

#include "editor/account_picker.h"
#include "editor/multi_selection_notice.h"
#include "editor/permission_entry_dialog.h"
#include "editor/security_sheet.h"
#include "framework/native.h"
#include "platform/api/files.h"
#include "platform/host_path.h"
#include "security/account_lookup.h"
#include "tests/screenshots/looks.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

// Takes the picture of the modal window that `run` opens, with what its Find finds, and closes it.
template <class Run>
void TakeModal(const std::string& name, const Series& series, Run run) {
    PostLater(kMillisecondsToShow, [] {
        for (QPushButton* button : QApplication::activeModalWidget()->findChildren<QPushButton*>()) {
            if (button->text() == QStringLiteral("Find")) button->click();
        }
    });
    PostLater(2 * kMillisecondsToShow, [&] {
        QWidget* window = QApplication::activeModalWidget();
        Save(*window, name, series);
        window->close();
    });
    run();
}

void TakeSheet(const std::string& name, const char* item, const Series& series) {
    CPSheet sheet;
    sheet.SetUp(nullptr);
    const char* const names[] = {item};
    sheet.SetItems(names, false);
    TakeModal(name, series, [&] { sheet.DoModal(); });
}

void TakeEntry(const std::string& name, DWORD allowed, DWORD denied, bool isInherited, const Series& series) {
    CDlgPermissions dialog;
    UniqueLocal<void> administrators;
    if (LookupSidByName("BUILTIN\\Administrators", administrators) != 0 ||
        !dialog.choice.account.SetSid(administrators.get()))
        std::exit(EXIT_FAILURE);
    dialog.choice.allowMask = allowed;
    dialog.choice.denyMask = denied;
    dialog.choice.applyIndex = 1;
    dialog.inheritedEntry = isInherited;
    TakeModal(name, series, [&] { dialog.DoModal(); });
}

void TakePictures(const Series& series) {
    const test::TemporaryFolder folder;
    test::SetDescriptorText(folder.MakeFolder("Reports"),
                            "D:P(D;OICI;SD;;;BG)(A;OICI;FA;;;BA)(A;OICIIO;GA;;;CO)(A;CI;0x1200a9;;;BU)");
    test::SetDescriptorText(folder.MakeFile("Reports/March.odt"),
                            "D:(A;;0x80;;;WD)(D;;WD;;;BU)(OA;;CC;bf967aba-0de6-11d0-a285-00aa003049e2;;BA)");
    test::SetDescriptorText(folder.MakeFile("empty"), "D:P");
    SetCurrentDirectoryA(PathFromArgument(folder.Path().c_str()).c_str());
    TakeSheet("sheet-folder", "Reports", series);
    TakeSheet("sheet-empty", "empty", series);
    SetCurrentDirectoryA("Reports");
    TakeSheet("sheet-inherited", "March.odt", series);
    TakeEntry("entry-explicit", 0xE01FF, DELETE, false, series);
    TakeEntry("entry-inherited", 0x1200A9, DELETE, true, series);
    TakeModal("picker", series, [] { CDlgUsersAndGroups().DoModal(); });
    TakeModal("notice", series, [] { CInfoDlg1().DoModal(); });
}

}  // namespace
}  // namespace permora

int main(int argumentCount, char** arguments) {
    return permora::TakeInAllLooks(argumentCount, arguments, permora::TakePictures);
}
