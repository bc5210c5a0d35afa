#include "app/object_app.h"

#include "app/help_topics.h"
#include "app/program_folder.h"
#include "browser/folder_paths.h"
#include "framework/program_icon.h"
#include "platform/administrator.h"
#include "platform/api/errors.h"
#include "properties/object_facts.h"
#include "properties/properties_dialog.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

// What the title of a window calls an object.
std::string ShownName(const std::string& path) {
    const std::string name = NameInFolder(path);
    return name.empty() ? path : name;
}

}  // namespace

CObjectApp::CObjectApp(const CommandLine& commandLine)
    : shown(commandLine.window),
      tellsOfStart(commandLine.tellsOfStart),
      objects(FindNamedObjects(commandLine.paths)),
      hasOpenedAll(objects.failures.empty()) {}

bool CObjectApp::InitInstance() {
    SetProgramIcon(CIcon::Load(IDR_MAIN_FRAME));
    ReadSettings();
    if (tellsOfStart) TellOfStart();
    ItemWindows::TellOfFailures(nullptr, objects.failures);
    if (!objects.place.items.empty()) {
        if (shown == StartWindow::kProperties) {
            ShowProperties();
        } else if (shown == StartWindow::kWizard) {
            windows.RunWizard(nullptr, objects.place);
        } else {
            windows.TellOfSeveral(nullptr, objects.place.items.size());
            Edit(objects.place, objects.paths.front());
        }
    }
    help.reset();
    KeepSettings();
    return false;
}

void CObjectApp::OnHelp(CWnd& window, unsigned int templateId) {
    if (!help) help = std::make_unique<CHelpWindow>(nullptr, ProgramFolder(settings));
    if (!help->Show(HelpPlaceOf(templateId))) ShowErrorBox(window.GetSafeHwnd(), "Cannot open help file");
}

// Without stored ones, as before the first start of the main window, the help is where the program stands.
void CObjectApp::ReadSettings() {
    if (LoadSettings(settings) != ERROR_SUCCESS)
        static_cast<void>(SetProgramFolder(settings, OwnFolderWithHelp()));
    hasShownNotice = settings.block.showIntermediateInfo;
    sheetSize = LoadSheetSize();
}

void CObjectApp::KeepSettings() const {
    DWORD error = sheetSize == LoadSheetSize() ? ERROR_SUCCESS : StoreSheetSize(sheetSize);
    if (error == ERROR_SUCCESS && settings.block.showIntermediateInfo != hasShownNotice) {
        // What a main window has stored meanwhile stays.
        ProgramSettings stored = settings;
        static_cast<void>(LoadSettings(stored));
        stored.block.showIntermediateInfo = settings.block.showIntermediateInfo;
        error = StoreSettings(stored);
    }
    if (error != ERROR_SUCCESS) ShowErrorWithSystemText(nullptr, "saving settings", error);
}

void CObjectApp::Edit(const RememberedPlace& place, const std::string& path) {
    windows.Edit(nullptr, place, ShownName(path));
}

void CObjectApp::ShowProperties() {
    for (std::size_t i = 0; i < objects.paths.size(); ++i) {
        const std::string& path = objects.paths[i];
        ObjectFacts facts;
        if (const DWORD error = ReadObjectFacts(path, facts); error != ERROR_SUCCESS) {
            hasOpenedAll = false;
            ItemWindows::TellOfFailures(nullptr, {{error, Step::kNone, path}});
            continue;
        }
        CPropertiesDlg dialog(path, facts, nullptr);
        dialog.editSecurity = [&](const std::string&) {
            Edit({objects.place.kind, {objects.place.items[i]}}, path);
        };
        dialog.DoModal();
    }
}

}  // namespace permora
