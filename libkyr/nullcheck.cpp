#include "libkyr/nullcheck.h"

#include <cstdio>

namespace {

void reportOnStandardError(const char* name) { std::fprintf(stderr, "Error allocating memory for %s.\n", name); }

NullReport nullReport = reportOnStandardError;

}  // namespace

void setNullReport(NullReport report) { nullReport = report != nullptr ? report : reportOnStandardError; }

bool NullCheck(const void* pointer, const char* name) {
  if (pointer != nullptr) return true;
  nullReport(name != nullptr ? name : "?");
  return false;
}
