#include "quarlo/tapelib/dialogs/dialogevents.h"

namespace {

/// What such a table says of an event that has no more to tell than its type; null for the others.
const std::function<void(WINDOW)>* actionFor(EVENT_TYPE type, const DialogEvents& does) {
  switch (type) {
    case E_CREATE:
      return &does.create;
    case E_USER:
      return &does.user;
    case E_TIMER:
      return &does.timer;
    case E_CLOSE:
      return &does.close;
    case E_DESTROY:
      return &does.destroy;
    default:
      return nullptr;
  }
}

}  // namespace

std::function<void(WINDOW, const EVENT&)> actionsOf(std::span<const ControlAction> actions) {
  return [actions](WINDOW dialog, const EVENT& event) { runAction(actions, dialog, event); };
}

long dialogEvents(WINDOW dialog, const EVENT& event, const DialogEvents& does) {
  if (event.type == E_CONTROL && does.control) does.control(dialog, event);
  if (const auto* action = actionFor(event.type, does); action != nullptr && *action) (*action)(dialog);
  return 0;
}
