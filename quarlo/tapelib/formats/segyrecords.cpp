#include "quarlo/tapelib/formats/segyrecords.h"

#include <cmath>
#include <utility>

#include "libkyr/text.h"

namespace {}  // namespace

SegyRecords::SegyRecords(const SegyFormat& format, SegyReading reading, const SegyRecordRule& rule)
    : rule_(rule), value_(format, false, rule.field.c_str(), reading) {}

void SegyRecords::readAs(const SegyFormat& format, SegyReading reading) {
  value_ = SegyValue(format, false, rule_.field.c_str(), reading);
}

/// Whether the field has another value than before.
bool SegyRecords::changes(std::span<const char> header) {
  const double value = value_.in(header).value_or(0.0);
  const std::optional<double> last = std::exchange(last_, value);
  return last && *last != value && !(std::isnan(*last) && std::isnan(value));
}

bool SegyRecords::count(bool begins) {
  if (begins) {
    largest_ = largest();
    ofLast_ = 0;
    ++records_;
  }
  ++ofLast_;
  return begins;
}

bool SegyRecords::add(std::span<const char> header) {
  const bool isNew = std::exchange(isNew_, false);
  const bool isFull = !readsHeaders() && rule_.tracesPerRecord != 0 && ofLast_ == rule_.tracesPerRecord;
  const bool isOther = readsHeaders() && changes(header);
  return count(isNew || isFull || isOther);
}

bool SegyRecords::addLost(std::uint64_t most) {
  const bool begins = std::exchange(isNew_, false) || ofLast_ >= most;
  if (begins) last_.reset();
  return count(begins);
}

SegyRecordSurvey::SegyRecordSurvey(const SegyFormat& format, SegyReading reading) {
  for (const char* name : {"FieldFile", "SourcePoint", "Ensemble", "Inline", "Crossline"})
    if (getField(format.itsTraceFields, name) != nullptr)
      fields_.emplace_back(format, reading, SegyRecordRule{name, 0});
}

void SegyRecordSurvey::add(std::span<const char> header) {
  for (SegyRecords& each : fields_) each.add(header);
}

std::vector<std::string> SegyRecordSurvey::lines() const {
  std::vector<std::string> lines;
  for (const SegyRecords& each : fields_)
    lines.push_back(formatText("A new record where \"%s\" changes: %llu record%s, at most %llu trace%s each",
                               each.field().c_str(), static_cast<unsigned long long>(each.records()),
                               plural(each.records()), static_cast<unsigned long long>(each.largest()),
                               plural(each.largest())));
  return lines;
}
