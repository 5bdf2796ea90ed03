/// How a line is laid out: its bytes as characters, and where each stands.
#pragma once

#include <X11/Xft/Xft.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <memory>
#include <string_view>

#include "xvt/base/utf8.h"

namespace xvt {

/// Widths in one font, which is kept open for as long as they are needed.
class TextMetrics {
 public:
  TextMetrics(Display* display, XftFont* font);

  XftFont* font() const { return font_.get(); }
  /// Pixels from one character to the next.
  int advance(char32_t code) const { return code < ascii_.size() ? ascii_[code] : measured(code); }
  int tabWidth() const { return std::max(1, 8 * advance(U' ')); }

  /// Calls `visit(byte, bytes, code, x, advance)` for one character after the other, from the left, until it answers
  /// false. An offending byte is U+FFFD, a control byte a middle dot, a tab a blank that reaches the next tab stop.
  /// @return the x at which the walk ended
  template <typename Visitor>
  long walk(std::string_view line, Visitor&& visit) const {
    long x = 0;
    for (std::size_t at = 0; at < line.size();) {
      std::size_t bytes = 1;
      const char32_t code = characterAt(line, at, &bytes);
      const int wide = line[at] == '\t' ? static_cast<int>(tabWidth() - x % tabWidth()) : advance(code);
      if (!visit(at, bytes, code, x, wide)) return x;
      x += wide;
      at += bytes;
    }
    return x;
  }

  /// Pixels, at most INT_MAX.
  int width(std::string_view line) const {
    const long x = walk(line, [](auto&&...) { return true; });
    return x > INT_MAX ? INT_MAX : static_cast<int>(x);
  }

  /// The byte offset of the character border nearest to pixel `x`.
  std::size_t byteAt(std::string_view line, long x) const;
  /// The pixel at which the character at a byte offset begins.
  long xOf(std::string_view line, std::size_t byte) const;

 private:
  static char32_t characterAt(std::string_view line, std::size_t at, std::size_t* bytes);
  int measured(char32_t code) const;

  Display* display_;
  std::shared_ptr<XftFont> font_;
  std::array<int, 128> ascii_{};
};

}  // namespace xvt
