// The windows of file operations, with jobs that only follow the test.
#include <gtest/gtest.h>

#include <QApplication>
#include <QTimer>
#include <functional>
#include <thread>

#include "framework/file_operation_ids.h"
#include "framework/file_operation_texts.h"
#include "framework/qt/file_operation_presenter.h"
#include "platform/api/errors.h"
#include "platform/file_operation_pace.h"
#include "tests/framework/test_frame_qt.h"
#include "tests/support/ui_driver.h"

namespace permora::test {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;

class Job final : public FileOperationJob {
  public:
    explicit Job(std::function<void(FileOperationHost&)> what) : work(std::move(what)) {}
    void Run(FileOperationHost& host) override { work(host); }

  private:
    std::function<void(FileOperationHost&)> work;
};

void Present(const std::function<void(FileOperationHost&)>& work, HWND owner = nullptr) {
    Job job(work);
    qt::FileOperationWindows().Present(owner, "File Operation Progress", job);
}

FileOperationProgress HalfDone() {
    FileOperationProgress progress;
    progress.name = "a&b.txt";
    progress.fromFolder = R"(C:\from)";
    progress.toFolder = R"(D:\to)";
    progress.bytesDone = 512;
    progress.bytesTotal = 3 << 20;
    progress.itemsDone = 1;
    progress.itemsTotal = 2;
    progress.isTotalKnown = true;
    return progress;
}

// Until it is cancelled.
void Work(FileOperationHost& host) {
    while (host.Report(HalfDone()))
        std::this_thread::sleep_for(5ms);
}

TEST(FileOperationWindow, ShowsTheProgressAndCancels) {
    UiDriver ui;
    const std::function<void(WindowDriver&)> cancellings[] = {
        [](WindowDriver& window) {
            EXPECT_TRUE(
                window.WaitUntil([&] { return window.Text(kProgressTaskId) == "Copying \"a&b.txt\""; }));
            EXPECT_EQ(window.Title(), "File Operation Progress");
            EXPECT_EQ(window.Text(kProgressFromId), R"(C:\from)");
            EXPECT_EQ(window.Text(kProgressToId), R"(D:\to)");
            for (const QWidget* label : QApplication::allWidgets())
                if (label->objectName() == QStringLiteral("control %1").arg(int{kProgressToId}))
                    EXPECT_EQ(label->accessibleName(), R"(To: D:\to)");
            EXPECT_EQ(window.Text(kProgressAmountId), "512 bytes of 3.0 MB, 1 of 2 items");
            window.Click(IDCANCEL);
        },
        [](WindowDriver& window) { window.Press("Esc"); },
        [](WindowDriver& window) { window.ClickCloseBox(); },
    };
    for (const auto& cancel : cancellings) {
        ui.ExpectDialog(kProgressWindowId, cancel);
        Present(Work);
    }
}

TEST(FileOperationWindow, EndsWithTheProgram) {
    UiDriver ui;
    QtTestFrame frame;
    ASSERT_TRUE(frame.Show());
    ui.ExpectDialog(kProgressWindowId, [&frame](WindowDriver&) {
        frame.RunCommand(ID_PERMISSIONS);  // whoever posts a command to its owner
        QApplication::exit();
    });
    bool hasEnded = false;
    FileOperationAnswer last = FileOperationAnswer::kYes;
    QTimer::singleShot(0, [&] {
        const auto work = [&](FileOperationHost& host) {
            Work(host);
            last = host.Ask({});
            hasEnded = true;
        };
        Present(work, frame.view.GetSafeHwnd());
        EXPECT_TRUE(hasEnded);
    });
    QApplication::exec();
    EXPECT_TRUE(hasEnded);
    EXPECT_EQ(last, FileOperationAnswer::kCancel);
    EXPECT_TRUE(frame.log.empty());
    EXPECT_TRUE(frame.IsWindowEnabled());
}

TEST(FileOperationQuestions, OfferTheirAnswersAndLeaveTheSafeOneToEnter) {
    using Answer = FileOperationAnswer;
    using Kind = FileOperationQuestionKind;
    struct Case {
        Kind kind;
        const char* text;
        Answer first;        // of the button on the left
        Answer firstForAll;  // with the box ticked; as `first` where there is none
    };
    const Case kCases[] = {
        {Kind::kTrash, "\"a.txt\" to the trash?", Answer::kYes, Answer::kYes},
        {Kind::kDeleteForGood, "for good?", Answer::kYes, Answer::kYesToAll},
        {Kind::kReplaceFile, "a file \"b.txt\" already", Answer::kYes, Answer::kYesToAll},
        {Kind::kMergeFolders, "a folder \"b.txt\" already", Answer::kYes, Answer::kYesToAll},
        {Kind::kProtectedItem, "read-only", Answer::kYes, Answer::kYesToAll},
        {Kind::kPropertyLoss, "cannot hold", Answer::kYes, Answer::kYesToAll},
        {Kind::kFailure, "\"a.txt\" could not be copied.", Answer::kRetry, Answer::kRetry},
        {Kind::kFolderIntoItself, "into itself", Answer::kNo, Answer::kNo},
    };
    UiDriver ui;
    for (const Case& each : kCases) {
        FileOperationQuestion question;
        question.kind = each.kind;
        question.source.path = R"(C:\from\a.txt)";
        question.source.size = 1536;
        question.target.path = R"(C:\to\b.txt)";
        question.error = ERROR_ACCESS_DENIED;
        question.itemCount = 1;
        const auto ask = [&](const UiDriver::Script& script) {
            ui.ExpectDialog(kFileQuestionWindowId, script);
            Answer answer = Answer::kNo;
            Present([&](FileOperationHost& host) { answer = host.Ask(question); });
            return answer;
        };
        const unsigned int first = static_cast<unsigned int>(each.first == Answer::kNo ? IDNO : IDYES);
        const bool hasBox = each.kind != Kind::kTrash && each.kind != Kind::kFolderIntoItself;
        EXPECT_EQ(ask([&](WindowDriver& window) {
                      EXPECT_THAT(window.Text(kFileQuestionTextId), HasSubstr(each.text));
                      EXPECT_EQ(window.Has(kFileQuestionForAllId), hasBox) << each.text;
                      if (each.kind == Kind::kFailure)
                          EXPECT_THAT(window.Text(kFileQuestionMoreId), HasSubstr("ermission denied"));
                      if (each.kind == Kind::kReplaceFile)
                          EXPECT_EQ(window.Text(kFileQuestionSourceId), "1.5 KB");
                      window.Click(first);
                  }),
                  each.first)
            << each.text;
        EXPECT_EQ(ask([](WindowDriver& window) { window.Press("Return"); }), Answer::kCancel) << each.text;
        EXPECT_EQ(ask([](WindowDriver& window) { window.Press("Esc"); }), Answer::kCancel) << each.text;
        // The letters do without Alt, as in message boxes.
        EXPECT_EQ(ask([first](WindowDriver& window) {
                      const std::string text = window.Text(first);
                      window.Press(text.substr(text.find('&') + 1, 1));
                  }),
                  each.first)
            << each.text;
        if (!hasBox) continue;
        EXPECT_EQ(ask([](WindowDriver& window) {
                      window.Press("A");
                      EXPECT_TRUE(window.IsChecked(kFileQuestionForAllId));
                      window.Press("S");
                  }),
                  Answer::kNoToAll)
            << each.text;
        const auto forAll = [&](unsigned int button) {
            return ask([button](WindowDriver& window) {
                window.Click(kFileQuestionForAllId);
                window.Click(button);
            });
        };
        EXPECT_EQ(forAll(IDYES), each.firstForAll) << each.text;
        EXPECT_EQ(forAll(IDNO), Answer::kNoToAll) << each.text;
    }
}

// `seconds` of work at so many megabytes a second, of `total` megabytes in all.
class Copying {
  public:
    explicit Copying(ULONGLONG totalMegabytes) {
        progress.isTotalKnown = true;
        progress.bytesTotal = totalMegabytes << 20;
        pace.Add(now, progress);
    }
    void Go(int seconds, ULONGLONG megabytes) {
        for (int i = 0; i < 10 * seconds; ++i) {
            now += 100ms;
            progress.bytesDone += (megabytes << 20) / 10;
            pace.Add(now, progress);
        }
    }
    void Wait(std::chrono::seconds time) {
        pace.Pause();
        now += time;
        pace.Add(now, progress);
    }
    long long Left() const { return pace.TimeLeft().value_or(-1s).count(); }

    FileOperationProgress progress;
    FileOperationPace pace;

  private:
    FileOperationPace::Time now;
};

TEST(FileOperationPace, EstimatesSteadily) {
    Copying copying(10'000);
    copying.Go(1, 100);
    EXPECT_EQ(copying.Left(), -1);  // too early to tell
    copying.Go(9, 100);
    EXPECT_NEAR(static_cast<double>(copying.Left()), 90, 1);
    EXPECT_NEAR(copying.pace.Fraction().value_or(0), 0.1, 0.001);
    copying.Wait(1h);
    EXPECT_NEAR(static_cast<double>(copying.Left()), 90, 1);
    copying.Go(1, 10);  // one slow second
    EXPECT_NEAR(static_cast<double>(copying.Left()), 100, 8);
    copying.Go(60, 10);  // it stays slow
    EXPECT_NEAR(static_cast<double>(copying.Left()), 829, 10);
    copying.progress.isTotalKnown = false;
    copying.Go(1, 10);
    EXPECT_EQ(copying.Left(), -1);
    EXPECT_FALSE(copying.pace.Fraction());
}

TEST(FileOperationTexts, AreRounded) {
    const std::pair<int, const char*> kCases[] = {
        {0, "A few seconds"},    {6, "About 10 seconds"},     {56, "About 1 minute"},
        {61, "About 2 minutes"}, {7200, "About 120 minutes"}, {7201, "About 3 hours"},
    };
    for (const auto& [seconds, text] : kCases)
        EXPECT_EQ(TimeLeftText(std::chrono::seconds(seconds)), text);
    EXPECT_EQ(ByteText((1 << 20) - 60), "1023.9 KB");
    EXPECT_EQ(ByteText((1 << 20) - 1), "1.0 MB");
}

}  // namespace
}  // namespace permora::test
