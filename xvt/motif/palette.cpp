#include "xvt/motif/palette.h"

#include <algorithm>
#include <cmath>

namespace xvt {

namespace {

struct Shade {
  std::string_view name;
  const char* light;
  const char* dark;
};

// Texts stand out from what they are on by a contrast of 4.5, borders of controls, rings, marks and what is disabled by
// 3 (WCAG 2, AA): a test computes them all.
constexpr std::array<Shade, color::kTones> kShades{{
    {"ground", "#f3f4f6", "#1e2329"},
    {"paper", "#ffffff", "#282e36"},
    {"ink", "#1f2933", "#e6eaef"},
    {"quiet", "#5f6b7a", "#a9b3be"},
    {"faint", "#7a8694", "#828d9a"},
    {"border", "#7a8694", "#828d9a"},
    {"line", "#d9dee5", "#3c444e"},
    {"focus", "#1f2933", "#ffffff"},
    {"primary", "#3273b8", "#5a97d6"},
    {"on-primary", "#ffffff", "#10161d"},
    {"primary-down", "#24578d", "#7fb4ec"},
    {"strip", "#e9ecf0", "#171b20"},
    {"section", "#4a5563", "#bcc5cf"},
    {"meter-trough", "#dde3ea", "#3c444e"},
    {"thumb", "#7a8694", "#848f9c"},
    {"trough", "#eceff3", "#22282f"},
    {"pressed", "#dbe3ec", "#3a434e"},
    {"chosen", "#cfe0f3", "#2f4c6c"},
}};

}  // namespace

const char* Palette::name(color::Tone tone) const { return dark_ ? kShades.at(tone).dark : kShades.at(tone).light; }

color::Tone Palette::tone(std::string_view name) {
  const auto* found = std::ranges::find(kShades, name, &Shade::name);
  return static_cast<color::Tone>(found - kShades.begin());
}

XVT_COLOR Palette::shown(XVT_COLOR given) const {
  if (!dark_) return given;
  // Brightness from that of ink, in place of black, to that of paper, in place of white; pale grounds become dark ones
  // that carry ink.
  constexpr double kPaperLevel = 0.18;
  constexpr double kInkLevel = 0.92;
  const double was = (0.2126 * given.red + 0.7152 * given.green + 0.0722 * given.blue) / 255;
  const double now = kPaperLevel + std::pow(1 - was, 1.25) * (kInkLevel - kPaperLevel);
  const auto channel = [&](unsigned char value) {
    return static_cast<unsigned char>(std::lround(255 * std::clamp(now + value / 255.0 - was, 0.0, 1.0)));
  };
  return {channel(given.red), channel(given.green), channel(given.blue)};
}

}  // namespace xvt
