// What a running file operation and its user say to each other.
#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <utility>

#include "platform/file_operation_presenter.h"
#include "platform/linux/files/object_handle.h"
#include "platform/linux/shell/operation_totals.h"

namespace permora::host {

// An item as questions show it.
FileOperationObject DescribeObject(std::string path, const ObjectHandle& object);

// Reports progress at a pace that costs nothing, remembers answers that hold for all, and counts what was
// passed over. One thread at a time.
class OperationTalk {
  public:
    OperationTalk(FileOperationHost& user, FileOperationKind operation);

    // For the next report, without the totals; kept up to date by those who do the work.
    FileOperationProgress progress;
    OperationTotals totals;

    // Reports the progress, unless the last report was just now. False once the operation is cancelled.
    bool GoesOn();
    bool IsCancelled() const { return isCancelled; }

    // Yes or no. No counts as passed over; a cancelled operation says no.
    bool Agrees(FileOperationQuestion question);
    // The same about an item, and what stands in its way.
    bool Agrees(FileOperationQuestionKind kind, FileOperationObject source, FileOperationObject target = {});

    enum class AfterFailure { kRetry, kPassOver };
    // Reports a failure and asks whether to try again.
    AfterFailure Fails(FileOperationObject source, DWORD error);
    // Reports a failure that cannot be tried again; the item is passed over.
    void FailsForGood(FileOperationObject source, DWORD error);
    // Reports that a folder would come into itself; the folder is passed over.
    void ComesIntoItself(FileOperationObject source, FileOperationObject target);

    // How much was passed over until now, for whatever reason.
    std::size_t PassedOver() const { return passedOver; }
    // The first failure that was passed over, or 0.
    DWORD FirstError() const { return firstError; }

    void Cancel() { isCancelled = true; }

  private:
    FileOperationAnswer Ask(FileOperationQuestion question);
    void PassOver(DWORD error);

    FileOperationHost& host;
    std::map<std::pair<FileOperationQuestionKind, DWORD>, bool>
        answersForAll;  // by kind and error: yes or no
    std::chrono::steady_clock::time_point nextReport;
    std::size_t passedOver = 0;
    DWORD firstError = 0;
    bool isCancelled = false;
};

}  // namespace permora::host
