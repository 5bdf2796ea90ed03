/// Colours by what they are for, light and dark. No display is needed to look them up.
#pragma once

#include <array>
#include <string_view>

#include "xvt/xvt.h"

namespace xvt {

namespace color {

enum Tone : unsigned char {
  kGround,  ///< of windows, and of what cannot be changed
  kPaper,   ///< of fields, lists, cards, menus and texts
  kInk,
  kQuiet,   ///< hints
  kFaint,   ///< what cannot be used, and the line around a window that has no frame
  kBorder,  ///< of controls
  kLine,    ///< between parts, with no meaning of its own
  kFocus,   ///< the ring around what has the keyboard, the same everywhere
  kPrimary,
  kOnPrimary,  ///< text and marks on it
  kPrimaryDown,
  kStrip,
  kSection,
  kMeterTrough,
  kThumb,
  kTrough,
  kPressed,
  kChosen,  ///< selected rows, and the line of a menu that is under the pointer
  kTones,
};

}  // namespace color

class Palette {
 public:
  explicit Palette(bool dark = false) : dark_(dark) {}
  bool isDark() const { return dark_; }
  /// "#rrggbb". The text is there for good.
  const char* name(color::Tone tone) const;
  /// By the name that resources use; kTones for none.
  static color::Tone tone(std::string_view name);
  /// A colour that the program gives is meant for the light palette: in the dark one what is light becomes as dark as
  /// paper, what is dark as light as ink, and its hue stays.
  XVT_COLOR shown(XVT_COLOR given) const;

 private:
  bool dark_;
};

}  // namespace xvt
