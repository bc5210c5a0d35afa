// From the start of the process to the painted window: the program on an empty folder, beside a bare window
// of the toolkit. Each start is a process of its own, this program again in another role. Prints a row of the
// table in README.md.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QPaintEvent>
#include <QTimer>
#include <QWidget>
#include <cstdlib>
#include <string>
#include <vector>

#include "app/main_app.h"
#include "app/settings_store.h"
#include "bench/measure.h"
#include "tests/support/temporary_folder.h"

namespace permora::bench {
namespace {

constexpr int kReportFd = 3;  // where a child says that its window is painted
constexpr char kPainted = 'p';
constexpr const char* kProgramRole = "program";
constexpr const char* kBareRole = "bare window";

// Ends the process once a window has been painted and its pixels are on their way to the screen.
class PaintWatch : public QObject {
  public:
    bool eventFilter(QObject* target, QEvent* event) override {
        const auto* widget = qobject_cast<QWidget*>(target);
        if (!hasSeen && event->type() == QEvent::Paint && widget != nullptr && widget->isWindow()) {
            hasSeen = true;
            QTimer::singleShot(0, [] {
                const bool isTold = write(kReportFd, &kPainted, 1) == 1;
                std::_Exit(isTold ? EXIT_SUCCESS : EXIT_FAILURE);
            });
        }
        return false;
    }

  private:
    bool hasSeen = false;
};

class WatchedApp : public CMainApp {
  public:
    bool InitInstance() override {
        QCoreApplication::instance()->installEventFilter(&watch);
        return CMainApp::InitInstance();
    }

  private:
    PaintWatch watch;
};

int ShowBareWindow(int argc, char** argv) {
    QApplication application(argc, argv);
    PaintWatch watch;
    application.installEventFilter(&watch);
    QWidget window;
    window.resize(640, 480);
    window.show();
    return QApplication::exec();
}

// Starts this program in a role, with the folder where the program's own command line has it, and waits for
// its window. Returns whether one was painted.
bool StartAndWait(const std::string& folder, const char* role) {
    int ends[2];
    if (pipe(ends) != 0) return false;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], kReportFd);
    std::string program = "startup_bench";
    std::string folderArgument = folder;
    std::string roleArgument = role;
    char* arguments[] = {program.data(), folderArgument.data(), roleArgument.data(), nullptr};
    pid_t child = 0;
    const bool isStarted = posix_spawn(&child, "/proc/self/exe", &actions, nullptr, arguments, environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    char told = 0;
    const bool isPainted = isStarted && read(ends[0], &told, 1) == 1 && told == kPainted;
    close(ends[0]);
    return isPainted;
}

int Measure() {
    constexpr double kMillisecondsInSecond = 1000;
    constexpr double kGoal = 400;
    const test::TemporaryFolder data;
    const test::TemporaryFolder settings;
    if (std::getenv("DISPLAY") == nullptr) setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("XDG_CONFIG_HOME", settings.Path().c_str(), 1);
    Check(StoreProgramFolder(SettingsOwner::kUser, "C:\\") == 0, "the settings cannot be stored");
    std::vector<double> program;
    std::vector<double> bare;
    // Once unmeasured, so that all files are in memory.
    for (int run = 0; run <= Runs(7); ++run) {
        for (const char* role : {kBareRole, kProgramRole}) {
            bool isPainted = false;
            const double seconds = SecondsFor([&] { isPainted = StartAndWait(data.Path(), role); });
            Check(isPainted, std::string("no window was painted: ") + role);
            if (run > 0) (role == kBareRole ? bare : program).push_back(seconds);
            while (waitpid(-1, nullptr, 0) > 0) {
            }
        }
    }
    PrintLimited({"starting, until the window is painted", "an empty folder", "a bare window"},
                 Median(program) * kMillisecondsInSecond, kGoal, {0, " ms"},
                 Median(bare) * kMillisecondsInSecond);
    return ExitCode();
}

}  // namespace
}  // namespace permora::bench

int main(int argc, char** argv) {
    using namespace permora::bench;
    Begin(argc, argv);
    if (argc < 3) return Measure();
    if (std::string(argv[2]) == kBareRole) return ShowBareWindow(argc, argv);
    WatchedApp app;
    return app.Run(argc, argv);
}
