/// What a dialog does at its events, as a table: the handlers differ in that alone.
#pragma once

#include <functional>
#include <span>

#include "quarlo/tapelib/dialogs/controls.h"
#include "xvt/xvt.h"

/// Actions by event. One that is left out does nothing; closing destroys the dialog where nothing else is said.
struct DialogEvents {
  std::function<void(WINDOW dialog)> create = {};
  std::function<void(WINDOW dialog, const EVENT& event)> control = {};
  std::function<void(WINDOW dialog)> user = {};
  std::function<void(WINDOW dialog)> timer = {};
  std::function<void(WINDOW dialog)> close = xvt_vobj_destroy;
  std::function<void(WINDOW dialog)> destroy = {};
};

/// For the control events of a dialog that has nothing but buttons. The table must live as long as what is returned.
std::function<void(WINDOW dialog, const EVENT& event)> actionsOf(std::span<const ControlAction> actions);

/// Does what belongs to the event. @return 0, for the handler to return
long dialogEvents(WINDOW dialog, const EVENT& event, const DialogEvents& does);
