#include "xvt/motif/pump.h"

#include "xvt/motif/application.h"
#include "xvt/motif/guard.h"
#include "xvt/motif/shell_window.h"

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

Pump::~Pump() {
  if (wake_ != 0) XtRemoveTimeOut(wake_);
}

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
  if (Clock::now() - last_serve_ >= kServeEvery) serve();
}

void Pump::serve(bool ticks) {
  if (app().isLost()) return;
  const auto start = Clock::now();
  prepare();
  while (!app().isLost() && XtAppPending(context_) != 0) {
    processOne();
    if (Clock::now() - start > kServeAtMost) break;
  }
  prepare();
  if (ticks && !app().isLost()) tickIfDue();
  last_serve_ = Clock::now();
}

void Pump::processOne() {
  {
    Frame frame;
    XtAppProcessEvent(context_, XtIMAll);
  }
  reap();
}

void Pump::prepare() {
  if (app().isLost()) return;
  // A copy: a window that is brought up to date may open or end others.
  const auto windows = app().windows();
  for (const auto& window : windows) guarded("refresh", [&] { window->refresh(); });
}

void Pump::retire(std::shared_ptr<ShellWindow> window) { retired_.push_back(std::move(window)); }

void Pump::reap() {
  if (!Frame::none() || retired_.empty() || app().isLost()) return;
  const auto dead = std::move(retired_);
  retired_.clear();
  for (const auto& window : dead) window->destroyWidgets();
}

void Pump::setTick(void (*tick)()) { tick_ = tick; }

void Pump::tickIfDue() {
  if (tick_ == nullptr || Clock::now() - last_tick_ < kTickEvery) return;
  // A box that has closed is left first, so that whoever opened it has its answer before the script goes on.
  if (innermost_ != nullptr && (*innermost_)()) return;
  last_tick_ = Clock::now();
  guarded("tick", tick_);
}

void Pump::wakeForTick() {
  const auto woken = [](XtPointer pump, XtIntervalId*) { static_cast<Pump*>(pump)->wake_ = 0; };
  wake_ = XtAppAddTimeOut(context_, kServeEvery.count(), woken, this);
}

}  // namespace xvt
