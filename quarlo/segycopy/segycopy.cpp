#include "quarlo/segycopy/segycopy.h"

#include <algorithm>
#include <climits>
#include <optional>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/segycopy/segycopy_input.h"
#include "quarlo/segycopy/segycopy_keys.h"
#include "quarlo/segycopy/segycopy_output.h"
#include "quarlo/segycopy/segycopy_sort.h"
#include "quarlo/segycopy/segysel.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/frame/loglines.h"

namespace {

// ---- volumes ----------------------------------------------------------------------------------------------------

/// What the present volume holds and when it may end: at a change of the record value, once it is full.
struct VolumeState {
  static constexpr int kUnchangedLimit = 5000;
  static constexpr double kHeaderBytes = kEbcdicHeaderBytes + kBinaryHeaderBytes;

  int number = 1;
  int traces = 0;
  double bytes = kHeaderBytes;  // the reel headers, whatever their real size
  double lastRecord = 0.0;      // 0.0: none yet
  int unchanged = 0;            // traces with an unchanged record value

  void restart() {
    bytes = kHeaderBytes;
    traces = 0;
  }
};

// ---- the job ----------------------------------------------------------------------------------------------------

class SegyCopy {
 public:
  explicit SegyCopy(UnitStruct* allUnits) : units_(allUnits), output_(allUnits, taken_) {}
  ~SegyCopy() { endRangeLimit(); }
  SegyCopy(const SegyCopy&) = delete;
  SegyCopy& operator=(const SegyCopy&) = delete;

  int run();

 private:
  void work();
  // Everything that answers false has said why, or ends the job as it should.
  bool prepare();
  bool findInputs();
  bool makeTemporaryFiles();
  bool mayWriteVolumes();
  bool prepareRangeLimit();
  bool openInput();
  void lendTracesOf(std::unique_ptr<SegyInput> input);
  bool goOn();
  bool copyHeaders();
  bool writeHeaders();
  bool step();
  bool takeTrace(std::span<const char> trace);
  bool copyTrace(std::span<const char> trace);
  bool startNextInput();
  void warnOfDifferences();
  bool placeInVolume(double record, int traceNumber);
  bool nextVolume(int traceNumber);
  void reportFieldFile(std::span<const char> trace);
  bool outputPhase();
  bool writeSorted(int place);
  bool writeTrace(std::span<const char> trace);
  bool writeFailed();
  void finish();
  void logSummary();
  bool fail() {
    failed_ = true;
    return false;
  }
  bool fail(const char* line) {
    console_out(line);
    return fail();
  }
  bool stop() {
    logAborted("Copy");
    stopped_ = true;
    return false;
  }
  bool inputIsTape() const { return units_->type == UT_TAPE; }

  UnitStruct* units_;
  FileSet taken_;  // inputs and what belongs to them: never written to
  std::vector<std::string> files_;
  SegyOutput output_;
  std::unique_ptr<SegyInput> input_;
  std::optional<DirectoryVisit> visit_;
  std::optional<SortStore> store_;
  std::optional<JobFrame> frame_;

  int keyBytes_ = 0;
  int tracesRead_ = 0;
  int tracesWritten_ = 0;
  int tracesHanded_ = 0;  // to the output, in whatever phase
  int percent_ = 0;
  double bytesRead_ = 0;
  double bytesWritten_ = 0;
  VolumeState volume_;
  SampleFacts previousFacts_;
  std::optional<double> fieldFile_;
  bool lossIsTold_ = false;
  bool failed_ = false;
  bool stopped_ = false;
};

int SegyCopy::run() {
  logStarted("Copy");
  if (!runGuarded([this] { work(); })) failed_ = true;
  if (frame_ && !frame_->isOpen()) return JOB_NO_DIALOG;
  finish();
  return failed_ ? JOB_FAILED : JOB_OK;
}

/// All between the first line and the last ones.
void SegyCopy::work() {
  if (!prepare()) {
    failed_ = !stopped_;
    return;
  }
  frame_.emplace(JOB_SEGY, units_->type, &tracesRead_, &percent_, &tracesWritten_);
  bool more = frame_->isOpen() && copyHeaders();
  while (more) more = step();
  if (frame_->stopIsNews()) goOn();
  if (frame_->isOpen() && SgyParams.sort && !failed_ && !stopped_) outputPhase();
}

// ---- before the first trace -------------------------------------------------------------------------------------

bool SegyCopy::prepare() {
  if (SgyParams.sort && SgyParams.multipleIn && !SgyParams.concatInputs) {
    console_out("  *** Several inputs can be sorted only when they are joined into one output.");
    return false;
  }
  const std::optional<int> needed = bytesForKeys();
  if (!needed || !findInputs() || !makeTemporaryFiles() || !mayWriteVolumes() || !prepareRangeLimit()) return false;
  keyBytes_ = *needed;
  report();
  return openInput();
}

bool SegyCopy::makeTemporaryFiles() {
  if (!SgyParams.sort) return true;
  const SortStore::Created made = store_.emplace().create(&taken_);
  return made == SortStore::Created::Declined ? stop() : made == SortStore::Created::Ready;
}

/// Further volumes get their names from the first; what stands there already is asked about once, before anything is
/// written.
bool SegyCopy::mayWriteVolumes() {
  const bool byInput = SgyParams.multipleIn && !SgyParams.concatInputs;
  if (output_.isTape() || !(byInput || splitsByKey())) return true;
  const int last = byInput && !inputIsTape() ? static_cast<int>(files_.size()) - 1 : INT_MAX;
  const std::vector<std::string> names = output_.existingVolumes(last);
  if (names.empty() ||
      xvt_dm_post_confirm("Overwrite", "Cancel",
                          "%zu further volume%s of this output may be written and exist%s already:\n%s%s%s\n"
                          "Overwrite?",
                          names.size(), names.size() > 1 ? "s" : "", names.size() > 1 ? "" : "s", names.front().c_str(),
                          names.size() > 1 ? " to " : "", names.size() > 1 ? names.back().c_str() : "") == RESP_DEFAULT)
    return true;
  console_printf("  ** %s stays as it is: choose another output.", names.front().c_str());
  return stop();
}

/// Collects what the job must not write to. The output is added last, so that nothing else is written over it.
bool SegyCopy::findInputs() {
  const std::string outputPath = output_.isTape() ? "" : pathOf(units_[1].fs);
  if (!inputIsTape()) {
    if (SgyParams.multipleIn) {
      // A file made for this job is no input of it; one that holds something was there before and is.
      const bool fresh = output_.isTape() || fileSize(units_[1].fp).value_or(0) == 0;
      const DirectoryFiles found = listSegyFiles(units_->fs.dir, fresh ? outputPath : "");
      found.nameOthers(console_out);
      files_ = found.names;
      for (const std::string& name : files_) taken_.add(joinPath(fieldText(units_->fs.dir.path), name));
    } else {
      taken_.add(pathOf(units_->fs));
    }
    if (!output_.isTape() && taken_.holds(outputPath)) {
      console_printf("  *** Output file %s is an input of this job and is not written.", units_[1].name);
      return false;
    }
  }
  if (!output_.isTape()) taken_.add(outputPath);
  taken_.add(limitSourcePath());
  return true;
}

bool SegyCopy::prepareRangeLimit() {
  if (!SgyParams.rangeLimit) return true;
  const std::string log = rangeLimitLogPath();
  if (sameFile(log.c_str(), limitSourcePath().c_str())) {
    console_printf("  *** %s is read by this job and would be emptied as its log: give the file another name.",
                   log.c_str());
    return false;
  }
  if (taken_.holds(log)) {
    console_printf("  *** %s is used by this job already and cannot be the range limit log.", log.c_str());
    return false;
  }
  const bool ready = (limitsByPolygon(SgyParams) ? initPolygon() : initPointsList()) != 0;
  taken_.add(log);
  return ready;
}

bool SegyCopy::openInput() {
  if (inputIsTape()) {
    lendTracesOf(std::make_unique<SegyTapeInput>(units_));
    if (SgyParams.multipleIn && !SgyParams.concatInputs) console_printf("Output file 1: %s", units_[1].name);
    return true;
  }
  visit_.emplace(units_->fs.dir);
  if (SgyParams.multipleIn && files_.empty()) {
    console_out("  *** No valid files found in directory.");
    return false;
  }
  auto disk = std::make_unique<SegyDiskInput>(units_, files_);
  const bool opened = disk->open();
  lendTracesOf(std::move(disk));
  return opened;
}

/// What becomes of the traces holds on to them until the input needs their place.
void SegyCopy::lendTracesOf(std::unique_ptr<SegyInput> input) {
  input_ = std::move(input);
  if (store_)
    input_->beforeRefill = [this] { store_->takeOver(); };
  else
    input_->beforeRefill = [this] { output_.takeOver(); };
}

/// Both headers are read before the first is written: an input that cannot be copied leaves no beginning of an output.
bool SegyCopy::copyHeaders() {
  if (!input_->readEbcdic()) return fail();
  if (SgyParams.sort) {
    logBlank();
    console_out("Starting Input Phase...");
    logBlank();
  }
  if (!input_->readBinary()) return fail();
  previousFacts_ = input_->facts;
  if (SgyParams.sort) return (store_->addEbcdic(input_->EbcdicHdr) && store_->addBinary(input_->BinaryHdr)) || fail();
  return writeHeaders();
}

bool SegyCopy::writeHeaders() {
  if (!output_.writeHeader(input_->EbcdicHdr)) return fail("  *** Error writing EBCDIC header to output device.");
  return output_.writeHeader(input_->BinaryHdr) || fail("  *** Error writing binary header to output device.");
}

// ---- trace by trace ---------------------------------------------------------------------------------------------

bool SegyCopy::goOn() { return frame_->goOn() || stop(); }

bool SegyCopy::step() {
  if (!goOn()) return false;
  std::span<const char> trace;
  switch (input_->next(&trace)) {
    case SegyItem::Trace:
      return takeTrace(trace);
    case SegyItem::Nothing:
      return true;
    case SegyItem::NewInput:
      return startNextInput();
    case SegyItem::Failed:
      return fail();
    default:
      return false;
  }
}

bool SegyCopy::takeTrace(std::span<const char> trace) {
  ++tracesRead_;
  bytesRead_ += static_cast<double>(trace.size());
  if (trace.size() < static_cast<std::size_t>(keyBytes_)) {
    console_printf("  *** Trace %d has %zu bytes; the header keys need %d.", tracesRead_, trace.size(), keyBytes_);
    return fail();
  }
  if (traceInRange(trace.data()) != 0) {
    const bool done = SgyParams.sort ? store_->addTrace(trace) || fail() : copyTrace(trace);
    if (!done) return false;
  }
  percent_ = input_->percent(bytesRead_);
  return true;
}

bool SegyCopy::copyTrace(std::span<const char> trace) {
  if (splitsByKey() &&
      !placeInVolume(HeaderKey{SgyParams.recordByte, SgyParams.recordType}.in(trace.data()), tracesWritten_ + 1))
    return false;
  if (SgyParams.reportFFIDs) reportFieldFile(trace);
  ++tracesWritten_;
  ++volume_.traces;
  volume_.bytes += static_cast<double>(trace.size());
  return writeTrace(trace);
}

bool SegyCopy::writeTrace(std::span<const char> trace) {
  ++tracesHanded_;
  bytesWritten_ += static_cast<double>(trace.size());
  return output_.writeTrace(trace) || writeFailed();
}

/// Takes back what the output accepted and could not keep, and names the first trace of it.
bool SegyCopy::writeFailed() {
  lossIsTold_ = true;
  const LostOutput& lost = output_.lost();
  tracesHanded_ -= lost.traces;
  if (!SgyParams.sort) tracesWritten_ -= lost.traces;
  bytesWritten_ -= lost.bytes;
  console_printf("  *** Error writing trace %d to output device.", tracesHanded_ + 1);
  return fail();
}

void SegyCopy::reportFieldFile(std::span<const char> trace) {
  const double number = kFieldFileKey.in(trace.data());
  if (fieldFile_.value_or(number - 1) != number) console_printf("  Field File - %d", static_cast<int>(number));
  fieldFile_ = number;
}

// ---- several inputs ---------------------------------------------------------------------------------------------

bool SegyCopy::startNextInput() {
  if (SgyParams.concatInputs) {
    warnOfDifferences();
    previousFacts_ = input_->facts;
    return true;
  }
  if (output_.isTape()) {
    if (!output_.separateFiles()) return fail();
  } else if (output_.getAnotherOutput(input_->inputs() - 1) != SegyOutput::Volume::Ready) {
    return output_.lost().traces > 0 ? writeFailed() : fail();
  }
  return writeHeaders();
}

void SegyCopy::warnOfDifferences() {
  const SampleFacts& now = input_->facts;
  if (now.interval != previousFacts_.interval) {
    console_printf("  ** Sample interval (%d) does not match previous input (%d).", now.interval,
                   previousFacts_.interval);
  }
  if (now.samples != previousFacts_.samples)
    console_printf("  ** Samples per trace (%d) do not match previous input (%d).", now.samples,
                   previousFacts_.samples);
  if (now.format != previousFacts_.format)
    console_printf("  ** Samples format code (%d) does match previous input (%d).", now.format, previousFacts_.format);
}

// ---- several volumes --------------------------------------------------------------------------------------------

/// Decides whether a trace belongs to the present volume or begins the next.
bool SegyCopy::placeInVolume(double record, int traceNumber) {
  if (volume_.lastRecord == 0.0) {
    volume_.lastRecord = record;
    logBlank();
    console_printf("First record =  %.1f", record);
  }
  if (record == volume_.lastRecord) {
    if (++volume_.unchanged == VolumeState::kUnchangedLimit) {
      logBlank();
      console_printf(" ** Warning: record has not changed after %d traces.", VolumeState::kUnchangedLimit);
      console_out(output_.isTape() ? "             Tape may exceed maximum specified output."
                                   : "             Disk file may exceed maximum specified output.");
    }
    return true;
  }
  if (volume_.bytes >= SgyParams.bytesPerPart) {
    if (!nextVolume(traceNumber)) return false;
    console_printf("First record =  %.1f", record);
  }
  volume_.lastRecord = record;
  volume_.unchanged = 0;
  return true;
}

bool SegyCopy::nextVolume(int traceNumber) {
  const char* const kind = output_.isTape() ? "tape" : "file";
  console_printf("Last record  =  %.1f", volume_.lastRecord);
  logBlank();
  console_printf("Output %s %d is full with:", kind, volume_.number);
  console_printf("     %d traces", volume_.traces);
  console_printf("     %.0f bytes", volume_.bytes);
  logBlank();
  const SegyOutput::Volume next = output_.getAnotherOutput(volume_.number);
  if (next != SegyOutput::Volume::Ready) {
    if (output_.lost().traces > 0) return writeFailed();
    console_printf("  *** Trace %d and what follows it were not written.", traceNumber);
    if (inputIsTape() && units_->state == 1) tlv_rewind(units_, 0);
    stopped_ = next == SegyOutput::Volume::Declined;
    return stopped_ ? false : fail();
  }
  if (!output_.initOutput(input_->EbcdicHdr, input_->BinaryHdr)) return fail();
  ++volume_.number;
  volume_.restart();
  console_printf("Continuing output on %s %d", kind, volume_.number);
  logBlank();
  return true;
}

// ---- sorted output ----------------------------------------------------------------------------------------------

bool SegyCopy::outputPhase() {
  logBlank();
  console_out("Starting Sort Phase...");
  logBlank();
  std::vector<char> header;
  if (!store_->reopen() || !store_->readEbcdic(&header)) return fail();
  if (!output_.writeHeader(header)) return fail("  *** Error writing EBCDIC header to output device.");
  if (!store_->readBinary(&header)) return fail();
  if (!output_.writeHeader(header)) return fail("  *** Error writing binary header to output device.");
  if (!store_->sortIndex()) return fail();
  store_->beforeRefill = [this] { output_.takeOver(); };
  console_out("Starting Output Phase...");
  logBlank();
  for (int place = 0; place < store_->count(); ++place)
    if (!goOn() || !writeSorted(place)) return false;
  return true;
}

/// The count of traces written belongs to the direct copy and stays.
bool SegyCopy::writeSorted(int place) {
  const std::span<const char> trace = store_->trace(place);
  if (trace.empty()) {
    console_printf("  *** Error reading trace %d from temporary disk file.", place + 1);
    return fail();
  }
  return writeTrace(trace);
}

// ---- the end ----------------------------------------------------------------------------------------------------

void SegyCopy::finish() {
  if (!output_.finish(failed_ || stopped_ ? JobEnd::CutShort : JobEnd::Success)) {
    failed_ = true;
    if (output_.lost().traces > 0 && !lossIsTold_) writeFailed();
  }
  failed_ = (store_ && !store_->save()) || failed_;
  if (failed_) logFailed();
  logSummary();
  if (input_) input_->tellOfLost();
  visit_.reset();
  if (frame_) frame_->close();
  logEnded("SEG Y copy");
  store_.reset();
}

void SegyCopy::logSummary() {
  if (SgyParams.multipleIn) {
    logBlank();
    console_printf("%d segy files processed.", input_ ? input_->inputs() : 0);
  }
  logBlank();
  console_printf("%d traces read.", tracesRead_);
  console_printf("%d traces written.", tracesWritten_);
  logBlank();
  console_printf("%.0f bytes read.", bytesRead_);
  console_printf("%.0f bytes written.", bytesWritten_);
  logBlank();
  if (!SgyParams.rangeLimit) return;
  console_printf("Primary header value range in output    = %.4lf - %.4lf.", MinPrimary, MaxPrimary);
  if (limitHasSecondary(SgyParams))
    console_printf("Secondary header value range in output  = %.4lf - %.4lf.", MinSecondary, MaxSecondary);
  logBlank();
  endRangeLimit();
}

}  // namespace

int doSegyCopy(UnitStruct* ioUnit) { return SegyCopy(ioUnit).run(); }
