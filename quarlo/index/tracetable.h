/// The trace table: a line of comma-separated values for every trace of a scan. Columns: docs/file-scan.md.
#pragma once

#include <cstdint>
#include <string>

#include "libkyr/files.h"
#include "libkyr/properties.h"

class TraceTable {
 public:
  /// Begins the file. Failures are told on the console, here and below. @return false for one
  bool begin(const std::string& path);
  /// @param position of the trace in its file; -1 leaves the column empty
  bool take(int record, int trace, const TraceInfo& header, std::int64_t position);
  bool finish();

 private:
  bool put();
  bool fail();

  std::string path_;
  FileHandle stream_;
  std::string line_;
};
