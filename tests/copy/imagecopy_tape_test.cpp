// The image copy from tapes: what reaches the disk file or the output tapes, and what the console says.

#include <gtest/gtest.h>

#include "quarlo/copy/unfmtcpy.h"
#include "quarlo/tapelib/autoload.h"
#include "quarlo/tapelib/driver/virtual_drive.h"
#include "tests/support/job_fixture.h"

namespace {

using Lines = std::vector<std::string>;

class TapeCopyTest : public JobTest {
 protected:
  void SetUp() override { openCopyDialog(); }

  /// Copies what is in drive 0 to a tape-image file.
  std::string copyToDisk() {
    chooseInputTape(0);
    chooseOutputFile(folder.path("out.tpf"));
    noFurtherTape();
    start();
    return readFile(folder.path("out.tpf"));
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

Tape operator+(Tape one, const Tape& other) {
  one.insert(one.end(), other.begin(), other.end());
  return one;
}
const Tape CLOSING = {MARK, MARK};

TEST_F(TapeCopyTest, KeepsBlocksAndMarksOnDiskAndTellsOfEveryFile) {
  makeCartridge("in.tap", {A, B, MARK, C, MARK, MARK});
  load(0, "in.tap");
  // The tape's own second mark is not copied; the job's two closing ones follow the last file's.
  EXPECT_EQ(tpfShortly(copyToDisk()), tpfShortly(tpfImage(Tape{A, B, MARK, C, MARK} + CLOSING)));
  EXPECT_EQ(status(), "Complete");
  const Lines expected = {" ",
                          "Copy started at DATE.",
                          " ",
                          "Begin input tape 1",
                          "    File 1:      2 blocks,             107 bytes",
                          "    File 2:      1 blocks,           32768 bytes",
                          "Total input for tape 1: 3 blocks, 32875 bytes, 2 files",
                          " ",
                          "Rewind \"VIRTUAL drive0\".",
                          " ",
                          " ",
                          "Unformatted Copy Summary:",
                          "   3 blocks copied.",
                          "   32875 bytes copied.",
                          "   2 files copied.",
                          "   1 tape copied.",
                          " ",
                          "Copy ended at DATE.",
                          " "};
  EXPECT_EQ(consoleWithoutDates(), expected);
}

TEST_F(TapeCopyTest, GoesToDiskAndBackAndToSeveralTapesAtOnce) {
  const Tape tape = {A, B, MARK, C, MARK};
  makeCartridge("in.tap", tape + Tape{MARK});
  load(0, "in.tap");
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
  makeCartridge("one.tap", {});
  load(1, "one.tap");
  chooseInputFile(folder.path("out.tpf"));
  chooseOutputTapes({1});
  start();
  EXPECT_EQ(shortly(tapeIn("one.tap")), shortly(tape + CLOSING));
}

TEST_F(TapeCopyTest, ABadBlockBetweenTwoMarksBreaksTheirRow) {
  makeCartridge("in.tap", {A, MARK, B, MARK, C, MARK, MARK}, {2});
  load(0, "in.tap");
  EXPECT_EQ(tpfShortly(copyToDisk()), tpfShortly(tpfImage(Tape{A, MARK, MARK, C, MARK} + CLOSING)));
}

TEST_F(TapeCopyTest, BadBlocksCostThemselvesAndSixInARowTheJob) {
  makeCartridge("in.tap", {A, B, A, C, B, B, B, B, B, B, C}, {2, 4, 5, 6, 7, 8, 9});
  load(0, "in.tap");
  chooseInputTape(0);
  chooseOutputFile(folder.path("out.tpf"));
  start();
  EXPECT_EQ(status(), "Failed");
  EXPECT_EQ(count("  *** Error reading from input tape - retrying..."), 35);
  EXPECT_EQ(count("Retries failed. Skipping block."), 6);
  EXPECT_EQ(count("  *** Too many sequential bad blocks. Aborting."), 1);
  EXPECT_EQ(count("  *** Job Failed."), 1);
  EXPECT_TRUE(consoleHas("   3 blocks copied."));
  EXPECT_EQ(tpfShortly(readFile(folder.path("out.tpf"))), tpfShortly(tpfImage(Tape{A, B, C} + CLOSING)));
}

TEST_F(TapeCopyTest, TheEndOfRecordedDataEndsATapeWithoutAnError) {
  makeCartridge("in.tap", {A, MARK, B});
  load(0, "in.tap");
  EXPECT_EQ(tpfShortly(copyToDisk()), tpfShortly(tpfImage(Tape{A, MARK, B} + CLOSING)));
  EXPECT_EQ(status(), "Complete");
  EXPECT_TRUE(consoleHas("Total input for tape 1: 2 blocks, 107 bytes, 1 file"));
  for (const std::string& line : consoleWithoutDates()) EXPECT_EQ(line.find("***"), std::string::npos) << line;
}

TEST_F(TapeCopyTest, EofCountAboveTwoKeepsDoubleMarksAlsoInARawFile) {
  makeCartridge("in.tap", {A, MARK, MARK, B, MARK, MARK, MARK});
  load(0, "in.tap");
  setParameters([this](WINDOW parameters) {
    toolkit.typeInto(parameters, UF_EOF_COUNT, "-3");
    EXPECT_EQ(toolkit.text(parameters, UF_EOF_COUNT), "3");
  });
  EXPECT_EQ(tpfShortly(copyToDisk()), tpfShortly(tpfImage(Tape{A, MARK, MARK, B, MARK, MARK} + CLOSING)));

  setParameters([this](WINDOW parameters) { toolkit.press(parameters, UF_RAW); });
  const std::string mark = tpfHeader(0, 0x1000001U, 0xF0F0F0F0U);
  EXPECT_EQ(copyToDisk(), A + mark);
}

TEST_F(TapeCopyTest, ConcatenateTakesTheFirstFileOfEachTape) {
  makeCartridge("in.tap", {A, MARK, B, MARK, MARK});
  makeCartridge("next.tap", {C, MARK, B, MARK, MARK});
  load(0, "in.tap");
  setParameters([this](WINDOW parameters) { toolkit.press(parameters, UF_CONCATENATE); });
  nextInputIs("next.tap");
  EXPECT_EQ(tpfShortly(copyToDisk()), tpfShortly(tpfImage(Tape{A, C} + CLOSING)));
  EXPECT_TRUE(consoleHas("Begin input tape 2"));
  EXPECT_TRUE(consoleHas("   2 tapes copied."));
  EXPECT_TRUE(consoleHas("   2 files copied."));
}

TEST_F(TapeCopyTest, OneForOneGivesEachInputTapeItsOwnOutputTape) {
  makeCartridge("in.tap", {A, MARK, MARK});
  makeCartridge("next.tap", {C, MARK, MARK});
  makeCartridge("blank.tap", {});
  const std::vector<std::string> outputs = {"one.tap", "two.tap", "three.tap", "four.tap", "five.tap", "six.tap"};
  for (const std::string& name : outputs) makeCartridge(name, {B, B, MARK, MARK});
  load(0, "in.tap");
  load(1, "one.tap");
  load(2, "two.tap");
  setParameters([this](WINDOW parameters) { toolkit.press(parameters, UF_ONE_FOR_ONE); });
  nextInputIs("next.tap");
  nextInputIs("blank.tap");
  for (std::size_t i = 2; i < outputs.size(); ++i) {
    const int drive = i % 2 == 0 ? 1 : 2;
    const std::string name = outputs[i];
    toolkit.onModal(DLG_OUT_CONTINUE, [this, drive, name](WINDOW question) {
      toolkit.press(question, OC_UNLOAD);
      load(drive, name);
      toolkit.press(question, OC_OPEN);
      toolkit.press(question, OC_CONTINUE);
    });
  }
  copyToTapes({1, 2});
  EXPECT_EQ(status(), "Complete");
  // The last two took nothing, and what they held is gone all the same.
  const Tape expected[] = {{A, MARK, MARK}, {C, MARK, MARK}, CLOSING};
  for (std::size_t i = 0; i < outputs.size(); ++i)
    EXPECT_EQ(shortly(tapeIn(outputs[i])), shortly(expected[i / 2])) << outputs[i];
}

TEST_F(TapeCopyTest, DecliningAnOutputTapeStopsAndLeavesTheFreshCopiesAlone) {
  makeCartridge("in.tap", {A, MARK, MARK});
  makeCartridge("next.tap", {C, MARK, MARK});
  makeCartridge("one.tap", {});
  makeCartridge("two.tap", {});
  load(0, "in.tap");
  load(1, "one.tap");
  load(2, "two.tap");
  setParameters([this](WINDOW parameters) { toolkit.press(parameters, UF_ONE_FOR_ONE); });
  nextInputIs("next.tap");
  // Rewinding it first is what an operator does who takes the cartridge out: nothing may be written at its beginning.
  toolkit.onModal(DLG_OUT_CONTINUE, [this](WINDOW question) { toolkit.press(question, OC_STOP); });
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
  makeCartridge("in.tap", {A, MARK, MARK});
  load(0, "in.tap");
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
  EXPECT_EQ(tpfShortly(readFile(folder.path("out.tpf"))), tpfShortly(tpfImage(Tape{A, MARK, B, MARK} + CLOSING)));
  EXPECT_EQ(count("Tape finished"), 2);
  EXPECT_EQ(count("Magazine finished"), 1);
  EXPECT_EQ(count("  "), 1);
  EXPECT_TRUE(toolkit.errors.empty());
  // A stop ends the wait for the loader, which may have more, and asks nothing.
  setAutoLoadMinute(std::chrono::milliseconds(300));
  units[0].timeout = 9;
  makeCartridge("in.tap", {A, MARK, MARK});
  toolkit.onPump = [this](long) {
    if (units[0].state == 0) toolkit.press(toolkit.dialog(DLG_PROGRESS), PROG_STOP);
  };
  load(0, "in.tap");
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(tpfShortly(copyToDisk()), tpfShortly(tpfImage(Tape{A, MARK} + CLOSING)));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
  EXPECT_EQ(count("  *** Copy aborted by user at DATE."), 1);
  EXPECT_EQ(count("Magazine finished"), 0);
  toolkit.onPump = nullptr;
  setAutoLoadMinute(std::chrono::minutes(1));
  units[0].timeout = 0;
  units[0].autoMode = false;
  units[0].unloadAtEot = false;
}

TEST_F(TapeCopyTest, TheEndOfTheMediumFailsTheJobAndClosesTheTape) {
  makeCartridge("in.tap", Tape(60, block(1000, 1)) + Tape{MARK, MARK});
  makeCartridge("one.tap", {});
  load(0, "in.tap");
  load(1, "one.tap", "capacity = 20000\n");
  chooseInputTape(0);
  chooseOutputTapes({1});
  start();
  EXPECT_EQ(status(), "Failed");
  EXPECT_TRUE(consoleHas("  *** Error writing to tape on drive \"VIRTUAL drive1\"."));
  EXPECT_TRUE(consoleHas("  *** Job Failed."));
  const Tape out = tapeIn("one.tap");
  ASSERT_GT(out.size(), 3U);
  EXPECT_EQ(shortly(out), shortly(Tape(out.size() - 2, block(1000, 1)) + CLOSING));
  // What the summary says is what is on the tape.
  EXPECT_TRUE(consoleHas("   " + std::to_string(out.size() - 2) + " blocks copied."));
}

TEST_F(TapeCopyTest, WhatAnEarlierReadMetIsForgottenWhenTheTapeIsRewound) {
  makeCartridge("in.tap", {A, MARK, B, MARK});
  load(0, "in.tap");
  chooseInputTape(0);
  chooseOutputFile(folder.path("out.tpf"));
  std::vector<char> buffer(units->ioBufLen);
  while (units->eodMark == 0) tlv_tape_read(units, 0, buffer.data(), 32768);
  tlv_rewind(units, 0);
  noFurtherTape();
  start();
  EXPECT_EQ(tpfShortly(readFile(folder.path("out.tpf"))), tpfShortly(tpfImage(Tape{A, MARK, B, MARK} + CLOSING)));
}

TEST_F(TapeCopyTest, StartOverUnitsThatAnotherWindowClosedTouchesNothing) {
  makeCartridge("in.tap", {A, MARK, MARK});
  makeCartridge("one.tap", {C, MARK, MARK});
  load(0, "in.tap");
  load(1, "one.tap");
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
  const auto summary = std::find(lines.begin(), lines.end(), "   2 tapes copied.");
  ASSERT_NE(summary, lines.end());
  EXPECT_EQ(Lines(summary + 1, lines.end()),
            (Lines{" ",
                   "  ** 11 blocks could not be read: tape 1 file 1 block 1, tape 1 file 2 block 1, tape 1 file 4 "
                   "block 1, tape 2 file 2 block 2, tape 2 file 2 block 4, tape 2 file 2 block 6, tape 2 file 2 block "
                   "8, tape 2 file 2 block 10, tape 2 file 2 block 12, tape 2 file 2 block 14 and 1 more.",
                   "  ** 1 block (7 bytes) with no filemark behind it was copied, but counts as no file.",
                   "Copy ended at DATE.", " "}));
  // Neither the first file, whose mark follows none, nor the next tape's, whose own blocks were all readable.
  std::erase_if(lines, [](const std::string& line) { return line.find("no readable block") == std::string::npos; });
  EXPECT_EQ(lines, Lines{"  ** File 2 has no readable block: its filemark follows the one before it on the copy."});
}

// The cartridge of the input, or of the output, is exchanged in mid-job.
TEST_F(TapeCopyTest, WithThePositionLostTheJobEndsAtOnce) {
  VirtualDrive::lookEvery(std::chrono::milliseconds(0));
  for (const int drive : {0, 1}) {
    makeCartridge("in.tap", {A, B, C, A, B, MARK, MARK});
    makeCartridge("one.tap", {});
    makeCartridge("other.tap", {C, MARK, MARK});
    load(0, "in.tap");
    load(1, "one.tap");
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
  makeCartridge("in.tap", {A, MARK, MARK}, {0});
  makeCartridge("one.tap", {C, MARK, MARK});
  load(0, "in.tap");
  load(1, "one.tap");
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
  makeCartridge("in.tap", {A, MARK, MARK});
  makeCartridge("two.tap", {C, MARK, MARK});
  load(0, "in.tap");
  load(2, "two.tap");
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
