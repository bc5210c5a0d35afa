// Takes a picture of every dialog of the program: permora-screenshots FOLDER [LOOK...] writes
// "<template>-<look>.png", with samples in the empty controls.
#include <QEventLoop>
#include <string>

#include "framework/bars.h"
#include "framework/controls.h"
#include "framework/dialog.h"
#include "framework/frame_window.h"
#include "framework/list_ctrl.h"
#include "framework/native.h"
#include "framework/property_sheet.h"
#include "framework/qt/widget.h"
#include "framework/resource_templates.h"
#include "framework/styles.h"
#include "framework/window_access.h"
#include "platform/api/messages.h"
#include "resources/resource_ids.h"
#include "security/access_rights.h"
#include "tests/screenshots/file_operations.h"
#include "tests/screenshots/history.h"
#include "tests/screenshots/looks.h"
#include "tests/support/dialog_templates.h"

namespace permora {
namespace {

void FillList(CListCtrl& list) {
    list.SetExtendedStyle(ListStyle::kFullRowSelect);
    list.InsertColumn(0, "Name", 140);
    list.InsertColumn(1, "Type", 100);
    for (const char* name : {"Administrators", "Everyone", "Users"}) {
        const int row = list.GetItemCount();
        list.InsertItem(row, name);
        list.SetItemText(row, 1, "Alias");
    }
    list.SetSelected(0, true);
}

// As the effective permissions page has it: marks to read.
void FillRights(CListCtrl& list) {
    list.SetExtendedStyle(ListStyle::kCheckBoxes);
    list.EnableWindow(false);
    for (const AccessRight& right : kAccessRights) {
        const int row = list.GetItemCount();
        list.InsertItem(row, right.listName);
        list.SetCheck(row, (right.bits & ~FILE_GENERIC_READ) == 0);
    }
}

void FillSamples(CWnd& window) {
    for (CWnd* child : WindowAccess::Children(window)) {
        if (auto* list = dynamic_cast<CListCtrl*>(child)) {
            if (list->GetView() == ListView::kList)
                FillRights(*list);
            else
                FillList(*list);
        }
        if (auto* edit = dynamic_cast<CEdit*>(child)) edit->SetWindowText("BUILTIN\\Administrators");
        if (auto* combo = dynamic_cast<CComboBox*>(child)) {
            combo->AddString("This folder, subfolders and files");
            combo->SetCurSel(0);
        }
    }
    for (const unsigned int progress :
         {unsigned{IDC_APPLY_PROGRESS}, unsigned{IDC_DELETION_PROGRESS}, unsigned{IDC_UNDO_PROGRESS}})
        if (CWnd* label = window.GetDlgItem(progress)) label->SetWindowText("Minutes & reports of March.odt");
}

class SampleDialog : public CDialog {
  public:
    SampleDialog(unsigned int templateNumber, const Series& where)
        : CDialog(templateNumber), id(templateNumber), series(where) {}

  protected:
    bool OnInitDialog() override {
        FillSamples(*this);
        PostLater(kMillisecondsToShow, [this] {
            Save(*qt::WidgetOf(*this), std::to_string(id), series);
            EndDialog(IDOK);
        });
        return CDialog::OnInitDialog();
    }

  private:
    unsigned int id;
    const Series& series;
};

class SamplePage : public CPropertyPage {
  public:
    using CPropertyPage::CPropertyPage;

  protected:
    bool OnInitDialog() override {
        FillSamples(*this);
        return CPropertyPage::OnInitDialog();
    }
};

class SampleSheet : public CPropertySheet {
  public:
    SampleSheet(unsigned int templateNumber, const Series& where)
        : page(templateNumber), id(templateNumber), series(where) {
        Construct("Security Editor - March.odt", nullptr);
        AddPage(page);
        if (id == IDD_WIZARD_TASK_PAGE || id == IDD_WIZARD_DELETION_PAGE || id == IDD_WIZARD_PERMISSIONS_PAGE)
            SetWizardMode();
    }

  protected:
    bool OnInitDialog() override {
        PostLater(kMillisecondsToShow, [this] {
            Save(*qt::WidgetOf(*this), std::to_string(id), series);
            qt::WidgetOf(*this)->close();
        });
        return true;
    }

  private:
    SamplePage page;
    unsigned int id;
    const Series& series;
};

// A frame around the bar: its menu, the bar and nothing else.
class SampleFrame : public CFrameWnd {
  public:
    explicit SampleFrame(unsigned int templateNumber) : barTemplate(templateNumber) {}

    void TakePicture(const Series& series) {
        if (!LoadFrame(IDR_MAIN_FRAME)) return;
        SetPlacement({{0, 0, series.width, 140}, ShowState::kNormal});
        QEventLoop loop;
        PostLater(kMillisecondsToShow, [&] {
            Save(*qt::WidgetOf(*this)->window(), std::to_string(barTemplate), series);
            loop.quit();
        });
        loop.exec();
    }

  protected:
    bool OnCreate() override {
        if (!reBar.Create(*this) || !bar.Create(*this, barTemplate) || !reBar.AddBar(bar, 100)) return false;
        FillSamples(bar);
        return true;
    }

  private:
    unsigned int barTemplate;
    CReBar reBar;
    CDialogBar bar;
};

void TakePictures(const Series& series) {
    for (const unsigned int id : test::DialogTemplates()) {
        const DWORD style = LoadDialogTemplate(id)->style;
        if (id == IDD_HISTORY)
            TakeHistoryPicture(series);
        else if ((style & WS_CHILD) == 0)
            SampleDialog(id, series).DoModal();
        else if ((style & WS_CAPTION) != 0)
            SampleSheet(id, series).DoModal();
        else
            SampleFrame(id).TakePicture(series);
    }
    TakeFileOperationPictures(series);
}

}  // namespace
}  // namespace permora

int main(int argumentCount, char** arguments) {
    return permora::TakeInLooks(argumentCount, arguments, 0,
                                {"light", "dark", "contrast", "light-16pt", "light-x2", "dark-x2"},
                                permora::TakePictures);
}
