#include "quarlo/tapelib/frame/reformatloop.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <utility>

#include "libkyr/text.h"
#include "quarlo/tapelib/frame/loglines.h"
#include "quarlo/tapelib/frame/tapeblocks.h"

namespace {

/// The number that a float was meant to be: 0.002 and not 0.00200000009.
double shortestDecimal(float value) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  double meant = 0;
  std::from_chars(text.data(), end, meant);
  return meant;
}

}  // namespace

void announceTape(const KyrTapeCounts& counts, ReformatInput* input) {
  input->records = counts.records > 0 ? counts.records : int{KYR_MOST_RECORDS};
  input->recordsParameter = kMostRecordsName;
}

ReformatRun::ReformatRun(ProcessRecord* procRecord, const int* outputBlock, ReformatInput input)
    : record_(procRecord), input_(std::move(input)), outputBlock_(outputBlock) {}

/// A run that was neither worked to its end nor ended (a module's exception) closes what it has open as it is.
ReformatRun::~ReformatRun() {
  if (ended_) return;
  failed_ = true;
  runGuarded([this] { finish(); });
}

bool ReformatRun::fail(const std::string& line) {
  say(line);
  return fail();
}

// ---- the phases -------------------------------------------------------------------------------------------------

int ReformatRun::begin() {
  logStarted("Reformat");
  bool ready = false;
  if (!runGuarded([&] { ready = prepare(); }) || !ready) failed_ = !stopped_;
  return ready ? 0 : finish();
}

int ReformatRun::work() {
  if (!runGuarded([this] { copyRecords(); })) failed_ = true;
  return failed_ || stopped_ ? finish() : 0;
}

int ReformatRun::end() { return ended_ ? JOB_FAILED : finish(); }

bool ReformatRun::prepare() {
  int records = 0;
  float interval = 0;
  const auto count = [&](int property, int* value) {
    return GetDatasetProperty(record_, input_.link, property, longIntType, gUnknownUnits, value) == kyrOk;
  };
  SourceFormat format;
  if (!count(dsRecords, &records) || !count(dsTracesPerRecord, &counts_.tracesPerRecord) ||
      !count(dsSamples, &counts_.samples) ||
      GetDatasetProperty(record_, input_.link, dsSampleInterval, singleFloatType, gSecondsUnits, &interval) != kyrOk ||
      GetSourceFormat(record_, input_.link, &format) != kyrOk)
    return fail("  *** Error: the input is not open.");
  // A source that knows no more than the float that the property holds meant a short number.
  const bool isExact = format.interval != 0 && format.interval != static_cast<double>(interval);
  counts_.interval = isExact ? format.interval : shortestDecimal(interval);
  recordsKnown_ = records >= 0;
  const int last = recordsKnown_ ? records : input_.records;
  input_.lastRecord = input_.lastRecord > 0 ? std::min(input_.lastRecord, last) : last;
  counts_.records = std::max(0, input_.lastRecord - input_.firstRecord + 1);
  if (counts_.records == 0 || counts_.tracesPerRecord == 0) return fail("  *** The input has no traces.");
  samples_.resize(static_cast<std::size_t>(counts_.samples));
  output_ = makeTraceOutput(record_, outputBlock_, input_.told);
  if (!output_) return fail();
  const UnitStruct* const units = GetDevUnit(record_);
  frame_.emplace(JOB_TRACES_OUT, units != nullptr ? units->type : int{UT_DISK}, &shownTraces_, &percent_, &tapeFiles_);
  if (!frame_->isOpen()) return fail();
  return output_->begin(counts_, input_.link) || fail();
}

// ---- trace by trace ---------------------------------------------------------------------------------------------

void ReformatRun::copyRecords() {
  for (int record = 1; record <= counts_.records; ++record)
    if (!copyRecord(record)) return;
  if (!recordsKnown_) refuseMore(counts_.records + 1);
}

/// @return false at the end of the input, or of the run
bool ReformatRun::copyRecord(int record) {
  const int ofInput = input_.firstRecord - 1 + record;
  for (int trace = 1; trace <= counts_.tracesPerRecord; ++trace) {
    if (!goOn()) return false;
    const int place = TracePlaceFrom(record_, input_.link, ofInput, trace);
    if (place < trace || place > counts_.tracesPerRecord) break;
    trace = place;
    const int result = TraceGet(record_, input_.link, ofInput, trace, samples_.data(), &header_);
    if (result == kyrNoSuchTrace && trace == 1 && !recordsKnown_) return false;
    if (result != kyrOk && !cannotRead(result)) return false;
    records_ = record;
    const bool isThere = header_.words[trKillFlag] != killNeverWritten;
    if (isThere && !takeTrace(record, trace)) return false;
  }
  showProgress(record);
  return true;
}

bool ReformatRun::takeTrace(int record, int trace) {
  ++tracesRead_;
  largest_ = std::max(largest_, trace);
  switch (output_->put(record, trace, samples_.data(), header_)) {
    case TracePutAnswer::Written:
      shownTraces_ = static_cast<int>(std::min<std::int64_t>(++tracesWritten_, std::numeric_limits<int>::max()));
      return true;
    case TracePutAnswer::LeftOut:
      ++tracesLeftOut_;
      return true;
    case TracePutAnswer::Declined:
      stopped_ = true;
      return false;
    case TracePutAnswer::Failed:
      break;
  }
  return fail();
}

/// The source has said why. The trace is dead now, and goes where the dead go.
bool ReformatRun::cannotRead(int result) {
  failed_ = true;
  if (result == kyrSourceEnded) return false;
  ++unreadable_;
  const UnitStruct* const units = GetDevUnit(record_);
  return units == nullptr || !units->inputAbort;
}

/// A source that does not know its records may have one more than was announced: it would be lost in silence.
void ReformatRun::refuseMore(int record) {
  if (!goOn()) return;
  const int result = TraceGet(record_, input_.link, input_.firstRecord - 1 + record, 1, samples_.data(), &header_);
  if (result == kyrNoSuchTrace) return;
  fail(formatText("  *** The input has more than %s: raise \"%s\".", counted(counts_.records, "record").c_str(),
                  input_.recordsParameter));
}

bool ReformatRun::goOn() {
  if (frame_->goOn()) return true;
  logAborted("Reformat");
  stopped_ = true;
  return false;
}

void ReformatRun::showProgress(int record) {
  constexpr int kWhole = 100;
  percent_ = static_cast<int>(std::int64_t{kWhole} * record / counts_.records);
  if (input_.tapeFiles) tapeFiles_ = input_.tapeFiles() + 1;  // the number of the next, as the dialog wants it
}

// ---- the end ----------------------------------------------------------------------------------------------------

/// @return what the phase answers that comes to its end here
int ReformatRun::finish() {
  ended_ = true;
  if (frame_ && frame_->isOpen() && frame_->stopIsNews() && !stopped_) goOn();
  const bool cut = failed_ || stopped_;
  if (output_ && !output_->finish(cut ? JobEnd::CutShort : JobEnd::Success, records_, std::max(1, largest_)))
    failed_ = true;
  if (output_) tracesWritten_ -= output_->lost();
  if (CloseFile(record_, input_.link) != kyrOk) failed_ = true;
  if (failed_) logFailed();
  summarize();
  frame_.reset();
  output_.reset();
  logEnded("Reformat");
  return failed_ || stopped_ ? JOB_FAILED : JOB_OK;
}

void ReformatRun::summarize() {
  logBlank();
  say(counted(records_, "record") + ", " + counted(tracesRead_, "trace") + " read.");
  if (unreadable_ > 0) say(counted(unreadable_, "trace") + " could not be read.");
  if (tracesLeftOut_ > 0) say(counted(tracesLeftOut_, "trace") + " left out.");
  if (record_->diskFileOutputType != KYR_CHECK_RUN) say(counted(tracesWritten_, "trace") + " written.");
  if (output_) output_->tellSummary();
  logBlank();
}
