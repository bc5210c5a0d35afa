#include "wizard/deletion_status.h"

#include <utility>

#include "deletion/obstacle_texts.h"

namespace permora {
namespace {

// Whether the row of a failure begins with the name. A file's failure follows the row with its name; the row
// of a folder that cannot be removed is replaced.
bool IsNamed(Step step) {
    switch (step) {
        case Step::kAskVolume:
        case Step::kOpenFile:
        case Step::kGetSize:
        case Step::kWrite:
        case Step::kFlush:
        case Step::kDeleteFile:
            return false;
        default:
            return true;
    }
}

}  // namespace

void DeletionStatus::BeginDeleting(const std::string& name) {
    Append(name + ": deleting... ");
}

void DeletionStatus::Deleted(const std::string& name) {
    ++deletedCount;
    if (!stopRequested) Write(rowCount - 1, name + ": deleted successefully");
}

void DeletionStatus::Failed(const Outcome& failure) {
    if (stopRequested) return;
    const std::string text = (IsNamed(failure.step) ? failure.object + ": " : "") + LineText(failure);
    if (failure.step == Step::kRemoveFolder)
        Write(rowCount - 1, text);
    else
        Append(text);
}

bool DeletionStatus::MayOverwrite(const std::string& /*name*/,
                                  const std::vector<OverwriteObstacle>& obstacles) {
    if (stopRequested) return false;
    for (const OverwriteObstacle obstacle : obstacles)
        Append(std::string("not deleted: ") + ObstacleText(obstacle));
    return false;
}

void DeletionStatus::WriteTotal() {
    Append("");
    Append("Total deleted: " + std::to_string(deletedCount));
}

void DeletionStatus::Write(int row, const std::string& text) {
    bool isFirst = false;
    {
        const std::lock_guard lock(mutex);
        isFirst = changes.empty();
        changes.push_back({row, text});
    }
    if (isFirst) OnChanges();
}

std::vector<StatusChange> DeletionStatus::TakeChanges() {
    const std::lock_guard lock(mutex);
    return std::exchange(changes, {});
}

}  // namespace permora
