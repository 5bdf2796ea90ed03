#include "xvt/desk/pump.h"

#include "xvt/base/guard.h"
#include "xvt/desk/desk.h"
#include "xvt/desk/window.h"

namespace xvt {

namespace {

using std::chrono::milliseconds;
constexpr milliseconds kServeEvery{5};
constexpr milliseconds kServeAtMost{100};  // so that a job goes on even if its events never end
constexpr milliseconds kTickEvery{4};

}  // namespace

int& Frame::depth() {
  static int frames = 0;
  return frames;
}

void (*&Pump::firstTick())() {
  static void (*tick)() = nullptr;
  return tick;
}

Pump::~Pump() { desk_.events().cancelAlarm(wake_); }

void Pump::runUntil(const std::function<bool()>& done) {
  const Loop loop(innermost_, done);
  prepare();
  while (!done()) {
    if (tick_ != nullptr && wake_ == 0) wakeForTick();
    processOne();
    if (done()) break;
    prepare();
    tickIfDue();
  }
}

void Pump::serveIfDue() {
  if (Clock::now() - lastServe_ >= kServeEvery) serve();
}

void Pump::serve(bool ticks) {
  if (desk_.isLost()) return;
  const auto start = Clock::now();
  prepare();
  while (!desk_.isLost() && desk_.events().pending()) {
    processOne();
    if (Clock::now() - start > kServeAtMost) break;
  }
  prepare();
  if (ticks && !desk_.isLost()) tickIfDue();
  lastServe_ = Clock::now();
}

void Pump::processOne() {
  {
    Frame frame;
    desk_.events().serveOne();
  }
  reap();
}

void Pump::prepare() {
  if (desk_.isLost()) return;
  // A copy: a window that is brought up to date may open or end others.
  const auto windows = desk_.windows();
  for (const auto& window : windows) guarded("refresh", [&] { window->refresh(); });
}

void Pump::retire(std::shared_ptr<BaseWindow> window) { retired_.push_back(std::move(window)); }

void Pump::reap() {
  if (!Frame::none() || retired_.empty() || desk_.isLost()) return;
  const auto dead = std::move(retired_);
  retired_.clear();
  for (const auto& window : dead) window->dissolve();
}

void Pump::setTick(void (*tick)()) { tick_ = tick; }

void Pump::tickIfDue() {
  if (tick_ == nullptr || Clock::now() - lastTick_ < kTickEvery) return;
  // A box that has closed is left first, so that whoever opened it has its answer before the script goes on.
  if (innermost_ != nullptr && (*innermost_)()) return;
  lastTick_ = Clock::now();
  guarded("tick", tick_);
}

void Pump::lastTick() {
  if (tick_ != nullptr && !desk_.isLost()) guarded("tick", tick_);
}

void Pump::wakeForTick() {
  wake_ = desk_.events().alarm(
      kServeEvery.count(), [this] { wake_ = 0; });
}

}  // namespace xvt
