/// Alarms and one watched file: where nothing is due the process sleeps.
#pragma once

#include <chrono>
#include <functional>
#include <map>

#include "xvt/desk/events.h"

namespace xvt {

class PollEvents final : public EventSource {
 public:
  bool pending() override;
  void serveOne() override;
  long alarm(long milliseconds, std::function<void()> work) override;
  void cancelAlarm(long alarm) override;
  void watch(int file, std::function<void()> work) override;
  void unwatch() override { file_ = -1; }

 private:
  struct Alarm {
    long number;
    std::function<void()> work;
  };
  /// Waits for the watched file; true when it can be read. @param milliseconds -1 for as long as it takes
  bool waitForFile(int milliseconds) const;
  /// Milliseconds to the next alarm, rounded up; -1 when there is none.
  int untilAlarm() const;

  std::multimap<Clock::time_point, Alarm> alarms_;
  long numbers_ = 0;
  int file_ = -1;
  std::function<void()> watcher_;
};

}  // namespace xvt
