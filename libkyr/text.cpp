#include "libkyr/text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

constexpr std::size_t kLongestCharacter = 4;

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

// Where to cut `text` so that at most `limit` bytes stay and no character is torn. Bytes that are no UTF-8 (a run of
// continuation bytes longer than a character has) are cut at the limit.
std::size_t cutPosition(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text.size();
  for (std::size_t cut = limit; limit - cut < kLongestCharacter; --cut) {
    if (!isContinuation(text[cut])) return cut;
    if (cut == 0) break;
  }
  return limit;
}

}  // namespace

bool copyText(char* field, std::size_t size, std::string_view text) {
  if (size == 0) return text.empty();
  const std::size_t length = cutPosition(text, size - 1);
  std::copy_n(text.data(), length, field);
  std::fill(field + length, field + size, '\0');
  return length == text.size();
}

std::string_view trimText(std::string_view text) {
  constexpr std::string_view kWhite = " \t\r\n\v\f";
  const std::size_t first = text.find_first_not_of(kWhite);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kWhite) - first + 1);
}

std::string formatTextV(const char* format, std::va_list arguments) {
  char* text = nullptr;
  const int length = vasprintf(&text, format, arguments);
  if (length < 0) return {};
  const std::unique_ptr<char, decltype(&std::free)> owned(text, &std::free);
  return {text, static_cast<std::size_t>(length)};
}

std::string formatText(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::string result = formatTextV(format, arguments);
  va_end(arguments);
  return result;
}
