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
  static constexpr int UNCHANGED_LIMIT = 5000;
  static constexpr double HEADER_BYTES = EBCDIC_HEADER_BYTES + BINARY_HEADER_BYTES;

  int number = 1;
  int traces = 0;
  double bytes = HEADER_BYTES;  // the reel headers, whatever their real size
  double lastRecord = 0.0;      // 0.0: none yet
  int unchanged = 0;            // traces with an unchanged record value

  void restart() {
    bytes = HEADER_BYTES;
    traces = 0;
  }
};

// ---- the job ----------------------------------------------------------------------------------------------------

class SegyCopy {
 public:
  explicit SegyCopy(UnitStruct* allUnits) : units(allUnits), output(allUnits, taken) {}
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
    failed = true;
    return false;
  }
  bool fail(const char* line) {
    console_out(line);
    return fail();
  }
  bool stop() {
    logAborted("Copy");
    stopped = true;
    return false;
  }
  bool inputIsTape() const { return units->type == UT_TAPE; }

  UnitStruct* units;
  FileSet taken;  // inputs and what belongs to them: never written to
  std::vector<std::string> files;
  SegyOutput output;
  std::unique_ptr<SegyInput> input;
  std::optional<DirectoryVisit> visit;
  std::optional<SortStore> store;
  std::optional<JobFrame> frame;

  int keyBytes = 0;
  int tracesRead = 0;
  int tracesWritten = 0;
  int tracesHanded = 0;  // to the output, in whatever phase
  int percent = 0;
  double bytesRead = 0;
  double bytesWritten = 0;
  VolumeState volume;
  SampleFacts previousFacts;
  std::optional<double> fieldFile;
  bool failed = false;
  bool stopped = false;
};

int SegyCopy::run() {
  logStarted("Copy");
  if (!runGuarded([this] { work(); })) failed = true;
  if (frame && !frame->isOpen()) return JOB_NO_DIALOG;
  finish();
  return failed ? JOB_FAILED : JOB_OK;
}

/// All between the first line and the last ones.
void SegyCopy::work() {
  if (!prepare()) {
    failed = !stopped;
    return;
  }
  frame.emplace(JOB_SEGY, units->type, &tracesRead, &percent, &tracesWritten);
  bool more = frame->isOpen() && copyHeaders();
  while (more) more = step();
  if (frame->stopIsNews()) goOn();
  if (frame->isOpen() && SgyParams.sort && !failed && !stopped) outputPhase();
}

// ---- before the first trace -------------------------------------------------------------------------------------

bool SegyCopy::prepare() {
  if (SgyParams.sort && SgyParams.multipleIn && !SgyParams.concatInputs) {
    console_out("  *** Several inputs can be sorted only when they are joined into one output.");
    return false;
  }
  const std::optional<int> needed = bytesForKeys();
  if (!needed || !findInputs() || !makeTemporaryFiles() || !mayWriteVolumes() || !prepareRangeLimit()) return false;
  keyBytes = *needed;
  report();
  return openInput();
}

bool SegyCopy::makeTemporaryFiles() {
  if (!SgyParams.sort) return true;
  const SortStore::Created made = store.emplace().create(&taken);
  return made == SortStore::Created::Declined ? stop() : made == SortStore::Created::Ready;
}

/// Further volumes get their names from the first; what stands there already is asked about once, before anything is
/// written.
bool SegyCopy::mayWriteVolumes() {
  const bool byInput = SgyParams.multipleIn && !SgyParams.concatInputs;
  if (output.isTape() || !(byInput || splitsByKey())) return true;
  const int last = byInput && !inputIsTape() ? static_cast<int>(files.size()) - 1 : INT_MAX;
  const std::vector<std::string> names = output.existingVolumes(last);
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
  const std::string outputPath = output.isTape() ? "" : pathOf(units[1].fs);
  if (!inputIsTape()) {
    if (SgyParams.multipleIn) {
      // A file made for this job is no input of it; one that holds something was there before and is.
      const bool fresh = output.isTape() || fileSize(units[1].fp).value_or(0) == 0;
      const DirectoryFiles found = listSegyFiles(units->fs.dir, fresh ? outputPath : "");
      found.nameOthers(console_out);
      files = found.names;
      for (const std::string& name : files) taken.add(joinPath(fieldText(units->fs.dir.path), name));
    } else {
      taken.add(pathOf(units->fs));
    }
    if (!output.isTape() && taken.holds(outputPath)) {
      console_printf("  *** Output file %s is an input of this job and is not written.", units[1].name);
      return false;
    }
  }
  if (!output.isTape()) taken.add(outputPath);
  taken.add(limitSourcePath());
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
  if (taken.holds(log)) {
    console_printf("  *** %s is used by this job already and cannot be the range limit log.", log.c_str());
    return false;
  }
  const bool ready = (limitsByPolygon(SgyParams) ? initPolygon() : initPointsList()) != 0;
  taken.add(log);
  return ready;
}

bool SegyCopy::openInput() {
  if (inputIsTape()) {
    input = std::make_unique<SegyTapeInput>(units);
    if (SgyParams.multipleIn && !SgyParams.concatInputs) console_printf("Output file 1: %s", units[1].name);
    return true;
  }
  visit.emplace(units->fs.dir);
  if (SgyParams.multipleIn && files.empty()) {
    console_out("  *** No valid files found in directory.");
    return false;
  }
  auto disk = std::make_unique<SegyDiskInput>(units, files);
  const bool opened = disk->open();
  input = std::move(disk);
  return opened;
}

/// Both headers are read before the first is written: an input that cannot be copied leaves no beginning of an output.
bool SegyCopy::copyHeaders() {
  if (!input->readEbcdic()) return fail();
  if (SgyParams.sort) {
    logBlank();
    console_out("Starting Input Phase...");
    logBlank();
  }
  if (!input->readBinary()) return fail();
  previousFacts = input->facts;
  if (SgyParams.sort) return (store->addEbcdic(input->EbcdicHdr) && store->addBinary(input->BinaryHdr)) || fail();
  return writeHeaders();
}

bool SegyCopy::writeHeaders() {
  if (!output.writeHeader(input->EbcdicHdr)) return fail("  *** Error writing EBCDIC header to output device.");
  return output.writeHeader(input->BinaryHdr) || fail("  *** Error writing binary header to output device.");
}

// ---- trace by trace ---------------------------------------------------------------------------------------------

bool SegyCopy::goOn() { return frame->goOn() || stop(); }

bool SegyCopy::step() {
  if (!goOn()) return false;
  std::span<const char> trace;
  switch (input->next(&trace)) {
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
  ++tracesRead;
  bytesRead += static_cast<double>(trace.size());
  if (trace.size() < static_cast<std::size_t>(keyBytes)) {
    console_printf("  *** Trace %d has %zu bytes; the header keys need %d.", tracesRead, trace.size(), keyBytes);
    return fail();
  }
  if (traceInRange(trace.data()) != 0) {
    const bool done = SgyParams.sort ? store->addTrace(trace) || fail() : copyTrace(trace);
    if (!done) return false;
  }
  percent = input->percent(bytesRead);
  return true;
}

bool SegyCopy::copyTrace(std::span<const char> trace) {
  if (splitsByKey() &&
      !placeInVolume(HeaderKey{SgyParams.recordByte, SgyParams.recordType}.in(trace.data()), tracesWritten + 1))
    return false;
  if (SgyParams.reportFFIDs) reportFieldFile(trace);
  ++tracesWritten;
  ++volume.traces;
  volume.bytes += static_cast<double>(trace.size());
  return writeTrace(trace);
}

bool SegyCopy::writeTrace(std::span<const char> trace) {
  ++tracesHanded;
  bytesWritten += static_cast<double>(trace.size());
  return output.writeTrace(trace) || writeFailed();
}

/// Takes back what the output accepted and could not keep, and names the first trace of it.
bool SegyCopy::writeFailed() {
  const LostOutput& lost = output.lost();
  tracesHanded -= lost.traces;
  if (!SgyParams.sort) tracesWritten -= lost.traces;
  bytesWritten -= lost.bytes;
  console_printf("  *** Error writing trace %d to output device.", tracesHanded + 1);
  return fail();
}

void SegyCopy::reportFieldFile(std::span<const char> trace) {
  const double number = FIELD_FILE_KEY.in(trace.data());
  if (fieldFile.value_or(number - 1) != number) console_printf("  Field File - %d", static_cast<int>(number));
  fieldFile = number;
}

// ---- several inputs ---------------------------------------------------------------------------------------------

bool SegyCopy::startNextInput() {
  if (SgyParams.concatInputs) {
    warnOfDifferences();
    previousFacts = input->facts;
    return true;
  }
  if (output.isTape()) {
    if (!output.separateFiles()) return fail();
  } else if (output.getAnotherOutput(input->inputs() - 1) != SegyOutput::Volume::Ready) {
    return output.lost().traces > 0 ? writeFailed() : fail();
  }
  return writeHeaders();
}

void SegyCopy::warnOfDifferences() {
  const SampleFacts& now = input->facts;
  if (now.interval != previousFacts.interval) {
    console_printf("  ** Sample interval (%d) does not match previous input (%d).", now.interval,
                   previousFacts.interval);
  }
  if (now.samples != previousFacts.samples)
    console_printf("  ** Samples per trace (%d) do not match previous input (%d).", now.samples, previousFacts.samples);
  if (now.format != previousFacts.format)
    console_printf("  ** Samples format code (%d) does match previous input (%d).", now.format, previousFacts.format);
}

// ---- several volumes --------------------------------------------------------------------------------------------

/// Decides whether a trace belongs to the present volume or begins the next.
bool SegyCopy::placeInVolume(double record, int traceNumber) {
  if (volume.lastRecord == 0.0) {
    volume.lastRecord = record;
    logBlank();
    console_printf("First record =  %.1f", record);
  }
  if (record == volume.lastRecord) {
    if (++volume.unchanged == VolumeState::UNCHANGED_LIMIT) {
      logBlank();
      console_printf(" ** Warning: record has not changed after %d traces.", VolumeState::UNCHANGED_LIMIT);
      console_out(output.isTape() ? "             Tape may exceed maximum specified output."
                                  : "             Disk file may exceed maximum specified output.");
    }
    return true;
  }
  if (volume.bytes >= SgyParams.bytesPerPart) {
    if (!nextVolume(traceNumber)) return false;
    console_printf("First record =  %.1f", record);
  }
  volume.lastRecord = record;
  volume.unchanged = 0;
  return true;
}

bool SegyCopy::nextVolume(int traceNumber) {
  const char* const kind = output.isTape() ? "tape" : "file";
  console_printf("Last record  =  %.1f", volume.lastRecord);
  logBlank();
  console_printf("Output %s %d is full with:", kind, volume.number);
  console_printf("     %d traces", volume.traces);
  console_printf("     %.0f bytes", volume.bytes);
  logBlank();
  const SegyOutput::Volume next = output.getAnotherOutput(volume.number);
  if (next != SegyOutput::Volume::Ready) {
    if (output.lost().traces > 0) return writeFailed();
    console_printf("  *** Trace %d and what follows it were not written.", traceNumber);
    if (inputIsTape() && units->state == 1) tlv_rewind(units, 0);
    stopped = next == SegyOutput::Volume::Declined;
    return stopped ? false : fail();
  }
  if (!output.initOutput(input->EbcdicHdr, input->BinaryHdr)) return fail();
  ++volume.number;
  volume.restart();
  console_printf("Continuing output on %s %d", kind, volume.number);
  logBlank();
  return true;
}

// ---- sorted output ----------------------------------------------------------------------------------------------

bool SegyCopy::outputPhase() {
  logBlank();
  console_out("Starting Sort Phase...");
  logBlank();
  std::vector<char> header;
  if (!store->reopen() || !store->readEbcdic(&header)) return fail();
  if (!output.writeHeader(header)) return fail("  *** Error writing EBCDIC header to output device.");
  if (!store->readBinary(&header)) return fail();
  if (!output.writeHeader(header)) return fail("  *** Error writing binary header to output device.");
  if (!store->sortIndex()) return fail();
  console_out("Starting Output Phase...");
  logBlank();
  for (int place = 0; place < store->count(); ++place)
    if (!goOn() || !writeSorted(place)) return false;
  return true;
}

/// The count of traces written belongs to the direct copy and stays.
bool SegyCopy::writeSorted(int place) {
  const std::span<const char> trace = store->trace(place);
  if (trace.empty()) {
    console_printf("  *** Error reading trace %d from temporary disk file.", place + 1);
    return fail();
  }
  return writeTrace(trace);
}

// ---- the end ----------------------------------------------------------------------------------------------------

void SegyCopy::finish() {
  const int lostBefore = output.lost().traces;
  if (!output.finish(failed || stopped ? JobEnd::CutShort : JobEnd::Success)) {
    failed = true;
    if (output.lost().traces > lostBefore) writeFailed();
  }
  failed = (store && !store->save()) || failed;
  if (failed) logFailed();
  logSummary();
  if (input) input->tellOfLost();
  visit.reset();
  if (frame) frame->close();
  logEnded("SEG Y copy");
  store.reset();
}

void SegyCopy::logSummary() {
  if (SgyParams.multipleIn) {
    logBlank();
    console_printf("%d segy files processed.", input ? input->inputs() : 0);
  }
  logBlank();
  console_printf("%d traces read.", tracesRead);
  console_printf("%d traces written.", tracesWritten);
  logBlank();
  console_printf("%.0f bytes read.", bytesRead);
  console_printf("%.0f bytes written.", bytesWritten);
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
