/// Fields of SEG D header blocks at 1-based positions, as the standard counts. Nothing is checked: the bytes are there.
#pragma once

#include "libkyr/byteorder.h"
#include "quarlo/tapelib/formats/seglib.h"

namespace segdfields {

constexpr int kExtended = 0xFF;      ///< a byte that says: too large for here, look elsewhere
constexpr int kExtended16 = 0xFFFF;  ///< the same of two bytes

inline int byteAt(const char* block, int position) { return static_cast<unsigned char>(block[position - 1]); }
inline int signedByteAt(const char* block, int position) { return static_cast<signed char>(block[position - 1]); }
inline int highNibble(const char* block, int position) { return byteAt(block, position) >> 4; }
inline int lowNibble(const char* block, int position) { return byteAt(block, position) & 15; }
inline int binary16(const char* block, int position) { return loadBe16(block + position - 1); }
inline int binary24(const char* block, int position) { return get3byte(block + position - 1) & 0xFFFFFF; }
/// `count` BCD digits from the high nibble of a byte on.
inline int digits(const char* block, int position, int count) { return unbcd(block, position - 1, 1, count); }
inline bool areDigits(const char* block, int position, int bytes) {
  for (int i = position; i < position + bytes; ++i)
    if (highNibble(block, i) > 9 || lowNibble(block, i) > 9) return false;
  return true;
}

}  // namespace segdfields
