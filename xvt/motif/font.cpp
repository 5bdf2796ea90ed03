#include "xvt/motif/font.h"

#include <algorithm>

#include "xvt/base/utf8.h"
#include "xvt/motif/application.h"

namespace xvt {

namespace {

int extent(Display* display, XftFont* font, std::string_view text) {
  XGlyphInfo glyphs{};
  XftTextExtentsUtf8(display, font, reinterpret_cast<const FcChar8*>(text.data()), static_cast<int>(text.size()),
                     &glyphs);
  return glyphs.xOff;
}

bool isPrintable(char byte) { return byte >= ' ' && byte <= '~'; }

}  // namespace

XftFontObject::XftFontObject(Display* display, XftFont* font) : display_(display), font_(font), advance_(0) {
  const int narrow = extent(display, font, "i");
  if (narrow == extent(display, font, "W") && narrow == extent(display, font, " ")) advance_ = narrow;
}

XftFontObject::~XftFontObject() {
  // A font that the program keeps beyond the end of the application went with its display.
  if (appIfRunning() != nullptr && runtime::hasDisplay()) XftFontClose(display_, font_);
}

int XftFontObject::leading() const { return std::max(0, font_->height - font_->ascent - font_->descent); }

int XftFontObject::width(std::string_view text) const {
  // A console asks for every line that it writes: most are plain.
  if (advance_ > 0 && std::all_of(text.begin(), text.end(), isPrintable))
    return static_cast<int>(text.size()) * advance_;
  return extent(display_, font_, validUtf8(text));
}

std::shared_ptr<Font> Application::createFont(bool monospaced, int points, bool bold) {
  XftFont* font =
      XftFontOpen(display_, DefaultScreen(display_), XFT_FAMILY, XftTypeString,
                  monospaced ? look().monospacedFamily() : "sans", XFT_SIZE, XftTypeDouble, static_cast<double>(points),
                  XFT_WEIGHT, XftTypeInteger, bold ? XFT_WEIGHT_BOLD : XFT_WEIGHT_MEDIUM, nullptr);
  return font != nullptr ? std::make_shared<XftFontObject>(display_, font) : nullptr;
}

}  // namespace xvt
