#include "quarlo/tapelib/formats/segytraces.h"

#include <algorithm>
#include <cstdint>

#include "libkyr/nullvalue.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segyencode.h"

namespace {

unsigned long long number(std::uint64_t count) { return count; }

/// A header in which nothing is known yet.
TraceInfo unknownTrace() {
  TraceInfo header{};
  for (const PropertyEntry& entry : tracePropertyTable())
    if (entry.code != trKillFlag) SetTraceProperty(entry.code, longIntType, gUnknownUnits, &kNullInt, &header);
  return header;
}

}  // namespace

void takeGridLines(SegyFormat* format) {
  for (SegyField* field = format->itsTraceFields; field != nullptr; field = field->nextField)
    if (field->inputKyrHeader == trCmpLine || field->inputKyrHeader == trCmpLocation) field->inputKyrHeader = trNone;
  if (SegyField* const line = getField(format->itsTraceFields, "Inline")) line->inputKyrHeader = trCmpLine;
  if (SegyField* const point = getField(format->itsTraceFields, "Crossline")) point->inputKyrHeader = trCmpLocation;
}

std::vector<std::string> SegyOddities::lines() const {
  std::vector<std::string> lines;
  const auto add = [&lines](std::uint64_t count, const std::string& line) {
    if (count != 0) lines.push_back(line);
  };
  add(samples.infinite,
      formatText("%zu sample%s beyond single precision: infinite", samples.infinite, plural(samples.infinite)));
  add(samples.notNumbers,
      formatText("%zu sample%s no number (NaN): kept", samples.notNumbers, samples.notNumbers > 1 ? "s are" : " is"));
  add(delayed, formatText("%llu trace%s a delay, the first one of %.9g ms: kept in trace property %d", number(delayed),
                          delayed > 1 ? "s have" : " has", firstDelay * 1000.0, kTraceDelay));
  add(oddScalars,
      formatText("%llu scalar%s no power of ten up to 10000 (field \"%s\" first): values are taken as they stand",
                 number(oddScalars), oddScalars > 1 ? "s are" : " is", oddScalarField.c_str()));
  return lines;
}

SegyTraceReader::SegyTraceReader(const SegyFormat& format, const SegyLayout& layout)
    : layout_(layout),
      type_(format, false, "TraceType", layout.reading),
      weight_(format, false, "WeightingFactor", layout.reading),
      nothing_(unknownTrace()) {
  for (const SegyField* field = format.itsTraceFields; field != nullptr; field = field->nextField)
    if (field->inputKyrHeader != trNone)
      mapped_.push_back({SegyValue(format, field, layout.reading), field->inputKyrHeader, field});
}

void SegyTraceReader::readHeader(std::span<const char> header, TraceInfo* properties) {
  *properties = nothing_;
  for (const Mapped& each : mapped_) {
    bool isOdd = false;
    const auto value = each.value.in(header, &isOdd);
    if (!value) continue;
    SetTraceProperty(each.property, doubleFloatType, gUnknownUnits, &*value, properties);
    if (isOdd && odd_.oddScalars++ == 0) odd_.oddScalarField = fieldText(each.field->itsName);
    if (each.property == kTraceDelay && *value != 0.0 && odd_.delayed++ == 0) odd_.firstDelay = *value;
  }
  markDead(header, properties);
}

void SegyTraceReader::markDead(std::span<const char> header, TraceInfo* properties) const {
  constexpr double kDeadTrace = 2.0;
  constexpr std::int32_t kKill = killOther;
  if (type_.in(header) == kDeadTrace) SetTraceProperty(trKillFlag, longIntType, gUnknownUnits, &kKill, properties);
}

void SegyTraceReader::readSamples(std::span<const char> header, std::span<const char> data, std::span<float> samples) {
  const std::size_t count = layout_.sampleBytes == 0 ? 0 : std::min(samples.size(), data.size() / layout_.sampleBytes);
  const auto weight = cutTo<std::int16_t>(weight_.in(header).value_or(0.0));
  odd_.samples +=
      segySamplesIn(data.data(), samples.data(), count, layout_.sampleFormat, layout_.reading.bigEndian, weight);
  std::ranges::fill(samples.subspan(count), 0.0F);
}
