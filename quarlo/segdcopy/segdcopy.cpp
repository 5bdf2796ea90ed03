#include "quarlo/segdcopy/segdcopy.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/segdcopy/segdcopy_input.h"
#include "quarlo/segdcopy/segdcopy_log.h"
#include "quarlo/segdcopy/segdcopy_output.h"
#include "quarlo/segdcopy/segdlist.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/formats/segdhdr.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/frame/loglines.h"

namespace {

std::string listPath(const PathField& directory, const PathField& file) {
  return joinPath(trimText(fieldText(directory)), fieldText(file));
}

class SegdCopy {
 public:
  explicit SegdCopy(UnitStruct* allUnits) : units(allUnits), output(allUnits, taken) {}
  ~SegdCopy();
  SegdCopy(const SegdCopy&) = delete;
  SegdCopy& operator=(const SegdCopy&) = delete;

  int run();

 private:
  void work();
  // Everything that answers false has said why, or ends the job as it should.
  bool initLists() const;
  void findTakenFiles();
  void openLog() const;
  bool prepare();
  bool keyIsSound() const;
  bool openInput();
  bool prepend();
  bool goOn();
  bool copyNextFile();
  void logFirst();
  bool skipFile();
  bool copyFile();
  bool copyTraces();
  bool copyTrace(std::span<const char> trace);
  void logFile();
  bool makeRoom();
  void takeBackLost();
  void finish();
  void nameUnfinished();
  void logSummary();
  bool fail() {
    CopyError = -1;
    return false;
  }
  bool IsDiskInput() const { return units->type == UT_DISK; }
  bool zeroes() const { return IsDiskInput() && SgdParams.zeroTraces; }

  UnitStruct* units;
  SegdTakenFiles taken;
  DirectoryFiles files;  // of a disk input
  SegdOutput output;
  std::unique_ptr<SegdInput> input;
  std::optional<JobFrame> frame;

  int CopyError = 0;
  int fieldFile = 0;  // number of the field file in hand
  int sequence = 0;   // field files met, the skipped ones too
  int filesCopied = 0;
  int TraceCount = 0;    // all traces copied
  int ChannelCount = 0;  // those of the field file in hand
  int BlocksCopied = 0;  // blocks of the input
  int percent = 0;
  double BytesCopied = 0;
  bool unfinished = false;      // the field file in hand is begun and not ended
  bool tapesAreSpared = false;  // who stopped, or declined a tape, may not want what is loaded to be written to
};

SegdCopy::~SegdCopy() {
  if (IsDiskInput()) closeDiskUnit(units);
  closeSegdLog();
}

int SegdCopy::run() {
  findTakenFiles();
  if (!initLists()) return -1;
  openLog();
  logMessage(" ");
  logMessagef("SEG D copy started at %s.", dateText().c_str());
  logMessage(" ");
  if (!runGuarded([this] { work(); })) fail();
  finish();
  return CopyError;
}

/// All between the first line and the last ones.
void SegdCopy::work() {
  if (!prepare()) {
    fail();
    return;
  }
  frame.emplace(JOB_SEGD, units->type, &sequence, &percent, &TraceCount);
  bool more = frame->isOpen() || fail();
  while (more) more = goOn() && copyNextFile();
  if (frame->stopIsNews()) goOn();
}

// ---- before the first field file --------------------------------------------------------------------------------

void SegdCopy::findTakenFiles() {
  if (IsDiskInput()) {
    files = listSegdFiles(units->fs);
    for (const std::string& name : files.names) taken.inputs.add(joinPath(fieldText(units->fs.dir.path), name));
  }
  taken.others.add(listPath(SgdParams.recLimDir, SgdParams.recLimFile));
  taken.others.add(listPath(SgdParams.trcLimDir, SgdParams.trcLimFile));
  taken.others.add(listPath(SgdParams.prepDir, SgdParams.prepFile));
}

bool SegdCopy::initLists() const {
  return (!SgdParams.limit || initFFIDList() == 0) && (!zeroes() || initTraceList() == 0);
}

void SegdCopy::openLog() const {
  if (!SgdParams.useLog) return;
  const std::string path = listPath(SgdParams.logDir, SgdParams.logFile);
  if (taken.inputs.holds(path) || taken.others.holds(path)) {
    SgdParams.useLog = false;
    logMessagef("  *** %s is used by this job already and cannot be its log.", path.c_str());
    xvt_dm_post_error("Error opening file %s", path.c_str());
    return;
  }
  openSegdLog();
}

bool SegdCopy::prepare() {
  taken.others.add(SgdParams.logFp != nullptr ? listPath(SgdParams.logDir, SgdParams.logFile) : "");
  if (SgdParams.itDecimates && SgdParams.itsDecimateIntvl < 1)
    logMessagef("  ** An interval of %d field files is none: every one is shown.", SgdParams.itsDecimateIntvl);
  if (SgdParams.zeroTraces && !IsDiskInput()) logMessage("  ** Traces are zeroed only where the input is on disk.");
  return keyIsSound() && openInput() && prepend();
}

bool SegdCopy::keyIsSound() const {
  const int type = SgdParams.trcLimType;
  if (!zeroes() || keyIsInTraceHeader(SgdParams.trcLimByte, type)) return true;
  logMessagef("  *** The zero list key (byte %d, %s) does not lie within the %d bytes of a trace header.",
              SgdParams.trcLimByte, type >= 0 && type < SEGD_KEY_TYPES ? SegdDataTypes[type] : "unknown type",
              SEGD_TRACE_HEADER_BYTES);
  return false;
}

bool SegdCopy::openInput() {
  if (!IsDiskInput()) {
    input = std::make_unique<SegdTapeInput>(units);
  } else {
    files.nameOthers(logMessage);
    if (files.names.empty()) {
      logMessage("  *** No valid files found in directory.");
      return false;
    }
    input = std::make_unique<SegdDiskInput>(units, files.names);
    input->beforeRefill([this] { output.writeLent(); });
  }
  if (SgdParams.recLenOR) input->headers.RecordLengthMultiplier = 100 * SgdParams.recLenFactor;
  return true;
}

bool SegdCopy::prepend() {
  if (!output.isTape() || !SgdParams.prepend) return true;
  const std::string path = listPath(SgdParams.prepDir, SgdParams.prepFile);
  const FileHandle file = openFile(path.c_str(), "rb");
  if (!file) {
    xvt_dm_post_error("Error opening file %s", path.c_str());
    SgdParams.prepend = false;
    return true;
  }
  SgdParams.prepFp = file.get();
  const bool done = output.prependFile(path);
  SgdParams.prepFp = nullptr;
  return done;
}

// ---- field file by field file -----------------------------------------------------------------------------------

bool SegdCopy::goOn() {
  if (frame->goOn()) return true;
  tapesAreSpared = true;
  logMessagef("  *** Copy aborted by user at %s.", dateText().c_str());
  return false;
}

bool SegdCopy::copyNextFile() {
  switch (input->getFieldFile()) {
    case SegdItem::End:
      return false;
    case SegdItem::Failed:
      return fail();
    case SegdItem::Data:
      break;
  }
  fieldFile = input->GenHdr().ffilenum;
  ChannelCount = 0;
  if (++sequence == 1) logFirst();
  return SgdParams.limit && !fieldFileInRange(fieldFile) ? skipFile() : copyFile();
}

void SegdCopy::logFirst() {
  logMessage(" ");
  logMessage(" ");
  logMessagef("SEG D format code:   %d", input->GenHdr().fmtCode);
  logMessage(" ");
  if (!IsDiskInput()) logMessagef("Start of input tape %d", 1);
  if (output.isTape()) logMessagef("Start of output tape %d", 1);
}

bool SegdCopy::skipFile() {
  logMessagef("Field File: %6d  skipped", fieldFile);
  percent = input->percent();
  return input->skipFile(fieldFile) || fail();
}

bool SegdCopy::copyFile() {
  if (!output.beginFile(SgdParams.ffidOption ? fieldFile : sequence)) return fail();
  unfinished = true;
  ++BlocksCopied;
  BytesCopied += static_cast<double>(input->HeaderRecord.size());
  if (!output.putHeader(input->HeaderRecord)) return fail();
  if (!copyTraces()) return false;
  if (!output.endFile()) return fail();
  unfinished = false;
  ++filesCopied;
  ++output.FilesPerTape;
  logFile();
  percent = input->percent();
  return makeRoom();
}

bool SegdCopy::copyTraces() {
  while (goOn()) {
    std::span<const char> trace;
    switch (input->getSegdTrace(&trace)) {
      case SegdItem::End:
        return true;
      case SegdItem::Failed:
        return fail();
      case SegdItem::Data:
        break;
    }
    if (!copyTrace(trace)) return fail();
  }
  return false;
}

bool SegdCopy::copyTrace(std::span<const char> trace) {
  ++TraceCount;
  ++ChannelCount;
  ++BlocksCopied;
  BytesCopied += static_cast<double>(trace.size());
  const bool hasHeader = trace.size() >= static_cast<std::size_t>(SEGD_TRACE_HEADER_BYTES);
  return output.putSegdTrace(trace, hasHeader ? getChannelSet(trace.data()) : 0, input->traceIsLent);
}

void SegdCopy::logFile() {
  Silent =
      SgdParams.itDecimates && SgdParams.itsDecimateIntvl > 0 && output.FilesPerTape % SgdParams.itsDecimateIntvl != 0;
  logMessagef("Field File: %6d  -  %4d traces", fieldFile, ChannelCount);
  if (!IsDiskInput()) return;
  logMessagef("Copied file  %s .", input->InputFileName.c_str());
  if (input->bytesLeft() > 0) {
    logMessagef("  ** %.0f byte%s of %s behind its last announced trace %s not copied.", input->bytesLeft(),
                input->bytesLeft() > 1 ? "s" : "", input->InputFileName.c_str(),
                input->bytesLeft() > 1 ? "were" : "was");
  }
  input->closeFile();
}

bool SegdCopy::makeRoom() {
  if (!output.isTape() || !SgdParams.limitBytes || output.BytesOut <= SgdParams.byteLimit) return true;
  switch (output.handleFullOutput()) {
    case SegdOutput::Tapes::Ready:
      return true;
    case SegdOutput::Tapes::Failed:
      return fail();
    default:
      tapesAreSpared = true;
      return false;
  }
}

// ---- the end ----------------------------------------------------------------------------------------------------

void SegdCopy::finish() {
  if (!output.finish(tapesAreSpared || CopyError != 0 ? JobEnd::CutShort : JobEnd::Success)) fail();
  takeBackLost();
  nameUnfinished();
  if (CopyError != 0) {
    logMessage("  *** Job Failed.");
    logMessage(" ");
  }
  if (!IsDiskInput()) {
    logMessage(" ");
    logMessagef("End of input tape %d", input ? input->tape : 1);
  }
  if (output.isTape()) {
    logMessage(" ");
    logMessagef("End of output tape %d", output.OutputTapeNumber);
    logMessagef("%d Field Files output to this tape.", output.FilesPerTape);
  }
  logSummary();
  if (input) input->tellOfLost();
  if (frame) frame->close();
  logMessagef("SEG D copy ended at %s.", dateText().c_str());
  logMessage(" ");
}

/// Takes out of the counts what the output accepted and could not keep.
void SegdCopy::takeBackLost() {
  const LostOutput& lost = output.lost();
  TraceCount -= lost.traces;
  ChannelCount -= lost.traces;
  BlocksCopied -= lost.traces + (lost.headerBytes > 0 ? 1 : 0);
  BytesCopied -= lost.bytes + lost.headerBytes;
}

void SegdCopy::nameUnfinished() {
  if (!unfinished) return;
  if (ChannelCount == input->announcedTraces() && input->bytesLeft() > 0) {
    logMessagef("  ** Field file %d: %s holds all of its %d announced trace%s, and not the %.0f bytes that follow.",
                fieldFile, output.place().c_str(), ChannelCount, plural(ChannelCount), input->bytesLeft());
  } else {
    logMessagef("  ** Field file %d is not complete: %s holds %d trace%s of it.", fieldFile, output.place().c_str(),
                ChannelCount, plural(ChannelCount));
  }
}

void SegdCopy::logSummary() {
  logMessage(" ");
  logMessage(" ");
  logMessage("SEG D Copy Summary:");
  logMessagef("   %.0f bytes copied.", BytesCopied);
  logMessagef("   %d field file%s copied.", filesCopied, plural(filesCopied));
  if (!IsDiskInput()) {
    // The counter is one ahead, and its plural goes with it.
    const int tapes = input ? input->TapesCopied : 1;
    logMessagef("   %d block%s copied.", BlocksCopied, plural(BlocksCopied));
    logMessagef("   %d tape%s copied.", tapes - 1, plural(tapes));
  }
  logMessage(" ");
}

}  // namespace

int doSegdCopy(UnitStruct* ioUnit) { return SegdCopy(ioUnit).run(); }
