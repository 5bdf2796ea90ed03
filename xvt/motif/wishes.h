/// How the user wants the windows to look: told by the environment, else by X resources, else by the desktop.
#pragma once

#include <X11/Xlib.h>

#include <string>
#include <string_view>

namespace xvt {

struct LookWishes {
  bool dark = false;
  int percent = 100;  ///< of the size that texts, and all that follows them, would have otherwise

  /// What cannot be understood is told on standard error and is as if it had not been said.
  static LookWishes of(Display* display, const std::string& program, const std::string& className);
};

/// The text setting of this name in what an XSETTINGS manager publishes; "" where there is none. The bytes may be
/// anything.
std::string settingIn(std::string_view settings, std::string_view name);

}  // namespace xvt
