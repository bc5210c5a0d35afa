// Times, medians and memory peaks for the benchmarks, and the rows of the table that they print.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace permora::bench {

// What the program was called with: "--quick" measures small samples a few times.
void Begin(int argc, char** argv);
// The number of runs, which is odd, and of objects: as given, or when it must be quick at most three and a
// tenth.
int Runs(int usual);
std::size_t Scaled(std::size_t usual);

// Seconds that one call takes.
double SecondsFor(const std::function<void()>& work);

// Of an odd number of values the middle one.
double Median(std::vector<double> values);

// By how many KiB the process's resident memory peaks during the call above what it held before.
std::size_t PeakKibibytesOf(const std::function<void()>& work);

// A row of the one table that compare.sh makes of what all benchmarks print:
// "| what | where | ours | peer | ratio | goal | met |". The names must have no "|" in them.
struct Subject {
    std::string what;
    std::string where;
    std::string peer;  // what ours is compared with; empty for none
};

// The medians of seconds that both took in runs by turns; `goal` is the ratio that ours may reach.
void PrintRatio(const Subject& subject, const std::vector<double>& ours, const std::vector<double>& peers,
                double goal);
// Any two figures, with the digits to show behind the point and what stands behind the number ("", " ms").
struct Unit {
    int digits;
    const char* name;
};
void PrintRatio(const Subject& subject, double ours, double peer, double goal, Unit unit);
// A figure of ours that has a goal of its own, whatever the peer has.
void PrintLimited(const Subject& subject, double ours, double goal, Unit unit,
                  std::optional<double> peer = std::nullopt);

// A condition without which the figures mean nothing. Says so on standard error when it does not hold; the
// benchmark goes on, so that its folders and volumes are removed, and ends with ExitCode(). Returns whether
// it holds.
bool Check(bool holds, const std::string& failure);

// 0 when every Check held, else 1.
int ExitCode();

}  // namespace permora::bench
