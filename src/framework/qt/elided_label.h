// A label that shows the beginning and the end of a text too long for it.
#pragma once

#include <QLabel>

namespace permora::qt {

// Its tip shows the whole text. Assistive technology reads the caption and the whole text. Its size is that
// of `letters` letters, whatever it shows.
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
