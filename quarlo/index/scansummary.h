/// What a scan tells at its end: how many traces there are, their ranges, what is missing from the field files.
#pragma once

#include <cstdint>
#include <map>

#include "libkyr/properties.h"

/// Numbers in any order, kept as runs without a hole.
class NumberRuns {
 public:
  void add(int number);
  /// Of every run its first number and its last.
  const std::map<std::int64_t, std::int64_t>& runs() const { return runs_; }

 private:
  std::map<std::int64_t, std::int64_t> runs_;
};

class ScanSummary {
 public:
  void take(const TraceInfo& header);
  /// @param records,places of the input, those that nobody wrote included
  void tell(int records, std::int64_t places) const;

 private:
  void tellFieldFiles() const;

  std::int64_t live_ = 0;
  std::int64_t dead_ = 0;
  NumberRuns fieldFiles_;
};
