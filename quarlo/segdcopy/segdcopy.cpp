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
  explicit SegdCopy(UnitStruct* allUnits) : units_(allUnits), output_(allUnits, taken_) {}
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
  bool IsDiskInput() const { return units_->type == UT_DISK; }
  bool zeroes() const { return IsDiskInput() && SgdParams.zeroTraces; }

  UnitStruct* units_;
  SegdTakenFiles taken_;
  DirectoryFiles files_;  // of a disk input
  SegdOutput output_;
  std::unique_ptr<SegdInput> input_;
  std::optional<JobFrame> frame_;

  int CopyError = 0;
  int fieldFile_ = 0;  // number of the field file in hand
  int sequence_ = 0;   // field files met, the skipped ones too
  int filesCopied_ = 0;
  int TraceCount = 0;    // all traces copied
  int ChannelCount = 0;  // those of the field file in hand
  int BlocksCopied = 0;  // blocks of the input
  int percent_ = 0;
  double BytesCopied = 0;
  bool unfinished_ = false;      // the field file in hand is begun and not ended
  bool tapesAreSpared_ = false;  // who stopped, or declined a tape, may not want what is loaded to be written to
};

SegdCopy::~SegdCopy() {
  if (IsDiskInput()) closeDiskUnit(units_);
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
  frame_.emplace(JOB_SEGD, units_->type, &sequence_, &percent_, &TraceCount);
  bool more = frame_->isOpen() || fail();
  while (more) more = goOn() && copyNextFile();
  if (frame_->stopIsNews()) goOn();
}

// ---- before the first field file --------------------------------------------------------------------------------

void SegdCopy::findTakenFiles() {
  if (IsDiskInput()) {
    files_ = listSegdFiles(units_->fs);
    for (const std::string& name : files_.names) taken_.inputs.add(joinPath(fieldText(units_->fs.dir.path), name));
  }
  taken_.others.add(listPath(SgdParams.recLimDir, SgdParams.recLimFile));
  taken_.others.add(listPath(SgdParams.trcLimDir, SgdParams.trcLimFile));
  taken_.others.add(listPath(SgdParams.prepDir, SgdParams.prepFile));
}

bool SegdCopy::initLists() const {
  return (!SgdParams.limit || initFFIDList() == 0) && (!zeroes() || initTraceList() == 0);
}

void SegdCopy::openLog() const {
  if (!SgdParams.useLog) return;
  const std::string path = listPath(SgdParams.logDir, SgdParams.logFile);
  if (taken_.inputs.holds(path) || taken_.others.holds(path)) {
    SgdParams.useLog = false;
    logMessagef("  *** %s is used by this job already and cannot be its log.", path.c_str());
    xvt_dm_post_error("Error opening file %s", path.c_str());
    return;
  }
  openSegdLog();
}

bool SegdCopy::prepare() {
  taken_.others.add(SgdParams.logFp != nullptr ? listPath(SgdParams.logDir, SgdParams.logFile) : "");
  if (SgdParams.itDecimates && SgdParams.itsDecimateIntvl < 1)
    logMessagef("  ** An interval of %d field files is none: every one is shown.", SgdParams.itsDecimateIntvl);
  if (SgdParams.zeroTraces && !IsDiskInput()) logMessage("  ** Traces are zeroed only where the input is on disk.");
  return keyIsSound() && openInput() && prepend();
}

bool SegdCopy::keyIsSound() const {
  const int type = SgdParams.trcLimType;
  if (!zeroes() || keyIsInTraceHeader(SgdParams.trcLimByte, type)) return true;
  logMessagef("  *** The zero list key (byte %d, %s) does not lie within the %d bytes of a trace header.",
              SgdParams.trcLimByte, type >= 0 && type < kSegdKeyTypes ? SegdDataTypes[type] : "unknown type",
              kSegdTraceHeaderBytes);
  return false;
}

bool SegdCopy::openInput() {
  if (!IsDiskInput()) {
    input_ = std::make_unique<SegdTapeInput>(units_);
  } else {
    files_.nameOthers(logMessage);
    if (files_.names.empty()) {
      logMessage("  *** No valid files found in directory.");
      return false;
    }
    input_ = std::make_unique<SegdDiskInput>(units_, files_.names);
    input_->beforeRefill([this] { output_.takeOver(); });
  }
  if (SgdParams.recLenOR) input_->headers.RecordLengthMultiplier = 100 * SgdParams.recLenFactor;
  return true;
}

bool SegdCopy::prepend() {
  if (!output_.isTape() || !SgdParams.prepend) return true;
  const std::string path = listPath(SgdParams.prepDir, SgdParams.prepFile);
  const FileHandle file = openFile(path.c_str(), "rb");
  if (!file) {
    xvt_dm_post_error("Error opening file %s", path.c_str());
    SgdParams.prepend = false;
    return true;
  }
  SgdParams.prepFp = file.get();
  const bool done = output_.prependFile(path);
  SgdParams.prepFp = nullptr;
  return done;
}

// ---- field file by field file -----------------------------------------------------------------------------------

bool SegdCopy::goOn() {
  if (frame_->goOn()) return true;
  tapesAreSpared_ = true;
  logMessagef("  *** Copy aborted by user at %s.", dateText().c_str());
  return false;
}

bool SegdCopy::copyNextFile() {
  switch (input_->getFieldFile()) {
    case SegdItem::End:
      return false;
    case SegdItem::Failed:
      return fail();
    case SegdItem::Data:
      break;
  }
  fieldFile_ = input_->GenHdr().ffilenum;
  ChannelCount = 0;
  if (++sequence_ == 1) logFirst();
  return SgdParams.limit && !fieldFileInRange(fieldFile_) ? skipFile() : copyFile();
}

void SegdCopy::logFirst() {
  logMessage(" ");
  logMessage(" ");
  logMessagef("SEG D format code:   %d", input_->GenHdr().fmtCode);
  logMessage(" ");
  if (!IsDiskInput()) logMessagef("Start of input tape %d", 1);
  if (output_.isTape()) logMessagef("Start of output tape %d", 1);
}

bool SegdCopy::skipFile() {
  logMessagef("Field File: %6d  skipped", fieldFile_);
  percent_ = input_->percent();
  return input_->skipFile(fieldFile_) || fail();
}

bool SegdCopy::copyFile() {
  if (!output_.beginFile(SgdParams.ffidOption ? fieldFile_ : sequence_)) return fail();
  unfinished_ = true;
  ++BlocksCopied;
  BytesCopied += static_cast<double>(input_->HeaderRecord.size());
  if (!output_.putHeader(input_->HeaderRecord)) return fail();
  if (!copyTraces()) return false;
  if (!output_.endFile()) return fail();
  unfinished_ = false;
  ++filesCopied_;
  ++output_.FilesPerTape;
  logFile();
  percent_ = input_->percent();
  return makeRoom();
}

bool SegdCopy::copyTraces() {
  while (goOn()) {
    std::span<const char> trace;
    switch (input_->getSegdTrace(&trace)) {
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
  const bool hasHeader = trace.size() >= static_cast<std::size_t>(kSegdTraceHeaderBytes);
  return output_.putSegdTrace(trace, hasHeader ? getChannelSet(trace.data()) : 0, input_->traceIsLent);
}

void SegdCopy::logFile() {
  Silent =
      SgdParams.itDecimates && SgdParams.itsDecimateIntvl > 0 && output_.FilesPerTape % SgdParams.itsDecimateIntvl != 0;
  logMessagef("Field File: %6d  -  %4d traces", fieldFile_, ChannelCount);
  if (!IsDiskInput()) return;
  logMessagef("Copied file  %s .", input_->InputFileName.c_str());
  if (input_->bytesLeft() > 0) {
    logMessagef("  ** %.0f byte%s of %s behind its last announced trace %s not copied.", input_->bytesLeft(),
                input_->bytesLeft() > 1 ? "s" : "", input_->InputFileName.c_str(),
                input_->bytesLeft() > 1 ? "were" : "was");
  }
  input_->closeFile();
}

bool SegdCopy::makeRoom() {
  if (!output_.isTape() || !SgdParams.limitBytes || output_.BytesOut <= SgdParams.byteLimit) return true;
  switch (output_.handleFullOutput()) {
    case SegdOutput::Tapes::Ready:
      return true;
    case SegdOutput::Tapes::Failed:
      return fail();
    default:
      tapesAreSpared_ = true;
      return false;
  }
}

// ---- the end ----------------------------------------------------------------------------------------------------

void SegdCopy::finish() {
  if (!output_.finish(tapesAreSpared_ || CopyError != 0 ? JobEnd::CutShort : JobEnd::Success)) fail();
  takeBackLost();
  nameUnfinished();
  if (CopyError != 0) {
    logMessage("  *** Job Failed.");
    logMessage(" ");
  }
  if (!IsDiskInput()) {
    logMessage(" ");
    logMessagef("End of input tape %d", input_ ? input_->tape : 1);
  }
  if (output_.isTape()) {
    logMessage(" ");
    logMessagef("End of output tape %d", output_.OutputTapeNumber);
    logMessagef("%d Field Files output to this tape.", output_.FilesPerTape);
  }
  logSummary();
  if (input_) input_->tellOfLost();
  if (frame_) frame_->close();
  logMessagef("SEG D copy ended at %s.", dateText().c_str());
  logMessage(" ");
}

/// Takes out of the counts what the output accepted and could not keep.
void SegdCopy::takeBackLost() {
  const LostOutput& lost = output_.lost();
  TraceCount -= lost.traces;
  ChannelCount -= lost.traces;
  BlocksCopied -= lost.traces + (lost.headerBytes > 0 ? 1 : 0);
  BytesCopied -= lost.bytes + lost.headerBytes;
}

void SegdCopy::nameUnfinished() {
  if (!unfinished_) return;
  if (ChannelCount == input_->announcedTraces() && input_->bytesLeft() > 0) {
    logMessagef("  ** Field file %d: %s holds all of its %d announced trace%s, and not the %.0f bytes that follow.",
                fieldFile_, output_.place().c_str(), ChannelCount, plural(ChannelCount), input_->bytesLeft());
  } else {
    logMessagef("  ** Field file %d is not complete: %s holds %d trace%s of it.", fieldFile_, output_.place().c_str(),
                ChannelCount, plural(ChannelCount));
  }
}

void SegdCopy::logSummary() {
  logMessage(" ");
  logMessage(" ");
  logMessage("SEG D Copy Summary:");
  logMessagef("   %.0f bytes copied.", BytesCopied);
  logMessagef("   %d field file%s copied.", filesCopied_, plural(filesCopied_));
  if (!IsDiskInput()) {
    // The counter is one ahead, and its plural goes with it.
    const int tapes = input_ ? input_->TapesCopied : 1;
    logMessagef("   %d block%s copied.", BlocksCopied, plural(BlocksCopied));
    logMessagef("   %d tape%s copied.", tapes - 1, plural(tapes));
  }
  logMessage(" ");
}

}  // namespace

int doSegdCopy(UnitStruct* ioUnit) { return SegdCopy(ioUnit).run(); }
