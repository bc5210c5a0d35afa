// Painting into a window, and the pointer over it.
#include "framework/device_context.h"

#include <gtest/gtest.h>

#include <QImage>

#include "tests/framework/test_frame_qt.h"

namespace permora {
namespace {

constexpr Rect kLink{20, 30, 120, 50};
constexpr Colour kRed{255, 0, 0};

// Draws one text, and shows the hand over it.
class LinkView : public CWnd {
  public:
    TextStyle style = TextStyle::kNormal;

  protected:
    void OnPaint(CDC& dc) override {
        dc.SetTextColor(kRed);
        dc.DrawText("a link that is longer than its rectangle", kLink, style);
    }
    Handled OnMouseMove(Point client) override {
        SetCursor(kLink.Contains(client) ? Cursor::kHand : Cursor::kArrow);
        return Handled::kNo;
    }
};

int CountRed(const QImage& picture, const QRect& area) {
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            const QColor colour = picture.pixelColor(x, y);
            count += colour.red() > colour.green() + 60 && colour.red() > colour.blue() + 60 ? 1 : 0;
        }
    }
    return count;
}

TEST(DeviceContext, DrawsALinkInItsColourWithinItsRectangleAndShowsAHandOverItOnly) {
    QtTestFrame frame;
    ASSERT_TRUE(frame.Show());
    LinkView view;
    ASSERT_TRUE(view.CreateChild(frame, {0, 100, 300, 200}, 2));
    auto* widget = reinterpret_cast<QWidget*>(view.GetSafeHwnd());
    const auto countRed = [&](const QRect& area) { return CountRed(widget->grab().toImage(), area); };
    const QRect inside(20, 30, 100, 20);
    const int plain = countRed(inside);
    EXPECT_GT(plain, 50);
    EXPECT_EQ(countRed(QRect(0, 0, 300, 100)), plain);
    view.style = TextStyle::kUnderlined;
    EXPECT_GE(countRed(inside), plain + 60);
    for (const bool isOnLink : {true, false, true}) {
        QTest::mouseMove(widget, isOnLink ? QPoint(30, 40) : QPoint(5, 5));
        QCoreApplication::processEvents();
        EXPECT_EQ(widget->cursor().shape(), isOnLink ? Qt::PointingHandCursor : Qt::ArrowCursor);
    }
}

}  // namespace
}  // namespace permora
