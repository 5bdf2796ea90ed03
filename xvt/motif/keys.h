/// Keys that belong to a whole window: shortcuts, mnemonics, Return, Escape; and clicks where no window manager is.
#pragma once

#include <Xm/Xm.h>

namespace xvt {

/// Stands before Xt's dispatching of keys and buttons.
void installKeys(Display* display);

/// A text such as "Ctrl+Shift+Q", "F5", "Alt+o" or "Page_Down" as key and modifiers; false when it makes no sense.
bool parseKeys(const char* text, KeySym* key, unsigned* modifiers);

}  // namespace xvt
