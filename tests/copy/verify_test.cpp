// Verify: tapes and tape-image files in every combination, and what is said of each difference.

#include <gtest/gtest.h>

#include "libkyr/text.h"
#include "quarlo/copy/unfmtcpy.h"
#include "quarlo/copy/verifyjob.h"
#include "quarlo/copy/vrfy_dlg.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/jobstate.h"
#include "tests/support/job_fixture.h"

namespace {

const Tape TAPE = {block(100, 1), block(7, 2), MARK, block(3000, 3), MARK, MARK};
const Tape COPY = {block(100, 1), block(7, 2), MARK, block(3000, 3), MARK, MARK, MARK};
const char* const EOF_LINE = "  *** EOF read on first input, non-EOF read on second input.";

class VerifyTest : public JobTest {
 protected:
  void SetUp() override { open(DLG_VERIFY, VerifyDialog_eh); }
  void TearDown() override { hasCats = false; }

  /// Compares two tapes, each in a drive or as a tape-image file; returns the console.
  Lines verify(const Tape& one, bool oneOnTape, const Tape& other, bool otherOnTape,
               const std::vector<std::size_t>& badBlocks = {}) {
    toolkit.errors.clear();
    makeCartridge("one.tap", one, badBlocks);
    makeCartridge("other.tap", other, badBlocks);
    writeFile("one.tpf", tpfImage(one));
    writeFile("other.tpf", tpfImage(other));
    load(0, "one.tap");
    load(1, "other.tap");
    oneOnTape ? chooseDrive(VF_FIRST_TAPE, 0) : chooseFile(VF_FIRST_DISK, folder.path("one.tpf"));
    otherOnTape ? chooseDrive(VF_SECOND_TAPE, 1) : chooseFile(VF_SECOND_DISK, folder.path("other.tpf"));
    EXPECT_EQ(toolkit.text(dialog, VF_STATUS), "Ready");
    if (oneOnTape) noFurtherTape();
    forgetConsole();
    toolkit.press(dialog, VF_START);
    toolkit.modals.clear();
    return consoleWithoutDates();
  }
  std::string result() { return toolkit.text(dialog, VF_STATUS); }
};

TEST_F(VerifyTest, AgreementIsSaidAndTheInputsAreClosed) {
  const Lines expected = {" ", "Verify started at DATE.", "Byte comparison succeeded.",
                          " ", "Verify ended at DATE.",   " "};
  EXPECT_EQ(verify(TAPE, false, TAPE, false), expected);
  EXPECT_EQ(result(), "Complete");
  EXPECT_EQ(units[0].state + units[1].state, 0);
}

TEST_F(VerifyTest, NamesTheFirstDifferentByte) {
  Tape other = COPY;
  other[3].back() ^= 1;
  for (const bool onTape : {false, true}) {
    verify(TAPE, onTape, other, onTape);
    expectCounts({{"  *** Byte comparison failed at byte 3000 on block number 3.", 1},
                  {"  *** Job Failed.", 1},
                  {"Byte comparison succeeded.", 0}});
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
  chooseFile(VF_FIRST_DISK, folder.path("one.tpf"));
  chooseFile(VF_SECOND_DISK, folder.path("other.tpf"));
  forgetConsole();
  toolkit.press(dialog, VF_START);
  EXPECT_EQ(count("  *** Error reading from first input"), 1);
  EXPECT_EQ(toolkit.errors, Lines{"eof encountered on disk read"});
  EXPECT_EQ(result(), "Failed");

  // A file that ends behind one mark is not whole, against whatever tape.
  const Tape cut = {block(10, 1), MARK};
  for (const Tape& tape : {cut, Tape{block(10, 1)}}) {
    for (const bool cutFirst : {false, true}) {
      cutFirst ? verify(cut, false, tape, true) : verify(tape, true, cut, false);
      EXPECT_EQ(result(), "Failed");
      expectSaid("  *** No whole block header at byte 106 of the " +
                 std::string(cutFirst ? "first input." : "second input."));
      EXPECT_EQ(count("  *** Error reading from first input"), cutFirst ? 1 : 0);
      EXPECT_EQ(count(EOF_LINE), 0);
    }
  }

  chooseFile(VF_FIRST_DISK, folder.path("other.tpf"));
  chooseFile(VF_SECOND_DISK, folder.path("other.tpf"));
  EXPECT_EQ(toolkit.errors.back(), "This file name is already being used for input. Choose another file name.");
}

TEST_F(VerifyTest, AStopIsNeitherSuccessNorFailureAndWantOfMemoryIsOne) {
  toolkit.onPump = [this](long) { toolkit.press(toolkit.dialog(DLG_PROGRESS), PROG_STOP); };
  verify(TAPE, false, TAPE, false);
  EXPECT_EQ(count("  *** Verify aborted by user at DATE."), 1);
  EXPECT_EQ(count("Byte comparison succeeded.") + count("  *** Job Failed."), 0);
  EXPECT_EQ(result(), "Complete");

  // Where memory is wanting it fails, and works again.
  toolkit.onPump = [pumps = 0](long) mutable {
    if (++pumps == 3) throw std::bad_alloc();
  };
  verify(TAPE, false, TAPE, true);
  expectCounts({{"  *** There is not enough memory for this job.", 1}, {"  *** Job Failed.", 1}});
  EXPECT_EQ(result(), "Failed");
  EXPECT_EQ(units[0].state + units[1].state, 0);
  EXPECT_FALSE(jobIsRunning() || toolkit.hasTimers() || toolkit.dialog(DLG_PROGRESS) != NULL_WIN);
  toolkit.onPump = nullptr;
  verify(TAPE, false, TAPE, true);
  EXPECT_EQ(result(), "Complete");
}

// How inputs end against each other, each row in every form that its tapes can have: a tape-image file has two marks in
// a row. A digit is a block, M a filemark. Said are warnings, or the one error.
TEST_F(VerifyTest, EndsAreJudgedByWhatTheOtherInputHoldsNext) {
  const std::string firstOpen = "  ** The first input ends without its closing filemarks.";
  const std::string secondOpen = "  ** The second input ends without its closing filemarks.";
  const std::string firstOn = "  ** The first input goes on behind its end.";
  const std::string secondOn = "  ** The second input goes on behind its end.";
  const std::string apart = EOF_LINE;
  const std::string lengths = "  *** Block size mismatch between first and second inputs at block number 2.";
  const struct {
    std::string one;
    std::string other;
    Lines said;
    std::vector<std::size_t> bad = {};
  } rows[] = {
      {"", "", {}},
      {"1", "1", {}},
      {"1M", "1M", {}},
      {"1M2MM", "1M2MMM", {}},
      {"1M2MMM", "1M2MM", {}},
      {"", "MM", {firstOpen}},
      {"MM", "", {secondOpen}},
      {"1", "1MM", {firstOpen}},
      {"1MM", "1", {secondOpen}},
      {"1M", "1MMM", {firstOpen}},
      {"1MMM", "1M", {secondOpen}},
      {"1M", "1MM2", {firstOpen, secondOn}},
      {"1MM2", "1M", {firstOn, secondOpen}},
      {"1MMM2MM", "1MMM2MM", {firstOn, secondOn}},
      {"1MM2", "1MM2", {firstOn, secondOn}, {3}},
      {"1", "1M2MM", {apart}},
      {"1M2MM", "1", {apart}},
      {"1M2MM", "12MM", {apart}},
      {"12MM", "1M2MM", {lengths}},
      {"1MM", "1M2MM", {apart}},
  };
  const auto tapeOfLetters = [](const std::string& letters) {
    Tape tape;
    for (const char letter : letters) tape.push_back(letter == 'M' ? MARK : block(static_cast<std::size_t>(letter), 1));
    return tape;
  };
  const auto isWhole = [](const std::string& letters) { return letters.find("MM") != std::string::npos; };
  for (const auto& row : rows) {
    for (int forms = 0; forms < 4; ++forms) {
      const bool oneOnTape = (forms & 1) != 0 || !isWhole(row.one) || !row.bad.empty();
      const bool otherOnTape = (forms & 2) != 0 || !isWhole(row.other) || !row.bad.empty();
      SCOPED_TRACE(row.one + " against " + row.other + ", on tape: " + std::to_string(oneOnTape + 2 * otherOnTape));
      Lines said = verify(tapeOfLetters(row.one), oneOnTape, tapeOfLetters(row.other), otherOnTape, row.bad);
      const bool agrees = row.said.empty() || (row.said[0] != apart && row.said[0] != lengths);
      EXPECT_EQ(result(), agrees ? "Complete" : "Failed");
      std::erase_if(said, [](const std::string& line) { return line.find("**") != 2 || line == "  *** Job Failed."; });
      EXPECT_EQ(said, row.said);
    }
  }
}

// No page of a process lies at its address 32: reading there is an input/output error.
TEST_F(VerifyTest, AFileThatCannotBeReadIsToldOnceWithReasonAndPlace) {
  writeFile("one.tpf", tpfImage(TAPE));
  FILE_SPEC good{};
  FILE_SPEC unreadable{};
  copyText(good.dir.path, folder.path(""));
  copyText(good.name, "one.tpf");
  copyText(unreadable.dir.path, "/proc/self");
  copyText(unreadable.name, "mem");
  for (const bool second : {false, true}) {
    ASSERT_TRUE(openDiskUnit(&units[0], second ? good : unreadable, "rb"));
    ASSERT_TRUE(openDiskUnit(&units[1], unreadable, "rb"));
    forgetConsole();
    EXPECT_EQ(do_verify(kBlockType1, units), 1);
    EXPECT_EQ(consoleWithoutDates().at(2), std::string("  *** Error reading the ") + (second ? "second" : "first") +
                                               " input \"mem\" at byte 32: Input/output error.");
    EXPECT_EQ(closeDiskUnit(&units[0]) + closeDiskUnit(&units[1]), 0);
    EXPECT_EQ(consoleWithoutDates().size(), second ? 7U : 8U);
  }
}

TEST_F(VerifyTest, TakesAWriteProtectedSecondTape) {
  makeCartridge("one.tap", COPY);
  writeFile("one.tpf", tpfImage(COPY));
  load(1, "one.tap", "write-protect = yes\n");
  chooseFile(VF_FIRST_DISK, folder.path("one.tpf"));
  chooseDrive(VF_SECOND_TAPE, 1);
  forgetConsole();
  toolkit.press(dialog, VF_START);
  EXPECT_EQ(result(), "Complete");
  EXPECT_TRUE(toolkit.errors.empty());
}

}  // namespace
