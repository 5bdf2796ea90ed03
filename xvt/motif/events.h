/// Xt's queue as the source of events.
#pragma once

#include <Xm/Xm.h>

#include <map>
#include <memory>

#include "xvt/desk/events.h"

namespace xvt {

class XtEvents final : public EventSource {
 public:
  explicit XtEvents(XtAppContext context) : context_(context) {}
  ~XtEvents() override;
  bool pending() override { return XtAppPending(context_) != 0; }
  void serveOne() override { XtAppProcessEvent(context_, XtIMAll); }
  long alarm(long milliseconds, std::function<void()> work) override;
  void cancelAlarm(long alarm) override;
  void watch(int file, std::function<void()> work) override;
  void unwatch() override;

 private:
  struct Alarm {
    XtEvents& events;
    long number;
    std::function<void()> work;
    XtIntervalId id;
  };
  static void fired(XtPointer alarm, XtIntervalId*);

  XtAppContext context_;
  std::map<long, std::unique_ptr<Alarm>> alarms_;
  long numbers_ = 0;
  std::function<void()> watcher_;
  XtInputId input_ = 0;
};

}  // namespace xvt
