#include "platform/linux/shell/operation_talk.h"

#include <algorithm>

#include "platform/api/errors.h"
#include "platform/linux/base/time.h"

namespace permora::host {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPace{50};

bool IsForAll(FileOperationAnswer answer) {
    return answer == FileOperationAnswer::kYesToAll || answer == FileOperationAnswer::kNoToAll;
}

bool IsYes(FileOperationAnswer answer) {
    return answer == FileOperationAnswer::kYes || answer == FileOperationAnswer::kYesToAll;
}

}  // namespace

FileOperationObject DescribeObject(std::string path, const ObjectHandle& object) {
    FileOperationObject described;
    described.path = std::move(path);
    described.isFolder = object.IsFolder();
    const struct stat& status = object.Status();
    if (S_ISREG(status.st_mode)) described.size = static_cast<ULONGLONG>(status.st_size);
    described.lastWrite = FileTimeOf(status.st_mtim);
    return described;
}

OperationTalk::OperationTalk(FileOperationHost& user, FileOperationKind operation) : host(user) {
    progress.kind = operation;
}

bool OperationTalk::GoesOn() {
    const steady_clock::time_point now = steady_clock::now();
    if (isCancelled || now < nextReport) return !isCancelled;
    progress.itemsTotal = std::max<ULONGLONG>(totals.Items(), progress.itemsDone);
    progress.bytesTotal = std::max<ULONGLONG>(totals.Bytes(), progress.bytesDone);
    progress.isTotalKnown = totals.AreKnown();
    if (!host.Report(progress)) isCancelled = true;
    // Measured from the end of the report, so that a slow answer does not use up the time of the work.
    nextReport = steady_clock::now() + kPace;
    return !isCancelled;
}

FileOperationAnswer OperationTalk::Ask(FileOperationQuestion question) {
    if (isCancelled) return FileOperationAnswer::kCancel;
    const auto key = std::pair(question.kind, question.error);
    if (const auto known = answersForAll.find(key); known != answersForAll.end())
        return known->second ? FileOperationAnswer::kYes : FileOperationAnswer::kNo;
    question.operation = progress.kind;
    const FileOperationAnswer answer = host.Ask(question);
    if (IsForAll(answer)) answersForAll.emplace(key, IsYes(answer));
    if (answer == FileOperationAnswer::kCancel) isCancelled = true;
    return answer;
}

void OperationTalk::PassOver(DWORD error) {
    ++passedOver;
    if (firstError == ERROR_SUCCESS) firstError = error;
}

bool OperationTalk::Agrees(FileOperationQuestion question) {
    const bool agrees = IsYes(Ask(std::move(question)));
    if (!agrees) PassOver(ERROR_SUCCESS);
    return agrees;
}

bool OperationTalk::Agrees(FileOperationQuestionKind kind, FileOperationObject source,
                           FileOperationObject target) {
    return Agrees({.kind = kind, .source = std::move(source), .target = std::move(target)});
}

OperationTalk::AfterFailure OperationTalk::Fails(FileOperationObject source, DWORD error) {
    if (Ask({.source = std::move(source), .error = error}) == FileOperationAnswer::kRetry)
        return AfterFailure::kRetry;
    PassOver(error);
    return AfterFailure::kPassOver;
}

void OperationTalk::FailsForGood(FileOperationObject source, DWORD error) {
    Ask({.source = std::move(source), .error = error, .mayRetry = false});
    PassOver(error);
}

void OperationTalk::ComesIntoItself(FileOperationObject source, FileOperationObject target) {
    Ask({.kind = FileOperationQuestionKind::kFolderIntoItself,
         .source = std::move(source),
         .target = std::move(target)});
    PassOver(ERROR_INVALID_PARAMETER);
}

}  // namespace permora::host
