// The image copy from tapes: what reaches the disk file or the output tapes, and what the console says.

#include <gtest/gtest.h>

#include "quarlo/copy/unfmtcpy.h"
#include "quarlo/tapelib/autoload.h"
#include "quarlo/tapelib/driver/virtual_drive.h"
#include "tests/support/job_fixture.h"

namespace {

/// A tape-image file of a copy.
std::vector<std::string> closedFile(const Tape& tape) { return tpfShortly(tpfImage(tape + CLOSING)); }

class TapeCopyTest : public JobTest {
 protected:
  void SetUp() override { openCopyDialog(); }

  void loadTapes(const Tape& in, const Tape& one, const std::vector<std::size_t>& bad = {}) {
    putIn(0, "in.tap", in, bad);
    putIn(1, "one.tap", one);
  }
  /// Copies what is in drive 0 to a tape-image file.
  std::string copyToDisk() {
    chooseInputTape(0);
    chooseOutputFile(folder.path("out.tpf"));
    noFurtherTape();
    start();
    return readFile(folder.path("out.tpf"));
  }
  std::vector<std::string> copied(const Tape& tape, const std::vector<std::size_t>& bad = {}) {
    putIn(0, "in.tap", tape, bad);
    return tpfShortly(copyToDisk());
  }
  /// Copies what is in drive 0 to the tapes in other drives.
  void copyToTapes(const std::vector<int>& drives) {
    chooseInputTape(0);
    chooseOutputTapes(drives);
    noFurtherTape();
    start();
  }
};

const std::string A = block(100, 1);
const std::string B = block(7, 2);
const std::string C = block(32768, 3);

TEST_F(TapeCopyTest, KeepsBlocksAndMarksOnDiskAndTellsOfEveryFile) {
  // The tape's own second mark is not copied; the job's two closing ones follow the last file's.
  EXPECT_EQ(copied({A, B, MARK, C, MARK, MARK}), closedFile({A, B, MARK, C, MARK}));
  EXPECT_EQ(status(), "Complete");
  EXPECT_EQ(consoleText(),
            " \nCopy started at DATE.\n \nBegin input tape 1\n"
            "    File 1:      2 blocks,             107 bytes\n    File 2:      1 blocks,           32768 bytes\n"
            "Total input for tape 1: 3 blocks, 32875 bytes, 2 files\n \nRewind \"VIRTUAL drive0\".\n \n \n"
            "Unformatted Copy Summary:\n   3 blocks copied.\n   32875 bytes copied.\n   2 files copied.\n"
            "   1 tape copied.\n \nCopy ended at DATE.\n \n");
}

TEST_F(TapeCopyTest, GoesToDiskAndBackAndToSeveralTapesAtOnce) {
  const Tape tape = {A, B, MARK, C, MARK};
  putIn(0, "in.tap", tape + Tape{MARK});
  load(1, "one.tap");
  load(2, "two.tap");
  makeCartridge("one.tap", {});
  makeCartridge("two.tap", {C, C});
  copyToTapes({1, 2});
  EXPECT_EQ(status(), "Complete");
  EXPECT_EQ(count("Wrote double end-of-file."), 1);
  EXPECT_EQ(shortly(tapeIn("one.tap")), shortly(tape + CLOSING));
  EXPECT_EQ(shortly(tapeIn("two.tap")), shortly(tape + CLOSING));

  copyToDisk();
  putIn(1, "one.tap");
  chooseInputFile(folder.path("out.tpf"));
  chooseOutputTapes({1});
  start();
  EXPECT_EQ(shortly(tapeIn("one.tap")), shortly(tape + CLOSING));
}

TEST_F(TapeCopyTest, ABadBlockBetweenTwoMarksBreaksTheirRow) {
  EXPECT_EQ(copied({A, MARK, B, MARK, C, MARK, MARK}, {2}), closedFile({A, MARK, MARK, C, MARK}));
}

TEST_F(TapeCopyTest, BadBlocksCostThemselvesAndSixInARowTheJob) {
  EXPECT_EQ(copied({A, B, A, C, B, B, B, B, B, B, C}, {2, 4, 5, 6, 7, 8, 9}), closedFile({A, B, C}));
  EXPECT_EQ(status(), "Failed");
  expectCounts({{"  *** Error reading from input tape - retrying...", 35}, {"Retries failed. Skipping block.", 6}});
  expectSaid({"  *** Too many sequential bad blocks. Aborting.", "  *** Job Failed.", "   3 blocks copied."});
}

TEST_F(TapeCopyTest, TheEndOfRecordedDataEndsATapeWithoutAnError) {
  EXPECT_EQ(copied({A, MARK, B}), closedFile({A, MARK, B}));
  EXPECT_EQ(status(), "Complete");
  EXPECT_TRUE(consoleHas("Total input for tape 1: 2 blocks, 107 bytes, 1 file"));
  for (const std::string& line : consoleWithoutDates()) EXPECT_EQ(line.find("***"), std::string::npos) << line;
}

TEST_F(TapeCopyTest, EofCountAboveTwoKeepsDoubleMarksAlsoInARawFile) {
  setParameters([this](WINDOW parameters) { EXPECT_EQ(toolkit.typed(parameters, UF_EOF_COUNT, "-3"), "3"); });
  EXPECT_EQ(copied({A, MARK, MARK, B, MARK, MARK, MARK}), closedFile({A, MARK, MARK, B, MARK, MARK}));
  setParameters([this](WINDOW parameters) { toolkit.press(parameters, UF_RAW); });
  EXPECT_EQ(copyToDisk(), A + tpfHeader(0, 0x1000001U, 0xF0F0F0F0U));
}

TEST_F(TapeCopyTest, ConcatenateTakesTheFirstFileOfEachTape) {
  makeCartridge("next.tap", {C, MARK, B, MARK, MARK});
  setParameters([this](WINDOW parameters) { toolkit.press(parameters, UF_CONCATENATE); });
  nextInputIs("next.tap");
  EXPECT_EQ(copied({A, MARK, B, MARK, MARK}), closedFile({A, C}));
  expectSaid({"Begin input tape 2", "   2 tapes copied.", "   2 files copied."});
}

TEST_F(TapeCopyTest, OneForOneGivesEachInputTapeItsOwnOutputTape) {
  makeCartridge("in.tap", {A, MARK, MARK});
  makeCartridge("next.tap", {C, MARK, MARK});
  makeCartridge("blank.tap", {});
  const std::vector<std::string> outputs = {"one.tap", "two.tap", "three.tap", "four.tap", "five.tap", "six.tap"};
  for (const char* name : {"one.tap", "two.tap"}) makeCartridge(name, {B, B, MARK, MARK});
  load(0, "in.tap");
  load(1, "one.tap");
  load(2, "two.tap");
  setParameters([this](WINDOW parameters) { toolkit.press(parameters, UF_ONE_FOR_ONE); });
  nextInputIs("next.tap");
  nextInputIs("blank.tap");
  for (std::size_t i = 2; i < outputs.size(); ++i) nextOutputIs(outputs[i], i % 2 == 0 ? 1 : 2, {B, B, MARK, MARK});
  copyToTapes({1, 2});
  EXPECT_EQ(status(), "Complete");
  // The last two took nothing, and what they held is gone all the same.
  const Tape expected[] = {{A, MARK, MARK}, {C, MARK, MARK}, CLOSING};
  for (std::size_t i = 0; i < outputs.size(); ++i)
    EXPECT_EQ(shortly(tapeIn(outputs[i])), shortly(expected[i / 2])) << outputs[i];
}

TEST_F(TapeCopyTest, DecliningAnOutputTapeStopsAndLeavesTheFreshCopiesAlone) {
  loadTapes({A, MARK, MARK}, {});
  makeCartridge("next.tap", {C, MARK, MARK});
  putIn(2, "two.tap");
  setParameters([this](WINDOW parameters) { toolkit.press(parameters, UF_ONE_FOR_ONE); });
  nextInputIs("next.tap");
  // Rewinding it first is what an operator does who takes the cartridge out: nothing may be written at its beginning.
  noFurtherOutput();
  chooseInputTape(0);
  chooseOutputTapes({1, 2});
  start();
  EXPECT_EQ(status(), "Complete");
  EXPECT_EQ(count("Wrote double end-of-file."), 0);
  EXPECT_EQ(count("  ** Input tape 2, which is loaded now, was not copied: it has no output tape."), 1);
  EXPECT_EQ(shortly(tapeIn("one.tap")), shortly((Tape{A, MARK, MARK})));
  EXPECT_EQ(shortly(tapeIn("two.tap")), shortly((Tape{A, MARK, MARK})));
}

TEST_F(TapeCopyTest, AQuestionClosedByItsBoxMeansNo) {
  putIn(0, "in.tap", {A, MARK, MARK});
  chooseInputTape(0, [this](WINDOW drives) { toolkit.press(drives, DRV_UNLOAD_AT_EOT); });
  chooseOutputFile(folder.path("out.tpf"));
  toolkit.onModal(DLG_IN_CONTINUE, [this](WINDOW question) { toolkit.close(question); });
  start();
  EXPECT_EQ(status(), "Complete");
  EXPECT_TRUE(consoleHas("   1 tape copied."));
  for (const std::string& line : consoleWithoutDates()) EXPECT_EQ(line.find("***"), std::string::npos) << line;
}

TEST_F(TapeCopyTest, AMagazineIsCopiedToItsEnd) {
  makeCartridge("in.tap", {A, MARK, MARK});
  makeCartridge("next.tap", {B, MARK, MARK});
  load(0, "in.tap", "magazine = next.tap\n");
  chooseInputTape(0, [this](WINDOW drives) {
    toolkit.press(drives, DRV_UNLOAD_AT_EOT);
    toolkit.press(drives, DRV_AUTO_LOAD);
    toolkit.typeInto(drives, DRV_WAIT, "0");
  });
  chooseOutputFile(folder.path("out.tpf"));
  noFurtherTape();
  start();
  EXPECT_EQ(status(), "Complete");
  EXPECT_EQ(tpfShortly(readFile(folder.path("out.tpf"))), closedFile({A, MARK, B, MARK}));
  expectCounts({{"Tape finished", 2}, {"Magazine finished", 1}, {"  ", 1}});
  EXPECT_TRUE(toolkit.errors.empty());
  // A stop ends the wait for the loader, which may have more, and asks nothing.
  setAutoLoadMinute(std::chrono::milliseconds(300));
  units[0].timeout = 9;
  toolkit.onPump = [this](long) {
    if (units[0].state == 0) toolkit.press(toolkit.dialog(DLG_PROGRESS), PROG_STOP);
  };
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(copied({A, MARK, MARK}), closedFile({A, MARK}));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
  expectCounts({{"  *** Copy aborted by user at DATE.", 1}, {"Magazine finished", 0}});
  toolkit.onPump = nullptr;
  setAutoLoadMinute(std::chrono::minutes(1));
  units[0].timeout = 0;
  units[0].autoMode = false;
  units[0].unloadAtEot = false;
}

TEST_F(TapeCopyTest, TheEndOfTheMediumFailsTheJobAndClosesTheTape) {
  loadTapes(Tape(60, block(1000, 1)) + CLOSING, {});
  load(1, "one.tap", "capacity = 20000\n");
  chooseInputTape(0);
  chooseOutputTapes({1});
  start();
  EXPECT_EQ(status(), "Failed");
  expectSaid({"  *** Error writing to tape on drive \"VIRTUAL drive1\".", "  *** Job Failed."});
  const Tape out = tapeIn("one.tap");
  ASSERT_GT(out.size(), 3U);
  EXPECT_EQ(shortly(out), shortly(Tape(out.size() - 2, block(1000, 1)) + CLOSING));
  // What the summary says is what is on the tape.
  EXPECT_TRUE(consoleHas("   " + std::to_string(out.size() - 2) + " blocks copied."));
}

TEST_F(TapeCopyTest, WhatAnEarlierReadMetIsForgottenWhenTheTapeIsRewound) {
  putIn(0, "in.tap", {A, MARK, B, MARK});
  chooseInputTape(0);
  chooseOutputFile(folder.path("out.tpf"));
  std::vector<char> buffer(units->ioBufLen);
  while (units->eodMark == 0) tlv_tape_read(units, 0, buffer.data(), 32768);
  tlv_rewind(units, 0);
  noFurtherTape();
  start();
  EXPECT_EQ(tpfShortly(readFile(folder.path("out.tpf"))), closedFile({A, MARK, B, MARK}));
}

TEST_F(TapeCopyTest, StartOverUnitsThatAnotherWindowClosedTouchesNothing) {
  loadTapes({A, MARK, MARK}, {C, MARK, MARK});
  chooseInputTape(0);
  chooseOutputTapes({1});
  ASSERT_EQ(status(), "Ready");
  tlv_unload(units, 0);
  EVENT changed;
  changed.type = E_USER;
  xvt_win_dispatch_event(dialog, &changed);
  EXPECT_EQ(status(), "Idle");
  EXPECT_FALSE(toolkit.enabled(dialog, CP_START));
  toolkit.close(dialog);
  EXPECT_EQ(shortly(tapeIn("one.tap")), shortly(Tape{C, MARK, MARK}));
}

TEST_F(TapeCopyTest, WhatWasLostIsNamedBehindTheSummary) {
  Tape second = {MARK};
  std::vector<std::size_t> bad;
  for (int i = 0; i < 8; ++i) {
    second.insert(second.end(), {C, A});
    bad.push_back(second.size() - 1);
  }
  makeCartridge("in.tap", {A, MARK, A, MARK, C, MARK, B}, {0, 2, 6});
  makeCartridge("next.tap", second + Tape{MARK, B}, bad);
  load(0, "in.tap");
  nextInputIs("next.tap");
  copyToDisk();
  EXPECT_EQ(status(), "Complete");
  Lines lines = consoleWithoutDates();
  expectSaid(
      "   2 tapes copied.\n \n"
      "  ** 11 blocks could not be read: tape 1 file 1 block 1, tape 1 file 2 block 1, tape 1 file 4 block 1, tape 2 "
      "file 2 block 2, tape 2 file 2 block 4, tape 2 file 2 block 6, tape 2 file 2 block 8, tape 2 file 2 block 10, "
      "tape 2 file 2 block 12, tape 2 file 2 block 14 and 1 more.\n"
      "  ** 1 block (7 bytes) with no filemark behind it was copied, but counts as no file.\nCopy ended at DATE.\n ");
  // Neither the first file, whose mark follows none, nor the next tape's, whose own blocks were all readable.
  std::erase_if(lines, [](const std::string& line) { return line.find("no readable block") == std::string::npos; });
  EXPECT_EQ(lines, Lines{"  ** File 2 has no readable block: its filemark follows the one before it on the copy."});
}

// The cartridge of the input, or of the output, is exchanged in mid-job.
TEST_F(TapeCopyTest, WithThePositionLostTheJobEndsAtOnce) {
  VirtualDrive::lookEvery(std::chrono::milliseconds(0));
  for (const int drive : {0, 1}) {
    loadTapes({A, B, C, A, B, MARK, MARK}, {});
    makeCartridge("other.tap", {C, MARK, MARK});
    toolkit.onPump = [this, drive, pumps = 0](long) mutable {
      if (++pumps == 3) load(drive, "other.tap");
    };
    copyToTapes({1});
    Lines lines = consoleWithoutDates();
    std::erase_if(lines, [](const std::string& line) { return line.find("***") != 2; });
    const std::string name = "drive \"VIRTUAL drive" + std::to_string(drive) + "\"";
    EXPECT_EQ(lines,
              (Lines{(drive == 0 ? "  *** Error reading tape on " : "  *** Error writing to tape on ") + name + ".",
                     "  *** The tape position is lost on " + name + " (drive reset, or cartridge pulled or exchanged).",
                     "  *** Job Failed."}));
    EXPECT_EQ(shortly(tapeIn("other.tap")), shortly(Tape{C, MARK, MARK}));
    EXPECT_EQ(shortly(tapeIn("one.tap")), shortly(drive == 0 ? Tape{A, B} + CLOSING : Tape{A, B}));
  }
  VirtualDrive::lookEvery(std::chrono::milliseconds(250));
}

TEST_F(TapeCopyTest, ATapeThatTheJobHasNotComeToIsNotClosedByMarks) {
  loadTapes({A, MARK, MARK}, {C, MARK, MARK}, {0});
  chooseInputTape(0);
  chooseOutputTapes({1});
  units->inputAbort = true;
  start();
  EXPECT_EQ(status(), "Failed");
  EXPECT_EQ(shortly(tapeIn("one.tap")), shortly(Tape{C, MARK, MARK}));
  EXPECT_EQ(count("Wrote double end-of-file."), 0);
  units->inputAbort = false;
  // The second of two outputs does not take the first block.
  closeCopyDialog();
  setenv("QUARLO_TAPE_FAULT", "write:2:EIO", 1);
  setTapeDriver(nullptr);
  openCopyDialog();
  putIn(0, "in.tap", {A, MARK, MARK});
  putIn(2, "two.tap", {C, MARK, MARK});
  copyToTapes({1, 2});
  unsetenv("QUARLO_TAPE_FAULT");
  EXPECT_EQ(status(), "Failed");
  EXPECT_EQ(shortly(tapeIn("one.tap")), shortly(Tape{A} + CLOSING));
  EXPECT_EQ(shortly(tapeIn("two.tap")), shortly(Tape{C, MARK, MARK}));
}

TEST_F(TapeCopyTest, ErrorOptionsLeaveTheOtherOptionsAlone) {
  units->inputNoRewind = true;
  units->useMultipleOut = true;
  toolkit.onModal(DLG_ERROR_OPTIONS, [this](WINDOW options) {
    toolkit.press(options, ERR_STOP_ON_ERROR);
    toolkit.press(options, ERR_OK);
  });
  toolkit.press(dialog, CP_ERROR_OPTIONS);
  EXPECT_TRUE(units->inputNoRewind);
  EXPECT_TRUE(units->useMultipleOut);
}

}  // namespace
