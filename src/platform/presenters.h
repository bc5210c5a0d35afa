// Who shows what the system's calls show: on Linux the system has no boxes, sheets or types of files of its
// own.
//
// Whoever has windows registers here. On Windows the system shows all of it itself, and nothing reads this.
#pragma once

#include <atomic>

#include "platform/api/base.h"

namespace permora {

class FileOperationPresenter;
class FileTypes;
class MessagePresenter;

class PropertiesPresenter {
  public:
    virtual ~PropertiesPresenter() = default;
    // Shows the object at `path`, a full path with drive letter that lives for the call. The object existed a
    // moment ago. Returns when the user has closed the sheet.
    virtual void Present(HWND owner, const char* path) = 0;
};

// Each is borrowed, and must outlive the calls that it serves. Null: nobody.
struct Presenters {
    // For MessageBoxA, on any thread (platform/message_presenter.h). Null: the text goes to standard error,
    // and the answer is the safest button.
    std::atomic<MessagePresenter*> messages = nullptr;
    // For SHFileOperationA, on any thread (platform/file_operation_presenter.h). Null: an operation runs on
    // the caller's thread and gets the safest answers. Nothing is replaced, merged, changed or deleted for
    // good, and what fails is skipped.
    std::atomic<FileOperationPresenter*> fileOperations = nullptr;
    // For SHObjectProperties, on the user-interface thread. Null: ERROR_NOT_SUPPORTED.
    std::atomic<PropertiesPresenter*> properties = nullptr;
    // For ShellExecuteA with an owner window and the name of the system's wizard for new shares, "shrpubw",
    // on the user-interface thread. Returns when the wizard is closed. Null: as for a missing program.
    std::atomic<void (*)()> shareWizard = nullptr;
    // For SHGetFileInfoA and FindShellIcon (platform/file_types.h). Null, as in the terminal program: no type
    // has a text or an icon.
    std::atomic<const FileTypes*> fileTypes = nullptr;
};

// Those of the process.
inline constinit Presenters thePresenters;

}  // namespace permora
