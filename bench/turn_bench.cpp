// How long the window keeps somebody waiting while much is selected: the longest time until a message for the
// user-interface thread is served while the security editor opens on 10,000 files, and while a change of a
// tree of 100,000 objects is previewed. Nothing is shown: the toolkit paints into memory. Prints rows of the
// table in README.md.
#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/measure.h"
#include "bench/sample_tree.h"
#include "bench/window_main.h"
#include "editor/preview_dialog.h"
#include "editor/security_sheet.h"
#include "framework/frame_window.h"
#include "platform/api/errors.h"
#include "platform/host_path.h"
#include "resources/resource_ids.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double kGoal = 100;  // milliseconds

// Sends one message after the other to the user-interface thread, which serves none during a turn.
class TurnWatch {
  public:
    TurnWatch() : sender([this] { Send(); }) {}
    ~TurnWatch() {
        isStopped = true;
        sender.join();
        QCoreApplication::processEvents();  // what is still on its way is for this object
    }
    TurnWatch(const TurnWatch&) = delete;
    TurnWatch& operator=(const TurnWatch&) = delete;

    double LongestMilliseconds() const {
        return std::chrono::duration<double, std::milli>(Clock::duration(longest)).count();
    }

  private:
    void Send() {
        constexpr std::chrono::milliseconds kPause(1);
        while (!isStopped) {
            isServed = false;
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [this, sent = Clock::now()] {
                    longest = std::max<Clock::rep>(longest, (Clock::now() - sent).count());
                    isServed = true;
                },
                Qt::QueuedConnection);
            while (!isServed && !isStopped)
                std::this_thread::sleep_for(kPause);
        }
    }

    std::atomic<bool> isStopped = false;
    std::atomic<bool> isServed = false;
    std::atomic<Clock::rep> longest = 0;
    std::thread sender;
};

// Runs `work`, which shows a modal window, and closes the window once `isDone`.
double LongestTurn(const std::function<void()>& work, const std::function<bool()>& isDone) {
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [&] {
        QWidget* window = QApplication::activeModalWidget();
        if (window != nullptr && isDone()) window->close();
    });
    constexpr std::chrono::milliseconds kPace(20);
    const TurnWatch watch;
    closer.start(kPace);
    work();
    return watch.LongestMilliseconds();
}

void MeasureEditor(CFrameWnd& frame) {
    const std::size_t count = bench::Scaled(10'000);
    const test::TemporaryFolder folder;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < count; ++i)
        folder.MakeFile(names.emplace_back("file" + std::to_string(i)));
    auto held = std::make_shared<FolderHandle>();
    bench::Check(FolderHandle::Open(PathFromArgument(folder.Path().c_str()), *held) == ERROR_SUCCESS,
                 "cannot hold the folder");
    const Place place{PlaceKind::kFolder, std::move(held), names};
    ChangeSession changes(History::UsualPath(), {});
    std::vector<double> ours;
    std::vector<double> plain;
    constexpr int kTicks = 25;  // for what the pages ask on threads of their own
    for (int run = 0; run < bench::Runs(5); ++run) {
        const auto isDone = [ticks = 0]() mutable { return ++ticks > kTicks; };
        ours.push_back(LongestTurn([&] { EditSecurity(&frame, place, changes); }, isDone));
        plain.push_back(
            LongestTurn([&] { EditSecurity(&frame, RememberPlace(place), names.front(), changes); }, isDone));
    }
    bench::PrintLimited(
        {"opening the security editor, longest turn", "local disk, " + std::to_string(count) + " items",
         "remembered on the window's thread"},
        bench::Median(ours), kGoal, {0, " ms"}, bench::Median(plain));
}

void MeasurePreview(CFrameWnd& frame) {
    const std::size_t count = bench::Scaled(100'000);
    const test::TemporaryFolder folder;
    const std::string top = folder.Path("tree");
    if (!bench::Check(bench::MakeSampleTree(top, count), "cannot make the tree")) return;
    const std::vector<RememberedObject> items = {RememberedObject(nullptr, PathFromArgument(top.c_str()))};
    const UniqueLocal<void> descriptor = test::DescriptorOf("D:P(A;OICI;FA;;;BG)");
    PACL list = nullptr;
    BOOL isPresent = FALSE;
    BOOL isDefaulted = FALSE;
    bench::Check(GetSecurityDescriptorDacl(descriptor.get(), &isPresent, &list, &isDefaulted) != FALSE,
                 "no list");
    std::vector<double> ours;
    for (int run = 0; run < bench::Runs(5); ++run) {
        std::size_t changed = 0;
        CPreviewDlg dialog(&frame, CPreviewDlg::Purpose::kShow, [&](TreeObserver& observer) {
            const ChangePreview preview = PreviewListOnItems(items, DaclInheritance::kProtected, {list, list},
                                                             BelowChange::kReset, observer);
            changed = preview.below ? preview.below->changed : 0;
            return preview;
        });
        ours.push_back(LongestTurn([&] { dialog.DoModal(); },
                                   [&] { return !dialog.GetDlgItem(IDC_PREVIEW_STOP)->IsWindowEnabled(); }));
        bench::Check(changed == count, "objects are missing");
    }
    bench::PrintLimited(
        {"previewing a tree, longest turn", "local disk, " + std::to_string(count) + " objects", ""},
        bench::Median(ours), kGoal, {0, " ms"});
}

void Run() {
    CFrameWnd frame;
    if (!bench::Check(frame.LoadFrame(IDR_MAIN_FRAME), "the window cannot be made")) return;
    frame.SetPlacement({{0, 0, 1000, 700}, ShowState::kNormal});
    QApplication::processEvents();
    MeasureEditor(frame);
    MeasurePreview(frame);
}

}  // namespace
}  // namespace permora

int main(int argc, char** argv) {
    return permora::bench::MeasureWindows(argc, argv, permora::Run);
}
