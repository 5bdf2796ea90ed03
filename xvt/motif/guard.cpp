#include "xvt/motif/guard.h"

#include <memory>

namespace xvt {

namespace {

using CallbackWork = std::function<void(XtPointer)>;
using EventWork = std::function<void(XEvent*)>;

void called(Widget, XtPointer work, XtPointer data) {
  guarded(
      "callback", [&] { (*static_cast<CallbackWork*>(work))(data); });
}

void happened(Widget, XtPointer work, XEvent* event, Boolean*) {
  guarded(
      "event", [&] { (*static_cast<EventWork*>(work))(event); });
}

template <typename Work>
void dropWork(Widget, XtPointer work, XtPointer) {
  std::unique_ptr<Work> dropped(static_cast<Work*>(work));
}

}  // namespace

void onCallback(Widget widget, const char* name, std::function<void(XtPointer)> work) {
  auto* kept = std::make_unique<CallbackWork>(std::move(work)).release();
  XtAddCallback(widget, name, called, kept);
  XtAddCallback(widget, XmNdestroyCallback, dropWork<CallbackWork>, kept);
}

void onEvent(Widget widget, EventMask mask, std::function<void(XEvent*)> work) {
  auto* kept = std::make_unique<EventWork>(std::move(work)).release();
  XtAddEventHandler(widget, mask, False, happened, kept);
  XtAddCallback(widget, XmNdestroyCallback, dropWork<EventWork>, kept);
}

}  // namespace xvt
