#include "quarlo/tapelib/formats/segywalk.h"

#include <algorithm>

#include "libkyr/byteorder.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segybinary.h"

namespace {

/// One way of taking a file.
struct Fit {
  std::uint32_t headerBytes = 0;
  std::vector<SegyRun> runs;
  std::uint64_t traces = 0;
  std::uint64_t rest = 0;
  bool isOwn = false;  // by the traces' own counts
  std::vector<std::uint64_t> firstTraces = {};
  std::uint64_t largestRecord = 0;
};

/// Gathers the records of a fit, trace by trace.
class RecordsOf {
 public:
  RecordsOf(SegyRecords records, Fit* fit) : records_(std::move(records)), fit_(*fit) {}
  void add(std::uint64_t trace, std::span<const char> header) {
    if (records_.add(header)) fit_.firstTraces.push_back(trace);
    fit_.largestRecord = records_.largest();
  }

 private:
  SegyRecords records_;
  Fit& fit_;
};

class Fitting {
 public:
  Fitting(BytesAt& file, const SegyFormat& format, const SegyRecordRule& records, std::uint64_t binarySamples,
          const SegyLayout& layout)
      : file_(file),
        layout_(layout),
        noRecords_(format, layout.reading, records),
        own_(format, false, "Nt", layout.reading),
        hasHeader_(format.itHasTraceHeader != 0),
        binarySamples_(std::min(binarySamples, kMaxCount)) {}

  Fit with(std::uint32_t headerBytes);
  /// Finds the records of a fit whose headers were not read.
  void addRecords(Fit* fit);
  /// The first trace's own count.
  std::uint64_t firstCount(std::uint32_t headerBytes) {
    return hasHeader_ ? own_.countIn(file_.at(layout_.firstTrace, headerBytes)) : 0;
  }

 private:
  std::uint64_t room() const { return layout_.end - std::min(layout_.firstTrace, layout_.end); }
  Fit byOwnCounts(std::uint32_t headerBytes);
  Fit byOneCount(std::uint32_t headerBytes);

  BytesAt& file_;
  const SegyLayout& layout_;
  SegyRecords noRecords_;
  SegyValue own_;
  bool hasHeader_;
  std::uint64_t binarySamples_;
};

Fit Fitting::byOwnCounts(std::uint32_t headerBytes) {
  Fit fit{headerBytes, {}, 0, room(), true};
  RecordsOf records(noRecords_, &fit);
  std::uint64_t place = layout_.firstTrace;
  while (hasHeader_ && fit.rest > 0) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(headerBytes, fit.rest));
    const auto header = file_.at(place, wanted);
    const std::uint64_t samples = own_.countIn(header);
    const std::uint32_t ownBytes = segyTraceHeaderBytes(layout_, header);
    const std::uint64_t length = ownBytes + samples * layout_.sampleBytes;
    if (header.size() < wanted || samples == 0 || samples > kMaxCount || length > fit.rest) break;
    if (fit.runs.empty() || fit.runs.back().samples != samples || fit.runs.back().headerBytes != ownBytes)
      fit.runs.push_back({fit.traces, place, ownBytes, static_cast<std::uint32_t>(samples)});
    records.add(fit.traces++, header);
    place += length;
    fit.rest -= length;
  }
  return fit;
}

Fit Fitting::byOneCount(std::uint32_t headerBytes) {
  Fit fit{headerBytes, {}, 0, room(), false};
  const std::uint64_t samples = binarySamples_ != 0 ? binarySamples_ : std::min(firstCount(headerBytes), kMaxCount);
  const std::uint64_t length = headerBytes + samples * layout_.sampleBytes;
  if (samples == 0 || length == 0 || length > fit.rest) return fit;
  fit.traces = fit.rest / length;
  fit.rest %= length;
  fit.runs.push_back({0, layout_.firstTrace, headerBytes, static_cast<std::uint32_t>(samples)});
  return fit;
}

void Fitting::addRecords(Fit* fit) {
  RecordsOf records(noRecords_, fit);
  const SegyRun& run = fit->runs.front();
  const std::uint64_t length = run.headerBytes + std::uint64_t{run.samples} * layout_.sampleBytes;
  for (std::uint64_t trace = 0; trace < fit->traces; ++trace) {
    std::span<const char> header;
    if (noRecords_.readsHeaders()) {
      header = file_.at(run.place + trace * length, run.headerBytes);
      if (header.size() < run.headerBytes) return;
    }
    records.add(trace, header);
  }
}

Fit Fitting::with(std::uint32_t headerBytes) {
  Fit own;
  if (!layout_.fixedLength) {
    own = byOwnCounts(headerBytes);
    if (own.rest == 0) return own;
  }
  Fit one = byOneCount(headerBytes);
  if (one.rest == 0) return one;
  if (layout_.fixedLength) own = byOwnCounts(headerBytes);
  return own.rest < one.rest ? own : one;
}

/// What the counts say against each other.
void remarkOnCounts(const Fit& fit, std::uint64_t firstCount, std::uint64_t binaryCount,
                    std::vector<std::string>* remarks) {
  const auto number = [](std::uint64_t count) { return static_cast<unsigned long long>(count); };
  const auto [least, most] = std::ranges::minmax(fit.runs, {}, &SegyRun::samples);
  if (least.samples != most.samples)
    remarks->push_back(formatText("Traces have from %u to %u samples: all are padded or cut to the %u of the first",
                                  least.samples, most.samples, fit.runs.front().samples));
  else if (fit.isOwn && binaryCount != 0 && binaryCount != least.samples)
    remarks->push_back(formatText("The binary header gives %llu samples per trace, the traces have %u",
                                  number(binaryCount), least.samples));
  if (!fit.isOwn && firstCount != 0 && firstCount != least.samples)
    remarks->push_back(formatText("The first trace's header gives %llu samples, the traces have %u", number(firstCount),
                                  least.samples));
}

void remarkOn(const Fit& fit, const SegyLayout& layout, std::vector<std::string>* remarks) {
  if (fit.traces == 0) remarks->push_back("The file has no whole trace");
  if (fit.isOwn && layout.fixedLength && fit.traces != 0)
    remarks->push_back("The file says that all traces have one length, which its own length contradicts");
  if (fit.rest != 0)
    remarks->push_back(formatText("%llu byte%s behind the last whole trace %s left out",
                                  static_cast<unsigned long long>(fit.rest), plural(static_cast<long long>(fit.rest)),
                                  fit.rest == 1 ? "is" : "are"));
}

}  // namespace

void fitTraces(BytesAt& file, const SegyFormat& format, const SegyRecordRule& records,
               const std::vector<std::uint32_t>& headerLengths, std::uint64_t binarySamples, SegyLayout* layout) {
  Fitting fitting(file, format, records, binarySamples, *layout);
  Fit best;
  bool isFirst = true;
  for (const std::uint32_t headerBytes : headerLengths) {
    Fit fit = fitting.with(headerBytes);
    // Of a file that was cut none leads to its end: less left over proves nothing there.
    if (isFirst || fit.rest == 0 || best.traces == 0) best = std::move(fit);
    isFirst = false;
    if (best.rest == 0) break;
  }
  if (best.traces != 0) remarkOnCounts(best, fitting.firstCount(best.headerBytes), binarySamples, &layout->remarks);
  remarkOn(best, *layout, &layout->remarks);
  if (!best.isOwn && best.traces != 0) fitting.addRecords(&best);
  layout->firstTraces = std::move(best.firstTraces);
  layout->largestRecord = best.largestRecord;
  layout->headerBytes = best.headerBytes;
  layout->traces = best.traces;
  layout->rest = best.rest;
  layout->runs = std::move(best.runs);
}
