/// SEG Y headers made field by field.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

struct HeaderField {
  int byte, bytes;
  std::uint64_t value;
};

/// A header of zeros but for these fields.
inline std::string header(std::size_t length, std::initializer_list<HeaderField> fields, bool isBig = true) {
  std::string bytes(length, '\0');
  for (const HeaderField& field : fields)
    for (int i = 0; i < field.bytes; ++i)
      bytes[static_cast<std::size_t>(field.byte - 1 + i)] =
          static_cast<char>(field.value >> 8 * (isBig ? field.bytes - 1 - i : i));
  return bytes;
}
