/// What the desktop is told about a window: whose it is, what kind, its icon, that the program has started.
#pragma once

#include <Xm/Xm.h>

namespace xvt {

/// Of a shell that is realized and has not been shown yet.
void introduceWindow(Widget shell, bool modal);

/// The first window is on the screen: whoever started the program need not show a busy pointer any longer. Later calls
/// do nothing.
void tellStarted(Widget shell);

}  // namespace xvt
