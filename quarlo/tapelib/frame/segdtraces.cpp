#include "quarlo/tapelib/frame/segdtraces.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "libkyr/nullvalue.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segdhdr.h"

namespace {

constexpr int kSeismic = 1;

// Kinds of traces as SEG Y counts them, from those of channel sets.
int traceType(int setType) {
  switch (setType) {
    case kSeismic:
      return 1;
    case 2:
      return 4;  // time break
    case 3:
      return 5;  // uphole
    case 4:
      return 8;  // water break
    case 5:
      return 7;  // time counter
    default:
      return 9;  // free for optional use
  }
}

void put(TraceInfo* header, int property, std::optional<int> value) {
  const int kept = value.value_or(kNullInt);
  SetTraceProperty(property, longIntType, gUnknownUnits, &kept, header);
}

void putLocation(TraceInfo* header, int property, std::optional<int> value) {
  const float kept = value ? static_cast<float>(*value) : kNullFloat;
  SetTraceProperty(property, singleFloatType, gUnknownUnits, &kept, header);
}

}  // namespace

std::string segdFieldFileName(const SegdRecord& headers) {
  return headers.fieldFile ? formatText("field file %d", *headers.fieldFile) : "a field file without number";
}

void putSegdNumber(int record, int trace, int tracesPerRecord, TraceInfo* header) {
  const std::int64_t number = std::int64_t{record - 1} * tracesPerRecord + trace;
  put(header, trTraceNumber,
      number <= std::numeric_limits<int>::max() ? std::optional(static_cast<int>(number)) : std::nullopt);
}

// ---- which --------------------------------------------------------------------------------------------------------

bool SegdTraceChoice::wants(const SegdChannelSet& set) const {
  if (set.type != kSeismic && how_.auxiliary == 0) return false;
  const auto listed =
      std::span(how_.setList).first(static_cast<std::size_t>(std::clamp<int>(how_.sets, 0, KYR_SEGD_SETS)));
  return listed.empty() || std::ranges::count(listed, set.number) > 0;
}

bool SegdTraceChoice::fits(const SegdChannelSet& set, std::uint32_t samples) {
  if (samples_ == 0) {
    samples_ = samples;
    interval_ = set.interval;
  }
  const bool hasLength = samples == samples_ || (how_.pad != 0 && (samples < samples_ || !isSettled_));
  if (samples > 0 && set.interval == interval_ && hasLength) {
    samples_ = std::max(samples_, samples);
    return true;
  }
  ++leftOut_[formatText("channel set %d: %u samples, %g ms", set.number, samples, set.interval)];
  return false;
}

void SegdTraceChoice::settle(std::uint32_t atLeast) {
  isSettled_ = true;
  if (how_.pad != 0) samples_ = std::max(samples_, atLeast);
}

void SegdTraceChoice::tellLeftOut(const SegdSay& say) const {
  for (const auto& [what, traces] : leftOut_)
    say(formatText("  ** %zu trace%s of %s: left out, the others have %u samples, %g ms.", traces,
                   plural(static_cast<long long>(traces)), what.c_str(), samples_, interval_));
}

// ---- traces -------------------------------------------------------------------------------------------------------

void SegdTraceReader::tellOdd(const SegdRecord& headers) {
  if (headers.revision == 3 && !std::exchange(revisionTold_, true))
    say_("  ** Revision 3 of SEG D is read as its headers say. No recorder's file has tried that yet.");
  const auto hasUnit = [](const SegdChannelSet& set) { return set.physicalUnit != 0; };
  if (!raw_ && std::ranges::any_of(headers.sets, hasUnit) && !std::exchange(unitTold_, true))
    say_("  ** Not all channel sets are recorded in millivolts: read them as recorded, not in volts.");
}

SegdTraceReader::Lost SegdTraceReader::readTrace(const SegdRecord& headers, const SegdTracePlace& place, BytesAt& bytes,
                                                 std::span<float> samples, TraceInfo* header) {
  const SegdChannelSet& set = headers.sets[place.set];
  fill(headers, set, header);
  const SegdResult<SegdTrace> result = readSegdTrace(bytes.at(place.byte, kSegdTraceLookBytes), headers.revision);
  if (const auto* damage = std::get_if<SegdDamage>(&result)) return "is lost, " + damage->what;
  const auto& trace = std::get<SegdTrace>(result);
  put(header, trChannel, trace.channel);
  put(header, trKillFlag, trace.isKilled() ? killOther : 0);
  if (trace.receiverLine) put(header, trReceiverLine, whole(*trace.receiverLine, "receiver line"));
  if (trace.receiverPoint) putLocation(header, trReceiverLocation, whole(*trace.receiverPoint, "receiver point"));
  if (samples.empty()) return std::nullopt;
  const std::size_t count = segdTraceBytes(headers.formatCode, place.samples);
  const std::span<const char> data = bytes.at(place.byte + trace.headerBytes(), count);
  if (data.size() < count) return formatText("ends after %zu of %zu sample bytes", data.size(), count);
  decodeSegdTrace(headers.formatCode, data, scaleOf(set), samples.first(place.samples));
  std::ranges::fill(samples.subspan(place.samples), 0.0F);
  return std::nullopt;
}

SegdTraceReader::Lost SegdTraceReader::readScans(const SegdFieldFile& file, std::size_t trace, BytesAt& bytes,
                                                 std::span<float> samples, TraceInfo* header) {
  const SegdTracePlace& place = file.traces[trace];
  const SegdChannelSet& set = file.record.sets[place.set];
  fill(file.record, set, header);
  const auto first = std::ranges::find(file.traces, place.set, &SegdTracePlace::set) - file.traces.begin();
  const std::size_t channel = trace - static_cast<std::size_t>(first);
  put(header, trChannel, static_cast<int>(channel) + 1);
  if (samples.empty()) return std::nullopt;
  const std::size_t scans = place.samples / static_cast<std::size_t>(set.subscans);
  const std::span<const char> data = bytes.at(place.byte, scans * file.scans.bytes());
  const std::size_t decoded = decodeSegdScans(file.record.formatCode, data, file.scans.placeOf(place.set, channel),
                                              scaleOf(set), samples.first(place.samples));
  if (decoded < place.samples) return "ends too early";
  std::ranges::fill(samples.subspan(place.samples), 0.0F);
  return std::nullopt;
}

// Lines and points between whole numbers are brought to the nearest.
int SegdTraceReader::whole(double value, const char* name) {
  const auto rounded = static_cast<int>(std::lround(value));
  if (rounded != value && !roundingTold_) {
    roundingTold_ = true;
    say_(formatText("  ** Lines and points are rounded to whole numbers, first %s %g.", name, value));
  }
  return rounded;
}

void SegdTraceReader::fill(const SegdRecord& headers, const SegdChannelSet& set, TraceInfo* header) {
  put(header, trFieldFile, headers.fieldFile);
  put(header, trTraceType, traceType(set.type));
  put(header, trSegdChannelSet, set.number);
  put(header, trSegdScanType, set.scanType);
  put(header, trReceiverLine, std::nullopt);
  putLocation(header, trReceiverLocation, std::nullopt);
  put(header, trSourceLine,
      headers.sourceLine ? std::optional(whole(*headers.sourceLine, "source line")) : std::nullopt);
  putLocation(header, trSourceLocation,
              headers.sourcePoint ? std::optional(whole(*headers.sourcePoint, "source point")) : std::nullopt);
  const auto putTime = [&](int property, int SegdTime::*part) {
    put(header, property, headers.time ? std::optional((*headers.time).*part) : std::nullopt);
  };
  putTime(trSegdYear, &SegdTime::year);
  putTime(trSegdDay, &SegdTime::day);
  putTime(trSegdHour, &SegdTime::hour);
  putTime(trSegdMinute, &SegdTime::minute);
  putTime(trSegdSecond, &SegdTime::second);
}
