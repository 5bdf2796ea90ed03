/// Fonts that the program makes for its text fields.
#pragma once

#include <X11/Xft/Xft.h>

#include <memory>

#include "xvt/runtime.h"

namespace xvt {

class XftFontObject : public Font {
 public:
  XftFontObject(Display* display, XftFont* font);
  ~XftFontObject() override;
  int leading() const override;
  int ascent() const override { return font_->ascent; }
  int descent() const override { return font_->descent; }
  int width(std::string_view text) const override;
  XftFont* xft() const { return font_; }

 private:
  Display* display_;
  XftFont* font_;
  int advance_;  ///< of every printable ASCII character, 0 when they differ
};

}  // namespace xvt
