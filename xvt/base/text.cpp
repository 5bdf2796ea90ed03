#include "xvt/base/text.h"

#include <cstdio>

#include "xvt/base/utf8.h"

namespace xvt {

namespace {

/// Bytes of the longest beginning of a line that has at most `columns` characters.
std::size_t bytesOfColumns(std::string_view line, std::size_t columns) {
  std::size_t bytes = 0;
  for (; columns > 0 && bytes < line.size(); --columns) {
    const std::size_t length = utf8SequenceLength(line.substr(bytes));
    bytes += length == 0 ? 1 : length;
  }
  return bytes;
}

void wrapLine(std::string_view line, std::size_t columns, std::vector<std::string>* lines) {
  std::size_t fitting = bytesOfColumns(line, columns);
  while (fitting < line.size()) {
    const std::size_t blank = line.substr(0, fitting + 1).rfind(' ');
    const bool atBlank = blank != std::string_view::npos && blank > 0;
    lines->emplace_back(line.substr(0, atBlank ? blank : fitting));
    line.remove_prefix(atBlank ? blank + 1 : fitting);
    fitting = bytesOfColumns(line, columns);
  }
  lines->emplace_back(line);
}

}  // namespace

std::string formatted(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  return text;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t columns) {
  std::vector<std::string> lines;
  for (;;) {
    const std::size_t end = text.find('\n');
    wrapLine(text.substr(0, end), columns, &lines);
    if (end == std::string_view::npos) return lines;
    text.remove_prefix(end + 1);
  }
}

}  // namespace xvt
