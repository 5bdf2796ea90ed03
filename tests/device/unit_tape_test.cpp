// The unit operations on one drive, virtual and genuine alike: what a job sees of bad blocks, long blocks, the end of
// data, the end of the medium, and of hands at the drive.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "quarlo/tapelib/driver/fault_driver.h"
#include "quarlo/tapelib/drives.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "quarlo/tapelib/unix_fcn.h"
#include "tests/device/bench.h"
#include "tests/device/console_recorder.h"
#include "tests/support/test_toolkit.h"

namespace {

class UnitTape : public testing::TestWithParam<std::string> {
 protected:
  UnitTape() : bench_(makeBench(GetParam())) {
    setenv("ST_BUFFER", "64", 1);
    initIO(units_);
    bench_->freshTape("A");
    DListStruct& entry = units_[0].theDriveList[0];
    std::strcpy(entry.name, "DRIVE");
    std::strcpy(entry.device, bench_->device().c_str());
    units_[0].theListItem = units_[1].theListItem = 0;
  }
  ~UnitTape() override {
    tlv_tape_close(units_, 0);
    tlv_tape_close(units_, 1);
    unInitIO(units_);
    unsetenv("ST_BUFFER");
  }

  /// Opens the drive as the input or as an output, rewound.
  void open(int uNum) {
    tlv_tape_open(units_, uNum);
    ASSERT_EQ(units_[uNum].state, 1);
    ASSERT_EQ(tlv_rewind(units_, uNum), 0);
    consoleLines().clear();
  }
  int write(int bytes) {
    const std::vector<char> block(static_cast<std::size_t>(bytes), static_cast<char>(bytes));
    return tlv_tape_write(units_, 1, block.data(), bytes);
  }
  /// Writes blocks of these sizes, 0 for a mark, and closes.
  void record(const std::vector<int>& sizes) {
    open(1);
    for (const int size : sizes)
      if (size == 0)
        EXPECT_EQ(tlv_weof(units_, 1, 1), 0);
      else
        EXPECT_EQ(write(size), size);
    EXPECT_EQ(tlv_tape_close(units_, 1), 0);
  }
  int read() { return tlv_tape_read(units_, 0, units_[0].ioBuffer, 65536); }
  /// Reads with the retries and skips of a copy job until the end of data. Lost blocks are -1, marks 0.
  std::vector<int> readAll() {
    std::vector<int> seen;
    while (seen.size() < 40) {
      int result = read();
      for (int retry = 0; retry < 5 && result < 0; ++retry) result = read();
      if (result == 0 && units_[0].eodMark != 0) return seen;
      seen.push_back(result);
      if (result < 0 && tlv_skip_blocks(units_, 0, 1) != 0) return seen;
    }
    return seen;
  }

  TestToolkit toolkit_;
  std::unique_ptr<Bench> bench_;
  UnitStruct* units_ = getDevPtr();
};

INSTANTIATE_TEST_SUITE_P(Drives, UnitTape, testing::ValuesIn(benches()), benchName);

const Lines kReadError{"  *** Error reading tape on drive \"DRIVE\"."};

TEST_P(UnitTape, CountsBlocksAndTellsMarksFromTheEnd) {
  record({100, 200, 0, 300, 0, 0});
  open(0);
  EXPECT_EQ(read(), 100);
  EXPECT_EQ(units_[0].blockNum, 2);
  EXPECT_EQ(read(), 200);
  EXPECT_EQ(read(), 0);
  EXPECT_EQ(units_[0].eofMark, 1);
  EXPECT_EQ(units_[0].blockNum, 3);
  EXPECT_EQ(read(), 300);
  EXPECT_EQ(units_[0].eofMark, 0);
  EXPECT_EQ(read(), 0);
  EXPECT_EQ(read(), 0);
  EXPECT_EQ(units_[0].eofMark, 1);
  EXPECT_EQ(units_[0].eodMark, 0);
  for (int i = 0; i < 3; ++i) {  // the driver answers 0, then EIO for ever
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(units_[0].eofMark, 0);
    EXPECT_EQ(units_[0].eodMark, 1);
  }
  EXPECT_EQ(consoleLines(), Lines{});
}

TEST_P(UnitTape, EndOfDataWithoutMarkIsNoError) {
  NEEDS_HANDS();
  open(0);
  EXPECT_EQ(readAll(), std::vector<int>{});
  EXPECT_EQ(units_[0].eodMark, 1);
  tlv_tape_close(units_, 0);
  record({100});
  open(1);
  EXPECT_EQ(write(100), 100);
  EXPECT_EQ(write(101), 101);
  EXPECT_EQ(tlv_skip_blocks(units_, 1, -1), 0);  // keeps the driver from adding its mark
  tlv_tape_close(units_, 1);
  open(0);
  EXPECT_EQ(readAll(), (std::vector<int>{100, 101}));
  EXPECT_EQ(consoleLines(), Lines{});
}

TEST_P(UnitTape, WhatFollowsIsSeenWithoutAWordAndTheTapeStaysWhereItWas) {
  NEEDS_HANDS();
  record({100, 101, 0, 102, 0, 0, 103, 0});
  bench_->hands("badblock A 1");
  open(0);
  const auto follows = [&] { return tlv_goes_on(units_, 0, units_[0].ioBuffer); };
  EXPECT_TRUE(follows());
  EXPECT_EQ(read(), 100);
  EXPECT_TRUE(follows());  // the bad block
  EXPECT_EQ(consoleLines(), Lines{});
  EXPECT_EQ(read(), -1);
  EXPECT_EQ(tlv_skip_blocks(units_, 0, 1), 0);
  consoleLines().clear();
  for (const auto& [next, expected] :
       {std::pair(0, true), {102, true}, {0, false}, {0, true}, {103, true}, {0, false}}) {
    EXPECT_EQ(follows(), expected);
    EXPECT_EQ(read(), next);
  }
  EXPECT_FALSE(follows());
  EXPECT_EQ(consoleLines(), Lines{});
}

TEST_P(UnitTape, OneBadBlockCostsOneBlock) {
  NEEDS_HANDS();
  record({100, 101, 102, 103, 0, 104, 0});
  for (const int bad : {0, 1, 3}) {
    bench_->hands("eject");
    bench_->freshTape("B");
    record({100, 101, 102, 103, 0, 104, 0});
    bench_->hands("badblock B " + std::to_string(bad));
    std::vector<int> expected{100, 101, 102, 103, 0, 104, 0};
    expected[static_cast<std::size_t>(bad)] = -1;
    open(0);
    EXPECT_EQ(readAll(), expected);
    tlv_tape_close(units_, 0);
  }
}

TEST_P(UnitTape, BadBlocksInARowAndAtTheVeryEnd) {
  NEEDS_HANDS();
  open(1);
  for (const int size : {100, 101, 102, 103}) EXPECT_EQ(write(size), size);
  EXPECT_EQ(tlv_skip_blocks(units_, 1, -1), 0);
  tlv_tape_close(units_, 1);
  for (const char* bad : {"badblock A 1", "badblock A 2", "badblock A 3"}) bench_->hands(bad);
  open(0);
  EXPECT_EQ(readAll(), (std::vector<int>{100, -1, -1, -1}));
  EXPECT_EQ(units_[0].eodMark, 1);
}

TEST_P(UnitTape, LongBlockIsNamedAndCostsOneBlock) {
  record({100, 60000, 102, 0});
  open(0);
  units_[0].maxBlockSize = 1000;
  EXPECT_EQ(read(), 100);
  EXPECT_EQ(read(), -1);
  EXPECT_EQ(
      consoleLines(),
      (Lines{kReadError[0], "      The block is longer than the limit of 1000 bytes; ST_BUFFER (in KiB) raises it."}));
  EXPECT_EQ(read(), -1);
  units_[0].maxBlockSize = 65536;
  EXPECT_EQ(read(), 60000);
  EXPECT_EQ(read(), 102);
  tlv_rewind(units_, 0);
  units_[0].maxBlockSize = 1000;
  EXPECT_EQ(readAll(), (std::vector<int>{100, -1, 102, 0}));
}

TEST_P(UnitTape, EndOfMediumIsNotRetried) {
  NEEDS_HANDS();
  bench_->freshTape("SMALL", 1);
  open(1);
  int blocks = 0;
  while (blocks < 100 && write(60000) == 60000) ++blocks;
  EXPECT_GT(blocks, 10);
  EXPECT_EQ(consoleLines(), Lines{"  *** Error writing to tape on drive \"DRIVE\"."});
  EXPECT_EQ(tlv_weof(units_, 1, 2), 0);  // the closing marks still fit
  EXPECT_EQ(tlv_tape_close(units_, 1), 0);
  open(0);
  std::vector<int> expected(static_cast<std::size_t>(blocks), 60000);
  expected.insert(expected.end(), {0, 0});
  EXPECT_EQ(readAll().size(), std::min<std::size_t>(expected.size(), 40));
}

/// The cartridge OTHER, with one block of 777 bytes, and a tape in the drive on which two blocks were read or written.
#define EXCHANGE_FOR_OTHER()  \
  bench_->freshTape("OTHER"); \
  record({777, 0});           \
  bench_->freshTape("A");     \
  record({100, 101, 102, 0});

void expectOther(Bench& bench, UnitStruct* units) {
  bench.hands("eject");
  bench.hands("insert OTHER");
  tlv_tape_open(units, 0);
  ASSERT_EQ(units[0].state, 1);
  EXPECT_EQ(tlv_tape_read(units, 0, units[0].ioBuffer, 65536), 777);
}

const Lines kLost{"  *** The tape position is lost on drive \"DRIVE\" (drive reset, or cartridge pulled or exchanged).",
                  "      Nothing more is read or written there until the tape is rewound, unloaded or opened again."};

TEST_P(UnitTape, NothingIsWrittenToACartridgePutInMeanwhile) {
  NEEDS_HANDS();
  for (const int before : {0, 1, 2}) {
    for (const bool marks : {false, true}) {
      SCOPED_TRACE(std::to_string(before) + (marks ? " blocks, then marks" : " blocks, then a block"));
      EXCHANGE_FOR_OTHER();
      open(1);
      for (int i = 0; i < before; ++i) EXPECT_EQ(write(2000), 2000);
      bench_->hands("eject");
      bench_->hands("insert OTHER");
      EXPECT_NE(marks ? tlv_weof(units_, 1, 1) : write(2000), 2000);
      ASSERT_GE(consoleLines().size(), 3U);
      EXPECT_EQ(std::count(consoleLines().begin(), consoleLines().end(), kLost[0]), 1);
      EXPECT_EQ(write(2000), -1);
      EXPECT_NE(tlv_weof(units_, 1, 2), 0);
      EXPECT_NE(tlv_skip_blocks(units_, 1, 1), 0);
      EXPECT_EQ(std::count(consoleLines().begin(), consoleLines().end(), kLost[1]), 1);
      tlv_tape_close(units_, 1);
      expectOther(*bench_, units_);
      tlv_tape_close(units_, 0);
    }
  }
}

TEST_P(UnitTape, ReadingDoesNotGoOnWithAnotherCartridge) {
  NEEDS_HANDS();
  EXCHANGE_FOR_OTHER();
  open(0);
  EXPECT_EQ(read(), 100);
  bench_->hands("eject");
  bench_->hands("insert OTHER");
  EXPECT_EQ(read(), -1);
  EXPECT_EQ(consoleLines(), (Lines{kReadError[0], kLost[0], kLost[1]}));
  EXPECT_EQ(read(), -1);
  EXPECT_NE(tlv_skip_blocks(units_, 0, 1), 0);
  EXPECT_EQ(tlv_rewind(units_, 0), 0);
  EXPECT_EQ(read(), 777);
  // Noticed by a space first.
  tlv_tape_close(units_, 0);
  EXCHANGE_FOR_OTHER();
  open(0);
  EXPECT_EQ(read(), 100);
  bench_->hands("eject");
  bench_->hands("insert OTHER");
  EXPECT_NE(tlv_skip_blocks(units_, 0, 1), 0);
  EXPECT_EQ(read(), -1);
}

TEST_P(UnitTape, ResetAndPulledCartridge) {
  NEEDS_HANDS();
  record({100, 101, 0});
  open(0);
  EXPECT_EQ(read(), 100);
  bench_->hands("reset");
  EXPECT_EQ(read(), -1);
  EXPECT_EQ(consoleLines(), (Lines{kReadError[0], kLost[0], kLost[1]}));
  EXPECT_EQ(tlv_rewind(units_, 0), 0);
  EXPECT_EQ(readAll(), (std::vector<int>{100, 101, 0}));
  tlv_tape_close(units_, 0);
  open(1);
  EXPECT_EQ(write(500), 500);
  bench_->hands("eject");
  consoleLines().clear();
  EXPECT_EQ(tlv_tape_close(units_, 1), -1);
  EXPECT_EQ(consoleLines(), Lines{"  *** Error closing tape on drive \"DRIVE\"."});
}

TEST_P(UnitTape, UnfitDrivesAreNamedInBoxes) {
  NEEDS_HANDS();
  bench_->hands("eject");
  tlv_tape_open(units_, 0);
  EXPECT_EQ(units_[0].state, 0);
  EXPECT_EQ(units_[0].fd, 0);
  EXPECT_EQ(toolkit_.errors,
            (Lines{"Drive \"DRIVE\" is not ready.\nMake sure the tape is loaded and the unit is online.",
                   "Error opening drive \"DRIVE\"."}));
  toolkit_.errors.clear();
  units_[0].autoMode = true;
  tlv_tape_open(units_, 0);
  units_[0].autoMode = false;
  EXPECT_EQ(toolkit_.errors, Lines{});
  bench_->hands("protect 1");
  bench_->hands("insert A");
  tlv_tape_open(units_, 1);
  EXPECT_EQ(units_[1].state, 0);
  EXPECT_EQ(toolkit_.errors, (Lines{"Tape in drive \"DRIVE\" is write protected.", "Error opening drive \"DRIVE\"."}));
  tlv_tape_open(units_, 0);
  EXPECT_EQ(units_[0].state, 1);
  ASSERT_EQ(getDriveList(units_) > 0, true);
  std::string line;
  for (int i = 0; i < kMaxUnits; ++i)
    if (units_[0].theDriveList[i].device == bench_->device()) line = units_[0].theDriveList[i].string;
  EXPECT_EQ(line, "  0:0   VIRTUAL TAPE-1 (wrt-prot)");
  tlv_tape_close(units_, 0);
  bench_->hands("protect 0");
  bench_->hands("eject");
  getDriveList(units_);
  EXPECT_STREQ(units_[0].theDriveList[0].string, "  0:0   VIRTUAL TAPE-1 (offline)");
  EXPECT_STREQ(units_[0].theDriveList[1].string,
               (GetParam() == "virtual" ? "  1:0   VIRTUAL TAPE-2 (offline)" : "  1:0   VIRTUAL TAPE-2"));
  bench_->hands("insert A");
}

}  // namespace
