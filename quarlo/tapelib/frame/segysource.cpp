#include "quarlo/tapelib/frame/segysource.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segyencode.h"

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
  if (file_.error() != 0) *reason = std::strerror(file_.error());
  if (!layout || file_.error() != 0) return false;
  layout_ = std::move(*layout);
  for (const std::string& remark : layout_.remarks) say_(remark);
  reader_ = std::make_unique<SegyTraceReader>(format_, layout_);
  takeRecords(params);
  return takeCounts(reason);
}

void SegyFileSource::takeRecords(const SegySourceParams& params) {
  const SegyValue fieldFile(format_, false, "FieldFile", layout_.reading);
  const std::vector<std::uint64_t> first = std::move(layout_.firstTraces);
  for (std::size_t i = 0; i < first.size(); ++i) {
    if (params.skips) {
      const SegyPlace place = layout_.placeOf(first[i]);
      const double number = fieldFile.in(file_.at(place.place, place.headerBytes)).value_or(0.0);
      if (params.skips(cutTo<int>(number))) continue;
    }
    records_.push_back({first[i], (i + 1 < first.size() ? first[i + 1] : layout_.traces) - first[i]});
  }
}

bool SegyFileSource::takeCounts(std::string* reason) {
  constexpr std::uint64_t kMost = std::numeric_limits<int>::max();
  const auto largest = std::ranges::max_element(records_, {}, &Record::traces);
  if (layout_.traces == 0)
    *reason = "it has no whole trace";
  else if (records_.empty())
    *reason = "none of its field files is wanted";
  else if (records_.size() > kMost || largest->traces > kMost || layout_.samples() > kMaxSamples)
    *reason = formatText("%zu records of up to %llu traces of %u samples are more than a dataset holds",
                         records_.size(), number(largest->traces), layout_.samples());
  if (!reason->empty()) return false;
  setSeisOrgCounts(&org_, {static_cast<int>(records_.size()), static_cast<int>(largest->traces),
                           static_cast<int>(layout_.samples())});
  const auto interval = static_cast<float>(layout_.interval / 1e6);
  SetDSProperty(dsSampleInterval, singleFloatType, gSecondsUnits, &interval, &org_);
  return true;
}

std::vector<std::string> SegyFileSource::surveyRecords() {
  SegyRecordSurvey survey(format_, layout_.reading);
  for (std::uint64_t trace = 0; trace < layout_.traces; ++trace) {
    const SegyPlace place = layout_.placeOf(trace);
    survey.add(file_.at(place.place, place.headerBytes));
  }
  return survey.lines();
}

SourceFormat SegyFileSource::format() const {
  return {std::string(fieldText(format_.itsFileSpec.name)), layout_.sampleFormat, static_cast<int>(layout_.sampleBytes),
          layout_.interval / 1e6, false};
}

std::optional<std::uint64_t> SegyFileSource::traceAt(int record, int trace) const {
  const auto index = static_cast<std::size_t>(record - 1);
  if (record < 1 || trace < 1 || index >= records_.size()) return std::nullopt;
  const auto ofRecord = static_cast<std::uint64_t>(trace - 1);
  return ofRecord < records_[index].traces ? std::optional(records_[index].firstTrace + ofRecord) : std::nullopt;
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
    if (lostReads_.add())
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
  if (const std::string line = lostReads_.rest(path_); !line.empty()) say_(line);
  for (const std::string& line : reader_->oddities().lines()) say_(line);
  return kyrOk;
}
