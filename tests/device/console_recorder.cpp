#include "tests/device/console_recorder.h"

#include <cstdarg>
#include <cstdio>

#include "quarlo/tapelib/cons_win.h"

std::vector<std::string>& consoleLines() {
  static std::vector<std::string> lines;
  return lines;
}

void console_out(const char* textStr) { consoleLines().emplace_back(textStr); }

void console_printf(const char* format, ...) {
  char line[1024];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  console_out(line);
}
