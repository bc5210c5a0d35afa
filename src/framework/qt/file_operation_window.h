// The window that shows how far a file operation is.
#pragma once

#include <QDialog>
#include <QFormLayout>
#include <QProgressBar>
#include <QPushButton>
#include <functional>
#include <string>

#include "framework/qt/elided_label.h"
#include "platform/file_operation_pace.h"

namespace permora::qt {

// Closing it, Escape and Cancel request the operation to be cancelled. The window stays until its maker
// closes it.
class FileOperationWindow : public QDialog {
  public:
    // `cancel` is called once at most. `parent` may be null.
    FileOperationWindow(QWidget* parent, const std::string& title, std::function<void()> cancel);

    void Display(const FileOperationProgress& progress, const FileOperationPace& pace);

    void reject() override;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    std::function<void()> onCancel;
    bool isCancelled = false;
    QFormLayout* rows = nullptr;
    ElidedLabel* task = nullptr;
    ElidedLabel* from = nullptr;
    ElidedLabel* to = nullptr;
    ElidedLabel* amount = nullptr;
    ElidedLabel* timeLeft = nullptr;
    QProgressBar* bar = nullptr;
    QPushButton* cancelButton = nullptr;
};

}  // namespace permora::qt
