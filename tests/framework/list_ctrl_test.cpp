#include "framework/list_ctrl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QImage>
#include <QTest>
#include <QToolTip>
#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "framework/list_styles.h"
#include "framework/qt/list_widget.h"
#include "framework/qt/readable_colour.h"
#include "framework/qt/widget.h"
#include "framework/styles.h"
#include "framework/window_access.h"
#include "tests/screenshots/looks.h"

namespace permora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PlainWindow : public qt::WidgetWindow<NativeWindow> {
  public:
    using WidgetWindow::WidgetWindow;
    void SetText(const std::string& /*text*/) override {}
    std::string Text() const override { return {}; }
};

const char* NameOf(Notify code) {
    switch (code) {
        case Notify::kClick:
            return "click";
        case Notify::kDoubleClick:
            return "double";
        case Notify::kRightClick:
            return "right";
        case Notify::kItemChanged:
            return "changed";
        case Notify::kColumnClick:
            return "column";
        case Notify::kKeyDown:
            return "key";
        case Notify::kInfoTip:
            return "tip";
        default:
            return "other";
    }
}

// Records all notifications of the list, as "changed 3".
class ListOwner : public CWnd {
  public:
    bool OnCmdMsg(Notification& notification) override {
        EXPECT_EQ(notification.id, kListId);
        std::string said = NameOf(notification.code);
        if (notification.row >= 0) said += " " + std::to_string(notification.row);
        if (notification.column >= 0) said += " " + std::to_string(notification.column);
        if (notification.key != 0) said = "key " + std::to_string(notification.key);
        heard.push_back(said);
        if (notification.code == Notify::kInfoTip) notification.tip = "<b>tip";
        return true;
    }
    std::vector<std::string> Heard() { return std::exchange(heard, {}); }

    static constexpr unsigned int kListId = 77;

  private:
    std::vector<std::string> heard;
};

class ListCtrl : public testing::Test {
  protected:
    static constexpr int kFirstColumnWidth = 120;

    ListCtrl() {
        auto widget = std::make_unique<QWidget>();
        widget->resize(500, 300);
        WindowAccess::Attach(owner, std::make_unique<PlainWindow>(owner, std::move(widget)), nullptr, 0,
                             WS_POPUP);
    }

    void Make(DWORD style, int rows = 5) {
        ASSERT_TRUE(
            list.Create(owner, style | WS_VISIBLE | WS_TABSTOP, {0, 0, 400, 250}, ListOwner::kListId));
        list.InsertColumn(0, "Name", kFirstColumnWidth);
        list.InsertColumn(1, "Type", 100);
        for (int row = 0; row < rows; ++row) {
            list.InsertItem(row, std::string(1, static_cast<char>('a' + row % 26)) + "-row");
            list.SetItemData(row, row);
        }
        qt::WidgetOf(owner)->show();
        qt::WidgetOf(owner)->activateWindow();
        list.SetFocus();
        QCoreApplication::processEvents();
        owner.Heard();
    }

    qt::ListWidget& Widget() { return static_cast<qt::ListWidget&>(*qt::WidgetOf(list)); }
    QPoint OnText(int row) {
        const QRect cell = Widget().CellInViewport(row);
        for (int y = cell.bottom() - 4; y > cell.top(); --y) {
            const QPoint point(list.GetView() == ListView::kIcons ? cell.center().x() : cell.left() + 40, y);
            if (Widget().HitRow(point) == row) return point;
        }
        return cell.center();
    }
    void Click(int row, Qt::KeyboardModifiers modifiers = {}, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseClick(Widget().viewport(), button, modifiers, OnText(row));
    }
    void Key(int key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&Widget(), static_cast<Qt::Key>(key), modifiers);
    }
    std::vector<int> Selected() {
        std::vector<int> rows;
        for (int row = list.NextSelected(0); row >= 0; row = list.NextSelected(row + 1))
            rows.push_back(row);
        return rows;
    }

    ListOwner owner;
    CListCtrl list;
};

// Where `after` shows something else than `before`.
std::vector<QPoint> ChangedPoints(const QImage& before, const QImage& after) {
    std::vector<QPoint> changed;
    for (int y = 0; y < after.height(); ++y)
        for (int x = 0; x < after.width(); ++x)
            if (before.pixel(x, y) != after.pixel(x, y)) changed.emplace_back(x, y);
    return changed;
}

TEST_F(ListCtrl, FromRightToLeftAClickMeetsWhatIsPaintedThere) {
    QApplication::setLayoutDirection(Qt::RightToLeft);
    Make(LVS_REPORT, 12);
    list.SetExtendedStyle(ListStyle::kCheckBoxes);
    const auto painted = [&] {
        QCoreApplication::processEvents();
        return Widget().viewport()->grab().toImage();
    };
    for (const ListView view :
         {ListView::kReport, ListView::kIcons, ListView::kSmallIcons, ListView::kList}) {
        SCOPED_TRACE(static_cast<int>(view));
        list.SetView(view);
        list.SetCursor({});
        for (const int row : {0, 3, 11}) {
            list.EnsureVisible(row);
            QImage before = painted();
            list.SetSelected(row, true);
            const std::vector<QPoint> selected = ChangedPoints(before, painted());
            list.SetSelected(row, false);
            EXPECT_FALSE(selected.empty());
            for (const QPoint& point : selected)
                ASSERT_EQ(Widget().HitRow(point), row) << point.x() << ", " << point.y();
            before = painted();
            list.SetCheck(row, true);
            const std::vector<QPoint> checked = ChangedPoints(before, painted());
            ASSERT_FALSE(checked.empty());
            QTest::mouseClick(Widget().viewport(), Qt::LeftButton, {}, checked[checked.size() / 2]);
            EXPECT_FALSE(list.GetCheck(row));
        }
        EXPECT_GT(Widget().CellInViewport(0).right(), Widget().viewport()->width() - 5)
            << "begins at the right";
    }
    list.SetView(ListView::kIcons);
    list.SetCursor({.focus = 0});
    Key(Qt::Key_Left);
    EXPECT_EQ(list.GetFocusedRow(), 1);
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

// The best contrast that a pixel in `area` has to the colour of most of them.
double ContrastIn(const QImage& picture, const QRect& area) {
    std::map<QRgb, int> counts;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            ++counts[picture.pixel(x, y)];
    const QColor ground(
        std::ranges::max_element(counts, {}, [](const auto& each) { return each.second; })->first);
    double best = 0;
    for (const auto& [colour, count] : counts)
        best = std::max(best, qt::ContrastOf(QColor(colour), ground));
    return best;
}

TEST_F(ListCtrl, RowsCanBeReadInEveryPalette) {
    Make(LVS_REPORT | LVS_SHOWSELALWAYS);
    QFont large = Widget().font();
    large.setPointSize(24);
    large.setBold(true);  // the middle of its lines has their full colour
    Widget().setFont(large);
    list.SetColumnWidth(0, 300);
    for (const int row : {0, 1})
        list.SetItemText(row, 0, "HIHI");
    list.SetItemText(2, 0, "\xEF\x80\x81");  // a byte that is no character, which is dimmed
    list.SetItemText(3, 0, list.GetItemText(2, 0));
    for (const int row : {0, 3})
        list.SetSelected(row, true);
    const QPalette usual = QApplication::palette();
    for (const QPalette& palette : {usual, DarkPalette(), ContrastPalette()}) {
        QApplication::setPalette(palette);
        const QPalette shown = QApplication::palette();
        EXPECT_GE(qt::ContrastOf(qt::Readable(Qt::blue, shown.color(QPalette::Window)),
                                 shown.color(QPalette::Window)),
                  qt::kReadableContrast);
        for (const bool isEnabled : {true, false}) {
            for (const bool hasFocus : {true, false}) {
                list.EnableWindow(isEnabled);
                (hasFocus ? static_cast<QWidget*>(&Widget()) : qt::WidgetOf(owner))->setFocus();
                QCoreApplication::processEvents();
                const QImage picture = Widget().viewport()->grab().toImage();
                for (const int row : {0, 1, 2, 3}) {
                    if (!isEnabled && list.Rows().IsSelected(row)) continue;  // it is not for choosing
                    const QRect cell = Widget().HotPartInViewport(row).adjusted(2, 2, -2, -2);
                    EXPECT_GE(ContrastIn(picture, cell), qt::kReadableContrast)
                        << "row " << row << ", enabled " << isEnabled << ", focus " << hasFocus;
                }
            }
        }
    }
    QApplication::setPalette(usual);
}

TEST_F(ListCtrl, SelectingByProgramTellsEachChangeOnce) {
    Make(LVS_REPORT | LVS_SINGLESEL);
    EXPECT_TRUE(list.SetSelected(1, true));
    EXPECT_THAT(owner.Heard(), ElementsAre("changed 1"));
    EXPECT_TRUE(list.SetSelected(1, true));
    EXPECT_THAT(owner.Heard(), IsEmpty());
    EXPECT_TRUE(list.SetSelected(3, true));
    EXPECT_THAT(owner.Heard(), ElementsAre("changed 1", "changed 3"));
    EXPECT_FALSE(list.SetSelected(9, true));
    EXPECT_THAT(Selected(), ElementsAre(3));
}

TEST_F(ListCtrl, ADisabledListIgnoresTheUserButNotTheProgram) {
    Make(LVS_REPORT);
    list.ModifyStyle(0, WS_DISABLED);
    Click(2);
    Key(Qt::Key_Down);
    EXPECT_THAT(owner.Heard(), IsEmpty());
    list.SetSelected(2, true);
    EXPECT_THAT(owner.Heard(), ElementsAre("changed 2"));
}

TEST_F(ListCtrl, CtrlAndShiftMakeSelectionsOfSeveralRows) {
    Make(LVS_REPORT, 8);
    Click(1);
    Click(3, Qt::ShiftModifier);
    EXPECT_THAT(Selected(), ElementsAre(1, 2, 3));
    EXPECT_EQ(list.GetSelectionMark(), 3);
    Click(6, Qt::ControlModifier);
    Click(2, Qt::ControlModifier);
    EXPECT_THAT(Selected(), ElementsAre(1, 3, 6));
    Click(0, Qt::ShiftModifier);
    EXPECT_THAT(Selected(), ElementsAre(0, 1, 2)) << "from the row that Ctrl clicked last";
    owner.Heard();
    Click(1);
    EXPECT_THAT(Selected(), ElementsAre(1));
    EXPECT_THAT(owner.Heard(), ElementsAre("changed 0", "changed 2", "click 1"));
}

TEST_F(ListCtrl, ARightClickOnOneOfSeveralSelectedRowsKeepsThem) {
    Make(LVS_REPORT);
    list.SetSelected(1, true);
    list.SetSelected(2, true);
    Click(1, {}, Qt::RightButton);
    EXPECT_THAT(Selected(), ElementsAre(1, 2));
    EXPECT_EQ(list.GetSelectionMark(), 1);
}

TEST_F(ListCtrl, AFrameDrawnWithTheMouseSelectsWhatItTouches) {
    Make(LVS_REPORT, 6);
    QWidget& area = *Widget().viewport();
    const QPoint start(390, OnText(3).y());
    QTest::mousePress(&area, Qt::LeftButton, {}, start);
    QTest::mouseMove(&area, QPoint(60, OnText(1).y()));
    EXPECT_THAT(Selected(), ElementsAre(1, 2, 3));
    QTest::mouseMove(&area, QPoint(60, OnText(2).y()));
    EXPECT_THAT(Selected(), ElementsAre(2, 3));
    owner.Heard();
    QTest::mouseRelease(&area, Qt::LeftButton, {}, QPoint(60, OnText(2).y()));
    EXPECT_THAT(owner.Heard(), IsEmpty()) << "a frame is no click";
}

TEST_F(ListCtrl, KeysMoveExtendAndSearch) {
    Make(LVS_REPORT, 26);
    Key(Qt::Key_Down);
    EXPECT_THAT(Selected(), ElementsAre(1));
    EXPECT_THAT(owner.Heard(), ElementsAre("key 40", "changed 1"));
    Key(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_THAT(Selected(), ElementsAre(1, 2));
    Key(Qt::Key_Down, Qt::ControlModifier);
    EXPECT_THAT(Selected(), ElementsAre(1, 2));
    EXPECT_EQ(list.GetSelectionMark(), 3);
    owner.Heard();
    Key(Qt::Key_F10, Qt::ShiftModifier);
    EXPECT_THAT(owner.Heard(), ElementsAre("right 3")) << "the context menu's other key";
    Key(Qt::Key_End);
    EXPECT_THAT(Selected(), ElementsAre(25));
    QTest::keyClicks(&Widget(), "C-R");
    EXPECT_THAT(Selected(), ElementsAre(2));
    owner.Heard();
    Key(Qt::Key_Space);
    EXPECT_THAT(owner.Heard(), IsEmpty()) << "a space in a name that is searched for is no key";
    Key(Qt::Key_Home);
    EXPECT_THAT(Selected(), ElementsAre(0));
}

TEST_F(ListCtrl, SwitchingViewsKeepsTheSelectionAndShowsTheFocusRow) {
    Make(LVS_REPORT, 2000);
    list.SetSelected(3, true);
    Key(Qt::Key_End, Qt::ControlModifier);
    for (const ListView view :
         {ListView::kIcons, ListView::kSmallIcons, ListView::kList, ListView::kReport}) {
        list.SetView(view);
        QCoreApplication::processEvents();
        EXPECT_EQ(list.GetView(), view);
        EXPECT_THAT(Selected(), ElementsAre(3));
        EXPECT_TRUE(Widget().viewport()->rect().contains(Widget().CellInViewport(1999).center()));
        owner.Heard();
        Click(1999);
        EXPECT_THAT(owner.Heard(), ElementsAre("changed 3", "changed 1999", "click 1999"));
        Click(1999, Qt::ControlModifier);
        list.SetSelected(3, true);
    }
}

TEST_F(ListCtrl, TellsWhichRowsAreInView) {
    Make(LVS_REPORT, 100);
    EXPECT_TRUE(list.IsItemVisible(0));
    EXPECT_FALSE(list.IsItemVisible(99));
    list.EnsureVisible(99);
    EXPECT_FALSE(list.IsItemVisible(0));
    EXPECT_TRUE(list.IsItemVisible(99));
    list.InsertItem(100, "below the edge");
    EXPECT_FALSE(list.IsItemVisible(100));
    EXPECT_FALSE(list.IsItemVisible(101)) << "there is none";
}

TEST_F(ListCtrl, TipsAreAskedForRowsAndShownAsPlainText) {
    Make(LVS_REPORT);
    const auto rest = [&](const QPoint& point) {
        QHelpEvent event(QEvent::ToolTip, point, Widget().viewport()->mapToGlobal(point));
        QCoreApplication::sendEvent(Widget().viewport(), &event);
    };
    rest(OnText(2));
    EXPECT_THAT(owner.Heard(), IsEmpty());
    list.SetExtendedStyle(ListStyle::kInfoTips);
    rest(OnText(2));
    EXPECT_THAT(owner.Heard(), ElementsAre("tip 2"));
    EXPECT_TRUE(QToolTip::text().contains(QStringLiteral("&lt;b&gt;tip")));
    rest({390, 240});
    EXPECT_THAT(owner.Heard(), IsEmpty());

    // Without questions: what does not fit into its column.
    list.SetExtendedStyle(ListStyle::kFullRowSelect | ListStyle::kLabelTips | ListStyle::kGivenWidths);
    list.SetItemText(2, 1, "a text <much> longer than its column is wide, to be read in a tip");
    rest(OnText(2));
    EXPECT_FALSE(QToolTip::text().contains(QStringLiteral("c-row")));
    rest({kFirstColumnWidth + 5, OnText(2).y()});
    EXPECT_TRUE(QToolTip::text().contains(QStringLiteral("&lt;much&gt;")));
}

TEST_F(ListCtrl, ColumnsFollowTheirTextsUntilTheUserDragsOne) {
    Make(LVS_REPORT);
    auto& header = *Widget().findChild<QHeaderView*>();
    const auto relayout = [&] { QCoreApplication::sendPostedEvents(&Widget(), QEvent::LayoutRequest); };
    const auto fills = [&] {
        return header.sectionSize(0) + header.sectionSize(1) == Widget().viewport()->width();
    };
    relayout();
    EXPECT_EQ(header.sectionSize(0), kFirstColumnWidth);
    EXPECT_TRUE(fills());
    list.SetItemText(3, 0, "a name that needs more than the first column had");
    relayout();
    EXPECT_GT(header.sectionSize(0), kFirstColumnWidth);
    EXPECT_TRUE(fills());
    header.resizeSection(0, 77);
    list.SetItemText(3, 0, "another name that needs more than the first column had");
    relayout();
    EXPECT_EQ(header.sectionSize(0), 77);
    emit header.sectionHandleDoubleClicked(0);
    relayout();
    EXPECT_GT(header.sectionSize(0), kFirstColumnWidth);
}

TEST_F(ListCtrl, AssistiveTechnologyReadsNamesAndStates) {
    Make(LVS_REPORT, 3);
    list.SetExtendedStyle(ListStyle::kCheckBoxes);
    list.SetItemText(1, 1, "Folder");
    list.SetCheck(1, true);
    list.SetSelected(1, true);
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&Widget());
    ASSERT_NE(interface, nullptr);
    EXPECT_EQ(interface->role(), QAccessible::List);
    ASSERT_EQ(interface->childCount(), 3);
    QAccessibleInterface* row = interface->child(1);
    EXPECT_EQ(row->text(QAccessible::Name), QStringLiteral("b-row, Type: Folder"));
    list.SetItemText(1, 0, "\uF00A\u202Eb\uF03A\uF0FF");
    EXPECT_EQ(row->text(QAccessible::Name), QStringLiteral("\\x0a\\u202eb:\\xff, Type: Folder"));
    list.SetItemText(1, 0, "b-row");
    list.SetView(ListView::kIcons);
    EXPECT_EQ(row->text(QAccessible::Name), QStringLiteral("b-row")) << "nothing more is seen";
    list.SetView(ListView::kReport);
    list.SetWindowText("Where we are");
    EXPECT_EQ(interface->text(QAccessible::Name), QStringLiteral("Where we are"));
    row = interface->child(1);
    EXPECT_TRUE(row->state().checkable && row->state().checked && row->state().selected);
    EXPECT_EQ(interface->indexOfChild(row), 1);
    row->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_FALSE(list.GetCheck(1));
    list.DeleteItem(2);
    EXPECT_EQ(interface->childCount(), 2);
    EXPECT_EQ(interface->child(2), nullptr);
    list.SetEmptyText("Nothing is here");
    EXPECT_EQ(interface->text(QAccessible::Description), QString()) << "there are rows";
    list.DeleteAllItems();
    EXPECT_EQ(interface->text(QAccessible::Description), QStringLiteral("Nothing is here"));
}

}  // namespace
}  // namespace permora
