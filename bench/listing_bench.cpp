// Listing a folder of 100,000 files in the main window, with everything that it takes: reading the folder for
// the folders and for the files, the rows, the status bar, and the painting afterwards. Compared with what
// "ls -lU" takes for the same folder. Nothing is shown: the toolkit paints into memory. Prints
// rows of the table in README.md.
#include <sys/stat.h>
#include <unistd.h>

#include <QApplication>
#include <array>
#include <fstream>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "browser/address_bar.h"
#include "browser/browser_view.h"
#include "framework/bars.h"
#include "framework/frame_window.h"
#include "framework/qt/application.h"
#include "platform/host_path.h"
#include "resources/resource_ids.h"
#include "tests/support/command.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

constexpr std::size_t kFiles = 100'000;

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

void MakeFiles(const test::TemporaryFolder& folder) {
    constexpr std::array kEndings = {".txt", ".zip", ".tar.gz", ".JPG", ".doc", "", ".7", ".exe"};
    for (std::size_t i = 0; i < bench::Scaled(kFiles); ++i) {
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

double SecondsOfListing(Frame& frame, const std::string& path) {
    return bench::SecondsFor([&] {
        frame.view.GoToLocation(path);
        QApplication::processEvents();
        bench::Check(frame.view.List().GetItemCount() == static_cast<int>(bench::Scaled(kFiles)),
                     "files are missing");
    });
}

struct Mode {
    const char* name;
    ListView view;
    bool hasOwnIcons;
    double goal;
    std::uint32_t securityColumns = 0;  // as SecurityColumns::Choose takes them
};

void Measure(Frame& frame, const std::string& path) {
    constexpr std::array kModes = {Mode{"icons", ListView::kIcons, true, 4},
                                   Mode{"the desktop's icons", ListView::kIcons, false, 4},
                                   Mode{"details", ListView::kReport, true, 8},
                                   Mode{"details with the desktop's icons", ListView::kReport, false, 8},
                                   Mode{"details with all security columns", ListView::kReport, true, 8, 15}};
    const std::string shown = PathFromArgument(path.c_str());
    std::array<std::vector<double>, kModes.size()> ours;
    std::vector<double> ls;
    for (int run = 0; run < bench::Runs(5); ++run) {
        ls.push_back(SecondsOfLs(path));
        for (std::size_t i = 0; i < kModes.size(); ++i) {
            frame.view.GoToRoot();
            frame.view.SetViewMode(kModes[i].view);
            frame.view.ChooseSecurityColumns(kModes[i].securityColumns);
            frame.view.SetIcons(kModes[i].hasOwnIcons ? RowIcons::kOwn : RowIcons::kShell);
            ours[i].push_back(SecondsOfListing(frame, shown));
        }
    }
    const std::string where = "local disk, " + std::to_string(bench::Scaled(kFiles)) + " files";
    for (std::size_t i = 0; i < kModes.size(); ++i)
        bench::PrintRatio({std::string("listing and painting, ") + kModes[i].name, where, "`ls -lU`"},
                          ours[i], ls, kModes[i].goal);
}

void Run() {
    const test::TemporaryFolder folder;
    MakeFiles(folder);
    Frame frame;
    if (!bench::Check(frame.LoadFrame(IDR_MAIN_FRAME), "the window cannot be made")) return;
    frame.SetPlacement({{0, 0, 1000, 700}, ShowState::kNormal});
    QApplication::processEvents();
    Measure(frame, folder.Path());
    bench::Check(chdir("/") == 0, "cannot leave the folder");
}

}  // namespace
}  // namespace permora

int main(int argc, char** argv) {
    permora::bench::Begin(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    permora::QtApplication application(argc, argv);
    permora::Run();
    return permora::bench::ExitCode();
}
