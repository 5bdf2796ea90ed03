/// The one bridge from Xt into this program. Xt is C and must never see an exception.
#pragma once

#include <Xm/Xm.h>

#include <functional>

#include "xvt/base/guard.h"

namespace xvt {

/// Calls `work` with the call data whenever the widget's callback list `name` is called; lives as long as the widget.
void onCallback(Widget widget, const char* name, std::function<void(XtPointer)> work);
/// Calls `work` for every event of `mask`; lives as long as the widget.
void onEvent(Widget widget, EventMask mask, std::function<void(XEvent*)> work);

}  // namespace xvt
