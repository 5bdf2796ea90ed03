#include "quarlo/copy/unfmtcpy.h"

#include "libkyr/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "libkyr/disksync.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/formats/tpf.h"
#include "quarlo/tapelib/frame/blockread.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/frame/loglines.h"
#include "quarlo/tapelib/frame/tapechange.h"

int TheOutFileType = OF_TPF;
int TheBlockType = BLOCK_TYPE_1;
int EofCount = 2;
bool Concatenate = false;
bool OneForOne = false;
bool PrintFiles = true;

void unfmtInit() {
  TheOutFileType = OF_TPF;
  TheBlockType = BLOCK_TYPE_1;
  EofCount = 2;
  Concatenate = false;
  OneForOne = false;
  PrintFiles = true;
}

int getOutFileType() { return TheOutFileType; }

namespace {

constexpr RetryWords RETRY_WORDS = {"  *** Error reading from input tape - retrying...",
                                    "Retries failed. Skipping block.",
                                    "  *** Too many sequential bad blocks. Aborting."};
constexpr TapeChangeWords INPUT_WORDS = {"Tape finished", "Magazine finished", "  "};
constexpr TapeChangeWords OUTPUT_WORDS = {nullptr, nullptr, nullptr};

/// Where an image copy writes: all output tapes, or a disk file with or without headers.
class ImageOutput {
 public:
  explicit ImageOutput(UnitStruct* allUnits) : units(allUnits), disk(allUnits[1].fp) {}

  bool isTape() const { return units[1].type == UT_TAPE; }
  bool isRaw() const { return !isTape() && TheOutFileType == OF_RAW; }

  /// Puts the disk file at its beginning as the kind now chosen wants it, whatever it was picked for.
  bool begin();
  /// Writes one block. @param from header whose reserved words go with it
  bool writeBlock(const char* data, int length, const tpf::Header& from);
  /// Copies a filemark. @return false when the job must fail
  bool copyMark(const tpf::Header& from);
  /// The marks that end every copy. @return false when they could not be written
  bool writeClosingMarks(JobEnd end);
  /// One mark behind what the present output tapes hold. @return false when it could not be written
  bool closeTapes() { return completeOutputTapes(units, 1); }
  /// Blocks that a full disk took back.
  const tpf::Writer::Lost& lost() const { return disk.lost(); }
  /// The outputs' next tapes. @return false when the user declined
  bool changeTapes() { return nextOutputTapes(units, OUTPUT_WORDS) != 0; }

 private:
  bool writeDiskMark(const tpf::Header& from, bool atOnce);
  bool sayDiskError() const;

  UnitStruct* units;
  tpf::Writer disk;
};

bool ImageOutput::begin() {
  if (isTape() || disk.begin(TheOutFileType == OF_TPF)) return true;
  sayDiskError();
  xvt_dm_post_error("Error writing file header to disk file");
  return false;
}

bool ImageOutput::writeBlock(const char* data, int length, const tpf::Header& from) {
  if (isTape()) {
    if (length == 0) {
      console_out("  *** A tape cannot hold a block of 0 bytes.");
      return false;
    }
    return tlv_tape_write(units, ALL_OUTPUTS, data, length) >= length;
  }
  tpf::Header header = from;
  header.length = length;
  header.blockType = static_cast<std::uint32_t>(TheBlockType);
  header.marker = tpf::MARKER_BLOCK;
  if (disk.writeBlock(isRaw() ? nullptr : &header, data, length)) return true;
  sayDiskError();
  if (disk.failedAtHeader()) xvt_dm_post_error("Error writing block header to disk file");
  return false;
}

/// The line of a failed disk write. @return false
bool ImageOutput::sayDiskError() const {
  console_out(diskErrorText(units[1].name, errno).c_str());
  return false;
}

bool ImageOutput::writeDiskMark(const tpf::Header& from, bool atOnce) {
  tpf::Header header = from;
  header.length = 0;
  header.blockType = static_cast<std::uint32_t>(TheBlockType);
  header.marker = tpf::MARKER_FILEMARK;
  if (disk.writeMark(header) && (!atOnce || disk.flush())) return true;
  sayDiskError();
  xvt_dm_post_error("Error writing eof header to disk file");
  return false;
}

bool ImageOutput::copyMark(const tpf::Header& from) {
  return isTape() ? tlv_weof(units, ALL_OUTPUTS, 1) == 0 : writeDiskMark(from, false);
}

bool ImageOutput::writeClosingMarks(JobEnd end) {
  if (isTape()) return closeOutputTapes(units, end, 2);
  // What is held of the data first: if it does not fit, the marks close what did.
  bool whole = disk.flush() || sayDiskError();
  for (int mark = 0; mark < 2 && !isRaw(); ++mark) whole = writeDiskMark({}, true) && whole;
  DiskSync sync;
  sync.add(units[1].fp, pathOf(units[1].fs));
  return sync.wait([](const DiskSync::Failure& failure) { console_out(diskErrorText(failure).c_str()); }) && whole;
}

/// What a file or a tape held. Bytes are kept in single precision, as the progress dialog shows them.
struct Tally {
  int blocks = 0;
  float bytes = 0;
  int files = 0;

  void add(int length) {
    ++blocks;
    bytes += static_cast<float>(length);
  }
  void add(const Tally& other) {
    blocks += other.blocks;
    bytes += other.bytes;
  }
};

/// What both directions share: the counters that the progress dialog shows, the run from the first line to the last.
class ImageCopy {
 public:
  explicit ImageCopy(UnitStruct* allUnits) : units(allUnits), output(allUnits) {}
  virtual ~ImageCopy() = default;
  int run();

 protected:
  /// One item of the input and what follows from it. @return false when the job is over
  virtual bool step() = 0;
  virtual void logSummary() = 0;
  /// Warnings behind the summary, where people look in the morning.
  virtual void logLosses() {}

  bool copyMark(const tpf::Header& from);
  bool copyBlock(int length, const tpf::Header& from);
  bool fail() {
    failed = true;
    return false;
  }

  UnitStruct* units;
  ImageOutput output;
  int marks = 0;      // filemarks in a row
  int nextBlock = 1;  // number of the block to come; the progress dialog shows one less
  float bytes = 0;
  int percent = 0;
  bool declined = false;    // no further output tape was wanted
  bool endsInMark = false;  // the copy, as far as it is

 private:
  bool failed = false;
};

int ImageCopy::run() {
  logStarted("Copy");
  JobFrame frame(JOB_UNFORMATTED, units->type, reinterpret_cast<int*>(&bytes), &percent, &nextBlock);
  if (!frame.isOpen()) return JOB_NO_DIALOG;
  bool aborted = false;
  const bool unbroken = runGuarded([&] {
    bool more = output.begin() || fail();
    while ((more && !aborted) || frame.stopIsNews()) {
      aborted = !frame.goOn();
      if (aborted)
        logAborted("Copy");
      else
        more = step();
    }
  });
  if (!unbroken) failed = true;
  if (!output.writeClosingMarks(failed || aborted || declined ? JobEnd::CutShort : JobEnd::Success)) failed = true;
  nextBlock -= output.lost().blocks;
  bytes -= static_cast<float>(output.lost().bytes);
  if (failed) logFailed();
  logSummary();
  logLosses();
  frame.close();
  logEnded("Copy");
  return failed ? JOB_FAILED : JOB_OK;
}

/// A mark missing on tape ends the job; one missing on disk has had its box and lets the blocks behind it be saved,
/// unless blocks before it went with it.
bool ImageCopy::copyMark(const tpf::Header& from) {
  endsInMark = true;
  if (output.copyMark(from)) return true;
  failed = true;
  return !output.isTape() && output.lost().blocks == 0;
}

bool ImageCopy::copyBlock(int length, const tpf::Header& from) {
  marks = 0;
  endsInMark = false;
  if (!output.writeBlock(units->ioBuffer, length, from)) return fail();
  ++nextBlock;
  bytes += static_cast<float>(length);
  return true;
}

/// One image copy from tape.
class TapeCopy : public ImageCopy {
 public:
  explicit TapeCopy(UnitStruct* allUnits)
      : ImageCopy(allUnits),
        readSize(units->isM4 != 0 && TheBlockType == BLOCK_TYPE_1 ? 60000 : static_cast<int>(units->maxBlockSize)) {}

 private:
  bool step() override;
  void logSummary() override;
  void logLosses() override;
  bool takeMark();
  bool takeBlock(int length);
  bool endOfTape();
  bool changeOutputs();
  void endOfFile();
  void logTape() const;

  PatientReader reader{RETRY_WORDS};
  int readSize;
  int files = 0;
  int tapes = 0;
  Tally file;
  Tally tape;
  Tally inNoFile;          // copied from behind the last mark of a tape
  bool blockLost = false;  // a block of this file could not be read
};

bool TapeCopy::step() {
  int length = 0;
  switch (reader.read(units, units->ioBuffer, readSize, &length)) {
    case BlockRead::Skipped:
      marks = 0;  // a row of marks is marks with nothing between
      blockLost = true;
      return true;
    case BlockRead::Failed:
      return fail();
    case BlockRead::Done:
      break;
  }
  return length == 0 ? takeMark() : takeBlock(length);
}

bool TapeCopy::takeMark() {
  if (units->eofMark != 0) ++marks;
  if (units->eodMark != 0) marks = EofCount + 1;
  bool unreadable = false;
  if (marks == 1) {
    unreadable = blockLost && file.blocks == 0;
    endOfFile();
  }
  if (Concatenate || output.isRaw()) ++marks;
  if (marks >= EofCount) return endOfTape();
  // Two marks in a row may end the copy for its readers, where the tape had blocks between them.
  if (unreadable && endsInMark) {
    console_printf("  ** File %d has no readable block: its filemark follows the one before it on the copy.",
                   tape.files);
  }
  return copyMark({});
}

void TapeCopy::endOfFile() {
  ++tape.files;
  ++files;
  if (PrintFiles)
    console_printf("    File %d: %6d blocks, %15.0f bytes", tape.files, file.blocks, static_cast<double>(file.bytes));
  blockLost = false;
  file = {};
}

bool TapeCopy::takeBlock(int length) {
  if (file.bytes == 0 && tape.files == 0 && PrintFiles) {
    logBlank();
    console_printf("Begin input tape %d", tapes + 1);
  }
  file.add(length);
  tape.add(length);
  return copyBlock(length, {});
}

bool TapeCopy::endOfTape() {
  logTape();
  ++tapes;
  inNoFile.add(file);
  const bool more = nextInputTape(units, INPUT_WORDS) != 0;
  file = {};
  tape = {};
  marks = 0;
  blockLost = false;
  reader.place.nextTape();
  return more && (!OneForOne || !output.isTape() || changeOutputs());
}

bool TapeCopy::changeOutputs() {
  if (!output.closeTapes()) return fail();
  endsInMark = false;
  if (output.changeTapes()) return true;
  declined = true;
  console_printf("  ** Input tape %d, which is loaded now, was not copied: it has no output tape.", tapes + 1);
  return false;
}

void TapeCopy::logTape() const {
  console_printf("Total input for tape %d: %d block%s, %.0f bytes, %d file%s", tapes + 1, tape.blocks,
                 plural(tape.blocks), static_cast<double>(tape.bytes), tape.files, plural(tape.files));
  logBlank();
}

void TapeCopy::logSummary() {
  const int blocks = nextBlock - 1;
  logBlank();
  logBlank();
  console_out("Unformatted Copy Summary:");
  console_printf("   %d block%s copied.", blocks, plural(blocks));
  console_printf("   %.0f bytes copied.", static_cast<double>(bytes));
  console_printf("   %d file%s copied.", files, plural(files));
  console_printf("   %d tape%s copied.", tapes, plural(tapes));
  logBlank();
}

void TapeCopy::logLosses() {
  reader.tellOfLost();
  if (inNoFile.blocks > 0) {
    console_printf("  ** %d block%s (%.0f bytes) with no filemark behind %s copied, but count%s as no file.",
                   inNoFile.blocks, plural(inNoFile.blocks), static_cast<double>(inNoFile.bytes),
                   inNoFile.blocks > 1 ? "them were" : "it was", inNoFile.blocks > 1 ? "" : "s");
  }
}

/// One image copy from a tape-image file. Two filemarks in a row end it, whatever EofCount says of tapes.
class DiskCopy : public ImageCopy {
 public:
  explicit DiskCopy(UnitStruct* allUnits)
      : ImageCopy(allUnits), input(units->fp, units->ioBufLen, units->name), size(GetAFileSize(units->fs)) {}

 private:
  bool step() override;
  void logSummary() override;
  bool takeMark();
  void warnOfRest();

  tpf::Reader input;
  double size;
};

bool DiskCopy::step() {
  int length = 0;
  switch (input.next(units->ioBuffer, &length)) {
    case tpf::Item::Failed:
      return fail();
    case tpf::Item::Mark:
      units->eofMark = 1;
      return takeMark();
    case tpf::Item::Block:
      break;
  }
  units->eofMark = 0;
  const bool more = copyBlock(length, input.header());
  percent = size > 0 ? static_cast<int>(std::min(100.0, static_cast<double>(bytes) / size * 100)) : 0;
  return more;
}

bool DiskCopy::takeMark() {
  ++marks;
  if (marks > 1) warnOfRest();
  if (Concatenate || output.isRaw()) ++marks;
  return marks <= 1 && copyMark(input.header());
}

/// A file made with a larger EofCount goes on where this copy ends: that is said.
void DiskCopy::warnOfRest() {
  const double left = input.bytesLeft();
  if (left > 0) console_printf("  ** %.0f bytes of the input file behind the double file mark were not copied.", left);
}

void DiskCopy::logSummary() {
  console_printf("%.0f bytes copied.", static_cast<double>(bytes));
  logBlank();
}

}  // namespace

int doTapeCopy(UnitStruct* ioUnit) { return TapeCopy(ioUnit).run(); }

int doDiskCopy(UnitStruct* ioUnit) { return DiskCopy(ioUnit).run(); }
