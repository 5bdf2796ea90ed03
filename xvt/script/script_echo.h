/// What a scripted run shows on standard output while it goes on: the lines of windows that are followed, and what a
/// window that is watched shows: on a terminal in its last line, elsewhere a line from time to time.
#pragma once

#include <chrono>
#include <map>
#include <string>

#include "xvt/xvt.h"

namespace xvt::script {

class Echo {
 public:
  /// From here on, lines that come to this window are printed.
  void follow(const std::string& window);
  /// From here on, what the controls of this window show is printed while it is open.
  /// @param percent the control that says how much is done, for a bar; empty for none
  void watch(const std::string& window, const std::string& percent) {
    watched_ = window;
    percent_ = percent;
  }
  /// Prints what is new, not more often than some times a second. @param last at the run's end, however soon
  void update(bool last = false);
  /// Takes the terminal's last line away, for text that goes there.
  void clear();

 private:
  using Clock = std::chrono::steady_clock;

  void printLines(const std::string& window, T_LNUM* printed);
  void printWatched();

  std::map<std::string, T_LNUM> followed_;
  std::string watched_, percent_;
  WINDOW seen_ = NULL_WIN;  ///< the watched window as it was found last
  Clock::time_point updated_{};
  Clock::time_point toldAt_{};
  std::chrono::seconds pause_{};
  std::string shown_;  ///< what stands in the terminal's last line
};

}  // namespace xvt::script
