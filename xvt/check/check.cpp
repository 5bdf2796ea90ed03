#include "xvt/check/check.h"

#include <cstring>

namespace xvt {

char* copyOut(const std::string& text, char* buffer, std::size_t size, const char* function) {
  if (buffer == nullptr || size == 0) {
    report(function, "no buffer");
    return buffer;
  }
  std::size_t length = std::min(text.size(), size - 1);
  // Never half a character: back to the first byte of the one that is cut.
  if (length < text.size())
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) --length;
  std::memcpy(buffer, text.data(), length);
  buffer[length] = '\0';
  return buffer;
}

}  // namespace xvt
