#include "xvt/motif/textview/textview_metrics.h"

#include <algorithm>

namespace xvt {

namespace {

constexpr char32_t kOffending = 0xFFFD;
constexpr char32_t kControl = 0x00B7;

bool isControl(char32_t code) { return code < 0x20 || (code >= 0x7F && code < 0xA0); }

/// The code point of a valid sequence.
char32_t decode(std::string_view sequence) {
  const auto first = static_cast<unsigned char>(sequence[0]);
  if (sequence.size() == 1) return first;
  char32_t code = first & (0xFFU >> (sequence.size() + 1));
  for (const char byte : sequence.substr(1)) code = (code << 6) | (static_cast<unsigned char>(byte) & 0x3FU);
  return code;
}

}  // namespace

TextMetrics::TextMetrics(Display* display, XftFont* font)
    : display_(display), font_(XftFontCopy(display, font), [display](XftFont* open) { XftFontClose(display, open); }) {
  for (std::size_t code = 0; code < ascii_.size(); ++code) ascii_[code] = measured(static_cast<char32_t>(code));
}

int TextMetrics::measured(char32_t code) const {
  const FcChar32 character = code;
  XGlyphInfo extents;
  XftTextExtents32(display_, font_.get(), &character, 1, &extents);
  return std::max(0, int{extents.xOff});
}

char32_t TextMetrics::characterAt(std::string_view line, std::size_t at, std::size_t* bytes) {
  const auto first = static_cast<unsigned char>(line[at]);
  char32_t code = first;
  if (first >= 0x80) {
    const std::size_t length = utf8SequenceLength(line.substr(at));
    code = length == 0 ? kOffending : decode(line.substr(at, length));
    *bytes = std::max<std::size_t>(1, length);
  } else if (first == '\t') {
    return U' ';
  }
  return isControl(code) ? kControl : code;
}

std::size_t TextMetrics::byteAt(std::string_view line, long x) const {
  std::size_t found = line.size();
  walk(line, [&](std::size_t byte, std::size_t, char32_t, long left, int wide) {
    if (x >= left + (wide + 1) / 2) return true;
    found = byte;
    return false;
  });
  return found;
}

long TextMetrics::xOf(std::string_view line, std::size_t byte) const {
  return walk(
      line, [&](std::size_t at, std::size_t, char32_t, long, int) { return at < byte; });
}

}  // namespace xvt
