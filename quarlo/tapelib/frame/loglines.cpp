#include "quarlo/tapelib/frame/loglines.h"

#include <cstring>
#include <ctime>

#include "libkyr/text.h"
#include "quarlo/tapelib/console.h"

std::string dateText() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  char text[64] = "";
  if (localtime_r(&now, &parts) != nullptr) {
    // asctime's layout, spelled out: asctime itself is undefined for years beyond 9999.
    (void)std::strftime(text, sizeof text, "%a %b %e %H:%M:%S %Y", &parts);
  }
  return text;
}

std::string counted(long long count, const char* noun) {
  return formatText("%lld %s%s", count, noun, count == 1 ? "" : "s");
}

void logBlank() { console_out(" "); }

void logStarted(const char* job) {
  logBlank();
  console_printf("%s started at %s.", job, dateText().c_str());
}

void logEnded(const char* job) {
  console_printf("%s ended at %s.", job, dateText().c_str());
  logBlank();
}

void logAborted(const char* job) { console_printf("  *** %s aborted by user at %s.", job, dateText().c_str()); }

void logFailed() {
  console_out("  *** Job Failed.");
  logBlank();
}

std::string diskErrorText(const std::string& name, int reason) { return diskErrorText({name, false, reason}); }

std::string diskErrorText(const DiskSync::Failure& failure) {
  return formatText("  *** Error writing to %s \"%s\": %s.", failure.isDirectory ? "directory" : "disk file",
                    failure.path.c_str(), std::strerror(failure.reason));
}
