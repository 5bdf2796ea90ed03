#include "libkyr/console.h"

#include <cstdio>

namespace {

ConsoleSink sinkOfAll = nullptr;

}  // namespace

void SetDefaultConsole(ConsoleSink sink) { sinkOfAll = sink; }

void DefaultConsole(const char* line) {
  if (sinkOfAll != nullptr)
    sinkOfAll(line);
  else
    std::fprintf(stderr, "%s\n", line);
}
