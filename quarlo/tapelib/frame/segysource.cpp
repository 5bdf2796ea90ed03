#include "quarlo/tapelib/frame/segysource.h"

#include <cerrno>
#include <cstring>
#include <limits>

#include "libkyr/files.h"
#include "libkyr/text.h"

namespace {

unsigned long long number(std::uint64_t count) { return count; }

}  // namespace

std::unique_ptr<SegyFileSource> SegyFileSource::open(const std::string& path, SegyFormat format,
                                                     const SegySourceParams& params, Say say, std::string* reason) {
  std::unique_ptr<SegyFileSource> source(new SegyFileSource(path, std::move(format), std::move(say)));
  return source->begin(params, reason) ? std::move(source) : nullptr;
}

bool SegyFileSource::begin(const SegySourceParams& params, std::string* reason) {
  if (!file_.open(path_)) {
    *reason = std::strerror(errno);
    return false;
  }
  if (params.gridLines) takeGridLines(&format_);
  auto layout = segyFileLayout(file_, format_, params.choices, reason);
  if (!layout) return false;
  layout_ = std::move(*layout);
  for (const std::string& remark : layout_.remarks) say_(remark);
  reader_ = std::make_unique<SegyTraceReader>(format_, layout_);
  SegyRecords records(format_, layout_, params.records);
  std::uint64_t trace = 0;
  const auto take = [&](std::span<const char> header) {
    if (records.add(header)) firstTraces_.push_back(trace);
    ++trace;
  };
  if (passHeaders(take)) return takeCounts(records.largest(), reason);
  *reason = formatText("trace %llu cannot be read", number(trace + 1));
  return false;
}

/// Hands out the header of every trace. @return false when one cannot be read
template <typename Take>
bool SegyFileSource::passHeaders(Take take) {
  for (const SegyRun& run : layout_.runs) {
    const std::uint64_t behind = &run == &layout_.runs.back() ? layout_.traces : (&run + 1)->firstTrace;
    const std::uint64_t length = run.headerBytes + std::uint64_t{run.samples} * layout_.sampleBytes;
    for (std::uint64_t i = 0; i < behind - run.firstTrace; ++i) {
      const auto header = file_.at(run.place + i * length, run.headerBytes);
      if (header.size() < run.headerBytes) return false;
      take(header);
    }
  }
  return true;
}

bool SegyFileSource::takeCounts(std::uint64_t largest, std::string* reason) {
  constexpr std::uint64_t kMost = std::numeric_limits<int>::max();
  if (layout_.traces == 0)
    *reason = "it has no whole trace";
  else if (firstTraces_.size() > kMost || largest > kMost || layout_.samples() > kMaxSamples)
    *reason = formatText("%zu records of up to %llu traces of %u samples are more than a dataset holds",
                         firstTraces_.size(), number(largest), layout_.samples());
  if (!reason->empty()) return false;
  setSeisOrgCounts(
      &org_, {static_cast<int>(firstTraces_.size()), static_cast<int>(largest), static_cast<int>(layout_.samples())});
  const auto interval = static_cast<float>(layout_.interval / 1e6);
  SetDSProperty(dsSampleInterval, singleFloatType, gSecondsUnits, &interval, &org_);
  return true;
}

std::vector<std::string> SegyFileSource::surveyRecords() {
  SegyRecordSurvey survey(format_, layout_);
  passHeaders([&survey](std::span<const char> header) { survey.add(header); });
  return survey.lines();
}

SourceFormat SegyFileSource::format() const {
  return {std::string(fieldText(format_.itsName)), layout_.sampleFormat, static_cast<int>(layout_.sampleBytes),
          layout_.interval / 1e6, false};
}

std::optional<std::uint64_t> SegyFileSource::traceAt(int record, int trace) const {
  const auto index = static_cast<std::size_t>(record - 1);
  if (record < 1 || trace < 1 || index >= firstTraces_.size()) return std::nullopt;
  const std::uint64_t behind = index + 1 < firstTraces_.size() ? firstTraces_[index + 1] : layout_.traces;
  const std::uint64_t wanted = firstTraces_[index] + static_cast<std::uint64_t>(trace - 1);
  return wanted < behind ? std::optional(wanted) : std::nullopt;
}

std::int64_t SegyFileSource::position(int record, int trace) {
  const auto wanted = traceAt(record, trace);
  return wanted ? static_cast<std::int64_t>(layout_.placeOf(*wanted).place) : -1;
}

bool SegyFileSource::uses(const char* path) const { return sameFile(path_.c_str(), path); }

int SegyFileSource::fetch(int record, int trace, float* samples, TraceInfo* header) {
  const auto wanted = traceAt(record, trace);
  if (!wanted) {
    makeDead(static_cast<int>(layout_.samples()), samples, header, killNeverWritten);
    return kyrOk;
  }
  const SegyPlace place = layout_.placeOf(*wanted);
  const std::size_t data = samples != nullptr ? std::size_t{place.samples} * layout_.sampleBytes : 0;
  const auto bytes = file_.at(place.place, place.headerBytes + data);
  if (bytes.size() < place.headerBytes + data) {
    say_(formatText("  *** Trace %llu, at byte %llu of %s, cannot be read.", number(*wanted + 1), number(place.place),
                    path_.c_str()));
    return kyrTraceLost;
  }
  const auto head = bytes.first(place.headerBytes);
  reader_->readHeader(head, header);
  if (samples != nullptr) reader_->readSamples(head, bytes.subspan(place.headerBytes), {samples, layout_.samples()});
  return kyrOk;
}

int SegyFileSource::close() {
  for (const std::string& line : reader_->oddities().lines()) say_(line);
  return kyrOk;
}
