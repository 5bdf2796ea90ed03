/// Places of widgets.
#pragma once

#include <Xm/Xm.h>

#include "xvt/xvt.h"

namespace xvt {

/// Gives a widget its place in its parent, its border included.
void setPlace(Widget widget, const RCT& place);
/// The place it has.
RCT placeOf(Widget widget);
/// A realized shell on the screen, with the frame that a window manager has put around it. False while it is not shown.
bool frameOf(Widget shell, RCT* frame);

}  // namespace xvt
