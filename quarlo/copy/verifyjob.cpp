#include "quarlo/copy/verifyjob.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "quarlo/copy/unfmtcpy.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/formats/tpf.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/frame/loglines.h"
#include "quarlo/tapelib/frame/tapechange.h"

bool hasCats = false;

namespace {

constexpr TapeChangeWords WORDS = {"Tape finished.", "Magazine finished.", "  "};
constexpr const char* FAILED_BOX = "Verify failed";
constexpr const char* FAILED_SEE_CONSOLE_BOX = "Verify failed. See console for details.";

/// What an input shows at one place.
enum class Shown {
  Block,
  Mark,
  End,  ///< the end of the data
  Failed
};

/// One of the two inputs: its items one after another, whatever it is.
class VerifyInput {
 public:
  VerifyInput(UnitStruct* allUnits, int uNum, int mode)
      : units(allUnits), number(uNum), file(unit().fp, allUnits->ioBufLen, unit().name, name()) {
    const bool limited = isTape() && unit().isM4 != 0 && mode == BLOCK_TYPE_1;
    readSize = limited ? 60000 : static_cast<int>(unit().maxBlockSize);
    if (!isTape()) (void)fseeko(unit().fp, tpf::HEADER_SIZE, SEEK_SET);
  }

  UnitStruct& unit() const { return units[number]; }
  bool isTape() const { return unit().type == UT_TAPE; }
  int capacity() const { return readSize; }
  const char* name() const { return number == 0 ? "first input" : "second input"; }

  /// @param wanted what a tape read asks for, @param length receives the block's bytes, else 0
  /// A file ends behind two marks in a row, or it is not whole.
  Shown next(int wanted, char* buffer, int* length);
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
  UnitStruct* units;
  int number;
  tpf::Reader file;
  int readSize = 0;
};

Shown VerifyInput::next(int wanted, char* buffer, int* length) {
  *length = 0;
  if (ended || (!isTape() && marks >= 2 && file.atEnd())) {
    ended = true;
    return Shown::End;
  }
  tpf::Item item = tpf::Item::Failed;
  if (!isTape()) {
    item = file.next(buffer, length);
    unit().eofMark = item == tpf::Item::Mark ? 1 : 0;
  } else {
    *length = tlv_tape_read(units, number, buffer, wanted);
    ended = *length == 0 && unit().eodMark != 0;
    item = *length < 0 ? tpf::Item::Failed : *length == 0 ? tpf::Item::Mark : tpf::Item::Block;
  }
  if (ended || item == tpf::Item::Failed) return ended ? Shown::End : Shown::Failed;
  marks = item == tpf::Item::Mark ? marks + 1 : 0;
  return item == tpf::Item::Mark ? Shown::Mark : Shown::Block;
}

void VerifyInput::warnIfGoesOn() {
  if (!ended && (isTape() ? tlv_goes_on(units, number, units->ioBuffer) : file.bytesLeft() > 0))
    console_printf("  ** The %s goes on behind its end.", name());
}

class Verify {
 public:
  Verify(int mode, UnitStruct* allUnits)
      : units(allUnits),
        first(allUnits, 0, mode),
        second(allUnits, 1, mode),
        firstSize(first.isTape() ? 0 : GetAFileSize(allUnits->fs)) {}
  int run();

 private:
  bool step();
  bool takeBlock(int length);
  bool compare(int length);
  bool takeMark();
  bool endOfFirst();
  bool markOnSecond(const char* box);
  bool endOfSecond();
  bool endsDiffer(const char* box);
  void logEnds();
  bool fail() {
    failed = true;
    return false;
  }

  UnitStruct* units;
  VerifyInput first;
  VerifyInput second;
  std::vector<char> held;    // the first input's block while the second's is read into the tape buffer
  bool firstIsOpen = false;  // its end of data stands for the other's closing marks
  bool secondIsOpen = false;
  double firstSize;
  float bytes = 0;
  int percent = 0;
  int blockNumber = 1;
  bool failed = false;
};

int Verify::run() {
  logStarted("Verify");
  JobFrame frame(JOB_VERIFY, units->type, reinterpret_cast<int*>(&bytes), &percent, &blockNumber);
  if (!frame.isOpen()) return JOB_NO_DIALOG;
  bool aborted = false;
  const bool unbroken = runGuarded([&] {
    do {
      aborted = !frame.goOn();
    } while (!aborted && (step() || frame.stopIsNews()));
  });
  if (!unbroken) failed = true;
  if (aborted) {
    logAborted("Verify");
  } else if (failed) {
    logFailed();
  } else {
    console_out("Byte comparison succeeded.");
    logBlank();
  }
  frame.close();
  logEnded("Verify");
  return failed ? JOB_FAILED : JOB_OK;
}

bool Verify::step() {
  int length = 0;
  switch (first.next(first.capacity(), units->ioBuffer, &length)) {
    case Shown::Failed:
      console_out("  *** Error reading from first input");
      return fail();
    case Shown::Mark:
    case Shown::End:
      return takeMark();
    case Shown::Block:
      break;
  }
  return takeBlock(length);
}

bool Verify::takeBlock(int length) {
  // The second input ended where the first had a mark: that mark did not close the first, then.
  if (second.ended) return endsDiffer(FAILED_BOX);
  if (length > second.capacity()) {
    console_out("  *** Block size of first input is larger than the read capacity");
    console_out("      of the second input device. Cannot continue verify operation.");
    xvt_dm_post_error(FAILED_SEE_CONSOLE_BOX);
    return fail();
  }
  held.assign(units->ioBuffer, units->ioBuffer + length);
  int secondLength = 0;
  const Shown shown = second.next(length, units->ioBuffer, &secondLength);
  if (shown == Shown::Failed) return fail();
  if (shown != Shown::Block || secondLength != length) {
    console_printf("  *** Block size mismatch between first and second inputs at block number %d.", blockNumber);
    return fail();
  }
  if (!compare(length)) return fail();
  ++blockNumber;
  bytes += static_cast<float>(length);
  percent = firstSize > 0 ? static_cast<int>(std::min(100.0, static_cast<double>(bytes) / firstSize * 100)) : 0;
  return true;
}

bool Verify::compare(int length) {
  const char* const begin = held.data();
  if (std::memcmp(begin, units->ioBuffer, static_cast<std::size_t>(length)) == 0) return true;
  const char* const different = std::mismatch(begin, begin + length, units->ioBuffer).first;
  console_printf("  *** Byte comparison failed at byte %d on block number %d.", static_cast<int>(different - begin) + 1,
                 blockNumber);
  return false;
}

bool Verify::takeMark() {
  if (first.ended || first.marks >= (hasCats ? 1 : 2)) return endOfFirst();
  // Between the files of a tape a file and a tape that do not follow are told in different boxes.
  return markOnSecond(second.isTape() ? FAILED_BOX : FAILED_SEE_CONSOLE_BOX);
}

/// The second input must show a filemark now, or the end of its data, which stands for the marks that close the first:
/// what the first holds next decides. @param box what is said when it does not
bool Verify::markOnSecond(const char* box) {
  int length = 0;
  switch (second.next(second.capacity(), units->ioBuffer, &length)) {
    case Shown::Mark:
      return true;
    case Shown::End:
      secondIsOpen = true;
      return true;
    default:
      return endsDiffer(box);
  }
}

/// The data of the first input are at their end: what the second holds can only be the marks that close it, two in a
/// row at most, or nothing.
bool Verify::endOfSecond() {
  const int before = second.marks;
  Shown shown = Shown::Mark;
  while (shown == Shown::Mark && second.marks < 2) {
    int length = 0;
    shown = second.next(second.capacity(), units->ioBuffer, &length);
  }
  if (shown == Shown::Failed) return fail();
  if (shown == Shown::Block) return endsDiffer(FAILED_BOX);
  firstIsOpen = second.marks > before;
  return true;
}

bool Verify::endsDiffer(const char* box) {
  console_out("  *** EOF read on first input, non-EOF read on second input.");
  console_printf("      Behind block number %d.", blockNumber - 1);
  xvt_dm_post_error("%s", box);
  return fail();
}

bool Verify::endOfFirst() {
  // Before the tape may go; concatenated files are left out on purpose.
  if (!hasCats) first.warnIfGoesOn();
  if (first.isTape() && nextInputTape(units, WORDS) != 0) {
    first.begin();
    return true;
  }
  if (jobIsStopped()) return false;
  if (first.ended ? endOfSecond() : markOnSecond(FAILED_BOX)) logEnds();
  return false;
}

void Verify::logEnds() {
  for (const auto& [open, input] : {std::pair(firstIsOpen, &first), std::pair(secondIsOpen, &second)})
    if (open) console_printf("  ** The %s ends without its closing filemarks.", input->name());
  second.warnIfGoesOn();
}

}  // namespace

int do_verify(int mode, UnitStruct* ioUnit) { return Verify(mode, ioUnit).run(); }
