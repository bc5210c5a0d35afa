#include "platform/linux/shell/operation_talk.h"

#include "platform/api/errors.h"

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

OperationTalk::OperationTalk(FileOperationHost& user, FileOperationKind operation) : host(user) {
    progress.kind = operation;
}

bool OperationTalk::GoesOn() {
    const steady_clock::time_point now = steady_clock::now();
    if (isCancelled || now < nextReport) return !isCancelled;
    if (!host.Report(progress)) isCancelled = isIncomplete = true;
    nextReport = now + kPace;
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

bool OperationTalk::Agrees(FileOperationQuestion question) {
    const bool agrees = IsYes(Ask(std::move(question)));
    if (!agrees) isIncomplete = true;
    return agrees;
}

OperationTalk::AfterFailure OperationTalk::Fails(FileOperationObject source, DWORD error) {
    FileOperationQuestion question;
    question.source = std::move(source);
    question.error = error;
    if (Ask(std::move(question)) == FileOperationAnswer::kRetry) return AfterFailure::kRetry;
    isIncomplete = true;
    if (firstError == ERROR_SUCCESS) firstError = error;
    return AfterFailure::kPassOver;
}

void OperationTalk::FailsForGood(FileOperationQuestion question, DWORD error) {
    Ask(std::move(question));
    isIncomplete = true;
    if (firstError == ERROR_SUCCESS) firstError = error;
}

}  // namespace permora::host
