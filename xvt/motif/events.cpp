#include "xvt/motif/events.h"

#include <utility>

#include "xvt/base/guard.h"

namespace xvt {

XtEvents::~XtEvents() {
  for (const auto& [number, alarm] : alarms_) XtRemoveTimeOut(alarm->id);
  unwatch();
}

long XtEvents::alarm(long milliseconds, std::function<void()> work) {
  const long number = ++numbers_;
  auto& alarm = alarms_[number] = std::make_unique<Alarm>(Alarm{*this, number, std::move(work), 0});
  alarm->id = XtAppAddTimeOut(context_, static_cast<unsigned long>(milliseconds), fired, alarm.get());
  return number;
}

void XtEvents::fired(XtPointer data, XtIntervalId*) {
  auto* alarm = static_cast<Alarm*>(data);
  const std::function<void()> work = std::move(alarm->work);
  alarm->events.alarms_.erase(alarm->number);
  guarded("timer", work);
}

void XtEvents::cancelAlarm(long number) {
  const auto found = alarms_.find(number);
  if (found == alarms_.end()) return;
  XtRemoveTimeOut(found->second->id);
  alarms_.erase(found);
}

void XtEvents::watch(int file, std::function<void()> work) {
  watcher_ = std::move(work);
  input_ = XtAppAddInput(
      context_, file, reinterpret_cast<XtPointer>(XtInputReadMask),  // NOLINT: Xt wants a number as a pointer
      [](XtPointer self, int*, XtInputId*) { guarded("signal", static_cast<XtEvents*>(self)->watcher_); }, this);
}

void XtEvents::unwatch() {
  if (input_ != 0) XtRemoveInput(input_);
  input_ = 0;
}

}  // namespace xvt
