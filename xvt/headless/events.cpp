#include "xvt/headless/events.h"

#include <poll.h>

#include <algorithm>
#include <climits>
#include <utility>

#include "xvt/base/guard.h"

namespace xvt {

using std::chrono::milliseconds;

long PollEvents::alarm(long period, std::function<void()> work) {
  alarms_.emplace(Clock::now() + milliseconds(period), Alarm{++numbers_, std::move(work)});
  return numbers_;
}

void PollEvents::cancelAlarm(long alarm) {
  std::erase_if(
      alarms_, [alarm](const auto& entry) { return entry.second.number == alarm; });
}

void PollEvents::watch(int file, std::function<void()> work) {
  file_ = file;
  watcher_ = std::move(work);
}

int PollEvents::untilAlarm() const {
  if (alarms_.empty()) return -1;
  const auto left = std::chrono::ceil<milliseconds>(alarms_.begin()->first - Clock::now()).count();
  return static_cast<int>(std::clamp<std::int64_t>(left, 0, INT_MAX));
}

bool PollEvents::waitForFile(int longest) const {
  pollfd watched{file_, POLLIN, 0};
  return poll(&watched, 1, longest) > 0;
}

bool PollEvents::pending() { return untilAlarm() == 0 || waitForFile(0); }

void PollEvents::serveOne() {
  if (waitForFile(untilAlarm())) return guarded("signal", watcher_);
  if (untilAlarm() != 0) return;  // a signal ended the sleep
  const std::function<void()> work = std::move(alarms_.begin()->second.work);
  alarms_.erase(alarms_.begin());
  guarded("timer", work);
}

}  // namespace xvt
