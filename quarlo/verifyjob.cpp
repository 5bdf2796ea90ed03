#include "quarlo/verifyjob.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "quarlo/jobframe.h"
#include "quarlo/tapechange.h"
#include "quarlo/tapelib/cons_win.h"
#include "quarlo/tapelib/loglines.h"
#include "quarlo/tpf.h"
#include "quarlo/unfmtcpy.h"

bool hasCats = false;

namespace {

constexpr TapeChangeWords WORDS = {"Tape finished.", "Magazine finished.", "  "};
constexpr const char* FAILED_BOX = "Verify failed";
constexpr const char* FAILED_SEE_CONSOLE_BOX = "Verify failed. See console for details.";

/// One of the two inputs: its items one after another, whatever it is.
class VerifyInput {
 public:
  VerifyInput(UnitStruct* allUnits, int uNum, int mode)
      : units(allUnits), number(uNum), file(unit().fp, allUnits->ioBufLen) {
    const bool limited = isTape() && unit().isM4 != 0 && mode == BLOCK_TYPE_1;
    readSize = limited ? 60000 : static_cast<int>(unit().maxBlockSize);
    if (!isTape()) {
      (void)fseeko(unit().fp, tpf::HEADER_SIZE, SEEK_SET);
    }
  }

  UnitStruct& unit() const { return units[number]; }
  bool isTape() const { return unit().type == UT_TAPE; }
  int capacity() const { return readSize; }

  /// @param wanted what a tape read asks for, @param length receives the block's bytes, 0 for a mark or the end of data
  tpf::Item next(int wanted, char* buffer, int* length) {
    if (!isTape()) {
      const tpf::Item item = file.next(buffer, length);
      unit().eofMark = item == tpf::Item::Mark ? 1 : 0;
      return item;
    }
    *length = tlv_tape_read(units, number, buffer, wanted);
    return *length < 0 ? tpf::Item::Failed : *length == 0 ? tpf::Item::Mark : tpf::Item::Block;
  }

  /// Bytes of a disk input that go on here.
  double bytesLeft() { return file.bytesLeft(); }

  /// Whether blocks follow on a tape behind filemarks.
  bool goesOn(char* buffer) {
    constexpr int FILEMARKS_PASSED = 16;
    for (int mark = 0; mark < FILEMARKS_PASSED && unit().eodMark == 0; ++mark) {
      const int length = tlv_tape_read(units, number, buffer, readSize);
      if (length != 0) {
        return length > 0;
      }
    }
    return false;
  }

 private:
  UnitStruct* units;
  int number;
  tpf::Reader file;
  int readSize = 0;
};

class Verify {
 public:
  Verify(int mode, UnitStruct* allUnits)
      : units(allUnits),
        first(allUnits, 0, mode),
        second(allUnits, 1, mode),
        held(allUnits->ioBufLen),
        firstSize(first.isTape() ? 0 : GetAFileSize(allUnits->fs)) {}
  int run();

 private:
  bool step();
  bool takeBlock(int length);
  bool compare(int length);
  bool takeMark();
  bool endOfFirst();
  void warnOfRest();
  bool markOnSecond(const char* box);
  bool fail() {
    failed = true;
    return false;
  }

  UnitStruct* units;
  VerifyInput first;
  VerifyInput second;
  std::vector<char> held;  // the first input's block while the second's is read into the tape buffer
  double firstSize;
  float bytes = 0;
  int percent = 0;
  int blockNumber = 1;
  int marks = 0;
  bool failed = false;
};

int Verify::run() {
  logStarted("Verify");
  JobFrame frame(JOB_VERIFY, units->type, reinterpret_cast<int*>(&bytes), &percent, &blockNumber);
  if (!frame.isOpen()) {
    return JOB_NO_DIALOG;
  }
  bool aborted = false;
  do {
    aborted = !frame.goOn();
  } while (!aborted && step());
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
    case tpf::Item::Failed:
      console_out("  *** Error reading from first input");
      return fail();
    case tpf::Item::Mark:
      return takeMark();
    case tpf::Item::Block:
      break;
  }
  return takeBlock(length);
}

bool Verify::takeBlock(int length) {
  marks = 0;
  if (length > second.capacity()) {
    console_out("  *** Block size of first input is larger than the read capacity");
    console_out("      of the second input device. Cannot continue verify operation.");
    xvt_dm_post_error(FAILED_SEE_CONSOLE_BOX);
    return fail();
  }
  std::memcpy(held.data(), units->ioBuffer, static_cast<std::size_t>(length));
  int secondLength = 0;
  const tpf::Item item = second.next(length, units->ioBuffer, &secondLength);
  if (item == tpf::Item::Failed) {
    return fail();
  }
  if (item != tpf::Item::Block || secondLength != length) {
    console_printf("  *** Block size mismatch between first and second inputs at block number %d.", blockNumber);
    return fail();
  }
  if (!compare(length)) {
    return fail();
  }
  ++blockNumber;
  bytes += static_cast<float>(length);
  percent = firstSize > 0 ? static_cast<int>(std::min(100.0, static_cast<double>(bytes) / firstSize * 100)) : 0;
  return true;
}

bool Verify::compare(int length) {
  const char* const begin = held.data();
  if (std::memcmp(begin, units->ioBuffer, static_cast<std::size_t>(length)) == 0) {
    return true;
  }
  const char* const different = std::mismatch(begin, begin + length, units->ioBuffer).first;
  console_printf("  *** Byte comparison failed at byte %d on block number %d.", static_cast<int>(different - begin) + 1,
                 blockNumber);
  return false;
}

bool Verify::takeMark() {
  ++marks;
  if (first.isTape() && units->eodMark != 0) {
    marks = 2;
  }
  if (hasCats) {
    ++marks;
  }
  // Between the files of a tape a file and a tape that do not follow are told in different boxes.
  return marks < 2 ? markOnSecond(second.isTape() ? FAILED_BOX : FAILED_SEE_CONSOLE_BOX) : endOfFirst();
}

/// The second input must show a filemark now. @param box what is said when it does not
bool Verify::markOnSecond(const char* box) {
  int length = 0;
  const tpf::Item item = second.next(second.capacity(), units->ioBuffer, &length);
  if (item == tpf::Item::Mark && second.unit().eofMark != 0) {
    return true;
  }
  console_out("  *** EOF read on first input, non-EOF read on second input.");
  console_printf("      Behind block number %d.", blockNumber - 1);
  xvt_dm_post_error("%s", box);
  return fail();
}

bool Verify::endOfFirst() {
  if (first.isTape() && nextInputTape(units, WORDS) != 0) {
    marks = 0;
    return true;
  }
  if (markOnSecond(FAILED_BOX)) {
    warnOfRest();
  }
  return false;
}

/// What was not compared because the first input ended here. The first tape may be unloaded by now; its concatenated
/// files are left out on purpose.
void Verify::warnOfRest() {
  const double firstLeft = first.isTape() || hasCats ? 0 : first.bytesLeft();
  if (firstLeft > 0) {
    console_printf("  ** %.0f bytes of the first input behind its last filemark were not compared.", firstLeft);
  }
  if (second.isTape()) {
    if (second.goesOn(units->ioBuffer)) {
      console_out("  ** The second input goes on behind its last filemark: that was not compared.");
    }
    return;
  }
  const double secondLeft = second.bytesLeft();
  if (secondLeft > 0) {
    console_printf("  ** %.0f bytes of the second input behind its last filemark were not compared.", secondLeft);
  }
}

}  // namespace

int do_verify(int mode, UnitStruct* ioUnit) { return Verify(mode, ioUnit).run(); }
