// The windows in which objects are edited, with what the user has chosen for them: for the main window and
// for those that are shown without it.
#pragma once

#include <cstddef>
#include <string>

#include "app/settings_record.h"
#include "framework/geometry.h"
#include "framework/window.h"
#include "history/change_session.h"
#include "platform/place.h"
#include "security/object_security.h"
#include "security/outcome.h"

namespace permora {

class ItemWindows {
  public:
    // All are borrowed. `sheetSize` is the security editor's; empty: its own.
    ItemWindows(ProgramSettings& programSettings, Size& editorSize, ChangeSession& changeSession)
        : settings(programSettings), sheetSize(editorSize), changes(changeSession) {}

    // In all of these the owner may be null. The security editor; `name` gives the title.
    void Edit(CWnd* owner, const RememberedPlace& place, const std::string& name);
    void RunWizard(CWnd* owner, const RememberedPlace& place);
    // Tells what the editor does with several objects, unless the user does not want to know.
    void TellOfSeveral(CWnd* owner, std::size_t count);
    // Names the first of the objects that could not be opened.
    static void TellOfFailures(CWnd* owner, const Outcomes& failures);

  private:
    ProgramSettings& settings;
    Size& sheetSize;
    ChangeSession& changes;
};

}  // namespace permora
