/// Keys that belong to a whole window: shortcuts, mnemonics, Return, Escape; and clicks where no window manager is.
#pragma once

#include <Xm/Xm.h>

namespace xvt {

/// Stands before Xt's dispatching of keys and buttons.
void installKeys(Display* display);

}  // namespace xvt
