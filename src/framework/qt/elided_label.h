// A label that shows the beginning and the end of a text too long for it.
#pragma once

#include <QLabel>

namespace permora::qt {

// Its tip tells the whole text, as does the label to assistive technology, behind the caption that it has.
// It asks for no more room than `letters` take, whatever it shows.
class ElidedLabel : public QLabel {
  public:
    explicit ElidedLabel(int letters, QWidget* parent = nullptr, QString caption = {});

    void Show(const QString& whole);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    int letters;
    QString captionShown;  // by another label beside this one; may be empty
};

}  // namespace permora::qt
