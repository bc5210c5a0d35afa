#include "platform/file_operation_pace.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace permora {
namespace {

// The cost of an item in addition to its contents, in bytes.
constexpr double kBytesOfAnItem = 128.0 * 1024;

// After so many seconds the weight of a speed has fallen to about a third.
constexpr double kMemory = 8;

constexpr double kEnoughSeconds = 2;

double WorkOf(ULONGLONG bytes, ULONGLONG items) {
    return static_cast<double>(bytes) + kBytesOfAnItem * static_cast<double>(items);
}

}  // namespace

void FileOperationPace::Add(Time now, const FileOperationProgress& progress) {
    const double before = done;
    done = WorkOf(progress.bytesDone, progress.itemsDone);
    total = WorkOf(progress.bytesTotal, progress.itemsTotal);
    isTotalKnown = progress.isTotalKnown;
    if (last && now > *last) {
        const double passed = std::chrono::duration<double>(now - *last).count();
        const double kept = std::exp(-passed / kMemory);
        speed = speed * kept + (1 - kept) * std::max(0.0, done - before) / passed;
        weight = weight * kept + (1 - kept);
        seconds += passed;
    }
    last = now;
}

std::optional<double> FileOperationPace::Fraction() const {
    if (!isTotalKnown || total <= 0) return std::nullopt;
    return std::clamp(done / total, 0.0, 1.0);
}

std::optional<std::chrono::seconds> FileOperationPace::TimeLeft() const {
    // A longer time is useless to the user.
    constexpr double kLongest = 100.0 * 24 * 3600;
    if (!isTotalKnown || seconds < kEnoughSeconds || speed <= 0) return std::nullopt;
    const double left = std::max(0.0, total - done) * weight / speed;
    if (left > kLongest) return std::nullopt;
    return std::chrono::seconds(static_cast<long long>(std::ceil(left)));
}

std::string ByteText(ULONGLONG bytes) {
    constexpr std::array kUnits = {"KB", "MB", "GB", "TB"};
    constexpr double kStep = 1024;
    constexpr double kRoundsUp = kStep - 0.05;  // would be written as "1024.0"
    if (bytes < 1024) return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    double amount = static_cast<double>(bytes) / kStep;
    std::size_t unit = 0;
    for (; amount >= kRoundsUp && unit + 1 < kUnits.size(); ++unit)
        amount /= kStep;
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.1f %s", amount, kUnits.at(unit));
    return text.data();
}

std::string TimeLeftText(std::optional<std::chrono::seconds> left) {
    constexpr long long kMinute = 60;
    constexpr long long kHour = 60 * kMinute;
    constexpr long long kStep = 5;
    if (!left) return "Being estimated";
    const long long seconds = left->count();
    const auto roundedUp = [seconds](long long unit) { return (seconds + unit - 1) / unit; };
    if (seconds <= kStep) return "A few seconds";
    if (seconds <= kMinute - kStep) return "About " + std::to_string(roundedUp(kStep) * kStep) + " seconds";
    if (seconds <= kMinute) return "About 1 minute";
    if (seconds <= 2 * kHour) return "About " + std::to_string(roundedUp(kMinute)) + " minutes";
    return "About " + std::to_string(roundedUp(kHour)) + " hours";
}

}  // namespace permora
