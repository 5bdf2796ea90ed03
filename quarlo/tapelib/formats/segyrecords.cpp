#include "quarlo/tapelib/formats/segyrecords.h"

#include <cmath>
#include <utility>

#include "libkyr/text.h"

namespace {

unsigned long long number(std::uint64_t count) { return count; }
const char* ending(std::uint64_t count) { return count > 1 ? "s" : ""; }

}  // namespace

SegyRecords::SegyRecords(const SegyFormat& format, SegyReading reading, const SegyRecordRule& rule)
    : rule_(rule), value_(format, false, rule.field.c_str(), reading) {}

bool SegyRecords::beginsRecord(std::span<const char> header) {
  if (rule_.field.empty()) return records_ == 0 || (rule_.tracesPerRecord != 0 && ofLast_ == rule_.tracesPerRecord);
  const double last = std::exchange(last_, value_.in(header).value_or(0.0));
  return records_ == 0 || (last_ != last && !(std::isnan(last_) && std::isnan(last)));
}

bool SegyRecords::add(std::span<const char> header) {
  const bool begins = beginsRecord(header);
  if (begins) {
    largest_ = largest();
    ofLast_ = 0;
    ++records_;
  }
  ++ofLast_;
  return begins;
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
                               each.field().c_str(), number(each.records()), ending(each.records()),
                               number(each.largest()), ending(each.largest())));
  return lines;
}
