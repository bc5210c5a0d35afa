// Who shows the properties of files, folders and drives where the system has no sheet of its own for them.
//
// SHObjectProperties asks the presenter that is set here; without one it fails with ERROR_NOT_SUPPORTED. On
// Windows the shell shows its own sheet, and nobody is asked.
#pragma once

#include "platform/api/base.h"

namespace permora {

class PropertiesPresenter {
  public:
    virtual ~PropertiesPresenter() = default;
    // Shows the object at `path`, a full path with drive letter that lives for the call. There was one a
    // moment ago. Returns when the user has closed the sheet.
    virtual void Present(HWND owner, const char* path) = 0;
};

// Sets the presenter (borrowed; null: none) and returns the one before it. User-interface thread; a presenter
// must outlive the sheets that it shows.
#ifdef _WIN32
inline PropertiesPresenter* SetPropertiesPresenter(PropertiesPresenter* /*presenter*/) {
    return nullptr;
}
#else
PropertiesPresenter* SetPropertiesPresenter(PropertiesPresenter* presenter);
#endif

}  // namespace permora
