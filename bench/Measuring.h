// What the benchmarks measure with.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Rules.h"
#include "Support/ScopedRules.h"

namespace vorlent {

constexpr double kMegabyte = 1024.0 * 1024.0;

// A bound for the run that the numbers of docs/performance.md come from, and one for the quick run: that has
// little input and may share its machine with much else, so it sees no less than a fall to about half.
struct Bound {
  double whole;
  double quick;

  double For(bool isQuick) const { return isQuick ? quick : whole; }
};

// What work by today's rules may take of the time by those of Windows, when both run in turn.
constexpr Bound kTodaysTime = {1.1, 1.3};

// Whether the only argument is --quick. Ends the program if there are others.
inline bool IsQuick(int argc, char** argv) {
  if (argc == 1) return false;
  if (argc == 2 && std::string(argv[1]) == "--quick") return true;
  std::fprintf(stderr, "usage: %s [--quick]\n", argv[0]);
  std::exit(2);
}

// Seconds that a piece of work took. Processor time holds the system's calls too, and what other programs do
// meanwhile doesn't count.
struct Time {
  double processor = 0;
  double wall = 0;
};

inline Time Timed(const std::function<void()>& work) {
  const auto wall = std::chrono::steady_clock::now();
  const std::clock_t processor = std::clock();
  work();
  return {static_cast<double>(std::clock() - processor) / CLOCKS_PER_SEC,
          std::chrono::duration<double>(std::chrono::steady_clock::now() - wall).count()};
}

// The work as it is done by today's rules.
inline std::function<void()> ByTodaysRules(std::function<void()> work) {
  return [work = std::move(work)] {
    const ScopedRules today(Rules::Today());
    work();
  };
}

inline double MedianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// How fast a piece of work is, measured by a floor that ran just before it in each round. A machine that is
// shared with others changes its speed within seconds: what a round's two have in common goes out by the
// division, and a round that a change fell into by the median.
inline double RatioOf(const std::vector<double>& floorTimes, const std::vector<double>& times) {
  std::vector<double> ratios;
  for (std::size_t round = 0; round < times.size(); ++round)
    ratios.push_back(floorTimes[round] / times[round]);
  return MedianOf(std::move(ratios));
}

// Tells what a piece of work takes by today's rules; whether that is few enough.
inline bool PrintTodays(const char* work, double todaysTime, double bound) {
  const bool kept = todaysTime <= bound;
  std::printf("  %s: %.2f times as long by today's rules, at most %.2f allowed: %s\n", work, todaysTime,
              bound, kept ? "ok" : "MISSED");
  return kept;
}

// The most memory that the process has had so far.
inline double PeakMegabytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) / 1024;
  }
  return 0;
}

}  // namespace vorlent
