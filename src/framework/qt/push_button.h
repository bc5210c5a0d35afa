// The push buttons of dialogs. The one that Enter presses is marked.
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

// Marks the button that Enter would press, if there is one, and no other. To be called whenever the focus
// moves in `window` or its default button changes.
void ShowDefaultButton(const QWidget& window);

}  // namespace permora::qt
