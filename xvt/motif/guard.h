/// The one bridge from Xt into this program. Xt is C and must never see an exception.
#pragma once

#include <Xm/Xm.h>

#include <exception>
#include <functional>
#include <iostream>

namespace xvt {

/// Runs `work`; what it throws is reported and goes no further.
template <typename Work>
void guarded(const char* where, Work&& work) noexcept {
  try {
    work();
  } catch (const std::exception& error) {
    std::cerr << "xvt: " << where << ": " << error.what() << std::endl;
  } catch (...) {
    std::cerr << "xvt: " << where << ": unknown exception" << std::endl;
  }
}

/// Calls `work` with the call data whenever the widget's callback list `name` is called; lives as long as the widget.
void onCallback(Widget widget, const char* name, std::function<void(XtPointer)> work);
/// Calls `work` for every event of `mask`; lives as long as the widget.
void onEvent(Widget widget, EventMask mask, std::function<void(XEvent*)> work);

}  // namespace xvt
