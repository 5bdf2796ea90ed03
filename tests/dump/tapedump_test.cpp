// The tape dump on virtual drives, driven as a user would.
#include <gtest/gtest.h>

#include "libkyr/text.h"
#include "quarlo/common/dump_win.h"
#include "quarlo/common/windows.h"
#include "quarlo/dump/tdmp_dlg.h"
#include "quarlo/shell/ctrl_dlg.h"
#include "quarlo/tapelib/homefolder.h"
#include "quarlo/tapelib/jobstate.h"
#include "tests/support/job_fixture.h"

namespace {

const std::string HELLO_EBCDIC = "\xc8\xc5\xd3\xd3\xd6";

class TapeDumpTest : public JobTest {
 protected:
  void SetUp() override { openDump(); }

  void openDump() {
    open(DLG_TAPE_DUMP, tapeDumpDlg_eh);
    window = toolkit.windowTitled("Tape Dump Window");
  }
  void insert(const Tape& tape, const std::vector<std::size_t>& badBlocks = {}) {
    putIn(0, "in.tap", tape, badBlocks);
    chooseDrive(TD_SELECT_DRIVE, 0);
    forgetConsole();
  }
  void dump(int blocks = 1) {
    toolkit.typeInto(dialog, TD_READ_BLOCKS, std::to_string(blocks));
    toolkit.press(dialog, TD_DUMP);
  }
  Lines shown() { return toolkit.lines(window); }

  WINDOW window = NULL_WIN;
};

std::string counting(int from, int count) {
  std::string bytes;
  for (int i = from; i < from + count; ++i) bytes += static_cast<char>(i);
  return bytes;
}

const Lines HUNDRED = {"00000  00010203 04050607 08090a0b 0c0d0e0f 10111213 14151617 18191a1b 1c1d1e1f",
                       "00032  20212223 24252627 28292a2b 2c2d2e2f 30313233 34353637 38393a3b 3c3d3e3f",
                       "00064  40414243 44454647 48494a4b 4c4d4e4f 50515253 54555657 58595a5b 5c5d5e5f",
                       "00096  60616263"};

std::string joined(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

TEST_F(TapeDumpTest, OpensWithItsFirstSettings) {
  EXPECT_EQ(toolkit.text(dialog, TD_DRIVE), "No drive selected");
  EXPECT_EQ(toolkit.rows(dialog, TD_FORMAT),
            (Lines{"Hexadecimal", "ASCII", "EBCDIC", "Short Integer", "Long Integer", "IBM Float", "IEEE Float"}));
  EXPECT_EQ(toolkit.selected(dialog, TD_FORMAT), Lines{"Hexadecimal"});
  EXPECT_EQ(toolkit.text(dialog, TD_READ_BLOCKS) + toolkit.text(dialog, TD_SKIP_BLOCKS), "11");
  EXPECT_EQ(toolkit.text(dialog, TD_START_BYTE), "0");
  EXPECT_EQ(toolkit.text(dialog, TD_DUMP_BYTES), "1024");
  for (const int control : {TD_DUMP, TD_REDUMP, TD_HALT, TD_SKIP_BACK, TD_SKIP_FORWARD, TD_SIGNED, TD_BIG_ENDIAN})
    EXPECT_FALSE(toolkit.enabled(dialog, control)) << control;
  EXPECT_EQ(gTAnlsWindow, dialog);
  EXPECT_EQ(gTAnlsWindowUp, 1);
  toolkit.press(dialog, TD_CLOSE);
  EXPECT_EQ(gTAnlsWindow, NULL_WIN);
  EXPECT_EQ(gTAnlsWindowUp, 0);
  EXPECT_FALSE(xvt_vobj_is_valid(window));
}

TEST_F(TapeDumpTest, ItsFileStandsWhereTheProgramWasStarted) {
  toolkit.close(dialog);
  std::filesystem::remove("tdump.txt");
  setHomeFolder(folder.path(""));
  std::filesystem::create_directory("elsewhere");
  std::filesystem::current_path("elsewhere");
  openDump();
  setHomeFolder("");
  EXPECT_TRUE(std::filesystem::exists(folder.path("tdump.txt")));
  EXPECT_FALSE(std::filesystem::exists("tdump.txt"));
}

TEST_F(TapeDumpTest, FormatsAndChoicesGoTogether) {
  const auto choices = [this](int row) {
    toolkit.select(dialog, TD_FORMAT, row);
    return std::pair(toolkit.enabled(dialog, TD_UNSIGNED), toolkit.enabled(dialog, TD_LITTLE_ENDIAN));
  };
  for (const int row : {0, 1, 2}) EXPECT_EQ(choices(row), std::pair(false, false)) << row;
  for (const int row : {3, 4}) EXPECT_EQ(choices(row), std::pair(true, true)) << row;
  for (const int row : {5, 6}) EXPECT_EQ(choices(row), std::pair(false, true)) << row;
  toolkit.press(dialog, TD_TAPE_MODE_2);
  EXPECT_TRUE(toolkit.checked(dialog, TD_TAPE_MODE_2));
  EXPECT_FALSE(toolkit.checked(dialog, TD_TAPE_MODE_1));
}

TEST_F(TapeDumpTest, NumberFieldsTakeWhatIsTyped) {
  EXPECT_EQ(toolkit.typed(dialog, TD_READ_BLOCKS, "-12"), "12");
  EXPECT_EQ(toolkit.typed(dialog, TD_SKIP_BLOCKS, "-2147483648"), "2147483647");
  EXPECT_EQ(toolkit.typed(dialog, TD_START_BYTE, "-5"), "-5");
  EXPECT_EQ(toolkit.typed(dialog, TD_DUMP_BYTES, "none"), "0");
}

TEST_F(TapeDumpTest, WalksThroughTheTapeIntoWindowConsoleAndFile) {
  insert({counting(0, 100), MARK, HELLO_EBCDIC, MARK});
  EXPECT_EQ(toolkit.text(dialog, TD_DRIVE), "VIRTUAL drive0");
  EXPECT_FALSE(xvt_vobj_is_visible(window));
  dump(2);
  EXPECT_TRUE(xvt_vobj_is_visible(window));
  EXPECT_EQ(toolkit.text(dialog, TD_SHOW_WINDOW), "Hide Dump Window");
  const Lines first = Lines{"Block 1, 100 bytes"} + HUNDRED;
  EXPECT_EQ(shown(), (first + Lines{" ", "End of File"}));
  EXPECT_EQ(consoleWithoutDates(), (Lines{"Block 1, 100 bytes", "End of File"}));
  EXPECT_EQ(units->fileNum, 2);
  EXPECT_FALSE(toolkit.enabled(dialog, TD_REDUMP));

  toolkit.select(dialog, TD_FORMAT, "EBCDIC");
  forgetConsole();
  dump(10);
  const Lines second = {"Block 2, 5 bytes", "00000 HELLO"};
  EXPECT_EQ(shown(), (second + Lines{" ", "End of File"}));  // and nothing for the end of data
  EXPECT_EQ(consoleWithoutDates(), (Lines{"Block 2, 5 bytes", "End of File"}));
  const Lines inFile = first + Lines{"", "", "", "End of File"} + second + Lines{"", "", "", "End of File"};
  EXPECT_EQ(readFile("tdump.txt"), joined(inFile));
}

TEST_F(TapeDumpTest, ShowsTheWantedBytesOnly) {
  insert({counting(0, 100)});
  toolkit.typeInto(dialog, TD_START_BYTE, "2");
  toolkit.typeInto(dialog, TD_DUMP_BYTES, "4");
  toolkit.select(dialog, TD_FORMAT, "Short Integer");
  dump();
  EXPECT_EQ(shown(), (Lines{"Block 1, 100 bytes", "00002 000515 001029 ", " "}));

  toolkit.typeInto(dialog, TD_START_BYTE, "100");
  toolkit.press(dialog, TD_REDUMP);
  EXPECT_EQ(shown().back(), "Block 1, 100 bytes");  // and no line for the bytes, nor the blank behind them
}

TEST_F(TapeDumpTest, ShowsTheLastBlockAgainFromItsOwnMemory) {
  insert({counting(0, 100), std::string(4, 'z')});
  dump();
  std::fill_n(units->ioBuffer, units->ioBufLen, 'x');  // another job reads
  toolkit.select(dialog, TD_FORMAT, "Long Integer");
  toolkit.press(dialog, TD_UNSIGNED);
  toolkit.press(dialog, TD_LITTLE_ENDIAN);
  toolkit.typeInto(dialog, TD_DUMP_BYTES, "8");
  forgetConsole();
  toolkit.press(dialog, TD_REDUMP);
  const Lines again = {"Block 1, 100 bytes", "00000 0050462976 0117835012 "};
  EXPECT_EQ(shown(), (Lines{"Block 1, 100 bytes"} + HUNDRED + Lines{" "} + again + Lines{" "}));
  EXPECT_EQ(consoleWithoutDates(), Lines{});
  EXPECT_TRUE(readFile("tdump.txt").ends_with(joined(again + Lines{"", "", ""})));
}

TEST_F(TapeDumpTest, AFailedReadEndsTheDumpAndLeavesNothingToShowAgain) {
  insert({counting(0, 100), counting(0, 10), counting(0, 4)}, {1});
  dump(3);
  EXPECT_EQ(shown(), (Lines{"Block 1, 100 bytes"} + HUNDRED + Lines{" "}));
  const auto before = shown();
  if (toolkit.enabled(dialog, TD_REDUMP)) toolkit.press(dialog, TD_REDUMP);
  EXPECT_EQ(shown(), before);
  toolkit.press(dialog, TD_SKIP_FORWARD);
  dump();
  ASSERT_EQ(shown().size(), 3U);
  EXPECT_TRUE(shown()[0].ends_with(", 4 bytes"));  // the drive has lost count of its blocks
  EXPECT_EQ(shown()[1], "00000  00010203");
}

TEST_F(TapeDumpTest, SkipsForwardAndBackAndTellsTheControlDialog) {
  insert({"a", "b", "c", "d"});
  openTapeControl();
  toolkit.select(dialog, TD_FORMAT, "ASCII");
  toolkit.typeInto(dialog, TD_SKIP_BLOCKS, "2");
  toolkit.press(dialog, TD_SKIP_FORWARD);
  EXPECT_EQ(toolkit.text(gControlWindow, TC_BLOCK_NUMBER), "2");
  dump();
  EXPECT_EQ(shown()[1], "00000 c");
  EXPECT_EQ(toolkit.text(gControlWindow, TC_BLOCK_NUMBER), "3");
  toolkit.press(dialog, TD_SKIP_BACK);
  dump();
  EXPECT_EQ(shown()[1], "00000 b");

  // The drive is taken away by the control dialog: the dump follows.
  toolkit.press(gControlWindow, TC_UNLOAD);
  EXPECT_EQ(toolkit.text(dialog, TD_DRIVE), "No drive selected");
  EXPECT_FALSE(toolkit.enabled(dialog, TD_DUMP));
  xvt_vobj_destroy(gControlWindow);
}

TEST_F(TapeDumpTest, WhateverStopsItComesBehindABlockAndItCanBeUsedAgain) {
  insert(Tape(10, "block"));
  const auto stoppedBy = [this](const std::function<void()>& event) {
    toolkit.onPump = [&, before = toolkit.pumps](long pumps) {
      if (pumps - before == 3) event();
    };
    forgetConsole();
    dump(5);
    EXPECT_FALSE(jobIsRunning() || toolkit.hasTimers());
    return consoleWithoutDates();
  };
  for (const char* blocks : {"12", "34"}) {
    EXPECT_EQ(stoppedBy([this] { toolkit.press(dialog, TD_HALT); }),
              (Lines{formatText("Block %c, 5 bytes", blocks[0]), formatText("Block %c, 5 bytes", blocks[1]),
                     " Dump halted by user."}));
    EXPECT_FALSE(toolkit.enabled(dialog, TD_HALT));
  }
  stoppedBy([] { throw std::bad_alloc(); });
  EXPECT_EQ(count("  *** There is not enough memory for this job."), 1);
  EXPECT_TRUE(toolkit.enabled(dialog, TD_DUMP));
  const Lines last = stoppedBy([this] {
    toolkit.close(dialog);
    EXPECT_TRUE(jobIsRunning() && xvt_vobj_is_valid(dialog)) << "the dialog waits";
  });
  EXPECT_FALSE(xvt_vobj_is_valid(dialog));
  EXPECT_EQ(last, (Lines{"Block 7, 5 bytes", "Block 8, 5 bytes", " Dump halted by user."})) << "the tape stayed";
}

TEST_F(TapeDumpTest, NothingMovesTheTapeWhileAJobRuns) {
  insert(Tape(10, "block"));
  int stop = 0;
  const RunningJob other(&stop);
  for (const int control : {TD_DUMP, TD_SKIP_FORWARD, TD_SKIP_BACK, TD_SELECT_DRIVE}) toolkit.press(dialog, control);
  EXPECT_EQ(units->blockNum, 1);
  EXPECT_EQ(consoleWithoutDates(), Lines(4, kJobIsRunning));
}

TEST_F(TapeDumpTest, TheWindowIsShownAndHiddenByItsButton) {
  toolkit.press(dialog, TD_SHOW_WINDOW);
  EXPECT_TRUE(xvt_vobj_is_visible(window));
  EXPECT_EQ(toolkit.text(dialog, TD_SHOW_WINDOW), "Hide Dump Window");
  toolkit.press(dialog, TD_SHOW_WINDOW);
  EXPECT_FALSE(xvt_vobj_is_visible(window));
  EXPECT_EQ(toolkit.text(dialog, TD_SHOW_WINDOW), "Show Dump Window");
  EXPECT_EQ(gTDumpIsVisible, 0);
}

TEST_F(TapeDumpTest, AFullDiskGivesOneBoxForEachDump) {
  insert(Tape(10, "block"));
  {
    const FileLimit full(0);
    dump(3);
    EXPECT_EQ(toolkit.errors, Lines{"Error writing to disk file"});
    dump(3);
    EXPECT_EQ(toolkit.errors.size(), 2U);
    EXPECT_EQ(shown().size(), 9U);
  }
  dump(1);
  EXPECT_EQ(toolkit.errors.size(), 2U);
  EXPECT_TRUE(readFile("tdump.txt").starts_with("Block 7, 5 bytes\n"));
}

TEST_F(TapeDumpTest, WithoutAFileTheWindowServesAlone) {
  toolkit.press(dialog, TD_CLOSE);
  std::filesystem::remove("tdump.txt");
  std::filesystem::create_directory("tdump.txt");
  openDump();
  insert({"block"});
  dump();
  EXPECT_EQ(shown(), (Lines{"Block 1, 5 bytes", "00000  626c6f63 6b", " "}));
  EXPECT_TRUE(toolkit.errors.empty());
}

/// The blocks of a file's bytes.
Tape blocksOf(const std::string& bytes, std::size_t length) {
  Tape tape;
  for (std::size_t at = 0; at < bytes.size(); at += length) tape.push_back(bytes.substr(at, length));
  return tape;
}

/// The text of the first `length` bytes in a dump made by others: 80 characters a line behind the block's length.
std::string textByOthers(const std::string& path, std::size_t length) {
  std::ifstream dump(path);
  std::string text;
  for (std::string line; text.size() < length && std::getline(dump, line);) {
    if (line.size() < 7 || (line[5] != ' ' && line[5] != ':') || line[6] != ' ') continue;
    line.erase(0, 7);
    line.resize(80, ' ');
    text += line;
  }
  // Read as the recording instruments use it, the code of "-" is "~".
  std::replace(text.begin(), text.end(), '-', '~');
  return text;
}

TEST_F(TapeDumpTest, ReadsAnEbcdicTapeAsOthersDid) {
  const char* data = std::getenv("QUARLO_SHARED_DATA");
  if (data == nullptr) GTEST_SKIP() << "QUARLO_SHARED_DATA names no folder of sample files";
  const std::string tapes = std::string(data) + "/tape/readtape/";
  const std::string bytes = readFile(tapes + "PLAGO_beginning-001-DOCUMENT.bin");
  ASSERT_EQ(bytes.size(), 87520U);
  insert(blocksOf(bytes, 800));
  toolkit.select(dialog, TD_FORMAT, "EBCDIC");
  dump(1000);
  std::string text;
  for (const std::string& line : shown())
    if (line.size() == 86) text += line.substr(6);
  EXPECT_EQ(text, textByOthers(tapes + "PLAGO_beginning.EBCDIC.txt", bytes.size()));
}

}  // namespace
