#include "quarlo/segdcopy/segdcopy_log.h"

#include <cstdarg>
#include <string>
#include <utility>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/segdcopy/segdcopy_params.h"
#include "quarlo/tapelib/console.h"

bool Silent = false;

namespace {

/// Owns the stream that stands in SgdParams.logFp.
FileHandle logStream;

}  // namespace

void logMessage(const char* str) {
  if (!std::exchange(Silent, false)) console_out(str);
  if (!SgdParams.useLog || SgdParams.logFp == nullptr) return;
  if (std::fprintf(SgdParams.logFp, "%s\n", str) < 0 || std::fflush(SgdParams.logFp) != 0) {
    SgdParams.useLog = false;
    closeSegdLog();
    xvt_dm_post_error("Error writing to log file");
  }
}

void logMessagef(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const std::string line = formatTextV(format, arguments);
  va_end(arguments);
  logMessage(line.c_str());
}

void openSegdLog() {
  closeSegdLog();
  const std::string path = joinPath(fieldText(SgdParams.logDir), fieldText(SgdParams.logFile));
  logStream = openFile(path.c_str(), "w", 0);
  SgdParams.logFp = logStream.get();
  if (!logStream) {
    SgdParams.useLog = false;
    xvt_dm_post_error("Error opening file %s", path.c_str());
  }
}

void closeSegdLog() {
  SgdParams.logFp = nullptr;
  logStream.reset();
}
