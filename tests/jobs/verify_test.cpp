// Verify: tapes and tape-image files in every combination, and what is said of each difference.

#include <gtest/gtest.h>

#include "quarlo/verifyjob.h"
#include "quarlo/vrfy_dlg.h"
#include "tests/jobs/job_fixture.h"

namespace {

using Lines = std::vector<std::string>;

const Tape TAPE = {block(100, 1), block(7, 2), MARK, block(3000, 3), MARK, MARK};
const Tape COPY = {block(100, 1), block(7, 2), MARK, block(3000, 3), MARK, MARK, MARK};
const char* const EOF_LINE = "  *** EOF read on first input, non-EOF read on second input.";

class VerifyTest : public JobTest {
 protected:
  void SetUp() override {
    dialog = xvt_dlg_create_res(WD_MODELESS, DLG_VERIFY, VerifyDialog_eh, nullptr);
    ASSERT_NE(dialog, NULL_WIN);
  }
  void TearDown() override { hasCats = false; }

  void chooseDrive(int control, int row) {
    toolkit.onModal(DLG_INPUT_DRIVE, [this, row](WINDOW drives) {
      toolkit.select(drives, DRV_LIST, row);
      toolkit.press(drives, DRV_OK);
    });
    toolkit.press(dialog, control);
  }
  void chooseFile(int control, const std::string& name) {
    toolkit.answerFile(folder.path(name));
    toolkit.press(dialog, control);
  }

  /// Compares two tapes, each in a drive or as a tape-image file; returns the console.
  Lines verify(const Tape& one, bool oneOnTape, const Tape& other, bool otherOnTape) {
    toolkit.errors.clear();
    makeCartridge("one.tap", one);
    makeCartridge("other.tap", other);
    writeFile("one.tpf", tpfImage(one));
    writeFile("other.tpf", tpfImage(other));
    load(0, "one.tap");
    load(1, "other.tap");
    oneOnTape ? chooseDrive(VF_FIRST_TAPE, 0) : chooseFile(VF_FIRST_DISK, "one.tpf");
    otherOnTape ? chooseDrive(VF_SECOND_TAPE, 1) : chooseFile(VF_SECOND_DISK, "other.tpf");
    EXPECT_EQ(toolkit.text(dialog, VF_STATUS), "Ready");
    if (oneOnTape) {
      noFurtherTape();
    }
    forgetConsole();
    toolkit.press(dialog, VF_START);
    toolkit.modals.clear();
    return consoleWithoutDates();
  }
  std::string result() { return toolkit.text(dialog, VF_STATUS); }
};

TEST_F(VerifyTest, AgreesOnCopiesInEveryCombination) {
  const Lines expected = {" ", "Verify started at DATE.", "Byte comparison succeeded.",
                          " ", "Verify ended at DATE.",   " "};
  EXPECT_EQ(verify(TAPE, false, TAPE, false), expected);
  EXPECT_EQ(result(), "Complete");
  for (const auto& [one, oneOnTape, otherOnTape] :
       {std::tuple{TAPE, true, false}, std::tuple{TAPE, true, true}, std::tuple{COPY, false, true}}) {
    verify(one, oneOnTape, COPY, otherOnTape);
    EXPECT_EQ(result(), "Complete") << oneOnTape << otherOnTape;
    EXPECT_TRUE(consoleHas("Byte comparison succeeded."));
    EXPECT_EQ(units[0].state + units[1].state, 0);
  }
}

TEST_F(VerifyTest, NamesTheFirstDifferentByte) {
  Tape other = COPY;
  other[3].back() ^= 1;
  for (const bool onTape : {false, true}) {
    verify(TAPE, onTape, other, onTape);
    EXPECT_EQ(count("  *** Byte comparison failed at byte 3000 on block number 3."), 1);
    EXPECT_EQ(count("  *** Job Failed."), 1);
    EXPECT_EQ(count("Byte comparison succeeded."), 0);
    EXPECT_EQ(result(), "Failed");
    EXPECT_TRUE(toolkit.errors.empty());
  }
}

TEST_F(VerifyTest, ToldApartAreLengthsMarksAndMissingBlocks) {
  Tape shorter = COPY;
  shorter[1].pop_back();
  verify(TAPE, false, shorter, false);
  EXPECT_EQ(count("  *** Block size mismatch between first and second inputs at block number 2."), 1);

  Tape missing = COPY;
  missing.erase(missing.begin() + 1);
  verify(TAPE, false, missing, true);
  EXPECT_EQ(count("  *** Block size mismatch between first and second inputs at block number 2."), 1);

  Tape more = COPY;
  more.insert(more.begin() + 2, block(5, 9));
  verify(TAPE, false, more, false);
  EXPECT_EQ(count(EOF_LINE), 1);
  EXPECT_EQ(toolkit.errors, Lines{"Verify failed. See console for details."});
  verify(TAPE, false, more, true);
  EXPECT_EQ(count(EOF_LINE), 1);
  EXPECT_EQ(toolkit.errors, Lines{"Verify failed"});
}

TEST_F(VerifyTest, BehindTheLastFileBothPathsSayTheSameBox) {
  Tape more = TAPE;
  more.insert(more.end() - 1, block(5, 9));
  for (const bool onTape : {false, true}) {
    verify(TAPE, false, more, onTape);
    EXPECT_EQ(count(EOF_LINE), 1);
    EXPECT_EQ(toolkit.errors, Lines{"Verify failed"});
    EXPECT_EQ(result(), "Failed");
  }
}

TEST_F(VerifyTest, ConcatenatedTapesAreComparedToTheirFirstMark) {
  toolkit.press(dialog, VF_CONCATENATED);
  const Tape joined = {TAPE[0], TAPE[1], MARK, MARK};
  verify(TAPE, true, joined, false);
  EXPECT_EQ(result(), "Complete");
}

TEST_F(VerifyTest, UnreadableInputsFailWithTheirOwnLines) {
  writeFile("one.tpf", tpfImage({block(10, 1)}));
  writeFile("other.tpf", tpfImage({block(10, 1), MARK, MARK}));
  chooseFile(VF_FIRST_DISK, "one.tpf");
  chooseFile(VF_SECOND_DISK, "other.tpf");
  forgetConsole();
  toolkit.press(dialog, VF_START);
  EXPECT_EQ(count("  *** Error reading from first input"), 1);
  EXPECT_EQ(toolkit.errors, Lines{"eof encountered on disk read"});
  EXPECT_EQ(result(), "Failed");

  chooseFile(VF_FIRST_DISK, "other.tpf");
  chooseFile(VF_SECOND_DISK, "other.tpf");
  EXPECT_EQ(toolkit.errors.back(), "This file name is already being used for input. Choose another file name.");
}

TEST_F(VerifyTest, AStopIsNeitherSuccessNorFailure) {
  toolkit.onPump = [this](long) { toolkit.press(toolkit.dialog(DLG_PROGRESS), PROG_STOP); };
  verify(TAPE, false, TAPE, false);
  EXPECT_EQ(count("  *** Verify aborted by user at DATE."), 1);
  EXPECT_EQ(count("Byte comparison succeeded.") + count("  *** Job Failed."), 0);
  EXPECT_EQ(result(), "Complete");
}

TEST_F(VerifyTest, SaysWhatLiesBehindTheEndOfEitherInput) {
  Tape longer = COPY;
  longer.insert(longer.end(), {block(20, 9), MARK, MARK});
  verify(TAPE, true, longer, false);
  EXPECT_EQ(result(), "Complete");
  EXPECT_EQ(count("  ** 148 bytes of the second input behind its last filemark were not compared."), 1);
  verify(TAPE, true, longer, true);
  EXPECT_EQ(count("  ** The second input goes on behind its last filemark: that was not compared."), 1);
  verify(longer, false, COPY, false);
  EXPECT_EQ(count("  ** 148 bytes of the first input behind its last filemark were not compared."), 1);
}

TEST_F(VerifyTest, TakesAWriteProtectedSecondTape) {
  makeCartridge("one.tap", COPY);
  writeFile("one.tpf", tpfImage(COPY));
  load(1, "one.tap", "write-protect = yes\n");
  chooseFile(VF_FIRST_DISK, "one.tpf");
  chooseDrive(VF_SECOND_TAPE, 1);
  forgetConsole();
  toolkit.press(dialog, VF_START);
  EXPECT_EQ(result(), "Complete");
  EXPECT_TRUE(toolkit.errors.empty());
}

}  // namespace
