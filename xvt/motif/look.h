/// How everything looks: fonts, colours, distances. One place for each.
#pragma once

#include <X11/Xft/Xft.h>
#include <Xm/Xm.h>

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "xvt/layout/layout.h"
#include "xvt/motif/palette.h"
#include "xvt/motif/wishes.h"
#include "xvt/xvt.h"

namespace xvt {

enum class Face { plain, bold, heading, mono };

/// A line of text as Motif wants it.
class MotifString {
 public:
  explicit MotifString(const std::string& text);
  /// With the first of this character underlined, which Motif does for buttons only.
  MotifString(const std::string& text, KeySym mnemonic);
  ~MotifString() { XmStringFree(string_); }
  MotifString(MotifString&& other) noexcept : string_(std::exchange(other.string_, nullptr)) {}
  MotifString(const MotifString&) = delete;
  MotifString& operator=(const MotifString&) = delete;
  operator XmString() const { return string_; }  // NOLINT: it is one

 private:
  XmString string_;
};

/// Width of a scroll bar beside rows, at a line height of 16.
constexpr int kScrollBarWidth = 12;

/// A distance that is `pixels` with lines of 16 pixels, with lines of another height.
constexpr int scaled(int pixels, int lineHeight) { return std::max(1, (pixels * lineHeight + 8) / 16); }

class Look {
 public:
  /// `shell` gives display and screen. Warns on standard error when no font is monospaced.
  explicit Look(Widget shell);
  ~Look();
  Look(const Look&) = delete;
  Look& operator=(const Look&) = delete;

  /// Our resources, below whatever the user has set. To be called before the first widget.
  static void installResources(Display* display, const LookWishes& wishes);

  /// A distance that is `pixels` with a line of 16 pixels, scaled to the font in use.
  int px(int pixels) const { return scaled(pixels, lineHeight_); }
  /// Thickness of the lines around controls, and of the ring around what has the keyboard.
  int line() const { return px(1); }
  int lineHeight() const { return lineHeight_; }
  int lineHeight(Face face) const { return font(face)->ascent + font(face)->descent; }
  int ascent(Face face = Face::plain) const { return font(face)->ascent; }
  int textWidth(Face face, std::string_view text) const;
  /// Size of a text of one or several lines.
  Extent textSize(Face face, const std::string& text) const;
  /// Width of so many characters of ordinary text.
  int columns(Face face, int count) const { return count * textWidth(face, "0"); }
  /// The text, or as much of it as fits `width` with an ellipsis; of a path the middle goes.
  std::string fitted(Face face, const std::string& text, int width) const;
  XmRenderTable table(Face face) const { return tables_[static_cast<std::size_t>(face)]; }
  XftFont* font(Face face) const { return fonts_[static_cast<std::size_t>(face)]; }
  const Spacing& spacing() const { return spacing_; }
  const Palette& palette() const { return palette_; }
  Pixel pixel(color::Tone tone) const { return pixel(palette_.name(tone)); }
  /// Of a colour that the program gives.
  Pixel pixel(XVT_COLOR color) const;
  const char* monospacedFamily() const { return monoFamily_; }

  /// Sets the shared render tables of a shell.
  void dress(Widget shell) const;

 private:
  Pixel pixel(const std::string& name) const;

  Display* display_;
  Screen* screen_;
  Palette palette_;
  const char* monoFamily_;
  std::array<XftFont*, 4> fonts_{};
  std::array<XmRenderTable, 4> tables_{};
  int lineHeight_;
  Spacing spacing_;
  mutable std::map<std::string, Pixel> pixels_;
};

}  // namespace xvt
