// Times, medians and memory peaks for the benchmarks.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace permora::bench {

// Seconds that one call takes.
double SecondsFor(const std::function<void()>& work);

// Of an odd number of values the middle one.
double Median(std::vector<double> values);

// By how many KiB the process's resident memory peaks during the call above what it held before.
std::size_t PeakKibibytesOf(const std::function<void()>& work);

// A condition without which the figures mean nothing. Says so on standard error when it does not hold; the
// benchmark goes on, so that its folders and volumes are removed, and ends with ExitCode(). Returns whether
// it holds.
bool Check(bool holds, const std::string& failure);

// 0 when every Check held, else 1.
int ExitCode();

}  // namespace permora::bench
