// What the benchmarks measure with.
#pragma once

#include <chrono>
#include <ctime>
#include <fstream>
#include <functional>
#include <string>

namespace vorlent {

constexpr double kMegabyte = 1024.0 * 1024.0;

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

// The most memory that the process has had so far.
inline double PeakMegabytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) / 1024;
  }
  return 0;
}

}  // namespace vorlent
