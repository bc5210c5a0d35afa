// Times, medians and memory peaks for the benchmarks, and the rows of the table that they print.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace permora::bench {

// Reads the program's arguments: "--quick" measures small samples a few times.
void Begin(int argc, char** argv);
// The number of runs, which is odd, and of objects: as given; with "--quick" at most three runs and a tenth
// of the objects.
int Runs(int usual);
std::size_t Scaled(std::size_t usual);

// The seconds that one call takes.
double SecondsFor(const std::function<void()>& work);

// The middle one of an odd number of values.
double Median(std::vector<double> values);

// The peak of the process's resident memory during the call less what it held before, in KiB.
std::size_t PeakKibibytesOf(const std::function<void()>& work);

// A row of the one table into which compare.sh joins the output of all benchmarks:
// "| what | where | ours | peer | ratio | goal | met |". The names must have no "|" in them.
struct Subject {
    std::string what;
    std::string where;
    std::string peer;  // what ours is compared with; empty for none
};

// Prints the medians of the seconds that both sides took by turns; `goal` is the largest good ratio.
void PrintRatio(const Subject& subject, const std::vector<double>& ours, const std::vector<double>& peers,
                double goal);
// Any two figures, with the number of digits after the point and the unit ("", " ms").
struct Unit {
    int digits;
    const char* name;
};
void PrintRatio(const Subject& subject, double ours, double peer, double goal, Unit unit);
// A figure of ours with a goal of its own, whatever the peer's figure.
void PrintLimited(const Subject& subject, double ours, double goal, Unit unit,
                  std::optional<double> peer = std::nullopt);

// A condition without which the figures mean nothing. Reports `failure` on standard error if it does not
// hold. The benchmark goes on, so that its folders and volumes are removed, and ends with ExitCode(). Returns
// `holds`.
bool Check(bool holds, const std::string& failure);

// 0 when every Check held, else 1.
int ExitCode();

}  // namespace permora::bench
