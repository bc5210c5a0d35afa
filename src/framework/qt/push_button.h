// The push buttons of dialogs, one of which Enter presses and shows so.
#pragma once

#include <QPushButton>

namespace permora::qt {

// Enter presses it while it has the focus. The toolkit's rules for default buttons do not suit templates: in
// one without a default button, a button that had the focus would keep the look of one.
class PushButton : public QPushButton {
  public:
    explicit PushButton(QWidget* parent) : QPushButton(parent) { setAutoDefault(false); }

    bool isTemplatesDefault = false;  // what Enter presses while no push button has the focus

  protected:
    void keyPressEvent(QKeyEvent* event) override;
};

// Gives the button that Enter would press, if there is one, the look of it, and takes it from all others. To
// be called whenever the focus has moved in `window` or its default button has become another.
void ShowDefaultButton(const QWidget& window);

}  // namespace permora::qt
