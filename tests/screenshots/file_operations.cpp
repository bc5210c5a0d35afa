// Pictures of what file operations show: their window and each of their questions.
#include "tests/screenshots/file_operations.h"

#include <QApplication>

#include "framework/native.h"
#include "framework/qt/file_operation_question.h"
#include "framework/qt/file_operation_window.h"
#include "platform/api/errors.h"

namespace permora {
namespace {

FILETIME SomeTime(DWORD day) {
    constexpr DWORD kHalfWeeks = 0x0002;
    return {day, 0x01DA0000 + day * kHalfWeeks};
}

FileOperationQuestion SampleQuestion(FileOperationQuestionKind kind) {
    FileOperationQuestion question;
    question.kind = kind;
    const bool isFolder = kind == FileOperationQuestionKind::kMergeFolders;
    question.source = {R"(C:\Users\anna\Documents\Minutes & reports\March.odt)", isFolder, 48'230,
                       SomeTime(9)};
    question.target = {R"(D:\Archive\2026\Reports of all departments and their branches\March.odt)", isFolder,
                       51'002'310, SomeTime(3)};
    question.error = kind == FileOperationQuestionKind::kPropertyLoss ? ERROR_NOT_SUPPORTED : ERROR_DISK_FULL;
    question.itemCount = 1;
    return question;
}

void TakeWindow(const Series& series) {
    qt::FileOperationWindow window(nullptr, "File Operation Progress", [] {});
    FileOperationPace pace;
    FileOperationProgress progress;
    progress.name = "A very long name of a recording with everything in it that one would say of it.mkv";
    progress.fromFolder = R"(C:\Users\anna\Documents\Minutes & reports)";
    progress.toFolder = R"(D:\Archive\2026\Reports of all departments and their branches\Recordings)";
    progress.itemsTotal = 340;
    progress.bytesTotal = 5'000'000'000;
    progress.isTotalKnown = true;
    FileOperationPace::Time now;
    for (int i = 0; i < 100; ++i) {
        now += std::chrono::milliseconds(100);
        progress.bytesDone += 20'000'000;
        ++progress.itemsDone;
        pace.Add(now, progress);
    }
    window.Display(progress, pace);
    PostLater(kMillisecondsToShow, [&] {
        Save(window, "file-operation", series);
        window.done(0);
    });
    window.exec();
}

}  // namespace

void TakeFileOperationPictures(const Series& series) {
    TakeWindow(series);
    using Kind = FileOperationQuestionKind;
    const std::pair<const char*, Kind> kQuestions[] = {
        {"trash", Kind::kTrash},
        {"delete", Kind::kDeleteForGood},
        {"replace", Kind::kReplaceFile},
        {"merge", Kind::kMergeFolders},
        {"protected", Kind::kProtectedItem},
        {"loss", Kind::kPropertyLoss},
        {"failure", Kind::kFailure},
        {"into-itself", Kind::kFolderIntoItself},
    };
    for (const auto& [name, kind] : kQuestions) {
        PostLater(kMillisecondsToShow, [&series, name = name] {
            QWidget* window = QApplication::activeModalWidget();
            Save(*window, std::string("file-question-") + name, series);
            window->close();
        });
        qt::AskInWindow(nullptr, "File Operation Progress", SampleQuestion(kind));
    }
}

}  // namespace permora
