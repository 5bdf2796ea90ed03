#include "xvt/base/utf8.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace xvt {

namespace {

unsigned byteAt(std::string_view text, std::size_t at) { return static_cast<unsigned char>(text[at]); }

bool isContinuation(unsigned byte) { return (byte & 0xC0U) == 0x80U; }

/// What the first byte promises; 0 for a byte that begins no sequence (C0, C1 and F5 up begin overlong or too large
/// ones).
std::size_t promisedLength(unsigned first) {
  if (first < 0x80) return 1;
  if (first < 0xC2) return 0;
  if (first < 0xE0) return 2;
  if (first < 0xF0) return 3;
  return first < 0xF5 ? 4 : 0;
}

/// The second byte rules out what the first one cannot: overlong forms, surrogates, code points beyond U+10FFFF.
bool secondByteFits(unsigned first, unsigned second) {
  switch (first) {
    case 0xE0:
      return second >= 0xA0;
    case 0xED:
      return second < 0xA0;
    case 0xF0:
      return second >= 0x90;
    case 0xF4:
      return second < 0x90;
    default:
      return true;
  }
}

}  // namespace

std::size_t utf8SequenceLength(std::string_view text) {
  if (text.empty()) return 0;
  const std::size_t length = promisedLength(byteAt(text, 0));
  if (length == 0 || length > text.size()) return 0;
  for (std::size_t at = 1; at < length; ++at)
    if (!isContinuation(byteAt(text, at))) return 0;
  return length == 1 || secondByteFits(byteAt(text, 0), byteAt(text, 1)) ? length : 0;
}

std::string validUtf8(std::string_view text) {
  std::string valid;
  valid.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = utf8SequenceLength(text);
    if (length == 0)
      valid += "\xEF\xBF\xBD";
    else
      valid += text.substr(0, length);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return valid;
}

/// Eight bytes at a time: the runtime without a screen measures each line of a dump by this.
std::size_t utf8Characters(std::string_view text) {
  constexpr std::uint64_t kLowest = 0x0101010101010101;
  std::size_t characters = text.size();
  for (std::uint64_t bytes = 0; text.size() >= sizeof bytes; text.remove_prefix(sizeof bytes)) {
    std::memcpy(&bytes, text.data(), sizeof bytes);
    characters -= static_cast<std::size_t>(std::popcount(bytes >> 7 & ~bytes >> 6 & kLowest));
  }
  for (const char byte : text) characters -= isContinuation(static_cast<unsigned char>(byte)) ? 1 : 0;
  return characters;
}

}  // namespace xvt
