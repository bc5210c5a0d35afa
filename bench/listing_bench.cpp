// Listing a folder of 100,000 files in the main window, with everything that it takes: reading the folder for
// the folders and for the files, the rows, the status bar, and the painting afterwards. Compared with what
// "ls -lU" takes for the same folder. Then a folder of 20,000 files with the columns about security, and
// without them. Nothing is shown: the toolkit paints into memory. Prints rows of the table in README.md.
#include <sys/stat.h>
#include <unistd.h>

#include <QApplication>
#include <array>
#include <fstream>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/window_main.h"
#include "browser/address_bar.h"
#include "browser/browser_view.h"
#include "browser/list_presentation.h"
#include "framework/bars.h"
#include "framework/frame_window.h"
#include "platform/host_path.h"
#include "resources/resource_ids.h"
#include "tests/support/command.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

constexpr std::size_t kFiles = 100'000;
constexpr std::size_t kFilesWithSecurity = 20'000;

class Frame : public CFrameWnd {
  public:
    CStatusBar statusBar;
    CReBar reBar;
    AddrBar addressBar;
    BrowserView view;

  protected:
    bool OnCreate() override {
        view.Create(*this, 1, R"("permora")");
        if (!addressBar.Create(*this, IDD_ADDRESS_BAR) || !reBar.Create(*this) ||
            !reBar.AddBar(addressBar, addressBar.LeastWidth()) || !statusBar.Create(*this))
            return false;
        statusBar.SetIndicators({CStatusBar::kSeparator, IDS_ITEM_COUNT_PANE, CStatusBar::kSeparator});
        view.AttachBars(addressBar, statusBar);
        SetView(view);
        return true;
    }
};

void MakeFiles(const test::TemporaryFolder& folder, std::size_t count) {
    constexpr std::array kEndings = {".txt", ".zip", ".tar.gz", ".JPG", ".doc", "", ".7", ".exe"};
    for (std::size_t i = 0; i < count; ++i) {
        const std::string ending = kEndings[i % kEndings.size()];
        std::ofstream(folder.Path("A file of number " + std::to_string(i) + ending)) << i;
    }
}

double SecondsOfLs(const std::string& path) {
    return bench::SecondsFor([&] {
        const auto result = test::RunCommand({"sh", "-c", "ls -lU \"$0\" > /dev/null", path});
        bench::Check(result.exitCode == 0, "ls failed: " + result.output);
    });
}

double SecondsOfListing(Frame& frame, const std::string& path, std::size_t count) {
    return bench::SecondsFor([&] {
        frame.view.GoToLocation(path);
        QApplication::processEvents();
        bench::Check(frame.view.List().GetItemCount() == static_cast<int>(count), "files are missing");
    });
}

struct Mode {
    const char* name;
    ListView view;
    bool hasOwnIcons;
    double goal;
};

void Measure(Frame& frame, const std::string& path) {
    constexpr std::array kModes = {Mode{"icons", ListView::kIcons, true, 4},
                                   Mode{"the desktop's icons", ListView::kIcons, false, 4},
                                   Mode{"details", ListView::kReport, true, 8},
                                   Mode{"details with the desktop's icons", ListView::kReport, false, 8}};
    const std::string shown = PathFromArgument(path.c_str());
    std::array<std::vector<double>, kModes.size()> ours;
    std::vector<double> ls;
    for (int run = 0; run < bench::Runs(5); ++run) {
        ls.push_back(SecondsOfLs(path));
        for (std::size_t i = 0; i < kModes.size(); ++i) {
            frame.view.GoToRoot();
            frame.view.SetViewMode(kModes[i].view);
            frame.view.SetIcons(kModes[i].hasOwnIcons ? RowIcons::kOwn : RowIcons::kShell);
            ours[i].push_back(SecondsOfListing(frame, shown, bench::Scaled(kFiles)));
        }
    }
    const std::string where = "local disk, " + std::to_string(bench::Scaled(kFiles)) + " files";
    for (std::size_t i = 0; i < kModes.size(); ++i)
        bench::PrintRatio({std::string("listing and painting, ") + kModes[i].name, where, "`ls -lU`"},
                          ours[i], ls, kModes[i].goal);
}

// Whether the columns of all rows that are seen are filled.
bool AreSeenRowsFilled(Frame& frame, int last, int column) {
    constexpr int kSeen = 10;  // fewer than there is room for
    for (int row = last; row > last - kSeen; --row)
        if (frame.view.List().GetItemText(row, column) == "...") return false;
    return true;
}

// The columns cost the listing nothing, and what is scrolled to is soon filled.
void MeasureSecurity(Frame& frame, const std::string& path) {
    constexpr std::uint32_t kAllColumns = 15;
    constexpr double kGoal = 1.1;
    constexpr double kSoon = 0.2;
    const std::size_t count = bench::Scaled(kFilesWithSecurity);
    const std::string shown = PathFromArgument(path.c_str());
    std::vector<double> with;
    std::vector<double> without;
    std::vector<double> filling;
    frame.view.SetViewMode(ListView::kReport);
    frame.view.SetIcons(RowIcons::kOwn);
    for (int run = 0; run < bench::Runs(7); ++run) {
        for (const std::uint32_t columns : {std::uint32_t{0}, kAllColumns}) {
            frame.view.GoToRoot();
            frame.view.ChooseSecurityColumns(columns);
            QApplication::processEvents();
            (columns == 0 ? without : with).push_back(SecondsOfListing(frame, shown, count));
        }
        CListCtrl& list = frame.view.List();
        const int row = static_cast<int>(count) / 2;
        list.SetFocusedRow(row);  // scrolls to it
        filling.push_back(bench::SecondsFor([&] {
            do
                QApplication::processEvents(QEventLoop::WaitForMoreEvents);
            while (!AreSeenRowsFilled(frame, row, kFixedColumns));
        }));
    }
    const std::string where = "local disk, " + std::to_string(count) + " files";
    bench::PrintRatio({"listing and painting, details with all security columns", where, "without them"},
                      with, without, kGoal);
    constexpr double kMilliseconds = 1000;
    bench::PrintLimited({"security columns filled after a jump", where, ""},
                        kMilliseconds * bench::Median(filling), kMilliseconds * kSoon, {0, " ms"});
}

void Run() {
    const test::TemporaryFolder folder;
    MakeFiles(folder, bench::Scaled(kFiles));
    const test::TemporaryFolder smaller;
    MakeFiles(smaller, bench::Scaled(kFilesWithSecurity));
    Frame frame;
    if (!bench::Check(frame.LoadFrame(IDR_MAIN_FRAME), "the window cannot be made")) return;
    frame.SetPlacement({{0, 0, 1000, 700}, ShowState::kNormal});
    QApplication::processEvents();
    Measure(frame, folder.Path());
    MeasureSecurity(frame, smaller.Path());
    bench::Check(chdir("/") == 0, "cannot leave the folder");
}

}  // namespace
}  // namespace permora

int main(int argc, char** argv) {
    return permora::bench::MeasureWindows(argc, argv, permora::Run);
}
