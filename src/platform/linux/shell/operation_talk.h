// What a running file operation and its user say to each other.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <utility>

#include "platform/file_operation_presenter.h"

namespace permora::host {

// Passes on progress at a pace that costs nothing, remembers answers that hold for all, and keeps how the
// operation went. One thread at a time.
class OperationTalk {
  public:
    OperationTalk(FileOperationHost& user, FileOperationKind operation);

    // What the next report tells; counters are kept up by those who do the work.
    FileOperationProgress progress;

    // Tells the user how far the operation is, unless that was told just now. False once it is cancelled.
    bool GoesOn();
    bool IsCancelled() const { return isCancelled; }

    // Yes or no; a cancelled operation says no.
    bool Agrees(FileOperationQuestion question);

    enum class AfterFailure { kRetry, kPassOver };
    // Tells a failure. What is passed over counts as not done.
    AfterFailure Fails(FileOperationObject source, DWORD error);
    // A failure that no second attempt can mend.
    void FailsForGood(FileOperationQuestion question, DWORD error);

    // The first failure that was passed over, or 0.
    DWORD FirstError() const { return firstError; }
    // Whether the user cancelled or said no to anything.
    bool IsIncomplete() const { return isIncomplete; }

  private:
    FileOperationAnswer Ask(FileOperationQuestion question);

    FileOperationHost& host;
    std::map<std::pair<FileOperationQuestionKind, DWORD>, bool>
        answersForAll;  // by kind and error: yes or no
    std::chrono::steady_clock::time_point nextReport;
    DWORD firstError = 0;
    bool isCancelled = false;
    bool isIncomplete = false;
};

}  // namespace permora::host
