// The questions of file operations in windows.
#pragma once

#include <QWidget>
#include <string>

#include "platform/file_operation_presenter.h"

namespace permora::qt {

// Shows the question and waits for the answer; closing the window cancels the operation. `parent` may be
// null.
FileOperationAnswer AskInWindow(QWidget* parent, const std::string& title,
                                const FileOperationQuestion& question);

}  // namespace permora::qt
