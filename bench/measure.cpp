#include "bench/measure.h"

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>

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

}  // namespace

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
    // What earlier work gave back to the heap would be used again unseen.
    malloc_trim(0);
    // "5" resets the peak to what is resident now: proc(5), /proc/pid/clear_refs.
    std::ofstream("/proc/self/clear_refs") << "5";
    const std::size_t before = StatusField("VmRSS:");
    work();
    const std::size_t peak = StatusField("VmHWM:");
    return peak > before ? peak - before : 0;
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
