// A list view of 100,000 rows: how long they take to insert one by one, the memory of each, and how long a
// painting takes after a jump to the middle, in every view. Nothing is shown: the toolkit paints into memory.
// Times are this process's, whatever else the machine does.
#include <malloc.h>

#include <QApplication>
#include <QScrollBar>
#include <cstdio>
#include <ctime>
#include <string>

#include "framework/list_ctrl.h"
#include "framework/list_styles.h"
#include "framework/native.h"
#include "framework/qt/application.h"
#include "framework/qt/list_widget.h"
#include "framework/qt/widget.h"
#include "framework/styles.h"
#include "framework/window_access.h"

namespace permora {
namespace {

constexpr int kRows = 100'000;

class PlainWindow : public qt::WidgetWindow<NativeWindow> {
  public:
    using WidgetWindow::WidgetWindow;
    void SetText(const std::string& /*text*/) override {}
    std::string Text() const override { return {}; }
};

template <class Work>
double Milliseconds(const Work& work) {
    const std::clock_t start = std::clock();
    work();
    constexpr double kMillisecondsInSecond = 1000;
    return static_cast<double>(std::clock() - start) * kMillisecondsInSecond / CLOCKS_PER_SEC;
}

void Fill(CListCtrl& list) {
    for (int row = 0; row < kRows; ++row) {
        const std::string number = std::to_string(row);
        list.InsertItem(row, "A file with a name " + number + ".txt", 0);
        list.SetItemData(row, row);
        list.SetItemText(row, 1, "Text document");
        list.SetItemText(row, 2, number + " KB");
        list.SetItemText(row, 3, "24:11:2026  16:20");
    }
}

void MeasureView(CListCtrl& list, ListView view, const char* name) {
    auto& widget = static_cast<qt::ListWidget&>(*qt::WidgetOf(list));
    const double switching = Milliseconds([&] {
        list.SetView(view);
        widget.viewport()->repaint();
    });
    QScrollBar& bar = view == ListView::kList ? *widget.horizontalScrollBar() : *widget.verticalScrollBar();
    bar.setValue(bar.minimum());
    widget.viewport()->repaint();
    const double jump = Milliseconds([&] {
        bar.setValue(bar.maximum() / 2);
        widget.viewport()->repaint();
    });
    constexpr int kSteps = 100;
    const double steps = Milliseconds([&] {
        for (int step = 0; step < kSteps; ++step) {
            bar.setValue(bar.value() + bar.singleStep());
            widget.viewport()->repaint();
        }
    });
    std::printf("%-12s switch %6.2f ms   jump and paint %6.2f ms   scroll and paint %6.2f ms\n", name,
                switching, jump, steps / kSteps);
}

void Run() {
    CWnd owner;
    auto window = std::make_unique<QWidget>();
    window->resize(1200, 800);
    window->show();
    WindowAccess::Attach(owner, std::make_unique<PlainWindow>(owner, std::move(window)), nullptr, 0,
                         WS_POPUP);
    CListCtrl list;
    list.Create(owner, LVS_REPORT | WS_VISIBLE, {0, 0, 1200, 800}, 1);
    for (int column = 0; column < 4; ++column)
        list.InsertColumn(column, "Column " + std::to_string(column), 200);
    QApplication::processEvents();

    const auto heapBefore = mallinfo2().uordblks;
    const double filling = Milliseconds([&] { Fill(list); });
    const auto heap = mallinfo2().uordblks - heapBefore;
    std::printf("insert %d rows of four texts: %.0f ms; %.0f bytes a row\n", kRows, filling,
                static_cast<double>(heap) / kRows);

    MeasureView(list, ListView::kReport, "report");
    MeasureView(list, ListView::kIcons, "icons");
    MeasureView(list, ListView::kSmallIcons, "small icons");
    MeasureView(list, ListView::kList, "list");
    const auto heapShown = mallinfo2().uordblks - heapBefore;
    std::printf("after all views were shown: %.0f bytes a row\n", static_cast<double>(heapShown) / kRows);

    std::printf("select all one by one: %.0f ms\n", Milliseconds([&] {
                    for (int row = 0; row < kRows; ++row)
                        list.SetSelected(row, true);
                }));
    std::printf("sort: %.0f ms\n", Milliseconds([&] {
                    list.SortItems([](std::intptr_t one, std::intptr_t other) { return one > other; });
                }));
    std::printf("delete all: %.0f ms\n", Milliseconds([&] { list.DeleteAllItems(); }));
}

}  // namespace
}  // namespace permora

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    permora::QtApplication application(argc, argv);
    permora::Run();
    return 0;
}
