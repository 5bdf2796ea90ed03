/// Timers of windows.
#pragma once

namespace xvt {

class ShellWindow;

/// The window's timers die with it.
void dropTimers(const ShellWindow& window);

}  // namespace xvt
