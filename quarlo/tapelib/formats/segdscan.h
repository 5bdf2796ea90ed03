/// The scans of a multiplexed SEG D record (published standard, revisions 0 to 2.1): a start of scan of 8 bytes, whose
/// first three are all ones, then the channel sets of the scan type one after the other. Within a set the channels
/// stand side by side, once for each subscan.
#pragma once

#include <vector>

#include "quarlo/tapelib/formats/segdrecord.h"
#include "quarlo/tapelib/formats/segdsamples.h"

constexpr std::size_t kSegdScanStartBytes = 8;

/// How the channel sets of a record stand in a scan.
class SegdScans {
 public:
  /// Damage where scan types differ in length, or the general header announces another one than they take.
  static SegdResult<SegdScans> describe(const SegdRecord& record);

  std::size_t bytes() const { return bytes_; }
  /// The scans that the headers announce.
  std::uint32_t announced() const { return announced_; }
  /// The scans of a set's scan type, of `scans` that are there: the first, and how many.
  struct Range {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
  };
  Range rangeOf(std::size_t set, std::uint32_t scans) const;
  /// Where a channel (from 0) of a set stands in its scans.
  SegdScanPlace placeOf(std::size_t set, std::size_t channel) const;

 private:
  void add(const SegdChannelSet& set, const SegdRecord& record, std::uint64_t& end);

  struct Set {
    std::size_t first = 0;         // byte in the scan
    std::size_t subscanBytes = 0;  // of all channels
    int subscans = 1;
    Range scans;
  };
  std::vector<Set> sets_;
  std::size_t bytes_ = 0;
  std::size_t sampleBytes_ = 0;  // 0 for samples of 20 bits
  std::uint32_t announced_ = 0;
  bool hasOneType_ = true;
};

/// Whether the bytes are the beginning of a scan.
bool isSegdScanStart(std::span<const char> bytes);
