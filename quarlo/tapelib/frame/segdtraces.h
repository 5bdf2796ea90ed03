/// SEG D traces as traces of a dataset, and which of them are taken: what the sources on disk and tape share.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "libkyr/bytesat.h"
#include "libkyr/properties.h"
#include "quarlo/tapelib/formats/segdsamples.h"
#include "quarlo/tapelib/formats/segdwalk.h"
#include "quarlo/tapelib/frame/formatblocks.h"

/// Trace properties of SEG D that the suite has no number of its own for.
enum SegdTraceProperty : int {
  trSegdChannelSet = 100,
  trSegdScanType = 101,
  trSegdYear = 102,  ///< the shot by its recorder's clock
  trSegdDay = 103,   ///< of the year
  trSegdHour = 104,
  trSegdMinute = 105,
  trSegdSecond = 106,
};

using SegdSay = std::function<void(const std::string& line)>;

/// "field file 7", or that it has no number.
std::string segdFieldFileName(const SegdRecord& headers);

/// Gives a trace the number of its place in the whole; null where an int does not hold it.
void putSegdNumber(int record, int trace, int tracesPerRecord, TraceInfo* header);

/// Which traces are taken: those of the wanted channel sets, with the interval of the first, and with its samples
/// unless others are padded.
class SegdTraceChoice {
 public:
  /// @param how its head is not looked at
  explicit SegdTraceChoice(const KyrSegdInput& how) : how_(how) {}

  bool wants(const SegdChannelSet& set) const;
  /// Whether a trace of a wanted set fits; one that does not is counted. The first one fits.
  bool fits(const SegdChannelSet& set, std::uint32_t samples);
  /// From here on longer traces are left out, too. @param atLeast samples
  void settle(std::uint32_t atLeast);
  void tellLeftOut(const SegdSay& say) const;

  std::uint32_t samples() const { return samples_; }
  double interval() const { return interval_; }  ///< milliseconds

 private:
  KyrSegdInput how_;
  std::uint32_t samples_ = 0;
  double interval_ = 0;
  bool isSettled_ = false;
  std::map<std::string, std::size_t> leftOut_;
};

/// Makes properties and samples of what stands in a field file. Answers why a trace is lost, or nothing.
class SegdTraceReader {
 public:
  using Lost = std::optional<std::string>;

  /// @param raw numbers as they were recorded @param say takes lines about what is odd, each once
  SegdTraceReader(bool raw, SegdSay say) : raw_(raw), say_(std::move(say)) {}

  /// Tells what recorders have not tried yet, and units that are no millivolts.
  void tellOdd(const SegdRecord& headers);

  /// A trace with a header of its own, at its place in `bytes`. @param samples null: only the header is wanted; else
  /// zeros follow those of a shorter trace
  Lost readTrace(const SegdRecord& headers, const SegdTracePlace& place, BytesAt& bytes, std::span<float> samples,
                 TraceInfo* header);
  /// One of the traces of a multiplexed field file.
  Lost readScans(const SegdFieldFile& file, std::size_t trace, BytesAt& bytes, std::span<float> samples,
                 TraceInfo* header);

 private:
  void fill(const SegdRecord& headers, const SegdChannelSet& set, TraceInfo* header);
  double scaleOf(const SegdChannelSet& set) const { return raw_ ? kSegdRaw : segdVolts(set.toMillivolts); }
  int whole(double value, const char* name);

  bool raw_;
  SegdSay say_;
  bool roundingTold_ = false;
  bool revisionTold_ = false;
  bool unitTold_ = false;
};
