/// Where a runtime's events come from: the toolkit's own queue under Motif, a list of alarms without a screen.
#pragma once

#include <chrono>
#include <functional>

namespace xvt {

class EventSource {
 public:
  EventSource() = default;
  EventSource(const EventSource&) = delete;
  EventSource& operator=(const EventSource&) = delete;
  virtual ~EventSource() = default;

  using Clock = std::chrono::steady_clock;

  /// The time that alarms count in.
  virtual Clock::time_point now() const { return Clock::now(); }
  /// Whether an event could be served without waiting.
  virtual bool pending() = 0;
  /// Waits for an event and serves it.
  virtual void serveOne() = 0;
  /// Calls `work` once, in so many milliseconds. @return its number, never 0
  virtual long alarm(long milliseconds, std::function<void()> work) = 0;
  /// Takes an alarm away; one that is not there any more is none.
  virtual void cancelAlarm(long alarm) = 0;
  /// Calls `work` whenever something can be read from a file, until unwatch().
  virtual void watch(int file, std::function<void()> work) = 0;
  virtual void unwatch() = 0;
};

}  // namespace xvt
