// Units by number: every output in order, closed units, the limits, the change of tapes, and the words of failures.
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include "quarlo/tapelib/autoload.h"
#include "quarlo/tapelib/driver/fault_driver.h"
#include "quarlo/tapelib/driver/virtual_driver.h"
#include "quarlo/tapelib/drives.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "quarlo/tapelib/unix_fcn.h"
#include "tests/device/console_recorder.h"
#include "tests/support/tap_images.h"
#include "tests/support/test_files.h"
#include "tests/support/test_toolkit.h"

namespace {

/// Three virtual drives D0, D1, D2 with blank cartridges, behind the fault wrapper.
class Dispatch : public testing::Test {
 protected:
  Dispatch() {
    for (const int i : {0, 1, 2}) load(i, "T" + std::to_string(i), Tape{});
    VirtualDrive::lookEvery(std::chrono::milliseconds(0));
    auto driver =
        std::make_unique<FaultDriver>(std::make_unique<VirtualDriver>(folder_.path("")), std::vector<TapeFault>{});
    faults_ = driver.get();
    setTapeDriver(std::move(driver));
    setAutoLoadMinute(std::chrono::milliseconds(1));
    initIO(units_);
    EXPECT_EQ(getDriveList(units_), 3);
    consoleLines().clear();
  }
  ~Dispatch() override {
    xvt_slist_destroy(units_[0].theOutputList);
    units_[0].theOutputList = nullptr;
    tlv_tape_close(units_, 0);
    tlv_tape_close(units_, kAllOutputs);
    unInitIO(units_);
    for (int i = 0; i < kMaxUnits; ++i) units_[i] = UnitStruct{};
    setTapeDriver(nullptr);
  }
  void load(int drive, const std::string& cartridge, const Tape& tape, const std::string& more = "") {
    writeFile(folder_.path(cartridge + ".tap"), tapImage(tape));
    const std::string name = "D" + std::to_string(drive);
    writeFile(folder_.path(name + ".drive"),
              "vendor = V\nid = " + std::to_string(drive) + "\ncartridge = " + cartridge + ".tap\n" + more);
  }
  void openInput(int drive) {
    units_[0].theListItem = drive;
    tlv_tape_open(units_, 0);
    ASSERT_EQ(units_[0].state, 1);
  }
  void openOutputs(const std::vector<int>& drives) {
    xvt_slist_destroy(units_[0].theOutputList);
    units_[0].theOutputList = xvt_slist_create();
    for (const int drive : drives) xvt_slist_add(units_[0].theOutputList, nullptr, "", drive);
    tlv_tape_open(units_, kAllOutputs);
  }
  void fail(const std::string& plan) {
    std::vector<TapeFault> faults;
    std::string bad;
    ASSERT_TRUE(parseTapeFaults(plan, faults, bad)) << bad;
    faults_->plan(faults);
  }
  int write(int bytes) {
    const std::string block(static_cast<std::size_t>(bytes), 'b');
    return tlv_tape_write(units_, kAllOutputs, block.data(), bytes);
  }
  Tape tapeIn(const std::string& cartridge) { return tapeOf(readFile(folder_.path(cartridge + ".tap"))); }

  TestFolder folder_;
  TestToolkit toolkit_;
  FaultDriver* faults_ = nullptr;
  UnitStruct* units_ = getDevPtr();
};

TEST_F(Dispatch, OutputsThatDoNotOpenTakeNoSlot) {
  load(1, "T1", {}, "offline = yes\n");
  openOutputs({0, 1, 2, 77});
  EXPECT_EQ(toolkit_.errors,
            (Lines{"Drive \"V D1\" is not ready.\nMake sure the tape is loaded and the unit is online.",
                   "Error opening drive \"V D1\".", "Error opening drive \"\"."}));
  EXPECT_EQ(std::tuple(units_[0].nOutputs, units_[1].theListItem, units_[2].theListItem, units_[3].theListItem),
            std::tuple(2, 0, 2, -1));
  EXPECT_STREQ(units_[2].name, "V D2");
  EXPECT_STREQ(units_[2].devName, "/dev/nst2");
  EXPECT_STREQ(units_[2].id, "2");
  EXPECT_EQ(units_[2].maxBlockSize, 32768U);
  EXPECT_EQ(write(32768), 32768);
  EXPECT_EQ(tlv_weof(units_, kAllOutputs, 2), 0);
  consoleLines().clear();
  EXPECT_EQ(write(32769), -1);
  EXPECT_EQ(consoleLines(), (Lines{"  *** Error: block size (32769) is too large to write to output tape.",
                                   "             32768 bytes is the current block size limit on drive \"V D0\"."}));
  EXPECT_EQ(tlv_tape_close(units_, kAllOutputs), 0);
  EXPECT_EQ(units_[0].nOutputs, 0);
  const Tape wanted{std::string(32768, 'b'), MARK, MARK};
  EXPECT_EQ(tapeIn("T0"), wanted);
  EXPECT_EQ(tapeIn("T2"), wanted);
  EXPECT_FALSE(toolkit_.isBusy());
}

TEST_F(Dispatch, TheFirstOutputThatFailsStopsTheWalk) {
  openOutputs({0, 1, 2});
  fail("write:2:ENOSPC");
  EXPECT_EQ(write(100), -1);
  EXPECT_EQ(consoleLines(), Lines{"  *** Error writing to tape on drive \"V D1\"."});
  fail("write:1:short=40");
  EXPECT_EQ(write(100), -1);
  EXPECT_EQ(faults_->operations(TapeFault::WRITE), 1);
  fail("weof:2:EIO");
  consoleLines().clear();
  EXPECT_NE(tlv_weof(units_, kAllOutputs, 2), 0);
  EXPECT_EQ(faults_->operations(TapeFault::MARKS), 2);
  ASSERT_GE(consoleLines().size(), 3U);
  EXPECT_EQ(consoleLines()[0], "  *** Unidentified error occurred during write EOF on drive \"V D1\".");
  EXPECT_EQ(consoleLines()[1], "  *** Error number \"-1\". returned from drive.");
  EXPECT_EQ(consoleLines().back(), "  *** Error writing double filemark to drive \"V D1\".");
  EXPECT_EQ(tapeIn("T2"), Tape{});
}

TEST_F(Dispatch, ClosedUnitsReachNoDrive) {
  char buffer[8] = {};
  units_[0].eofMark = 1;
  units_[0].nOutputs = 1;
  fail("");
  EXPECT_EQ(tlv_tape_read(units_, 0, buffer, 8), -1);
  EXPECT_EQ(units_[0].eofMark, 0);
  EXPECT_EQ(tlv_tape_write(units_, 1, buffer, 8), -1);
  EXPECT_EQ(write(8), -1);
  for (const int answer :
       {tlv_weof(units_, kAllOutputs, 2), tlv_skip_blocks(units_, 0, 0), tlv_skip_files(units_, 0, 1),
        tlv_skip_eod(units_, 0), tlv_rewind(units_, 0), tlv_unload(units_, kAllOutputs)})
    EXPECT_NE(answer, 0);
  EXPECT_EQ(consoleLines().size(), 9U);
  EXPECT_EQ(consoleLines()[0], "  *** Error: drive is not open: read refused.");
  for (const int wild : {-2, kMaxUnits, 1000000}) {
    EXPECT_NE(tlv_rewind(units_, wild), 0);
    EXPECT_EQ(tlv_tape_read(units_, wild, buffer, 8), -1);
    tlv_tape_open(units_, wild);
    EXPECT_EQ(tlv_tape_close(units_, wild), -1);
  }
  EXPECT_EQ(unixRewind(units_, 0), -1);  // nor does the layer below
  EXPECT_EQ(unixTapeRead(units_, 0, buffer), -1);
  EXPECT_EQ(unixTapeWrite(units_, 0, buffer, 0), -1);
  EXPECT_EQ(tlv_tape_close(units_, 0), 0);
  EXPECT_EQ(faults_->operations(), 0);
  units_[0].nOutputs = 0;
  EXPECT_EQ(tlv_rewind(units_, kAllOutputs), 0);
  EXPECT_EQ(tlvInitLoader(units_, kAllOutputs), 1);
  EXPECT_EQ(tlvInitLoader(units_, 1), 0);
}

TEST_F(Dispatch, LimitOfTheM4Family) {
  setenv("ST_BUFFER", "96", 1);
  initUNIX();
  unsetenv("ST_BUFFER");
  load(0, "T0", {block(64000, 1), block(64001, 2)}, "model = X M-4 9\n");
  setTapeDriver(std::make_unique<VirtualDriver>(folder_.path("")));
  findDrives();
  ASSERT_EQ(getDriveList(units_), 3);
  openInput(0);
  EXPECT_EQ(units_[0].isM4, 1);
  char* buffer = units_[0].ioBuffer;
  EXPECT_EQ(tlv_tape_read(units_, 0, buffer, 65529), 64000);
  EXPECT_EQ(tlv_tape_read(units_, 0, buffer, 65529), -1);
  EXPECT_EQ(tlv_tape_read(units_, 0, buffer, 65530), 64001);
  EXPECT_EQ(units_[0].maxBlockSize, 98304U);
  units_[0].maxBlockSize = 32768;  // the family's limit never raises one that is lower
  tlv_rewind(units_, 0);
  EXPECT_EQ(tlv_tape_read(units_, 0, buffer, 100), -1);
  for (const char* name : {"OPEN REEL", "HP 88780 9914", "9348", "M4 DATA"}) {
    std::strcpy(units_[0].name, name);
    EXPECT_EQ(isM4Drive(&units_[0]), 1) << name;
  }
  std::strcpy(units_[0].name, "M 4 348");
  EXPECT_EQ(isM4Drive(&units_[0]), 0);
}

TEST_F(Dispatch, SpacingSaysWhatItDid) {
  load(0, "T0", {"a", "b", MARK, "c", MARK, MARK});
  openInput(0);
  tlv_skip_files(units_, 0, 1);
  EXPECT_EQ(units_[0].fileNum, 1);  // the driver counts from 0
  EXPECT_EQ(units_[0].blockNum, 1);
  EXPECT_NE(tlv_skip_blocks(units_, 0, -3), 0);
  EXPECT_EQ(units_[0].blockNum, -1);
  EXPECT_EQ(tlv_skip_eod(units_, 0), 0);
  EXPECT_NE(tlv_skip_files(units_, 0, 2), 0);
  EXPECT_EQ(tlv_skip_blocks(units_, 0, 0), 0);
  EXPECT_EQ(tlv_rewind(units_, 0), 0);
  EXPECT_EQ(units_[0].fileNum, 1);
  fail("rewind:1:EIO,space:1:EIO,status:2:EIO");
  EXPECT_NE(tlv_rewind(units_, 0), 0);
  EXPECT_EQ(consoleLines(),
            (Lines{"1 file skipped forward.",
                   "  *** Unidentified error occurred during reverse skip blocks on drive \"V D0\".",
                   "  *** Error number \"-1\". returned from drive.", "  *** Error skipping tape blocks.",
                   "3 blocks skipped backward.", "Skipped to End Of Data.",
                   "  *** Unidentified error occurred during forward skip files on drive \"V D0\".",
                   "  *** Error number \"-1\". returned from drive.", "  *** Error skipping files.",
                   "2 files skipped forward.", "Rewind \"V D0\".", "Rewind \"V D0\".",
                   "  *** The tape position is lost on drive \"V D0\" (drive reset, or cartridge pulled or exchanged).",
                   "      Nothing more is read or written there until the tape is rewound, unloaded or opened again.",
                   "  *** Error rewinding \"V D0\"."}));
}

TEST_F(Dispatch, CloseKeepsTheNameOnlyForTheNextTape) {
  openInput(0);
  units_[0].unloadAtEot = true;
  EXPECT_EQ(tlv_unload(units_, 0), 0);
  EXPECT_STREQ(units_[0].name, "V D0");
  EXPECT_STREQ(units_[0].devName, "");
  EXPECT_STREQ(units_[0].id, "");
  EXPECT_EQ(units_[0].state, 0);
  EXPECT_EQ(units_[0].maxBlockSize, 0U);
  units_[0].unloadAtEot = false;
  openOutputs({1});
  units_[1].unloadAtEot = true;
  EXPECT_EQ(write(10), 10);
  fail("close:1:EIO");
  consoleLines().clear();
  EXPECT_EQ(tlv_tape_close(units_, kAllOutputs), -1);
  EXPECT_EQ(consoleLines(), Lines{"  *** Error closing tape on drive \"V D1\"."});
  EXPECT_STREQ(units_[1].name, "");
  openInput(1);
  fail("close:1:EIO");
  EXPECT_EQ(tlv_tape_close(units_, 0), 0);  // nothing was written: nothing is lost
}

TEST_F(Dispatch, AutoLoadMovesEachDriveOnByOne) {
  load(0, "T0", {"a", MARK}, "magazine = N0.tap\n");
  for (const int i : {1, 2}) load(i, "T" + std::to_string(i), {}, "magazine = N" + std::to_string(i) + ".tap\n");
  for (const char* next : {"N0", "N1", "N2"}) writeFile(folder_.path(std::string(next) + ".tap"), tapImage({}));
  openInput(0);
  openOutputs({1, 2});
  int ready = -1;
  PassPtr words{reinterpret_cast<int*>(units_), &ready, nullptr, nullptr};
  units_[0].autoMode = true;
  units_[0].timeout = 9;
  const auto begin = std::chrono::steady_clock::now();
  tlvAutoLoad(&words);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(9));
  EXPECT_EQ(ready, 1);
  EXPECT_EQ(write(10), 10);
  words.ptr3 = reinterpret_cast<int*>(std::intptr_t{1});
  tlvAutoLoad(&words);
  EXPECT_EQ(ready, 1);
  EXPECT_EQ(write(20), 20);
  EXPECT_EQ(tapeIn("T1"), tapeIn("T2"));
  EXPECT_EQ(tlv_weof(units_, kAllOutputs, 1), 0);
  EXPECT_EQ(tapeIn("N1"), (Tape{std::string(20, 'b'), MARK}));
  EXPECT_EQ(tapeIn("N2"), (Tape{std::string(20, 'b'), MARK}));
  tlvAutoLoad(&words);  // the magazines are empty: no box, and the walk stops at the first drive
  EXPECT_EQ(ready, 0);
  EXPECT_EQ(units_[1].state, 0);
  EXPECT_EQ(units_[2].state, 1);
  words.ptr3 = nullptr;
  tlvAutoLoad(&words);
  EXPECT_EQ(ready, 0);
  EXPECT_EQ(toolkit_.errors, Lines{});
}

TEST_F(Dispatch, OpeningWithADriveThatAnswersNoStatus) {
  units_[0].theListItem = 0;
  fail("status:1:EIO");
  tlv_tape_open(units_, 0);
  EXPECT_EQ(units_[0].state, 1);  // taken as online
  EXPECT_EQ(consoleLines(), (Lines{"  *** Error getting write-protect status on \"V D0\".",
                                   "      Defaulting write-protect to true."}));
  fail("setblk:1:EIO");
  consoleLines().clear();
  tlv_tape_open(units_, 0);
  EXPECT_EQ(units_[0].state, 0);
  EXPECT_EQ(consoleLines(), Lines{"  *** Error setting variable block mode on \"V D0\"."});
  EXPECT_EQ(toolkit_.errors,
            (Lines{"Error setting variable block size on drive \"V D0\"", "Error opening drive \"V D0\"."}));
}

// A read that failed without moving the tape, whatever stands there, loses nothing.
TEST_F(Dispatch, EveryReadFailingOnceLosesNothing) {
  load(0, "T0", {"aa", "bbb", MARK, "cccc", MARK, MARK});
  for (int n = 1; n <= 8; ++n) {
    SCOPED_TRACE(n);
    openInput(0);
    tlv_rewind(units_, 0);
    fail("read:" + std::to_string(n) + ":EIO");
    std::vector<int> seen;
    for (int i = 0; i < 20 && units_[0].eodMark == 0; ++i) {
      const int count = tlv_tape_read(units_, 0, units_[0].ioBuffer, 100);
      if (units_[0].eodMark == 0 && count >= 0) seen.push_back(count);
    }
    EXPECT_EQ(seen, (std::vector<int>{2, 3, 0, 4, 0, 0}));
    tlv_tape_close(units_, 0);
  }
}

// A drive that cannot step back: the block that failed is passed already, and the skip over it costs nothing more.
TEST_F(Dispatch, ABlockThatCannotBeSteppedBackOverCostsOneBlock) {
  load(0, "T0", {"aa", "bbb", "cccc", MARK}, "bad-blocks = 1\n");
  openInput(0);
  tlv_rewind(units_, 0);
  EXPECT_EQ(tlv_tape_read(units_, 0, units_[0].ioBuffer, 100), 2);
  fail("space:1+:EIO");
  for (int i = 0; i < 6; ++i) EXPECT_EQ(tlv_tape_read(units_, 0, units_[0].ioBuffer, 100), -1);
  EXPECT_EQ(tlv_skip_blocks(units_, 0, 1), 0);
  EXPECT_EQ(tlv_tape_read(units_, 0, units_[0].ioBuffer, 100), 4);
}

TEST_F(Dispatch, WithoutPositionTheDriverIsJudgedByWhatASpaceMeets) {
  load(0, "T0", {"aa", "bbb", "cccc", MARK, "d"}, "bad-blocks = 1\n");
  fail("position:1+:EIO");
  openInput(0);
  tlv_rewind(units_, 0);
  for (const int length : {2, -1, -1}) EXPECT_EQ(tlv_tape_read(units_, 0, units_[0].ioBuffer, 100), length);
  EXPECT_EQ(tlv_skip_blocks(units_, 0, 1), 0);
  for (const int length : {4, 0, 1, 0}) EXPECT_EQ(tlv_tape_read(units_, 0, units_[0].ioBuffer, 100), length);
  EXPECT_EQ(units_[0].eodMark, 1);
}

TEST(TapeFaults, PlansAreReadWhole) {
  std::vector<TapeFault> faults;
  std::string bad;
  ASSERT_TRUE(parseTapeFaults("read:7:EIO,write:3+:28 close:1:EIO,any:2:slow=5,write:1:short=9,", faults, bad));
  ASSERT_EQ(faults.size(), 5U);
  EXPECT_TRUE(faults[1].onward);
  EXPECT_EQ(faults[1].value, ENOSPC);
  EXPECT_EQ(faults[4].effect, TapeFault::SHORT);
  for (const char* wrong :
       {"read", "read:1", "read:0:EIO", "read:x:EIO", "reed:1:EIO", "read:1:EWHAT", "read:1:short=x"}) {
    EXPECT_FALSE(parseTapeFaults(wrong, faults, bad));
    EXPECT_EQ(bad, wrong);
  }
}

TEST(FileSizes, AreThoseOfFilesByTheirFolder) {
  TestFolder folder;
  writeFile(folder.path("file"), "12345");
  FILE_SPEC fs{};
  std::strcpy(fs.name, "file");
  ASSERT_TRUE(xvt_fsys_convert_str_to_dir(folder.path("").c_str(), &fs.dir));
  DIRECTORY before{};
  DIRECTORY after{};
  xvt_fsys_get_dir(&before);
  EXPECT_EQ(GetAFileSize(fs), 5);
  std::strcpy(fs.name, "none");
  EXPECT_EQ(GetAFileSize(fs), 0);
  std::strcpy(fs.dir.path, "/no/such/folder");
  EXPECT_EQ(GetAFileSize(fs), 0);
  xvt_fsys_get_dir(&after);
  EXPECT_STREQ(before.path, after.path);
}

}  // namespace
