/// What every checked call does first: find what its handle stands for, or say what is wrong with it.
#pragma once

#include <memory>
#include <string>

#include "xvt/base/report.h"
#include "xvt/base/utf8.h"
#include "xvt/runtime.h"

namespace xvt {

/// The living T behind a handle; null after a report.
template <typename T>
std::shared_ptr<T> need(long handle, const char* function, const char* wrongKind) {
  auto found = Registry::instance().find<T>(handle);
  if (found) return found;
  if (handle == 0)
    report(function, "no handle");
  else if (Registry::instance().find(handle))
    report(function, wrongKind);
  else
    report(function, "the handle is dead");
  return nullptr;
}

inline std::shared_ptr<VisibleObject> needVisible(WINDOW handle, const char* function) {
  return need<VisibleObject>(handle, function, "not a window or a control");
}
inline std::shared_ptr<Window> needWindow(WINDOW handle, const char* function) {
  return need<Window>(handle, function, "not a window");
}
inline std::shared_ptr<Control> needControl(WINDOW handle, const char* function) {
  return need<Control>(handle, function, "not a control");
}

/// The object if there still is a display to show it on: a call that would draw does nothing when that was lost.
template <typename T>
std::shared_ptr<T> drawn(std::shared_ptr<T> object) {
  return runtime::hasDisplay() ? std::move(object) : nullptr;
}

/// False after a report when a text that must be there is not.
inline bool hasText(const void* text, const char* function) {
  if (text != nullptr) return true;
  report(function, "no text");
  return false;
}

/// Copies a text into the caller's buffer, cut between characters and always terminated.
char* copyOut(const std::string& text, char* buffer, std::size_t size, const char* function);

}  // namespace xvt
