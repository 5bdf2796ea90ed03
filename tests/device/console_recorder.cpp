#include "tests/device/console_recorder.h"

#include "quarlo/tapelib/console.h"

std::vector<std::string>& consoleLines() {
  static std::vector<std::string> lines;
  [[maybe_unused]] static const bool taken = (setConsoleSink([](const char* line) { lines.emplace_back(line); }), true);
  return lines;
}
