// CObjectApp: the program with one window for objects that the command line names, and no main window.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "app/command_line.h"
#include "app/help_window.h"
#include "app/item_windows.h"
#include "app/named_objects.h"
#include "app/settings_record.h"
#include "app/settings_store.h"
#include "framework/frame_window.h"
#include "framework/geometry.h"
#include "history/change_session.h"

namespace permora {

class CObjectApp : public CWinApp {
  public:
    // `commandLine` names a window for objects, which are found at once. Objects that cannot be opened are
    // told of when the window opens; it is for the others.
    explicit CObjectApp(const CommandLine& commandLine);

    // Shows the window until it is closed. False: so there is nothing left to do.
    bool InitInstance() override;
    void OnHelp(CWnd& window, unsigned int templateId) override;
    // Whether every object could be opened.
    bool HasOpenedAll() const { return hasOpenedAll; }

  private:
    void ReadSettings();
    void KeepSettings() const;
    void Edit(const RememberedPlace& place, const std::string& path);
    void ShowProperties();

    const StartWindow shown;
    const bool tellsOfStart;
    const NamedObjects objects;
    bool hasOpenedAll;
    ProgramSettings settings;
    std::uint8_t hasShownNotice =
        1;           // the setting that the notice before several objects may clear, as it was
    Size sheetSize;  // of the security editor; empty: its own
    ChangeSession changes{History::UsualPath(), LoadHistoryLimits()};
    ItemWindows windows{settings, sheetSize, changes};
    std::unique_ptr<CHelpWindow> help;  // made when it is first asked for
};

}  // namespace permora
