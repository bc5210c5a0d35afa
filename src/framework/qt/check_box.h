// The check boxes of dialogs.
#pragma once

#include <QCheckBox>

namespace permora::qt {

// Boxes without text of their own stand in rows and columns below common headers: the arrow keys move along
// the row or the column and stay in it. The toolkit's way, the tab order, would go across.
class CheckBox : public QCheckBox {
  public:
    using QCheckBox::QCheckBox;

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void Go(int right, int down);
};

}  // namespace permora::qt
