/// Timers of windows.
#pragma once

namespace xvt {

class BaseWindow;

/// The window's timers die with it.
void dropTimers(const BaseWindow& window);

}  // namespace xvt
