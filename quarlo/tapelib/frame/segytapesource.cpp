#include "quarlo/tapelib/frame/segytapesource.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segybinary.h"
#include "quarlo/tapelib/formats/segyencode.h"
#include "quarlo/tapelib/frame/loglines.h"
#include "quarlo/tapelib/modulecalls.h"

namespace {

const std::string kCannotBeRead = "cannot be read: ";

std::string textOf(std::span<const char> bytes) { return {bytes.begin(), bytes.end()}; }

bool isSameReading(const SegyLayout& one, const SegyLayout& other) {
  return one.reading.bigEndian == other.reading.bigEndian && one.reading.extended == other.reading.extended;
}

}  // namespace

// ---- opening ------------------------------------------------------------------------------------------------------

SegyTapeSource::SegyTapeSource(ProcessRecord* procRecord, SegyFormat format, const SegySourceParams& params, Say say)
    : tape_(procRecord), format_(std::move(format)), params_(params), say_(std::move(say)) {}

std::unique_ptr<SegyTapeSource> SegyTapeSource::open(ProcessRecord* procRecord, SegyFormat format,
                                                     const SegySourceParams& params, Say say, std::string* reason) {
  std::unique_ptr<SegyTapeSource> source(new SegyTapeSource(procRecord, std::move(format), params, std::move(say)));
  return source->begin(reason) ? std::move(source) : nullptr;
}

bool SegyTapeSource::begin(std::string* reason) {
  if (params_.gridLines) takeGridLines(&format_);
  TapeItem item = findTrace();
  for (; item == TapeItem::Lost; item = findTrace()) lostFirst_.push_back(kCannotBeRead + tape_.where());
  if (item == TapeItem::End) *reason = "it has no trace";
  if (item != TapeItem::Block) return false;
  if (!takeFirstTrace(tape_.block(), binary_, format_, &layout_)) {
    *reason = formatText("%s has %zu bytes, too few for a trace", tape_.where().c_str(), tape_.block().size());
    return false;
  }
  for (const std::string& remark : layout_.remarks) say_(remark);
  interval_ = layout_.interval;
  tape_.putBack();
  return takeCounts(reason);
}

bool SegyTapeSource::takeCounts(std::string* reason) {
  constexpr std::uint64_t kMost = std::numeric_limits<int>::max();
  const SegyRecordRule& rule = params_.choices.records;
  const std::uint64_t ofRule = rule.field.empty() ? rule.tracesPerRecord : 0;
  const std::uint64_t stated = ofRule != 0 ? ofRule : layout_.tracesPerRecord;
  const std::uint64_t most = params_.mostTraces > 0 ? static_cast<std::uint64_t>(params_.mostTraces) : stated;
  if (most == 0)
    *reason = formatText("the binary header does not say how many traces a record has: give \"%s\"", kMostTracesName);
  else if (most > kMost || layout_.samples() > kMaxSamples)
    *reason = formatText("records of %llu traces of %u samples are more than a dataset holds",
                         static_cast<unsigned long long>(most), layout_.samples());
  if (!reason->empty()) return false;
  setSeisOrgCounts(&org_, {-1, static_cast<int>(most), static_cast<int>(layout_.samples())});
  const auto interval = static_cast<float>(interval_ / 1e6);
  SetDSProperty(dsSampleInterval, singleFloatType, gSecondsUnits, &interval, &org_);
  return true;
}

SourceFormat SegyTapeSource::format() const {
  return {std::string(fieldText(format_.itsFileSpec.name)), layout_.sampleFormat, static_cast<int>(layout_.sampleBytes),
          interval_ / 1e6, true};
}

// ---- blocks -------------------------------------------------------------------------------------------------------

/// The block of the next trace, behind all headers.
TapeItem SegyTapeSource::findTrace() {
  for (;;) {
    TapeItem item = tape_.next();
    if (item == TapeItem::FileEnd) {
      isSameFile_ = isFileStart_ && isSameFile_;
      isFileStart_ = true;
      isTrailer_ = false;
      if (params_.oneFile && reader_ && tape_.goesOn()) tape_.endHere();
    } else if (item == TapeItem::NewTape) {
      isFileStart_ = isSameFile_ = true;
    } else if (item == TapeItem::Block && isFileStart_) {
      item = beginFile();
      if (item != TapeItem::Block) return item;
    } else if (item == TapeItem::Block && layout_.statedTrailers != 0 &&
               (isTrailer_ || beginsSegyStanza(tape_.block()))) {
      isTrailer_ = true;
    } else if (item != TapeItem::Lost || !isTrailer_) {
      return item;
    }
  }
}

TapeItem SegyTapeSource::wrong(const std::string& why) {
  say_("  *** " + tape_.where() + ": " + why + ".");
  tape_.endHere();
  return TapeItem::Failed;
}

/// The headers of a file whose first block is there. @return Block with nothing wrong
TapeItem SegyTapeSource::beginFile() {
  if (tape_.block().size() == kSegyLabelBytes) return TapeItem::Block;
  std::string text;
  std::string reason;
  if (!readReel(&text, &binary_)) return TapeItem::Failed;
  auto layout = segyTapeLayout(text, binary_, format_, params_.choices, &reason);
  if (!layout) return wrong(reason);
  const bool isFirst = !reader_;
  const bool reads = !isFirst && isSameReading(*layout, layout_);
  std::swap(layout_, *layout);
  if (!isFirst && isOtherThanFirst()) return TapeItem::Failed;
  if (!isFirst) layout_.runs = layout->runs;
  if (!reads) renewReader();
  if (!std::exchange(isSameFile_, false)) records_->breakHere();
  isFileStart_ = false;
  return readTexts();
}

/// The two reel headers, of which a description may have none; some tapes have both in one block.
bool SegyTapeSource::readReel(std::string* text, std::string* binary) {
  const auto lengthOf = [](short isThere, int bytes) {
    return isThere != 0 ? static_cast<std::size_t>(std::max(0, bytes)) : 0;
  };
  const std::size_t textBytes = lengthOf(format_.itHasReelHeader, format_.itsReelBytes);
  const std::size_t binaryBytes = lengthOf(format_.itHasBinaryHeader, format_.itsBinaryBytes);
  std::string bytes = textOf(tape_.block());
  if (textBytes != 0 && binaryBytes != 0 && bytes.size() == textBytes) {
    const TapeItem item = tape_.next();
    if (item == TapeItem::Block) bytes += textOf(tape_.block());
    if (item == TapeItem::Failed) return false;
  }
  if (textBytes + binaryBytes == 0) {
    tape_.putBack();
    bytes.clear();
  }
  *text = bytes.substr(0, textBytes);
  *binary = bytes.substr(text->size());
  if (bytes.size() == textBytes + binaryBytes) return true;
  wrong(formatText("reel headers of %zu and %zu bytes should stand here, there are %zu bytes", textBytes, binaryBytes,
                   bytes.size()));
  return false;
}

/// Extended text headers: blocks of their length, as many as are announced or up to the stanza that ends them.
TapeItem SegyTapeSource::readTexts() {
  const int announced = layout_.statedTexts;
  for (int count = 0; announced == -1 || count < announced; ++count) {
    const TapeItem item = tape_.next();
    if (item == TapeItem::Failed) return item;
    if (item == TapeItem::Lost) continue;
    const bool isText = item == TapeItem::Block && tape_.block().size() == kEbcdicHeaderBytes;
    if (!isText) {
      say_(announced == -1 ? formatText("extended text headers are announced up to a last one; the tape has %d", count)
                           : formatText("%d extended text headers are announced; the tape has %d", announced, count));
      if (item == TapeItem::Block) tape_.putBack();
      isFileStart_ = item != TapeItem::Block;
      break;
    }
    if (announced == -1 && isSegyEndStanza(tape_.block())) break;
  }
  return TapeItem::Block;
}

/// A source has one interval.
bool SegyTapeSource::isOtherThanFirst() {
  if (layout_.interval == interval_ || layout_.interval == 0.0) return false;
  wrong(
      formatText("the file that begins here has a sample interval of %.9g us, the first %.9g us: read it by a run of "
                 "its own",
                 layout_.interval, interval_));
  return true;
}

void SegyTapeSource::renewReader() {
  tellOddities();
  reader_ = std::make_unique<SegyTraceReader>(format_, layout_);
  if (!records_) records_.emplace(format_, layout_.reading, params_.choices.records);
  records_->readAs(format_, layout_.reading);
  if (params_.survey && !survey_) survey_.emplace(format_, layout_.reading);
}

// ---- traces -------------------------------------------------------------------------------------------------------

int SegyTapeSource::next(StreamTrace* next) {
  if (!lostFirst_.empty()) {
    const std::string why = lostFirst_.front();
    lostFirst_.erase(lostFirst_.begin());
    return takeLost(next, why);
  }
  for (;;) {
    const TapeItem item = findTrace();
    if (item == TapeItem::End) return kyrNoSuchTrace;
    if (item == TapeItem::Failed) return kyrSourceEnded;
    const int result = item == TapeItem::Block ? takeTrace(next) : takeLost(next, kCannotBeRead + tape_.where());
    if (!isSkipped_) return result;
    // The user can stop while field files are passed over that he does not want.
    if (kyrGoOn() == 0) return kyrNoSuchTrace;
  }
}

int SegyTapeSource::takeLost(StreamTrace* next, const std::string& why) {
  const bool begins = records_->addLost(static_cast<std::uint64_t>(seisOrgCounts(org_).tracesPerRecord));
  if (begins) isSkipped_ = false;
  if (!place(next, begins)) return kyrSourceEnded;
  if (!isSkipped_) say_(formatText("  *** Trace %d of record %d %s.", next->trace, next->record, why.c_str()));
  return kyrTraceLost;
}

int SegyTapeSource::takeTrace(StreamTrace* next) {
  const auto block = tape_.block();
  const auto found = placeInBlock(layout_, block);
  if (!found) return takeLost(next, formatText("is none: %s has %zu bytes", tape_.where().c_str(), block.size()));
  const auto head = block.first(found->headerBytes);
  const bool begins = records_->add(head);
  if (survey_) survey_->add(head);
  if (begins && params_.skips) {
    const double number = SegyValue(format_, false, "FieldFile", layout_.reading).in(head).value_or(0.0);
    isSkipped_ = params_.skips(cutTo<int>(number));
  }
  if (!place(next, begins)) return kyrSourceEnded;
  if (!isSkipped_) readTrace(block, *found, next);
  return kyrOk;
}

/// @return false when there is no place for the trace
bool SegyTapeSource::place(StreamTrace* next, bool begins) {
  if (begins && !isSkipped_) ++taken_;
  const int most = seisOrgCounts(org_).tracesPerRecord;
  if (isSkipped_) return true;
  if (records_->ofLast() > static_cast<std::uint64_t>(most)) {
    say_(formatText("  *** Record %d, at %s, has more than %s: raise \"%s\".", taken_, tape_.where().c_str(),
                    counted(most, "trace").c_str(), kMostTracesName));
    return false;
  }
  next->record = taken_;
  next->trace = static_cast<int>(records_->ofLast());
  return true;
}

void SegyTapeSource::readTrace(std::span<const char> block, const SegyPlace& place, StreamTrace* next) {
  const auto head = block.first(place.headerBytes);
  next->samples.resize(static_cast<std::size_t>(seisOrgCounts(org_).samples));
  reader_->readHeader(head, &next->header);
  reader_->readSamples(head, block.subspan(place.headerBytes), next->samples);
  if (place.samples == next->samples.size()) return;
  shortest_ = otherLengths_ == 0 ? place.samples : std::min(shortest_, place.samples);
  longest_ = std::max(longest_, place.samples);
  ++otherLengths_;
}

// ---- the end ------------------------------------------------------------------------------------------------------

void SegyTapeSource::tellOddities() {
  if (!reader_) return;
  for (const std::string& line : reader_->oddities().lines()) say_(line);
}

int SegyTapeSource::close() {
  if (otherLengths_ > 0)
    say_(formatText(
        "%s from %u to %u samples: padded or cut to the %d of the first",
        (counted(static_cast<long long>(otherLengths_), "trace") + (otherLengths_ == 1 ? " has" : " have")).c_str(),
        shortest_, longest_, seisOrgCounts(org_).samples));
  tellOddities();
  if (survey_)
    for (const std::string& line : survey_->lines()) say_(line);
  tape_.tellOfLost();
  return kyrOk;
}
