/// How events get served: the main loop, modal loops and jobs all come here.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace xvt {

class BaseWindow;
class Desk;

/// Marks that the serving of an event (or an action of the probe) is somewhere on the call stack, and may still touch
/// any window when it comes back: nothing is really destroyed while a frame exists.
class Frame {
 public:
  Frame() { ++depth(); }
  ~Frame() { --depth(); }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;
  static bool none() { return depth() == 0; }

 private:
  static int& depth();
};

class Pump {
 public:
  explicit Pump(Desk& desk) : desk_(desk), tick_(firstTick()) {}
  ~Pump();
  Pump(const Pump&) = delete;
  Pump& operator=(const Pump&) = delete;

  /// Waits for events and serves them until `done` answers true.
  void runUntil(const std::function<bool()>& done);
  /// Serves what is waiting, if the last look at the display is some milliseconds ago.
  void serveIfDue();
  /// Serves what is waiting; without `ticks` the tick hook is left out.
  void serve(bool ticks = true);

  void setTick(void (*tick)());
  /// Ticks a last time, while the windows are still there.
  void lastTick();
  /// The tick that an application begins with.
  static void setFirstTick(void (*tick)()) { firstTick() = tick; }
  /// Really destroys the window when no frame exists.
  void retire(std::shared_ptr<BaseWindow> window);
  /// Destroys what is retired, if no frame exists.
  void reap();

 private:
  using Clock = std::chrono::steady_clock;
  using Done = std::function<bool()>;
  /// The innermost loop that is running, while it runs.
  class Loop {
   public:
    Loop(const Done*& innermost, const Done& done) : innermost_(innermost), outer_(innermost) { innermost = &done; }
    ~Loop() { innermost_ = outer_; }
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

   private:
    const Done*& innermost_;
    const Done* outer_;
  };
  static void (*&firstTick())();
  void processOne();
  void prepare();
  void tickIfDue();
  void wakeForTick();

  Desk& desk_;
  void (*tick_)();
  const Done* innermost_ = nullptr;
  long wake_ = 0;
  Clock::time_point lastServe_;
  Clock::time_point lastTick_;
  std::vector<std::shared_ptr<BaseWindow>> retired_;
};

}  // namespace xvt
