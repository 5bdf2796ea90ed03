/// The index file as it is written: a header in advance, which says nothing yet, the whole of it at the end.
#pragma once

#include <memory>
#include <string>

#include "libkyr/files.h"
#include "quarlo/index/indexfile.h"

class IndexWriter {
 public:
  /// Creates the file. Failures are told on the console, here and below. @return false for one
  /// @param header what is known before the scan; belongs to this one from now on
  bool begin(const std::string& path, std::unique_ptr<IndexFile> header);
  /// Takes a live trace. @return false, after a line, when there are more of them than the header can count
  bool take(int record, int trace, const TraceInfo& info);
  bool finish();

  int count() const { return count_; }

 private:
  bool put(const void* bytes, std::size_t size, std::uint64_t offset);
  bool putEntries();
  bool fail();

  std::string path_;
  FileHandle stream_;
  std::unique_ptr<IndexFile> header_;
  indexarray entry_{};  // the one slot that all traces share
  int count_ = 0;
};
