// The SEG D copy from and to tapes: marks, labels, skipped files, blocking, the prepend file, full tapes, errors.

#include <gtest/gtest.h>

#include "quarlo/tapelib/drives.h"
#include "tests/segdcopy/segd_fixture.h"

namespace {

Tape tapeOf(int number) { return fileOf(number, static_cast<unsigned>(number)).tape(); }
const Tape END = {MARK};

/// A storage unit label: sequence number, revision, then text up to 128 bytes.
std::string label() {
  std::string bytes = "   1SD1.0RECORD  0";
  bytes.resize(128, ' ');
  return bytes;
}

class SegdTapeTest : public SegdTest {
 protected:
  ~SegdTapeTest() override {
    units[0].autoMode = units[1].autoMode = units[0].inputAbort = false;
    unsetenv("QUARLO_TAPE_FAULT");
  }
  /// Numbers of the field files written to disk, as their headers have them.
  std::vector<int> numbersOut() {
    std::vector<int> numbers;
    for (const std::string& name : outNames()) {
      const std::string bytes = out(name);
      numbers.push_back((bytes[1] >> 4) * 10 + (bytes[1] & 15));
    }
    return numbers;
  }
};

TEST_F(SegdTapeTest, TapeToTapeIsTheSameTapeAndEveryLine) {
  const Tape tape = tapeOf(21) + tapeOf(22) + END;
  noFurtherTape();
  EXPECT_EQ(copyTapeToTape(tape), 0);
  EXPECT_EQ(tapeIn("out.tap"), tape);
  EXPECT_EQ(consoleText(),
            " \nSEG D copy started at DATE.\n \n \n \n"
            "SEG D format code:   8058\n \n"
            "Start of input tape 1\nStart of output tape 1\n"
            "Field File:     21  -     2 traces\nField File:     22  -     2 traces\n \n"
            "End of input tape 1\nRewind \"VIRTUAL drive0\".\nWrote double end-of-file.\n \n"
            "End of input tape 1\n \nEnd of output tape 1\n2 Field Files output to this tape.\n \n \n"
            "SEG D Copy Summary:\n   " +
                std::to_string(fileOf(21).file().size() * 2) +
                " bytes copied.\n   2 field files copied.\n   6 blocks copied.\n   1 tapes copied.\n \n"
                "SEG D copy ended at DATE.\n \n");
}

TEST_F(SegdTapeTest, TapeToDiskToTape) {
  noFurtherTape();
  EXPECT_EQ(copyTape(tapeOf(21) + tapeOf(22) + END), 0);
  EXPECT_EQ(out("line_00001.sgd"), fileOf(21, 21).file());
  EXPECT_EQ(out("line_00002.sgd"), fileOf(22, 22).file());
  EXPECT_EQ(copyFilesToTape("out/line_00001.sgd"), 0);
  EXPECT_EQ(tapeIn("out.tap"), tapeOf(21) + tapeOf(22) + END);
  EXPECT_TRUE(consoleHas("Start of output tape 1"));
  EXPECT_FALSE(consoleHas("Start of input tape 1"));
  EXPECT_EQ(lineWith("   6 block"), "");  // blocks are counted of tapes only
}

/// What may stand before a field file, and what ends a tape.
TEST_F(SegdTapeTest, LabelsAndLoneMarksArePassedOverAndNoFileBehindThemIsLost) {
  const FieldFile small{.number = 3, .sets = {{1, 20}, {0, 0}}};
  ASSERT_EQ(small.header().size(), 128U);  // as long as a label
  Tape letters = small.tape();
  letters[0][4] = 'S';
  Tape unknown = letters;
  unknown[0].replace(2, 2, "\x80\x80");  // a format code that nobody knows: the counts tell
  const struct {
    Tape tape;
    std::vector<int> numbers;
  } cases[] = {
      {Tape{label()} + tapeOf(1) + END, {1}},
      {Tape{label(), MARK} + tapeOf(1) + END, {1}},
      {Tape{MARK} + tapeOf(1) + tapeOf(2) + END, {1, 2}},
      {tapeOf(1) + Tape{label(), MARK} + tapeOf(2) + END, {1, 2}},
      {tapeOf(1) + END + tapeOf(2), {1}},  // two marks in a row
      {Tape{MARK, MARK} + tapeOf(1), {}},
      {letters + tapeOf(2) + END, {3, 2}},
      {unknown + tapeOf(2) + END, {3, 2}},
      {tapeOf(1) + tapeOf(2), {1, 2}},  // recorded data end without a second mark
      {{}, {}},
  };
  int row = 0;
  for (const auto& each : cases) {
    SCOPED_TRACE(row++);
    std::filesystem::remove_all("out");
    std::filesystem::create_directory("out");
    noFurtherTape();
    EXPECT_EQ(copyTape(each.tape), 0);
    EXPECT_EQ(numbersOut(), each.numbers);
    EXPECT_EQ(count("End of input tape 1"), 2);
  }
}

TEST_F(SegdTapeTest, OneMarkBehindASkippedFileEndsTheTape) {
  listFieldFiles("1\n3\n");
  noFurtherTape();
  EXPECT_EQ(copyTape(tapeOf(1) + tapeOf(2) + tapeOf(3) + END + tapeOf(1)), 0);
  EXPECT_EQ(outNames(), (Lines{"line_00001.sgd", "line_00003.sgd"}));
  EXPECT_EQ(count("Field File:      2  skipped"), 1);
  listFieldFiles("1\n");
  Tape open = tapeOf(1) + tapeOf(2);
  open.pop_back();  // no mark behind the last file
  for (const auto& [tape, copied] : {std::pair{tapeOf(2) + END + tapeOf(1), "   0 field file copied."},
                                     {open, "   1 field file copied."},
                                     {tapeOf(2) + Tape{label(), MARK} + tapeOf(1) + END, "   1 field file copied."}}) {
    noFurtherTape();
    EXPECT_EQ(copyTape(tape), 0);
    EXPECT_TRUE(consoleHas(copied)) << "a label between breaks the row";
  }
}

TEST_F(SegdTapeTest, GoesOnWithTheNextTape) {
  makeCartridge("two.tap", tapeOf(2) + END);
  nextInputIs("two.tap");
  noFurtherTape();
  EXPECT_EQ(copyTape(tapeOf(1) + END), 0);
  EXPECT_EQ(numbersOut(), (std::vector<int>{1, 2}));
  expectCounts({{"End of input tape 1", 1}, {"Start of input tape 2", 1}, {"End of input tape 2", 2}});
  EXPECT_TRUE(consoleHas("   2 tapes copied."));
}

TEST_F(SegdTapeTest, BlocksThatAreNoHeaderAreCopiedAsTheyAre) {
  noFurtherTape();
  const Tape odd = {block(20, 5), block(7, 1), MARK, MARK};
  EXPECT_EQ(copyTapeToTape(odd), 0);
  EXPECT_EQ(tapeIn("out.tap"), odd);
  expectSaid("  ** The field file begins with a block of 20 bytes, which is no SEG D header; it is copied as it is.");
  EXPECT_FALSE(lineWith("  ** SEG D format code ").empty());
}

// ---- errors -----------------------------------------------------------------------------------------------------

TEST_F(SegdTapeTest, ABadBlockFailsTheJobAfterItsRetriesAndNothingIsSkipped) {
  EXPECT_EQ(copyTape(tapeOf(1) + tapeOf(2) + END, {5}), -1);
  EXPECT_EQ(count("  ** Tape read error - retrying..."), 5);
  expectSaid({"  *** Error reading input tape - job will abort.", "  *** Job Failed.",
              "  ** 1 block could not be read: tape 1 file 2 block 2.", "   1 field file copied.", "   0 tape copied.",
              "  ** Field file 2 is not complete: " + folder.path("out/line_00002.sgd") + " holds 0 trace of it."});
  EXPECT_EQ(out("line_00002.sgd"), fileOf(2, 2).header());
}

TEST_F(SegdTapeTest, ABlockOverTheLimitNamesTheLimit) {
  Tape tape = tapeOf(1) + END;
  tape.insert(tape.begin() + 2, block(32769, 1));
  for (const Tape& each : {tape, Tape{block(32769, 1)}}) {
    EXPECT_EQ(copyTape(each), -1);
    expectSaid(
        "  *** A block on the input tape is longer than the limit of 32768 bytes; ST_BUFFER (in KiB) raises it.");
  }
}

TEST_F(SegdTapeTest, AHeaderOverTheLimitFailsInTheDevicesWords) {
  const FieldFile file{.extended = 99};
  std::string bytes = file.header();
  bytes[30] = static_cast<char>(0xFF);
  bytes.replace(32 + 5, 2, std::string("\x04\x00", 2));
  bytes.resize(96 + 1024 * 32, 'x');
  writeFile(folder.path("in/a.segd"), bytes + file.traces()[0] + file.traces()[1]);
  EXPECT_EQ(copyFilesToTape(), -1);
  expectSaid({"  *** Error: block size (32864) is too large to write to output tape.",
              "  *** Error writing to output tape - job will abort.", "   0 bytes copied."});
  EXPECT_EQ(tapeIn("out.tap"), Tape{});  // a tape without a block of this job stays as it was
  EXPECT_FALSE(consoleHas("Wrote double end-of-file."));
}

TEST_F(SegdTapeTest, AFullCartridgeEndsTheJobWithItsMarksAndATrueCount) {
  put("a.segd", fileOf(1));
  put("b.segd", fileOf(2, 2));
  openInputFile("in/a.segd");
  openOutputTape("out.tap", "capacity = 300\n");
  EXPECT_EQ(run(), -1);
  double bytes = 0;
  for (const std::string& item : tapeIn("out.tap")) bytes += static_cast<double>(item.size());
  EXPECT_EQ(lineWith("   "), formatText("   %.0f bytes copied.", bytes));
  EXPECT_FALSE(lineWith("  ** Field file 2 is not complete: the output tape holds ").empty());
  EXPECT_TRUE(consoleHas("1 Field Files output to this tape."));
}

TEST_F(SegdTapeTest, AStopClosesTheTapeBehindWhatItHolds) {
  toolkit.onPump = [this](long pumps) {
    if (pumps == 3) toolkit.press(toolkit.dialog(DLG_PROGRESS), PROG_STOP);
  };
  EXPECT_EQ(copyTapeToTape(tapeOf(1) + tapeOf(2) + END), 0);
  toolkit.onPump = nullptr;
  const Tape one = tapeOf(1);
  EXPECT_EQ(tapeIn("out.tap"), (Tape{one[0], one[1], MARK, MARK}));
  expectSaid({"  ** Field file 1 is not complete: the output tape holds 1 trace of it.", "   0 tape copied.",
              "   2 blocks copied."});
}

// ---- blocks of several traces -----------------------------------------------------------------------------------

/// Lengths of a tape's blocks, 0 for a mark.
std::vector<std::size_t> lengths(const Tape& tape) {
  std::vector<std::size_t> all;
  for (const std::string& item : tape) all.push_back(item.size());
  return all;
}

TEST_F(SegdTapeTest, TracesOfAChannelSetSharePartsOfTheirTape) {
  setBuffer(256);
  SgdParams.blockTraces = true;
  // Two traces of 65,536 bytes fill a block exactly, with 4 bytes more they do not fit.
  for (const int samples : {16379, 16380}) {
    SCOPED_TRACE(samples);
    const FieldFile file{.sets = {{5, 20}, {1, 20}, {2, 20}}, .milliseconds = 2 * samples};
    put("a.segd", file);
    EXPECT_EQ(copyFilesToTape(), 0);
    const Tape tape = tapeIn("out.tap");
    const std::size_t t = 20 + 4 * static_cast<std::size_t>(samples);
    const std::size_t header = file.header().size();
    EXPECT_EQ(lengths(tape), samples == 16379 ? (std::vector<std::size_t>{header, 2 * t, 2 * t, t, t, 2 * t, 0, 0})
                                              : (std::vector<std::size_t>{header, t, t, t, t, t, t, t, t, 0, 0}));
    std::string expected = file.file();
    expected[19] = 16;
    EXPECT_TRUE(std::accumulate(tape.begin(), tape.end(), std::string()) == expected);
    EXPECT_TRUE(consoleHas("   " + std::to_string(expected.size()) + " bytes copied."));
  }
}

TEST_F(SegdTapeTest, ATraceLongerThanABlockIsItsOwnAndNoFlushIsEmpty) {
  setBuffer(256);
  SgdParams.blockTraces = true;
  Tape tape = tapeOf(1);
  std::string longTrace = fileOf(1).trace(1, 2, 35000);
  tape.insert(tape.begin() + 2, {longTrace, block(5, 1)});
  tape.insert(tape.end(), {fileOf(2).header(), MARK, MARK});
  noFurtherTape();
  EXPECT_EQ(copyTapeToTape(tape), 0);
  const Tape copy = tapeIn("out.tap");
  EXPECT_EQ(lengths(copy), (std::vector<std::size_t>{96, 60, 140020, 5, 60, 0, 96, 0, 0}));
  EXPECT_EQ(copy[2], longTrace);
}

TEST_F(SegdTapeTest, BlocksKeepToWhatTheDriveTakes) {
  SgdParams.blockTraces = true;
  put("a.segd", {.sets = {{3, 20}}, .milliseconds = 8000});
  EXPECT_EQ(copyFilesToTape(), 0);  // 32 KB, traces of 16,020 bytes
  EXPECT_EQ(lengths(tapeIn("out.tap")), (std::vector<std::size_t>{96, 32040, 16020, 0, 0}));
}

TEST_F(SegdTapeTest, AMarkThatCouldNotBeWrittenIsMadeUpForOrItsLackSaid) {
  put("a.segd", fileOf(1));
  const auto withFault = [this](const char* fault) {
    setenv("QUARLO_TAPE_FAULT", fault, 1);
    setTapeDriver(nullptr);
    EXPECT_EQ(copyFilesToTape(), -1);
    unsetenv("QUARLO_TAPE_FAULT");
    setTapeDriver(nullptr);
    return tapeIn("out.tap");
  };
  // That of the field file fails once.
  EXPECT_EQ(withFault("weof:1:EIO"), fileOf(1).tape() + END);
  expectCounts({{"Wrote double end-of-file.", 1}, {"  *** Error writing to output tape - job will abort.", 1}});
  // The closing one fails.
  EXPECT_EQ(withFault("weof:2:EIO"), fileOf(1).tape());
  expectCounts({{"Wrote double end-of-file.", 0}, {"  *** Error writing to output tape - job will abort.", 1}});
  SgdParams.prepend = true;
  copyText(SgdParams.prepDir, folder.path(""));
  copyText(SgdParams.prepFile, "note.txt");
  writeFile("note.txt", std::string(3000, 'n'));
  EXPECT_EQ(withFault("write:2:EIO"), (Tape{std::string(1024, 'n'), MARK, MARK}));
  expectCounts({{"  *** Error writing to output tape - job will abort.", 0},
                {"  *** Error outputting prepend file to tape.", 1}});
}

// ---- full tapes and the prepend file ----------------------------------------------------------------------------

TEST_F(SegdTapeTest, ATapeEndsBehindTheFileThatExceedsTheLimit) {
  for (int number = 1; number <= 3; ++number) put("f" + std::to_string(number) + ".segd", fileOf(number));
  const double bytes = static_cast<double>(fileOf(1).file().size());
  SgdParams.limitBytes = true;
  SgdParams.byteLimit = 2 * bytes;  // reached and not exceeded by two
  nextOutputIs("two.tap");
  EXPECT_EQ(copyFilesToTape("in/f1.segd"), 0);
  EXPECT_EQ(tapeIn("out.tap"), fileOf(1).tape() + fileOf(2).tape() + fileOf(3).tape() + END + END);
  EXPECT_EQ(tapeIn("two.tap"), (Tape{MARK, MARK}));  // the next tape was accepted and takes the closing marks

  SgdParams.byteLimit = 2 * bytes - 1;
  nextOutputIs("two.tap");
  EXPECT_EQ(copyFilesToTape("in/f1.segd"), 0);
  EXPECT_EQ(tapeIn("out.tap"), fileOf(1).tape() + fileOf(2).tape() + END + END);
  EXPECT_EQ(tapeIn("two.tap"), fileOf(3).tape() + END);
  expectSaid(
      {" \nEnd of output tape 1\n2 Field Files output to this tape.\n \nWriting double end-of-file to output tape."
       "\nUnload \"VIRTUAL drive1\".\n \nStart of output tape 2",
       "End of output tape 2\n1 Field Files output to this tape."});

  noFurtherOutput();
  EXPECT_EQ(copyFilesToTape("in/f1.segd"), 0);
  EXPECT_TRUE(consoleHas("No more output. Job will end."));
  EXPECT_FALSE(consoleHas("Wrote double end-of-file."));
  EXPECT_EQ(tapeIn("out.tap"), fileOf(1).tape() + fileOf(2).tape() + END + END);
  EXPECT_TRUE(consoleHas("   2 field files copied."));
}

TEST_F(SegdTapeTest, ThePrependFileGoesFirstInBlocksOfItsOwn) {
  put("a.segd", fileOf(1));
  copyText(SgdParams.prepDir, folder.path(""));
  copyText(SgdParams.prepFile, "notes.txt");
  const std::pair<std::size_t, std::vector<std::size_t>> cases[] = {
      {0, {1024}},    {1, {1024}},    {1023, {1024}},       {1024, {1024}},
      {1025, {1025}}, {2047, {2047}}, {2048, {1024, 1024}}, {3000, {1024, 1976}}};
  for (const auto& [size, blocks] : cases) {
    SCOPED_TRACE(size);
    const std::string notes = block(size, 9);
    writeFile(folder.path("notes.txt"), notes);
    SgdParams.prepend = true;
    EXPECT_EQ(copyFilesToTape(), 0);
    Tape tape;
    std::size_t at = 0;
    for (const std::size_t length : blocks) {
      tape.push_back(notes.substr(std::min(at, size), length));
      tape.back().resize(length, ' ');
      at += length;
    }
    EXPECT_EQ(tapeIn("out.tap"), tape + END + fileOf(1).tape() + END);
    EXPECT_TRUE(consoleHas("Prepending disk file " + folder.path("notes.txt")));
  }
  std::filesystem::remove(folder.path("notes.txt"));
  EXPECT_EQ(copyFilesToTape(), 0);
  EXPECT_EQ(toolkit.errors, Lines{"Error opening file " + folder.path("notes.txt")});
  EXPECT_FALSE(SgdParams.prepend);
  EXPECT_EQ(tapeIn("out.tap"), fileOf(1).tape() + END);

  std::filesystem::create_directory("notes.txt");
  SgdParams.prepend = true;
  EXPECT_EQ(copyFilesToTape(), -1);
  EXPECT_TRUE(consoleHas("  *** Error reading prepend file for output to tape."));
  std::filesystem::remove("notes.txt");
  writeFile("notes.txt", "x");
  setenv("QUARLO_TAPE_FAULT", "write:1:EIO", 1);
  setTapeDriver(nullptr);
  EXPECT_EQ(copyFilesToTape(), -1);
  expectSaid({"  *** Error outputting prepend file to tape.", "SEG D copy ended at DATE."});
}

/// Tapes come from a magazine, and the log has what the console has.
TEST_F(SegdTapeTest, LinesOfTapeChangesAreInTheLogToo) {
  units[0].autoMode = true;
  noFurtherTape();
  EXPECT_EQ(copyTape(tapeOf(1) + END), 0);
  const std::string log = readFile(folder.path("SegdCopy.txt"));
  EXPECT_NE(log.find("\n \nEnd of input tape 1\nTape finished.\nMagazine finished.\n  \n"), std::string::npos) << log;
}

}  // namespace
