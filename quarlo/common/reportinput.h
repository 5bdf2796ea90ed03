/// The dataset that a report is about: opened in the order that all reports share, closed with the object. What it
/// could not give is counted, for one line at the end.
#pragma once

#include <string>

#include "libkyr/datasets.h"
#include "xvt/xvt.h"

/// A property of a trace; no value (null) is 0.
int wholeProperty(int property, const TraceInfo& header);
float realProperty(int property, const TraceInfo& header);

class ReportInput {
 public:
  /// Opens a dataset; the box "Error opening file %s for reading." when that fails.
  explicit ReportInput(const FILE_SPEC& file);

  bool isOpen() const { return isOpen_; }
  const std::string& path() const { return path_; }
  int records() const { return records_; }
  int traces() const { return traces_; }    ///< of each record
  int samples() const { return samples_; }  ///< of each trace
  float sampleInterval() const;             ///< in seconds

  /// Reads a trace's header, or its samples too. A trace that cannot be given comes as a dead one of zeros, and is
  /// counted if `*Counted` reads it. @return false when it could not be given
  bool header(int record, int trace, TraceInfo* header);
  bool headerCounted(int record, int trace, TraceInfo* header);
  bool traceCounted(int record, int trace, float* samples, TraceInfo* header);

  /// A console line with how many traces were lost or damaged and how many were never written, and the first of them;
  /// none when all were there.
  void tellMissing() const;

 private:
  bool open();
  bool property(int property, int type, int units, void* value) const;
  bool count(int result, int record, int trace, const TraceInfo& header);

  std::string path_;
  ProcessRecordPtr process_{NewProcessRecord()};
  Link link_;
  bool isOpen_ = false;
  int records_ = 0;
  int traces_ = 0;
  int samples_ = 0;
  float interval_ = 0;
  long lost_ = 0;
  long neverWritten_ = 0;
  int firstRecord_ = 0;
  int firstTrace_ = 0;
};
