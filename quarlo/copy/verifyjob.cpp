#include "quarlo/copy/verifyjob.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>
#include <vector>

#include "quarlo/copy/unfmtcpy.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/formats/tpf.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/frame/loglines.h"
#include "quarlo/tapelib/frame/tapechange.h"
#include "quarlo/tapelib/frame/taperead.h"

bool hasCats = false;

namespace {

constexpr TapeChangeWords kWords = {"Tape finished.", "Magazine finished.", "  "};
constexpr const char* kFailedBox = "Verify failed";
constexpr const char* kFailedSeeConsoleBox = "Verify failed. See console for details.";

using Kind = TapeRead::Kind;

/// One of the two inputs: its items one after another, whatever it is.
class VerifyInput {
 public:
  VerifyInput(UnitStruct* allUnits, int uNum, int mode)
      : units_(allUnits), number_(uNum), readSize_(readSize(unit(), isTape() && mode == kBlockType1)) {
    if (!isTape()) file_.emplace(unit().fp, allUnits->ioBufLen, unit().name, name());
  }

  UnitStruct& unit() const { return units_[number_]; }
  bool isTape() const { return unit().type == UT_TAPE; }
  int capacity() const { return readSize_; }
  const char* name() const { return number_ == 0 ? "first input" : "second input"; }

  /// A file ends behind two marks in a row, or it is not whole.
  /// @param wanted what a tape read asks for
  TapeRead next(int wanted);
  /// The bytes of the block that came last, until the next one of this input; a tape's are in the tape buffer.
  std::span<const char> block() const { return block_; }
  /// The next tape is in the drive.
  void begin() {
    marks = 0;
    ended = false;
  }
  /// Warns when blocks follow behind the end of what was compared. A tape is left where it stands, and whatever is met
  /// there, the comparison is over.
  void warnIfGoesOn();

  int marks = 0;       ///< in a row, as shown last
  bool ended = false;  ///< its data are at their end

 private:
  TapeRead readFile();
  TapeRead readTape(int wanted);

  UnitStruct* units_;
  int number_;
  std::optional<tpf::Reader> file_;  // none of a tape
  int readSize_;
  std::span<const char> block_;
};

TapeRead VerifyInput::readFile() {
  const tpf::Item item = file_->next(&block_);
  unit().eofMark = item == tpf::Item::Mark ? 1 : 0;
  if (item == tpf::Item::Block) return {Kind::Block, static_cast<int>(block_.size())};
  return {item == tpf::Item::Mark ? Kind::Mark : Kind::Failed};
}

TapeRead VerifyInput::readTape(int wanted) {
  const TapeRead read = readUnit(units_, number_, units_->ioBuffer, wanted);
  block_ = read.in(units_->ioBuffer);
  return read;
}

TapeRead VerifyInput::next(int wanted) {
  ended = ended || (!isTape() && marks >= 2 && file_->atEnd());
  if (ended) return {Kind::EndOfData};
  const TapeRead read = isTape() ? readTape(wanted) : readFile();
  ended = read.kind == Kind::EndOfData;
  if (read.kind == Kind::Block) marks = 0;
  if (read.kind == Kind::Mark) ++marks;
  return read;
}

void VerifyInput::warnIfGoesOn() {
  if (!ended && (isTape() ? tlv_goes_on(units_, number_, units_->ioBuffer) : file_->bytesLeft() > 0))
    console_printf("  ** The %s goes on behind its end.", name());
}

class Verify {
 public:
  Verify(int mode, UnitStruct* allUnits)
      : units_(allUnits),
        first_(allUnits, 0, mode),
        second_(allUnits, 1, mode),
        firstSize_(first_.isTape() ? 0 : GetAFileSize(allUnits->fs)) {}
  int run();

 private:
  bool step();
  bool takeBlock(int length);
  bool compare(std::span<const char> one, std::span<const char> other);
  bool takeMark();
  bool endOfFirst();
  bool markOnSecond(const char* box);
  bool endOfSecond();
  bool endsDiffer(const char* box);
  void logEnds();
  bool fail() {
    failed_ = true;
    return false;
  }

  UnitStruct* units_;
  VerifyInput first_;
  VerifyInput second_;
  std::vector<char> held_;    // the first tape's block while the second's is read into the tape buffer
  bool firstIsOpen_ = false;  // its end of data stands for the other's closing marks
  bool secondIsOpen_ = false;
  double firstSize_;
  float bytes_ = 0;
  int percent_ = 0;
  int blockNumber_ = 1;
  bool failed_ = false;
};

int Verify::run() {
  logStarted("Verify");
  JobFrame frame(JOB_VERIFY, units_->type, reinterpret_cast<int*>(&bytes_), &percent_, &blockNumber_);
  if (!frame.isOpen()) return JOB_NO_DIALOG;
  bool aborted = false;
  const bool unbroken = runGuarded([&] {
    do {
      aborted = !frame.goOn();
    } while (!aborted && (step() || frame.stopIsNews()));
  });
  if (!unbroken) failed_ = true;
  if (aborted) {
    logAborted("Verify");
  } else if (failed_) {
    logFailed();
  } else {
    console_out("Byte comparison succeeded.");
    logBlank();
  }
  frame.close();
  logEnded("Verify");
  return failed_ ? JOB_FAILED : JOB_OK;
}

bool Verify::step() {
  const TapeRead read = first_.next(first_.capacity());
  if (read.kind == Kind::Block) return takeBlock(read.bytes);
  if (!read.failed()) return takeMark();
  console_out("  *** Error reading from first input");
  return fail();
}

bool Verify::takeBlock(int length) {
  // The second input ended where the first had a mark: that mark did not close the first, then.
  if (second_.ended) return endsDiffer(kFailedBox);
  if (length > second_.capacity()) {
    console_out("  *** Block size of first input is larger than the read capacity");
    console_out("      of the second input device. Cannot continue verify operation.");
    xvt_dm_post_error(kFailedSeeConsoleBox);
    return fail();
  }
  std::span<const char> block = first_.block();
  if (first_.isTape() && second_.isTape()) {
    held_.assign(block.begin(), block.end());
    block = held_;
  }
  const TapeRead read = second_.next(length);
  if (read.failed()) return fail();
  if (read.kind != Kind::Block || read.bytes != length) {
    console_printf("  *** Block size mismatch between first and second inputs at block number %d.", blockNumber_);
    return fail();
  }
  if (!compare(block, second_.block())) return fail();
  ++blockNumber_;
  bytes_ += static_cast<float>(length);
  percent_ = firstSize_ > 0 ? static_cast<int>(std::min(100.0, static_cast<double>(bytes_) / firstSize_ * 100)) : 0;
  return true;
}

/// Of two blocks of one length.
bool Verify::compare(std::span<const char> one, std::span<const char> other) {
  if (std::memcmp(one.data(), other.data(), one.size()) == 0) return true;
  const auto different = std::mismatch(one.begin(), one.end(), other.begin()).first;
  console_printf("  *** Byte comparison failed at byte %d on block number %d.",
                 static_cast<int>(different - one.begin()) + 1, blockNumber_);
  return false;
}

bool Verify::takeMark() {
  if (first_.ended || first_.marks >= (hasCats ? 1 : 2)) return endOfFirst();
  // Between the files of a tape a file and a tape that do not follow are told in different boxes.
  return markOnSecond(second_.isTape() ? kFailedBox : kFailedSeeConsoleBox);
}

/// The second input must show a filemark now, or the end of its data, which stands for the marks that close the first:
/// what the first holds next decides. @param box what is said when it does not
bool Verify::markOnSecond(const char* box) {
  const TapeRead read = second_.next(second_.capacity());
  if (read.kind != Kind::Mark && read.kind != Kind::EndOfData) return endsDiffer(box);
  if (read.kind == Kind::EndOfData) secondIsOpen_ = true;
  return true;
}

/// The data of the first input are at their end: what the second holds can only be the marks that close it, two in a
/// row at most, or nothing.
bool Verify::endOfSecond() {
  const int before = second_.marks;
  TapeRead read{Kind::Mark};
  while (read.kind == Kind::Mark && second_.marks < 2) read = second_.next(second_.capacity());
  if (read.failed()) return fail();
  if (read.kind == Kind::Block) return endsDiffer(kFailedBox);
  firstIsOpen_ = second_.marks > before;
  return true;
}

bool Verify::endsDiffer(const char* box) {
  console_out("  *** EOF read on first input, non-EOF read on second input.");
  console_printf("      Behind block number %d.", blockNumber_ - 1);
  xvt_dm_post_error("%s", box);
  return fail();
}

bool Verify::endOfFirst() {
  // Before the tape may go; concatenated files are left out on purpose.
  if (!hasCats) first_.warnIfGoesOn();
  if (first_.isTape() && nextInputTape(units_, kWords) != 0) {
    first_.begin();
    return true;
  }
  if (jobIsStopped()) return false;
  if (first_.ended ? endOfSecond() : markOnSecond(kFailedBox)) logEnds();
  return false;
}

void Verify::logEnds() {
  for (const auto& [open, input] : {std::pair(firstIsOpen_, &first_), std::pair(secondIsOpen_, &second_)})
    if (open) console_printf("  ** The %s ends without its closing filemarks.", input->name());
  second_.warnIfGoesOn();
}

}  // namespace

int do_verify(int mode, UnitStruct* ioUnit) { return Verify(mode, ioUnit).run(); }
