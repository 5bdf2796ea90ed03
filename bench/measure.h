/// Medians of repeated runs, ours and the peer's taking turns so that both meet the same machine.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace bench {

inline double secondsOf(const std::function<void()>& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

inline double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

/// A shell command as peer; a failing one ends the benchmark.
inline std::function<void()> shell(const std::string& command) {
  return [command] {
    if (std::system(command.c_str()) != 0) {
      std::fprintf(stderr, "bench: failed: %s\n", command.c_str());
      std::exit(1);
    }
  };
}

/// Prints "NAME: ours S (MB/s), peer S (MB/s), ratio R (goal G)". @return the ratio
inline double compare(const char* name, double bytes, const std::function<void()>& ours, const char* peerName,
                      const std::function<void()>& peer, double goal, int runs = 5) {
  ours();
  peer();
  std::vector<double> mine;
  std::vector<double> theirs;
  for (int run = 0; run < runs; ++run) {
    mine.push_back(secondsOf(ours));
    theirs.push_back(secondsOf(peer));
  }
  const double ratio = median(mine) / median(theirs);
  std::printf("%-44s %7.3f s %7.0f MB/s   %-4s %7.3f s %7.0f MB/s   ratio %.2f (goal %.2f)\n", name, median(mine),
              bytes / median(mine) / 1e6, peerName, median(theirs), bytes / median(theirs) / 1e6, ratio, goal);
  return ratio;
}

}  // namespace bench
