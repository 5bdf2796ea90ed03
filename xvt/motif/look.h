/// How everything looks: fonts, colours, distances. One place for each.
#pragma once

#include <X11/Xft/Xft.h>
#include <Xm/Xm.h>

#include <array>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "xvt/layout/layout.h"
#include "xvt/xvt.h"

namespace xvt {

enum class Face { plain, bold, heading, mono };

namespace color {
constexpr const char* kGround = "#f3f4f6";
constexpr const char* kPaper = "#ffffff";
constexpr const char* kInk = "#1f2933";
constexpr const char* kQuiet = "#5f6b7a";
constexpr const char* kFaint = "#98a2ae";
constexpr const char* kBorder = "#c3cad3";
constexpr const char* kFocus = "#1f2933";  ///< the ring around what has the keyboard, the same everywhere
constexpr const char* kPrimary = "#2f6fb3";
constexpr const char* kPrimaryDark = "#24578d";
constexpr const char* kStrip = "#e9ecf0";
constexpr const char* kSection = "#4a5563";
constexpr const char* kMeterTrough = "#dde3ea";
constexpr const char* kThumb = "#b4bdc9";
constexpr const char* kTrough = "#eceff3";
}  // namespace color

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

class Look {
 public:
  /// `shell` gives display and screen. Warns on standard error when no font is monospaced.
  explicit Look(Widget shell);
  ~Look();
  Look(const Look&) = delete;
  Look& operator=(const Look&) = delete;

  /// Our resources, below whatever the user has set. To be called before the first widget.
  static void installResources(Display* display);

  /// A distance that is `pixels` with a line of 16 pixels, scaled to the font in use.
  int px(int pixels) const { return std::max(1, (pixels * lineHeight_ + 8) / 16); }
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
  Pixel pixel(const std::string& name) const;
  Pixel pixel(XVT_COLOR color) const;
  const char* monospacedFamily() const { return monoFamily_; }

  /// Sets the shared render tables of a shell.
  void dress(Widget shell) const;

 private:
  Display* display_;
  Screen* screen_;
  const char* monoFamily_;
  std::array<XftFont*, 4> fonts_{};
  std::array<XmRenderTable, 4> tables_{};
  int lineHeight_;
  Spacing spacing_;
  mutable std::map<std::string, Pixel> pixels_;
};

}  // namespace xvt
