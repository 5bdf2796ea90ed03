#include "quarlo/tapelib/frame/segdtapesource.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segdhdr.h"
#include "quarlo/tapelib/frame/fieldchoice.h"
#include "quarlo/tapelib/frame/loglines.h"
#include "quarlo/tapelib/modulecalls.h"

namespace {

/// A multiplexed field file is held as a whole. No recorder's comes near.
constexpr std::size_t kMostScanBytes = std::size_t{1} << 31;

}  // namespace

// ---- opening ------------------------------------------------------------------------------------------------------

SegdTapeSource::SegdTapeSource(ProcessRecord* procRecord, const KyrSegdInput& how)
    : procRecord_(procRecord),
      how_(how),
      tape_(procRecord),
      choice_(how),
      reader_(how.raw != 0, [this](const std::string& line) { say(line); }),
      fileChoice_(fieldFileChoice(how.fieldFiles)) {}

/// The first trace that can be read; those before it wait in front of it.
SegdTapeSource::Step SegdTapeSource::findFirst() {
  std::deque<Waiting> lost;
  Step step = findTrace();
  for (; step == Step::Found && !traces_.front().lost.empty(); step = findTrace()) {
    lost.push_back(std::move(traces_.front()));
    traces_.pop_front();
  }
  // They are met a second time.
  met_ -= std::min<std::uint64_t>(met_, lost.size());
  traces_.insert(traces_.begin(), lost.begin(), lost.end());
  hasFound_ = step == Step::Found;
  return step;
}

int SegdTapeSource::open() {
  const Step step = findFirst();
  if (step == Step::End) say("  *** There is no SEG D trace to read on the input tape.");
  return step == Step::Found && describe() ? 0 : 1;
}

bool SegdTapeSource::describe() {
  std::uint64_t announced = 0;
  std::uint32_t longest = 0;
  for (const SegdChannelSet& set : file_.record.sets) {
    if (!choice_.wants(set) || set.interval != choice_.interval()) continue;
    announced += static_cast<std::uint64_t>(set.channels);
    longest = std::max(longest, set.samples());
  }
  // Where recorders take the end of the time with them, those of other sets do, too.
  const auto isRead = [](const Waiting& trace) { return trace.lost.empty(); };
  const SegdTracePlace found = std::ranges::find_if(traces_, isRead)->place;
  const std::uint32_t described = file_.record.sets[found.set].samples();
  choice_.settle(longest + found.samples - std::min(found.samples, described));
  if (how_.tape.traces > 0) announced = static_cast<std::uint64_t>(how_.tape.traces);
  if (announced > std::numeric_limits<int>::max() || choice_.samples() > kMaxSamples) {
    say(formatText("  *** Records of %llu traces of %u samples are more than a dataset holds.",
                   static_cast<unsigned long long>(announced), choice_.samples()));
    return false;
  }
  const SegdRecord& first = file_.record;
  const double interval = choice_.interval();
  setSeisOrgCounts(&org_, {-1, static_cast<int>(announced), static_cast<int>(choice_.samples())});
  SetDSProperty(dsSampleInterval, doubleFloatType, gMillisecondsUnits, &interval, &org_);
  format_ = {.description = formatText("SEG D revision %d.%d", first.revision, first.minorRevision),
             .sampleFormat = first.formatCode,
             .bytesPerSample = (segdSampleBits(first.formatCode) + 7) / 8,
             .interval = interval / 1000.0,
             .ascending = true};
  say(formatText("%s, format %04d, from tape: at most %s a record of %u samples, %g ms.", format_.description.c_str(),
                 first.formatCode, counted(static_cast<long long>(announced), "trace").c_str(), choice_.samples(),
                 interval));
  return true;
}

// ---- field files --------------------------------------------------------------------------------------------------

void SegdTapeSource::damaged(const std::string& what) {
  isDamaged_ = true;
  say("  *** " + tape_.where() + (isInFile_ ? ", " + segdFieldFileName(file_.record) : "") + ": " + what + ".");
}

/// Goes on with the next field file.
SegdTapeSource::Step SegdTapeSource::passFile(const std::string& why) {
  if (!why.empty()) damaged(why + "; the field file is passed over");
  isInFile_ = false;
  return tape_.skipFile() ? Step::GoOn : Step::Failed;
}

/// The next trace that is taken, which then is the first that waits.
SegdTapeSource::Step SegdTapeSource::findTrace() {
  if (std::exchange(hasFound_, false)) return Step::Found;
  for (;;) {
    while (!traces_.empty()) {
      ++met_;
      if (isTaken(traces_.front())) return Step::Found;
      traces_.pop_front();
    }
    if (const Step step = searchOn(); step != Step::GoOn) return step;
  }
}

bool SegdTapeSource::isTaken(const Waiting& trace) {
  if (trace.place.set == kNoSegdSet) return true;
  const SegdChannelSet& set = file_.record.sets[trace.place.set];
  return choice_.wants(set) && choice_.fits(set, trace.place.samples);
}

SegdTapeSource::Step SegdTapeSource::searchOn() {
  switch (tape_.next()) {
    case TapeItem::Block:
      if (!isInFile_) return beginFile();
      takeBlock(tape_.block());
      return Step::GoOn;
    case TapeItem::Lost:
      if (!isInFile_) return passFile("the headers of a field file cannot be read");
      takeLostBlock();
      return Step::GoOn;
    case TapeItem::FileEnd:
      endFile();
      return Step::GoOn;
    case TapeItem::NewTape:
      return Step::GoOn;
    case TapeItem::End:
      return Step::End;
    case TapeItem::Failed:
      break;
  }
  return Step::Failed;
}

SegdTapeSource::Step SegdTapeSource::beginFile() {
  // The user can stop while field files are passed over that he does not want.
  if (kyrGoOn() == 0) return Step::End;
  if (isSegdLabel(tape_.block())) return Step::GoOn;
  file_ = {};
  bytes_.clear();
  met_ = 0;
  inBlock_ = 1;
  ++files_;
  return takeHeaders();
}

/// Reads the headers, which may go on in further blocks.
SegdTapeSource::Step SegdTapeSource::takeHeaders() {
  bytes_.add(tape_.block());
  const SegdResult<SegdSizes> sizes = segdSizes(bytes_.all());
  if (const auto* damage = std::get_if<SegdDamage>(&sizes)) return passFile(damage->what);
  const std::uint64_t wanted = std::get<SegdSizes>(sizes).headerBytes();
  while (bytes_.size() < wanted) {
    const TapeItem item = tape_.next();
    if (item == TapeItem::Failed) return Step::Failed;
    if (item != TapeItem::Block) {
      damaged(formatText("the headers end after %llu of %llu bytes", static_cast<unsigned long long>(bytes_.size()),
                         static_cast<unsigned long long>(wanted)));
      return item == TapeItem::Lost ? passFile("") : Step::GoOn;
    }
    bytes_.add(tape_.block());
  }
  SegdResult<SegdRecord> record = readSegdRecord(bytes_.all());
  if (const auto* damage = std::get_if<SegdDamage>(&record)) return passFile(damage->what);
  file_.record = std::move(std::get<SegdRecord>(record));
  if (file_.record.fieldFile && skipThisFile(procRecord_, &fileChoice_, *file_.record.fieldFile) != 0)
    return passFile("");
  isInFile_ = true;
  reader_.tellOdd(file_.record);
  if (file_.record.isMultiplexed()) return gatherScans();
  const std::string rest(bytes_.all().begin() + static_cast<std::ptrdiff_t>(wanted), bytes_.all().end());
  if (!rest.empty()) takeBlock(rest);
  return Step::GoOn;
}

/// A multiplexed field file is read to its end; with a part of it missing nobody knows to which samples the rest
/// belongs.
SegdTapeSource::Step SegdTapeSource::gatherScans() {
  bool isLost = false;
  TapeItem item = tape_.next();
  for (; item == TapeItem::Block || item == TapeItem::Lost; item = tape_.next()) {
    isLost = isLost || item == TapeItem::Lost;
    if (item == TapeItem::Block && !isLost) bytes_.add(tape_.block());
    if (bytes_.size() > kMostScanBytes) return passFile("it is longer than can be held");
  }
  SegdWalk walk(bytes_);
  file_ = walk.next().value_or(SegdFieldFile{});
  for (const SegdDamage& damage : file_.damage)
    damaged(formatText("byte %llu: %s", static_cast<unsigned long long>(damage.byte), damage.what.c_str()));
  for (std::size_t i = 0; i < file_.traces.size(); ++i)
    if (isLost)
      wait("has scans in a block that cannot be read");
    else
      traces_.push_back({file_.traces[i], i, files_, ""});
  isDamaged_ = isDamaged_ || isLost;
  leaveFile();
  return item == TapeItem::Failed ? Step::Failed : Step::GoOn;
}

void SegdTapeSource::takeBlock(std::span<const char> block) {
  bytes_.clear();
  bytes_.add(block);
  const SegdBlock found = segdTracesOf(bytes_.all(), file_.record, met_ >= file_.record.traces());
  for (const SegdDamage& damage : found.damage)
    damaged(formatText("byte %llu: %s", static_cast<unsigned long long>(damage.byte), damage.what.c_str()));
  for (const SegdTracePlace& place : found.traces)
    if (place.set == kNoSegdSet)
      wait("is damaged");
    else
      traces_.push_back({place, 0, files_, ""});
  if (!found.traces.empty()) inBlock_ = found.traces.size();
}

/// As many traces as the block before had, if so many are still to come.
void SegdTapeSource::takeLostBlock() {
  isDamaged_ = true;
  const std::uint64_t announced = std::max(file_.record.traces(), met_);
  const auto count = std::min<std::uint64_t>(inBlock_, announced - met_);
  for (std::uint64_t i = 0; i < count; ++i) wait("cannot be read");
}

void SegdTapeSource::endFile() {
  if (!isInFile_) return;
  const unsigned long long announced = file_.record.traces();
  const unsigned long long missing = met_ + 1;
  if (missing <= announced) damaged(formatText("trace %llu of %llu: it is missing", missing, announced));
  leaveFile();
}

void SegdTapeSource::leaveFile() {
  isInFile_ = false;
  if (how_.tape.oneFile != 0) tape_.endHere();
}

// ---- traces -------------------------------------------------------------------------------------------------------

int SegdTapeSource::next(StreamTrace* next) {
  const Step step = findTrace();
  if (step == Step::End) return kyrNoSuchTrace;
  if (step != Step::Found) return kyrSourceEnded;
  if (std::exchange(recordsFile_, traces_.front().file) != traces_.front().file) {
    ++record_;
    trace_ = 0;
  }
  const int most = seisOrgCounts(org_).tracesPerRecord;
  if (trace_ == most) {
    say(formatText("  *** %s, %s, has more than %s: raise \"%s\".", tape_.where().c_str(),
                   segdFieldFileName(file_.record).c_str(), counted(most, "trace").c_str(), kMostTracesName));
    return kyrSourceEnded;
  }
  next->record = record_;
  next->trace = ++trace_;
  return readTrace(next);
}

std::string SegdTapeSource::lossText(const std::string& why) const {
  return "  *** " + tape_.where() + ", " + segdFieldFileName(file_.record) + ": a trace " + why + ". It is dead.";
}

int SegdTapeSource::readTrace(StreamTrace* next) {
  const Waiting trace = std::move(traces_.front());
  traces_.pop_front();
  const auto lost = [this](const std::string& line) {
    say(line);
    return kyrTraceLost;
  };
  if (!trace.lost.empty()) return lost(trace.lost);
  next->header = {};
  next->samples.resize(choice_.samples());
  putSegdNumber(next->record, next->trace, seisOrgCounts(org_).tracesPerRecord, &next->header);
  const SegdTraceReader::Lost why =
      file_.record.isMultiplexed() ? reader_.readScans(file_, trace.index, bytes_, next->samples, &next->header)
                                   : reader_.readTrace(file_.record, trace.place, bytes_, next->samples, &next->header);
  return why ? lost(lossText(*why)) : int{kyrOk};
}

int SegdTapeSource::close() {
  choice_.tellLeftOut([this](const std::string& line) { say(line); });
  tape_.tellOfLost();
  return isDamaged_ ? kyrTraceLost : kyrOk;
}
