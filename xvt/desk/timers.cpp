#include "xvt/desk/timers.h"

#include <algorithm>
#include <chrono>
#include <map>

#include "xvt/desk/desk.h"
#include "xvt/desk/window.h"

namespace xvt {

namespace {

using Clock = EventSource::Clock;
using std::chrono::milliseconds;

/// Fires again and again, counted from when it should have fired, so that it does not drift.
class Timer {
 public:
  Timer(long number, const std::shared_ptr<BaseWindow>& window, long period)
      : number_(number), window_(window), period_(period), next_(desk().events().now() + period_) {
    wait();
  }
  ~Timer() {
    if (deskIfRunning() != nullptr) desk().events().cancelAlarm(alarm_);
  }
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;
  bool isOf(const BaseWindow& window) const { return window_.lock().get() == &window; }

 private:
  void wait() {
    const auto left = std::chrono::duration_cast<milliseconds>(next_ - desk().events().now()).count();
    alarm_ = desk().events().alarm(std::max<long>(1, left), [this] { fire(); });
  }
  void fire() {
    // The next one first: the handler may destroy this timer, or pump for longer than a period.
    next_ = std::max(next_ + period_, desk().events().now());
    wait();
    EVENT event;
    event.type = E_TIMER;
    event.timer.id = number_;
    if (const auto window = window_.lock()) window->tell(event);
  }

  long number_;
  std::weak_ptr<BaseWindow> window_;
  milliseconds period_;
  Clock::time_point next_;
  long alarm_ = 0;
};

std::map<long, std::unique_ptr<Timer>>& timers() {
  static std::map<long, std::unique_ptr<Timer>> running;
  return running;
}

}  // namespace

void dropTimers(const BaseWindow& window) {
  std::erase_if(
      timers(), [&](const auto& entry) { return entry.second->isOf(window); });
}

namespace runtime {

long createTimer(const std::shared_ptr<Window>& window, long period) {
  static long numbers = 0;
  const auto shell = std::dynamic_pointer_cast<BaseWindow>(window);
  if (!shell || shell->isDying()) return 0;
  const long number = ++numbers;
  timers().emplace(number, std::make_unique<Timer>(number, shell, period));
  return number;
}

bool destroyTimer(long timer) { return timers().erase(timer) > 0; }

}  // namespace runtime

}  // namespace xvt
