/// The records that the traces of a SEG Y file make.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "quarlo/tapelib/formats/segydecode.h"
#include "quarlo/tapelib/formats/segyformat.h"

/// Where a new record begins.
struct SegyRecordRule {
  std::string field = "FieldFile";    ///< where this field changes; empty: nowhere
  std::uint64_t tracesPerRecord = 0;  ///< without a field: every so many traces; 0: all are one record
};

/// The records that traces make, one trace after the other.
class SegyRecords {
 public:
  SegyRecords(const SegyFormat& format, SegyReading reading, const SegyRecordRule& rule);

  /// The next trace. @return whether a record begins with it
  bool add(std::span<const char> header);

  bool readsHeaders() const { return !rule_.field.empty(); }
  std::uint64_t records() const { return records_; }
  /// Traces of the largest record.
  std::uint64_t largest() const { return std::max(largest_, ofLast_); }
  const std::string& field() const { return rule_.field; }

 private:
  bool beginsRecord(std::span<const char> header);

  SegyRecordRule rule_;
  SegyValue value_;
  double last_ = 0.0;
  std::uint64_t records_ = 0;
  std::uint64_t ofLast_ = 0;   // traces
  std::uint64_t largest_ = 0;  // of those before the last
};

/// What records each of the fields would make that often part them, for a user who has to choose.
class SegyRecordSurvey {
 public:
  SegyRecordSurvey(const SegyFormat& format, SegyReading reading);

  void add(std::span<const char> header);
  /// A line for each field.
  std::vector<std::string> lines() const;

 private:
  std::vector<SegyRecords> fields_;
};
