// Edit fields.
#pragma once

#include <QLineEdit>

#include "framework/qt/selection_request.h"

namespace permora::qt {

// Keeps the keys that delete words, which the frame has commands for; the toolkit keeps the other editing
// keys. Does not wait for a program that holds the clipboard and does not answer, see SelectionRequest.
class LineEdit : public QLineEdit {
  public:
    using QLineEdit::QLineEdit;

  protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    void Paste(SelectionKind kind);
};

}  // namespace permora::qt
