#include "quarlo/copy/unfmtcpy.h"

#include <algorithm>
#include <optional>
#include <span>

#include "libkyr/disksync.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/formats/tpf.h"
#include "quarlo/tapelib/frame/blockread.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/frame/loglines.h"
#include "quarlo/tapelib/frame/piecewriter.h"
#include "quarlo/tapelib/frame/tapechange.h"

int TheOutFileType = OF_TPF;
int TheBlockType = kBlockType1;
int EofCount = 2;
bool Concatenate = false;
bool OneForOne = false;
bool PrintFiles = true;

void unfmtInit() {
  TheOutFileType = OF_TPF;
  TheBlockType = kBlockType1;
  EofCount = 2;
  Concatenate = false;
  OneForOne = false;
  PrintFiles = true;
}

int getOutFileType() { return TheOutFileType; }

namespace {

constexpr RetryWords kRetryWords = {"  *** Error reading from input tape - retrying...",
                                    "Retries failed. Skipping block.",
                                    "  *** Too many sequential bad blocks. Aborting."};
constexpr TapeChangeWords kInputWords = {"Tape finished", "Magazine finished", "  "};
constexpr TapeChangeWords kOutputWords = {nullptr, nullptr, nullptr};

/// A header as a copy writes it: the reserved words are the input's.
tpf::HeaderBytes headerFrom(const tpf::Header& from, int length, std::uint32_t marker) {
  tpf::Header header = from;
  header.length = length;
  header.blockType = static_cast<std::uint32_t>(TheBlockType);
  header.marker = marker;
  return tpf::encode(header);
}

bool writeFileHeader(PieceWriter* file) {
  return file->empty() && file->write(tpf::fileHeader(), false) && file->flush();
}

/// Where an image copy writes: all output tapes, or a disk file with or without headers.
class ImageOutput {
 public:
  explicit ImageOutput(UnitStruct* allUnits) : units_(allUnits) {}

  bool isTape() const { return units_[1].type == UT_TAPE; }
  bool isRaw() const { return !isTape() && TheOutFileType == OF_RAW; }

  /// Puts the disk file at its beginning as the kind now chosen wants it, whatever it was picked for.
  bool begin();
  /// Writes one block. @param from header whose reserved words go with it
  /// @param lent a disk output may leave the bytes where they are until takeOver()
  bool writeBlock(std::span<const char> block, const tpf::Header& from, bool lent);
  /// Takes over what is left of blocks that were lent; a failure shows at the next one.
  void takeOver() {
    if (!isTape()) disk_.settle();
  }
  /// Copies a filemark. @return false when the job must fail
  bool copyMark(const tpf::Header& from);
  /// The marks that end every copy. @return false when they could not be written
  bool writeClosingMarks(JobEnd end);
  /// One mark behind what the present output tapes hold. @return false when it could not be written
  bool closeTapes() { return completeOutputTapes(units_, 1); }
  /// Blocks that a full disk took back of what it had accepted.
  LostOutput lost() const;
  /// The outputs' next tapes. @return false when the user declined
  bool changeTapes() { return nextOutputTapes(units_, kOutputWords) != 0; }

 private:
  bool writeDiskMark(const tpf::Header& from, bool closes);

  UnitStruct* units_;
  PieceWriter disk_{console_out, "block"};
  std::optional<int> refused_;  // length of the block that the disk did not take
};

bool ImageOutput::begin() {
  if (isTape()) return true;
  disk_.begin(units_[1].fp, units_[1].name);
  if (isRaw() ? disk_.empty() : writeFileHeader(&disk_)) return true;
  xvt_dm_post_error("Error writing file header to disk file");
  return false;
}

bool ImageOutput::writeBlock(std::span<const char> block, const tpf::Header& from, bool lent) {
  const auto length = static_cast<int>(block.size());
  if (isTape()) {
    if (length == 0) {
      console_out("  *** A tape cannot hold a block of 0 bytes.");
      return false;
    }
    return tlv_tape_write(units_, kAllOutputs, block.data(), length) >= length;
  }
  const tpf::HeaderBytes header = headerFrom(from, length, tpf::kMarkerBlock);
  const std::span<const char> head = isRaw() ? std::span<const char>() : std::span<const char>(header);
  if (lent ? disk_.writeLent(head, block, true) : disk_.write(head, block, true)) return true;
  refused_ = length;
  if (disk_.endsInHead()) xvt_dm_post_error("Error writing block header to disk file");
  return false;
}

LostOutput ImageOutput::lost() const {
  LostOutput lost = disk_.lost();
  if (refused_) {
    --lost.traces;
    lost.bytes -= *refused_;
  }
  return lost;
}

/// @param closes a mark that ends the copy stands behind what did fit; another has its place behind all that came
/// before
bool ImageOutput::writeDiskMark(const tpf::Header& from, bool closes) {
  if (closes) disk_.mend();
  if (disk_.write(headerFrom(from, 0, tpf::kMarkerFilemark), false) && (!closes || disk_.flush())) return true;
  disk_.mend();
  xvt_dm_post_error("Error writing eof header to disk file");
  return false;
}

bool ImageOutput::copyMark(const tpf::Header& from) {
  return isTape() ? tlv_weof(units_, kAllOutputs, 1) == 0 : writeDiskMark(from, false);
}

bool ImageOutput::writeClosingMarks(JobEnd end) {
  if (isTape()) return closeOutputTapes(units_, end, 2);
  // What is held of the data first: if it does not fit, the marks close what did.
  disk_.mend();
  bool whole = disk_.flush();
  for (int mark = 0; mark < 2 && !isRaw(); ++mark) whole = writeDiskMark({}, true) && whole;
  DiskSync sync;
  sync.add(units_[1].fp, pathOf(units_[1].fs));
  return sync.wait([](const DiskSync::Failure& failure) { console_out(diskErrorText(failure).c_str()); }) && whole;
}

/// What a file or a tape held. Bytes are kept in single precision, as the progress dialog shows them.
struct Tally {
  int blocks = 0;
  float bytes = 0;
  int files = 0;

  void add(std::size_t length) {
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
  explicit ImageCopy(UnitStruct* allUnits) : units_(allUnits), output_(allUnits) {}
  virtual ~ImageCopy() = default;
  int run();

 protected:
  /// One item of the input and what follows from it. @return false when the job is over
  virtual bool step() = 0;
  virtual void logSummary() = 0;
  /// Warnings behind the summary, where people look in the morning.
  virtual void logLosses() {}

  bool copyMark(const tpf::Header& from);
  bool copyBlock(std::span<const char> block, const tpf::Header& from, bool lent);
  bool fail() {
    failed_ = true;
    return false;
  }

  UnitStruct* units_;
  ImageOutput output_;
  int marks_ = 0;      // filemarks in a row
  int nextBlock_ = 1;  // number of the block to come; the progress dialog shows one less
  float bytes_ = 0;
  int percent_ = 0;
  bool declined_ = false;    // no further output tape was wanted
  bool endsInMark_ = false;  // the copy, as far as it is

 private:
  bool failed_ = false;
};

int ImageCopy::run() {
  logStarted("Copy");
  JobFrame frame(JOB_UNFORMATTED, units_->type, reinterpret_cast<int*>(&bytes_), &percent_, &nextBlock_);
  if (!frame.isOpen()) return JOB_NO_DIALOG;
  bool aborted = false;
  const bool unbroken = runGuarded([&] {
    bool more = output_.begin() || fail();
    while ((more && !aborted) || frame.stopIsNews()) {
      aborted = !frame.goOn();
      if (aborted)
        logAborted("Copy");
      else
        more = step();
    }
  });
  if (!unbroken) failed_ = true;
  if (!output_.writeClosingMarks(failed_ || aborted || declined_ ? JobEnd::CutShort : JobEnd::Success)) failed_ = true;
  nextBlock_ -= output_.lost().traces;
  bytes_ -= static_cast<float>(output_.lost().bytes);
  if (failed_) logFailed();
  logSummary();
  logLosses();
  frame.close();
  logEnded("Copy");
  return failed_ ? JOB_FAILED : JOB_OK;
}

/// A mark missing on tape ends the job; one missing on disk has had its box and lets the blocks behind it be saved,
/// unless blocks before it went with it.
bool ImageCopy::copyMark(const tpf::Header& from) {
  endsInMark_ = true;
  if (output_.copyMark(from)) return true;
  failed_ = true;
  return !output_.isTape() && output_.lost().traces == 0;
}

bool ImageCopy::copyBlock(std::span<const char> block, const tpf::Header& from, bool lent) {
  marks_ = 0;
  endsInMark_ = false;
  if (!output_.writeBlock(block, from, lent)) return fail();
  ++nextBlock_;
  bytes_ += static_cast<float>(block.size());
  return true;
}

/// One image copy from tape.
class TapeCopy : public ImageCopy {
 public:
  explicit TapeCopy(UnitStruct* allUnits)
      : ImageCopy(allUnits), reader_(allUnits, kRetryWords, TheBlockType == kBlockType1) {}

 private:
  bool step() override;
  void logSummary() override;
  void logLosses() override;
  bool takeMark();
  bool takeBlock(std::span<const char> block);
  bool endOfTape();
  bool changeOutputs();
  void endOfFile();
  void logTape() const;

  PatientReader reader_;
  int files_ = 0;
  int tapes_ = 0;
  Tally file_;
  Tally tape_;
  Tally inNoFile_;          // copied from behind the last mark of a tape
  bool blockLost_ = false;  // a block of this file could not be read
};

bool TapeCopy::step() {
  const TapeRead read = reader_.read();
  switch (read.kind) {
    case TapeRead::Kind::Block:
      return takeBlock(read.in(units_->ioBuffer));
    case TapeRead::Kind::Mark:
      ++marks_;
      return takeMark();
    case TapeRead::Kind::EndOfData:
      marks_ = EofCount + 1;
      return takeMark();
    case TapeRead::Kind::Skipped:
      marks_ = 0;  // a row of marks is marks with nothing between
      blockLost_ = true;
      return true;
    default:
      return fail();
  }
}

bool TapeCopy::takeMark() {
  bool unreadable = false;
  if (marks_ == 1) {
    unreadable = blockLost_ && file_.blocks == 0;
    endOfFile();
  }
  if (Concatenate || output_.isRaw()) ++marks_;
  if (marks_ >= EofCount) return endOfTape();
  // Two marks in a row may end the copy for its readers, where the tape had blocks between them.
  if (unreadable && endsInMark_) {
    console_printf("  ** File %d has no readable block: its filemark follows the one before it on the copy.",
                   tape_.files);
  }
  return copyMark({});
}

void TapeCopy::endOfFile() {
  ++tape_.files;
  ++files_;
  if (PrintFiles)
    console_printf("    File %d: %6d blocks, %15.0f bytes", tape_.files, file_.blocks,
                   static_cast<double>(file_.bytes));
  blockLost_ = false;
  file_ = {};
}

bool TapeCopy::takeBlock(std::span<const char> block) {
  if (file_.bytes == 0 && tape_.files == 0 && PrintFiles) {
    logBlank();
    console_printf("Begin input tape %d", tapes_ + 1);
  }
  file_.add(block.size());
  tape_.add(block.size());
  return copyBlock(block, {}, false);
}

bool TapeCopy::endOfTape() {
  logTape();
  ++tapes_;
  inNoFile_.add(file_);
  const bool more = nextInputTape(units_, kInputWords) != 0;
  file_ = {};
  tape_ = {};
  marks_ = 0;
  blockLost_ = false;
  reader_.place.nextTape();
  return more && (!OneForOne || !output_.isTape() || changeOutputs());
}

bool TapeCopy::changeOutputs() {
  if (!output_.closeTapes()) return fail();
  endsInMark_ = false;
  if (output_.changeTapes()) return true;
  declined_ = true;
  console_printf("  ** Input tape %d, which is loaded now, was not copied: it has no output tape.", tapes_ + 1);
  return false;
}

void TapeCopy::logTape() const {
  console_printf("Total input for tape %d: %d block%s, %.0f bytes, %d file%s", tapes_ + 1, tape_.blocks,
                 plural(tape_.blocks), static_cast<double>(tape_.bytes), tape_.files, plural(tape_.files));
  logBlank();
}

void TapeCopy::logSummary() {
  const int blocks = nextBlock_ - 1;
  logBlank();
  logBlank();
  console_out("Unformatted Copy Summary:");
  console_printf("   %d block%s copied.", blocks, plural(blocks));
  console_printf("   %.0f bytes copied.", static_cast<double>(bytes_));
  console_printf("   %d file%s copied.", files_, plural(files_));
  console_printf("   %d tape%s copied.", tapes_, plural(tapes_));
  logBlank();
}

void TapeCopy::logLosses() {
  reader_.tellOfLost();
  if (inNoFile_.blocks > 0) {
    console_printf("  ** %d block%s (%.0f bytes) with no filemark behind %s copied, but count%s as no file.",
                   inNoFile_.blocks, plural(inNoFile_.blocks), static_cast<double>(inNoFile_.bytes),
                   inNoFile_.blocks > 1 ? "them were" : "it was", inNoFile_.blocks > 1 ? "" : "s");
  }
}

/// One image copy from a tape-image file. Two filemarks in a row end it, whatever EofCount says of tapes.
class DiskCopy : public ImageCopy {
 public:
  explicit DiskCopy(UnitStruct* allUnits)
      : ImageCopy(allUnits), input_(units_->fp, units_->ioBufLen, units_->name), size_(GetAFileSize(units_->fs)) {
    input_.beforeRefill([this] { output_.takeOver(); });
  }

 private:
  bool step() override;
  void logSummary() override;
  bool takeMark();
  void warnOfRest();

  tpf::Reader input_;
  double size_;
};

bool DiskCopy::step() {
  std::span<const char> block;
  switch (input_.next(&block)) {
    case tpf::Item::Failed:
      return fail();
    case tpf::Item::Mark:
      units_->eofMark = 1;
      return takeMark();
    case tpf::Item::Block:
      break;
  }
  units_->eofMark = 0;
  const bool more = copyBlock(block, input_.header(), true);
  percent_ = size_ > 0 ? static_cast<int>(std::min(100.0, static_cast<double>(bytes_) / size_ * 100)) : 0;
  return more;
}

bool DiskCopy::takeMark() {
  ++marks_;
  if (marks_ > 1) warnOfRest();
  if (Concatenate || output_.isRaw()) ++marks_;
  return marks_ <= 1 && copyMark(input_.header());
}

/// A file made with a larger EofCount goes on where this copy ends: that is said.
void DiskCopy::warnOfRest() {
  const double left = input_.bytesLeft();
  if (left > 0) console_printf("  ** %.0f bytes of the input file behind the double file mark were not copied.", left);
}

void DiskCopy::logSummary() {
  console_printf("%.0f bytes copied.", static_cast<double>(bytes_));
  logBlank();
}

}  // namespace

bool beginTapeImage(std::FILE* stream, const char* name) {
  PieceWriter file;
  file.begin(stream, name);
  return writeFileHeader(&file);
}

int doTapeCopy(UnitStruct* ioUnit) { return TapeCopy(ioUnit).run(); }

int doDiskCopy(UnitStruct* ioUnit) { return DiskCopy(ioUnit).run(); }
