#include "deletion/deletion_progress.h"

#include <algorithm>
#include <chrono>
#include <limits>

#include "platform/grouped_number.h"

namespace permora {
namespace {

ULONGLONG Sum(ULONGLONG one, ULONGLONG other) {
    return other > std::numeric_limits<ULONGLONG>::max() - one ? std::numeric_limits<ULONGLONG>::max()
                                                               : one + other;
}

DeletionSize Sum(const DeletionSize& one, const DeletionSize& other) {
    return {Sum(one.bytes, other.bytes), Sum(one.objects, other.objects)};
}

}  // namespace

void DeletionProgress::Counting(const DeletionSize& soFar) {
    const std::lock_guard lock(guard);
    counted = Sum(ends.empty() ? DeletionSize() : ends.back(), soFar);
}

void DeletionProgress::AddItem(const std::optional<DeletionSize>& size) {
    const std::lock_guard lock(guard);
    isTotalKnown = isTotalKnown && size.has_value();
    ends.push_back(Sum(ends.empty() ? DeletionSize() : ends.back(), size.value_or(DeletionSize())));
    counted = ends.back();
}

void DeletionProgress::Start() {
    const std::lock_guard lock(guard);
    isCounting = false;
}

void DeletionProgress::Overwritten(ULONGLONG bytes) {
    const std::lock_guard lock(guard);
    progress.bytesDone = Sum(progress.bytesDone, bytes);
}

void DeletionProgress::Deleted() {
    const std::lock_guard lock(guard);
    progress.itemsDone = Sum(progress.itemsDone, 1);
}

void DeletionProgress::EndItem() {
    const std::lock_guard lock(guard);
    if (endedItems == ends.size()) return;
    const DeletionSize& end = ends[endedItems++];
    progress.bytesDone = std::max(progress.bytesDone, end.bytes);
    progress.itemsDone = std::max(progress.itemsDone, end.objects);
}

void DeletionProgress::Pause() {
    const std::lock_guard lock(guard);
    isPaused = true;
    pace.Pause();
}

void DeletionProgress::GoOn() {
    const std::lock_guard lock(guard);
    isPaused = false;
}

DeletionState DeletionProgress::Look(Time now) {
    const std::lock_guard lock(guard);
    if (isCounting) return {std::nullopt, "Counting: " + ObjectsText(counted.objects)};
    // What has grown since it was counted counts as it is found.
    progress.bytesTotal = std::max(counted.bytes, progress.bytesDone);
    progress.itemsTotal = std::max(counted.objects, progress.itemsDone);
    progress.isTotalKnown = isTotalKnown;
    if (!isPaused) pace.Add(now, progress);
    const std::optional<double> fraction = pace.Fraction();
    if (!fraction)
        return {std::nullopt, progress.bytesDone > 0 ? ByteText(progress.bytesDone) + " overwritten"
                                                     : ObjectsText(progress.itemsDone) + " deleted"};
    const auto percent = static_cast<int>(*fraction * 100);
    return {percent, std::to_string(percent) + " %" + TimeLeft(now)};
}

std::string DeletionProgress::TimeLeft(Time now) {
    constexpr std::chrono::seconds kCalm(2);
    if (timeLeftSince && now - *timeLeftSince < kCalm) return timeLeft;
    timeLeft.clear();
    if (const auto left = pace.TimeLeft()) {
        constexpr char kSmall = 'a' - 'A';
        timeLeft = TimeLeftText(left);
        timeLeft.front() = static_cast<char>(timeLeft.front() + kSmall);
        timeLeft = ", " + timeLeft + " left";
        timeLeftSince = now;
    }
    return timeLeft;
}

}  // namespace permora
