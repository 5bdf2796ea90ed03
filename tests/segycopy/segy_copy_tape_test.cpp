// The SEG Y copy from and to tapes: blocks, marks, continuation, volumes, bad blocks, limits of the drive.

#include <gtest/gtest.h>

#include "quarlo/tapelib/drives.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "tests/segycopy/segy_fixture.h"

namespace {

Tape reel(const Tape& traces, char letter = 'C') { return Tape{segyText(letter), segyBinary(SAMPLES)} + traces; }

class SegyTapeTest : public SegyTest {
 protected:
  ~SegyTapeTest() override {
    units[1].autoMode = units[0].autoMode = units[0].inputAbort = units[1].unloadAtEot = false;
  }

  /// Copies what is in drive 0 to drive 1, or to a file when `out` is given.
  int copyTape(const std::string& out = "") {
    openInputTape(0);
    if (out.empty())
      openOutputTapes({1});
    else
      openOutputFile(out);
    return run();
  }
  void loadBoth(const Tape& tape, const std::vector<std::size_t>& bad = {}) {
    putIn(0, "in.tap", tape, bad);
    putIn(1, "out.tap");
  }
  bool sawError() {
    const Lines lines = consoleWithoutDates();
    return std::any_of(lines.begin(), lines.end(), [](const std::string& line) { return line.find("***") == 2; });
  }
};

TEST_F(SegyTapeTest, CopiesTapeToTapeToDiskAndBack) {
  const Tape tape = reel({trace(1), trace(2), block(100, 9)});  // blocks of any length are traces
  loadBoth(tape + CLOSING);
  noFurtherTape();
  EXPECT_EQ(copyTape(), JOB_OK);
  EXPECT_EQ(tapeIn("out.tap"), tape + CLOSING);
  expectSaid({"Wrote double end-of-file.", "3 traces written."});

  noFurtherTape();
  EXPECT_EQ(copyTape("out.sgy"), JOB_OK);
  EXPECT_EQ(output(), joined(tape));
  openInputFile("out.sgy");
  putIn(1, "back.tap");
  openOutputTapes({1});
  EXPECT_EQ(run(), JOB_OK);
  EXPECT_EQ(tapeIn("back.tap"), reel({trace(1), trace(2)}) + CLOSING);
}

TEST_F(SegyTapeTest, SixBadBlocksInARowEndTheJobInItsWords) {
  Tape tape = reel({trace(1, {1, 1, 7, 8})});
  for (int serial = 2; serial < 9; ++serial) tape.push_back(trace(serial));
  loadBoth(tape + CLOSING, {3, 4, 5, 6, 7, 8});
  limitByList("7 8\n", true);
  EXPECT_EQ(copyTape(), JOB_FAILED);
  expectCounts({{"  *** Error reading from input tape - retrying...", 30}, {"Retries failed. Skipping trace.", 5}});
  expectSaid(
      "  ** 6 blocks could not be read: tape 1 file 1 block 4, tape 1 file 1 block 5, tape 1 file 1 block 6, tape 1 "
      "file 1 block 7, tape 1 file 1 block 8, tape 1 file 1 block 9.");
  expectSaid(
      "  *** Too many sequential bad blocks. Aborting.\n  *** Error reading trace from input tape.\n"
      "    Previous trace primary header value   = 7.0000.\n    Previous trace secondary header value = 8.0000.\n"
      "Wrote double end-of-file.\n  *** Job Failed.");
  EXPECT_EQ(tapeIn("out.tap"), reel({trace(1, {1, 1, 7, 8})}) + CLOSING);
}

TEST_F(SegyTapeTest, TracesOverTheDrivesLimitFailTheJobInTheDevicesWords) {
  const int samples = static_cast<int>(units->ioBufLen) / 4;
  writeFile(folder.path("in.sgy"), segyText() + segyBinary(samples) + segyTrace({}, samples, 1));
  putIn(1, "out.tap");
  openInputFile("in.sgy");
  openOutputTapes({1});
  EXPECT_EQ(run(), JOB_FAILED);
  expectSaid(
      {"  *** Error: block size (" + std::to_string(240 + 4 * samples) + ") is too large to write to output tape.",
       "  *** Error writing trace 1 to output device.", "0 traces written."});
}

TEST_F(SegyTapeTest, ACutReelIsNamedAndABlankTapeStaysAsItWas) {
  const struct {
    Tape tape;
    const char* line;
  } cases[] = {
      {CLOSING, "  *** EOF encountered while reading EBCDIC header from input tape."},
      {Tape{segyText(), MARK}, "  *** EOF encountered while reading binary header from input tape."},
      {Tape{segyText(), block(20, 1), trace(1)},
       "  *** The binary header has 20 bytes, too few to say what the traces are."},
  };
  for (const auto& cut : cases) {
    loadBoth(cut.tape);
    EXPECT_EQ(copyTape(), JOB_FAILED);
    EXPECT_TRUE(consoleHas(cut.line));
    EXPECT_EQ(tapeIn("out.tap"), Tape{});
  }
}

TEST_F(SegyTapeTest, TracesTooShortForTheKeysAreRefused) {
  loadBoth(reel({trace(1, {1, 1, 5, 0}), block(100, 1)}) + CLOSING);
  limitByList("5\n");
  EXPECT_EQ(copyTape("out.sgy"), JOB_FAILED);
  expectSaid({"  *** Trace 2 has 100 bytes; the header keys need 196.", "1 traces written."});
}

TEST_F(SegyTapeTest, GoesOnWithTheNextReelBehindItsHeaders) {
  loadBoth(reel({trace(1)}) + CLOSING);
  makeCartridge("two.tap", reel({trace(2)}) + CLOSING);
  makeCartridge("three.tap", Tape{trace(3), trace(4), trace(5)} + CLOSING);
  nextInputIs("two.tap");
  nextInputIs("three.tap");
  noFurtherTape();
  EXPECT_EQ(copyTape("out.sgy"), JOB_OK);
  EXPECT_EQ(output(), joined(reel({trace(1), trace(2), trace(5)})));
  EXPECT_EQ(count("2 blocks skipped forward."), 2);
  loadBoth(reel({trace(1)}) + CLOSING);
  makeCartridge("two.tap", Tape{MARK} + reel({trace(2)}) + CLOSING);
  nextInputIs("two.tap");
  EXPECT_EQ(copyTape("out.sgy"), JOB_FAILED);
  EXPECT_TRUE(consoleHas("  *** The two header blocks of this tape could not be skipped."));
}

TEST_F(SegyTapeTest, MagazinesFeedTheInputAndTakeTheVolumes) {
  Tape first;
  Tape second;
  for (int serial = 0; serial < 6; ++serial)
    (serial < 4 ? first : second).push_back(trace(serial, {1 + serial / 2, 1, 0, 0}));
  loadBoth(reel(first) + CLOSING);
  makeCartridge("two.tap", reel(second) + CLOSING);
  makeCartridge("out2.tap", {});
  load(0, "in.tap", "magazine = two.tap\n");
  load(1, "out.tap", "magazine = out2.tap\n");
  SgyParams.multipleOut = true;
  SgyParams.bytesPerPart = 4000;
  openInputTape(0);
  openOutputTapes({1});
  units[0].autoMode = units[1].autoMode = true;
  nextOutputIs("out3.tap");  // asked for once the magazine is empty
  noFurtherTape();
  EXPECT_EQ(run(), JOB_OK);
  EXPECT_EQ(tapeIn("out.tap"), reel({first[0], first[1]}) + CLOSING);
  EXPECT_EQ(tapeIn("out2.tap"), reel({first[2], first[3]}) + CLOSING);
  EXPECT_EQ(tapeIn("out3.tap"), reel(second) + CLOSING);
  EXPECT_EQ(count("Tape finished."), 4);  // two inputs and two volumes
  EXPECT_EQ(count("Magazine finished."), 2);
  EXPECT_TRUE(units[0].autoMode && units[1].autoMode);
}

TEST_F(SegyTapeTest, EachFileOfATapeGetsItsOwnOutputOrAllAreJoined) {
  const Tape first = reel({trace(1), trace(2)}, 'a');
  const Tape second = reel({trace(3)}, 'b');
  const Tape third = reel({trace(4)}, 'c');
  SgyParams.multipleIn = true;
  const auto loadAll = [&] {
    loadBoth(first + Tape{MARK} + second + CLOSING);
    makeCartridge("next.tap", third + CLOSING);
    nextInputIs("next.tap");
    noFurtherTape();
  };
  loadAll();
  EXPECT_EQ(copyTape("line.sgy"), JOB_OK);
  EXPECT_EQ(output("line.sgy"), joined(first));
  EXPECT_EQ(output("line001.sgy"), joined(second));
  EXPECT_EQ(output("line002.sgy"), joined(third));
  expectSaid({"Output file 1: line.sgy", "3 segy files processed."});

  loadAll();
  EXPECT_EQ(copyTape(), JOB_OK);
  EXPECT_EQ(tapeIn("out.tap"), first + Tape{MARK} + second + Tape{MARK} + third + CLOSING);

  SgyParams.concatInputs = true;
  loadAll();
  EXPECT_EQ(copyTape("joined.sgy"), JOB_OK);
  EXPECT_EQ(output("joined.sgy"), joined(reel({trace(1), trace(2), trace(3), trace(4)}, 'a')));
  EXPECT_FALSE(exists("joined001.sgy"));
}

TEST_F(SegyTapeTest, AnErrorBehindAMarkIsNoEndOfTheTape) {
  loadBoth(reel({trace(1)}) + Tape{MARK} + reel({trace(2)}) + CLOSING, {4});
  SgyParams.multipleIn = true;
  EXPECT_EQ(copyTape("out.sgy"), JOB_FAILED);
  EXPECT_TRUE(consoleHas("  *** Error reading EBCDIC header from input tape."));
  EXPECT_EQ(output(), joined(reel({trace(1)})));
}

TEST_F(SegyTapeTest, SplitsOverTapesAndNamesTheTraceInHandWhenTheNextIsDeclined) {
  Tape traces;
  for (int serial = 0; serial < 6; ++serial) traces.push_back(trace(serial, {1 + serial / 2, 1, 0, 0}));
  loadBoth(reel(traces) + CLOSING);
  SgyParams.multipleOut = true;
  SgyParams.bytesPerPart = 4000;
  nextOutputIs("out2.tap");
  noFurtherOutput();
  EXPECT_EQ(copyTape(), JOB_OK);
  EXPECT_EQ(tapeIn("out.tap"), reel({traces[0], traces[1]}) + CLOSING);
  EXPECT_EQ(tapeIn("out2.tap"), reel({traces[2], traces[3]}) + CLOSING);
  expectSaid(
      {"Output tape 2 is full with:", "  *** Trace 5 and what follows it were not written.", "4 traces written."});
  EXPECT_EQ(count("Wrote double end-of-file."), 0);  // both tapes were closed when they were full
}

TEST_F(SegyTapeTest, SortsFromTapeToSeveralTapes) {
  loadBoth(reel({trace(1, {3, 1, 0, 0}), trace(2, {1, 2, 0, 0}), trace(3, {1, 1, 0, 0})}) + CLOSING);
  putIn(2, "copy.tap");
  sortTraces();
  openInputTape(0);
  openOutputTapes({1, 2});
  noFurtherTape();
  EXPECT_EQ(run(), JOB_OK);
  const Tape sorted = reel({trace(3, {1, 1, 0, 0}), trace(2, {1, 2, 0, 0}), trace(1, {3, 1, 0, 0})}) + CLOSING;
  EXPECT_EQ(tapeIn("out.tap"), sorted);
  EXPECT_EQ(tapeIn("copy.tap"), sorted);
}

}  // namespace
