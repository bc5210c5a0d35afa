#include "bench/measure.h"

#include <malloc.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

namespace permora::bench {

namespace {

// A field of /proc/self/status in KiB.
std::size_t StatusField(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::size_t value = 0;
        if (word == field && status >> value) return value;
    }
    return 0;
}

bool isEveryCheckFine = true;
bool isQuick = false;

// A number as text, with the given digits after the point.
std::string Number(double value, int digits) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f", digits, value);
    return text.data();
}

std::string Figure(double value, Unit unit) {
    return Number(value, unit.digits) + unit.name;
}

// The goal as short as it was given: 1.3, not 1.30.
std::string ShortNumber(double value) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%g", value);
    return text.data();
}

std::string PeerText(const Subject& subject, std::optional<double> peer, Unit unit) {
    return peer ? Figure(*peer, unit) + ", " + subject.peer : subject.peer;
}

std::string RatioText(double ours, std::optional<double> peer) {
    if (!peer) return {};
    const double ratio = ours / *peer;
    return Number(ratio, ratio < 0.1 ? 3 : 2);
}

void PrintRow(const Subject& subject, double ours, std::optional<double> peer, Unit unit,
              const std::string& goal, bool isMet) {
    std::printf("| %s | %s | %s | %s | %s | at most %s | %s |\n", subject.what.c_str(), subject.where.c_str(),
                Figure(ours, unit).c_str(), PeerText(subject, peer, unit).c_str(),
                RatioText(ours, peer).c_str(), goal.c_str(), isMet ? "yes" : "no");
    std::fflush(stdout);
}

}  // namespace

void Begin(int argc, char** argv) {
    isQuick = std::any_of(argv + 1, argv + argc,
                          [](const char* argument) { return std::string_view(argument) == "--quick"; });
}

int Runs(int usual) {
    constexpr int kQuickRuns = 3;
    return isQuick ? std::min(usual, kQuickRuns) : usual;
}

std::size_t Scaled(std::size_t usual) {
    constexpr std::size_t kQuickPart = 10;
    return isQuick ? usual / kQuickPart : usual;
}

double SecondsFor(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

std::size_t PeakKibibytesOf(const std::function<void()>& work) {
    // Otherwise memory that earlier work returned to the heap would be reused without being counted.
    malloc_trim(0);
    // "5" resets the peak to what is resident now: proc(5), /proc/pid/clear_refs.
    std::ofstream("/proc/self/clear_refs") << "5";
    const std::size_t before = StatusField("VmRSS:");
    work();
    const std::size_t peak = StatusField("VmHWM:");
    return peak > before ? peak - before : 0;
}

void PrintRatio(const Subject& subject, const std::vector<double>& ours, const std::vector<double>& peers,
                double goal) {
    PrintRatio(subject, Median(ours), Median(peers), goal, {3, " s"});
}

void PrintRatio(const Subject& subject, double ours, double peer, double goal, Unit unit) {
    PrintRow(subject, ours, peer, unit, ShortNumber(goal), ours <= goal * peer);
}

void PrintLimited(const Subject& subject, double ours, double goal, Unit unit, std::optional<double> peer) {
    PrintRow(subject, ours, peer, unit, ShortNumber(goal) + unit.name, ours <= goal);
}

bool Check(bool holds, const std::string& failure) {
    if (holds) return true;
    std::fprintf(stderr, "benchmark: %s\n", failure.c_str());
    isEveryCheckFine = false;
    return false;
}

int ExitCode() {
    return isEveryCheckFine ? 0 : 1;
}

}  // namespace permora::bench
