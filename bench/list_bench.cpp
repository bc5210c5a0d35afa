// A list view of 100,000 rows: how long they take to insert one by one, the memory of each, and how long a
// painting takes after a jump to the middle, in every view. Nothing is shown: the toolkit paints into memory.
// Times are processor time of this process. Prints rows of the table in README.md.
#include <malloc.h>

#include <QApplication>
#include <QScrollBar>
#include <ctime>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/window_main.h"
#include "framework/list_ctrl.h"
#include "framework/list_styles.h"
#include "framework/native.h"
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

// The painting after a jump to the middle, which must fit into one frame.
void MeasureView(CListCtrl& list, ListView view, const char* name) {
    auto& widget = static_cast<qt::ListWidget&>(*qt::WidgetOf(list));
    list.SetView(view);
    widget.viewport()->repaint();
    QScrollBar& bar = view == ListView::kList ? *widget.horizontalScrollBar() : *widget.verticalScrollBar();
    std::vector<double> jumps;
    for (int run = 0; run < bench::Runs(5); ++run) {
        bar.setValue(bar.minimum());
        widget.viewport()->repaint();
        jumps.push_back(Milliseconds([&] {
            bar.setValue(bar.maximum() / 2);
            widget.viewport()->repaint();
        }));
    }
    bench::PrintLimited({"list view: jump and paint", name, ""}, bench::Median(jumps), 16, {1, " ms"});
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

    const std::string rows = std::to_string(kRows) + " rows";
    const bench::Unit milliseconds = {0, " ms"};
    const auto heapBefore = mallinfo2().uordblks;
    bench::PrintLimited({"list view: insert one by one", rows, ""}, Milliseconds([&] { Fill(list); }), 500,
                        milliseconds);
    MeasureView(list, ListView::kReport, "report");
    MeasureView(list, ListView::kIcons, "icons");
    MeasureView(list, ListView::kSmallIcons, "small icons");
    MeasureView(list, ListView::kList, "list");
    const auto heap = mallinfo2().uordblks - heapBefore;
    bench::PrintLimited({"list view: memory of a row", rows, ""}, static_cast<double>(heap) / kRows, 400,
                        {0, " bytes"});
    const auto selectAll = [&] {
        for (int row = 0; row < kRows; ++row)
            list.SetSelected(row, true);
    };
    bench::PrintLimited({"list view: select one by one", rows, ""}, Milliseconds(selectAll), 100,
                        milliseconds);
    const auto sort = [&] {
        list.SortItems([](std::intptr_t one, std::intptr_t other) { return one > other; });
    };
    bench::PrintLimited({"list view: sort", rows, ""}, Milliseconds(sort), 100, milliseconds);
}

}  // namespace
}  // namespace permora

int main(int argc, char** argv) {
    return permora::bench::MeasureWindows(argc, argv, permora::Run);
}
