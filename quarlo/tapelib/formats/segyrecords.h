/// The records that the traces of a SEG Y file make.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
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
  /// The same of a trace that cannot be read: it belongs to the record in hand unless that has its `most` traces.
  bool addLost(std::uint64_t most);
  /// From here on headers are of another file, which may have another byte order.
  void readAs(const SegyFormat& format, SegyReading reading);
  /// The next trace begins a record, whatever it holds.
  void breakHere() { isNew_ = true; }

  bool readsHeaders() const { return !rule_.field.empty(); }
  std::uint64_t records() const { return records_; }
  /// Traces of the last record.
  std::uint64_t ofLast() const { return ofLast_; }
  /// Traces of the largest record.
  std::uint64_t largest() const { return std::max(largest_, ofLast_); }
  const std::string& field() const { return rule_.field; }

 private:
  bool changes(std::span<const char> header);
  bool count(bool begins);

  SegyRecordRule rule_;
  SegyValue value_;
  std::optional<double> last_;  // of the record in hand; nothing while no trace has told it
  bool isNew_ = true;
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
