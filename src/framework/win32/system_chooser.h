// The system's dialogs for choosing a folder or a file.
#pragma once

#include <shobjidl.h>

#include <string>

#include "framework/window.h"
#include "platform/api/base.h"

namespace permora::win32 {

// An object of the system's shell. Released at the end; null: none.
template <class Interface>
class ShellObject {
  public:
    ShellObject() = default;
    ~ShellObject() {
        if (object != nullptr) object->Release();
    }
    ShellObject(const ShellObject&) = delete;
    ShellObject& operator=(const ShellObject&) = delete;

    Interface* operator->() const { return object; }
    Interface* Get() const { return object; }
    // For a function that stores an object; there is none yet.
    void** Place() { return reinterpret_cast<void**>(&object); }

  private:
    Interface* object = nullptr;
};

// Shows `dialog` as a modal window over `owner`, which is disabled meanwhile as all other windows are.
// Returns the result of its Show.
HRESULT ShowModal(IFileDialog& dialog, CWnd& owner);
// What was chosen, a place of the file system.
HRESULT ChosenPath(IFileDialog& dialog, std::string& path);

// Reports why nothing was chosen, unless that was the user's will.
void ReportNoChoice(CWnd& owner, HRESULT result);

}  // namespace permora::win32
