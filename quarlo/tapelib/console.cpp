#include "quarlo/tapelib/console.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "libkyr/process.h"

namespace {

bool isThere = true;

void drop(const char*) {}

}  // namespace

void setConsoleSink(ConsoleSink sink) {
  isThere = sink != nullptr;
  SetDefaultConsole(isThere ? sink : drop);
}

void console_out(const char* textStr) {
  if (textStr != nullptr) DefaultConsole(textStr);
}

void console_printf(const char* format, ...) {
  std::va_list arguments;
  std::va_list again;
  va_start(arguments, format);
  va_copy(again, arguments);
  char* line = nullptr;
  const int length = vasprintf(&line, format, arguments);
  va_end(arguments);
  if (length >= 0) {
    console_out(line);
    std::free(line);
  } else {
    char beginning[512] = "";  // as much as needs no memory
    (void)std::vsnprintf(beginning, sizeof beginning, format, again);
    console_out(beginning);
  }
  va_end(again);
}

void do_console_out(ProcessRecord* procRecord, const char* textStr) {
  if (procRecord != nullptr && procRecord->consoleLine != nullptr) procRecord->consoleLine(textStr);
}

void setConsole(ProcessRecord* procRecord) {
  if (procRecord != nullptr) procRecord->consoleLine = isThere ? console_out : nullptr;
}
