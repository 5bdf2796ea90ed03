// Cartridge files, drive files, and what only virtual drives have: a magazine, damage, exchange by hand.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "quarlo/tapelib/driver/tap_file.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "tests/device/bench.h"
#include "tests/device/console_recorder.h"
#include "tests/support/tap_images.h"
#include "tests/support/test_files.h"

namespace {

using Kind = TapFile::Kind;

/// What a cartridge holds, read forward and again backward: lengths, 0 for marks, -1 bad, -2 damage.
struct Contents {
  std::vector<long> forward;
  std::vector<long> backward;
  std::string bytes;
};

long codeOf(const TapFile::Element& element) {
  switch (element.kind) {
    case Kind::BLOCK:
      return element.length;
    case Kind::BAD_BLOCK:
      return -1;
    case Kind::DAMAGED:
      return -2;
    default:
      return 0;
  }
}

Contents contentsOf(TapFile& tape) {
  Contents contents;
  TapFile::Element element;
  for (element = tape.ahead(); element.kind != Kind::END; element = tape.ahead()) {
    contents.forward.push_back(codeOf(element));
    if (element.kind == Kind::DAMAGED) break;
    if (element.kind == Kind::BLOCK) {
      std::string bytes(element.length, '?');
      EXPECT_TRUE(tape.copy(element, bytes.data(), bytes.size()));
      contents.bytes += bytes;
    }
    tape.pass(element);
  }
  for (element = tape.behind(); element.kind != Kind::END; element = tape.behind()) {
    contents.backward.insert(contents.backward.begin(), codeOf(element));
    if (element.kind == Kind::DAMAGED) break;
    tape.passBack(element);
  }
  return contents;
}

Contents contentsOf(const std::string& image) {
  TestFolder folder;
  writeFile(folder.path("x.tap"), image);
  TapFile tape;
  EXPECT_EQ(tape.open(folder.path("x.tap")), 0);
  Contents contents = contentsOf(tape);
  const bool whole = contents.forward.empty() || contents.forward.back() != -2;
  if (whole) {
    EXPECT_EQ(contents.forward, contents.backward);
    EXPECT_EQ(tape.number(), 0);
  }
  return contents;
}

using Codes = std::vector<long>;

TEST(Cartridge, ElementsOfEveryKind) {
  const std::string good = word(3) + "abc" + std::string(1, '\0') + word(3);
  const std::string bad = word(0x80000002) + "xx" + word(0x80000002);
  EXPECT_EQ(contentsOf("").forward, Codes{});
  EXPECT_EQ(contentsOf(good + word(0) + word(0)).forward, (Codes{3, 0, 0}));
  EXPECT_EQ(contentsOf(good + word(0)).bytes, "abc");
  EXPECT_EQ(contentsOf(good + bad + good).forward, (Codes{3, -1, 3}));
  EXPECT_EQ(contentsOf(word(0x80000000) + word(0x80000000) + good).forward, (Codes{-1, 3}));
  // What ends the recording, and what is passed over: an erase gap, private markers and records.
  EXPECT_EQ(contentsOf(good + word(0xFFFFFFFF) + good).forward, (Codes{3}));
  const std::string privateRecord = word(0x10000002) + "pp" + word(0x10000002);
  EXPECT_EQ(contentsOf(good + word(0xFFFFFFFE) + privateRecord + word(0x70000001) + good + word(0)).forward,
            (Codes{3, 3, 0}));
  // Odd lengths without padding, as some makers write them.
  const std::string tight = word(3) + "abc" + word(3);
  EXPECT_EQ(contentsOf(tight + word(0) + tight).forward, (Codes{3, 0, 3}));
}

TEST(Cartridge, DamageIsSeenAndNothingBeyondIsTouched) {
  const std::string good = word(4) + "abcd" + word(4);
  for (const std::string& image : {
           good + "xy",                                          // cut in a length word
           good + word(8) + "abcd",                              // cut in a block
           good + word(4) + "abcd",                              // cut before the closing word
           good + word(4) + "abcd" + word(5),                    // closed by another length
           good + word(0x0FFFFFFF) + "abcd" + word(0x0FFFFFFF),  // far beyond the file
           good + word(0x10000009) + "abcd",                     // a private record beyond the file
       })
    EXPECT_EQ(contentsOf(image).forward, (Codes{4, -2}));
}

TEST(Cartridge, BlocksAcrossTheBuffersAndBackAgain) {
  TestFolder folder;
  writeFile(folder.path("x.tap"), "");
  TapFile tape;
  ASSERT_EQ(tape.open(folder.path("x.tap")), 0);
  Tape wanted;
  for (std::size_t i = 0; i < 60; ++i)
    wanted.push_back(i % 7 == 3 ? MARK : block(1 + i * i * 211 % 400000, static_cast<unsigned>(i)));
  for (const std::string& item : wanted)
    ASSERT_EQ(item.empty() ? tape.writeMark() : tape.writeBlock(item.data(), static_cast<std::uint32_t>(item.size())),
              0);
  ASSERT_EQ(tape.flush(), 0);
  EXPECT_EQ(readFile(folder.path("x.tap")), tapImage(wanted));
  // Read without a flush in between, and backward.
  ASSERT_EQ(tape.writeBlock("tail", 4), 0);
  wanted.emplace_back("tail");
  tape.rewind();
  Codes codes;
  std::string bytes;
  for (const std::string& item : wanted) {
    codes.push_back(static_cast<long>(item.size()));
    bytes += item;
  }
  const Contents contents = contentsOf(tape);
  EXPECT_EQ(contents.forward, codes);
  EXPECT_EQ(contents.backward, codes);
  EXPECT_TRUE(contents.bytes == bytes);
}

TEST(Cartridge, RefusesWhatIsNoCartridgeAndWritesToAProtectedOne) {
  TestFolder folder;
  TapFile tape;
  EXPECT_EQ(tape.open(folder.path("none.tap")), ENOENT);
  EXPECT_EQ(tape.open(folder.path("")), EINVAL);
  writeFile(folder.path("x.tap"), tapImage({"abc", MARK}));
  chmod(folder.path("x.tap").c_str(), 0444);
  ASSERT_EQ(tape.open(folder.path("x.tap")), 0);
  EXPECT_FALSE(tape.writable());
  EXPECT_EQ(tape.writeBlock("abc", 3), EACCES);
  EXPECT_EQ(readFile(folder.path("x.tap")), tapImage({"abc", MARK}));
}

TEST(Cartridge, ImagesMadeByOthers) {
  const char* shared = std::getenv("QUARLO_SHARED_DATA");
  if (shared == nullptr) GTEST_SKIP() << "QUARLO_SHARED_DATA names no folder";
  TapFile tape;
  ASSERT_EQ(tape.open(std::string(shared) + "/tape/readtape/1kblks_43blks.tap"), 0);
  Codes codes(18, 1024);
  const std::vector<std::pair<long, long>> files{{431, 6}, {996, 2}, {883, 3}, {376, 7}, {209, 2}};
  for (const auto& [rest, blocks] : files) {
    codes.insert(codes.end(), {rest, 0});
    codes.insert(codes.end(), static_cast<std::size_t>(blocks), 1024);
  }
  const Contents contents = contentsOf(tape);
  EXPECT_EQ(contents.forward, codes);
  EXPECT_EQ(contents.backward, codes);
}

// ---- drives -----------------------------------------------------------------------------------------------------

TEST(DriveFile, ReadsWhatItSaysAndNamesTheLineThatIsWrong) {
  TestFolder folder;
  DriveDescription drive;
  std::string problem;
  writeFile(folder.path("M4-9914.drive"),
            "# a drive\n host = 3 \nid=6\ncartridge = a b.tap\nmagazine = /m/2.tap\nmagazine = 3.tap\n"
            "write-protect = yes\ncapacity = 4000000\nbad-blocks = 3 17\n\n");
  ASSERT_TRUE(readDriveFile(folder.path("M4-9914.drive"), drive, problem)) << problem;
  EXPECT_EQ(std::tuple(drive.model, drive.host, drive.id, drive.cartridge, drive.capacity),
            std::tuple("M4-9914", 3, 6, folder.path("a b.tap"), 4000000));
  EXPECT_EQ(drive.magazine, (std::vector<std::string>{"/m/2.tap", folder.path("3.tap")}));
  EXPECT_TRUE(drive.writeProtect);
  EXPECT_EQ(drive.badBlocks, (std::vector<long>{3, 17}));
  DriveDescription again;
  ASSERT_EQ(writeDriveFile(folder.path("M4-9914.drive"), drive), 0);
  ASSERT_TRUE(readDriveFile(folder.path("M4-9914.drive"), again, problem)) << problem;
  EXPECT_EQ(again.magazine, drive.magazine);
  EXPECT_EQ(again.badBlocks, drive.badBlocks);
  for (const char* wrong :
       {"id = 256", "id = x", "speed = 9", "cartridge", "write-protect = maybe", "bad-blocks = 1 -2"}) {
    writeFile(folder.path("w.drive"), std::string("# first\n") + wrong + "\n");
    EXPECT_FALSE(readDriveFile(folder.path("w.drive"), again, problem));
    EXPECT_EQ(problem, std::string("line 2 is not understood: ") + wrong);
  }
}

TEST(VirtualDrives, FolderAndFilesThatAreWrongAreSaid) {
  TestFolder folder;
  testing::internal::CaptureStderr();
  DriveFacts drives;
  EXPECT_FALSE(VirtualDriver(folder.path("none")).listDrives(drives));
  std::filesystem::create_directory(folder.path("d"));
  writeFile(folder.path("d/1.drive"), "nonsense\n");
  writeFile(folder.path("d/2.drive"), "id = 2\nvendor = V\nmodel = M\n");
  writeFile(folder.path("d/3.drive"), "id = 2\n");
  VirtualDriver driver(folder.path("d"));
  EXPECT_TRUE(driver.listDrives(drives));
  ASSERT_EQ(drives.facts.size(), 1U);
  EXPECT_EQ(drives.facts[0].name, "V M");
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_NE(said.find("none is not a folder"), std::string::npos);
  EXPECT_NE(said.find("1.drive: line 1 is not understood: nonsense"), std::string::npos);
  EXPECT_NE(said.find("3.drive: host 0 id 2 is taken by drive M"), std::string::npos);
  for (const char* name : {"/dev/nst1", "/dev/nst", "/dev/nst0x", "/dev/st0", "/dev/nst99999999999999999999"})
    EXPECT_EQ(driver.open(name, O_RDONLY), -1) << name;
  char byte = 0;
  EXPECT_EQ(driver.read(-1, &byte, 1), -1);
  EXPECT_EQ(errno, EBADF);
}

class OneDrive : public testing::Test {
 protected:
  int open() { return tapeDriver().open("/dev/nst0", O_RDWR | O_NONBLOCK); }
  static int operate(int fd, short operation) {
    mtop command{};
    command.mt_op = operation;
    command.mt_count = 1;
    return tapeDriver().operate(fd, command);
  }
  ssize_t read(int fd) { return tapeDriver().read(fd, buffer_, sizeof buffer_); }
  ssize_t rewoundRead(int fd) { return operate(fd, MTREW) == 0 ? read(fd) : -2; }
  /// The length of the first block of the cartridge that the drive holds now.
  ssize_t firstBlock() {
    const int fd = open();
    const ssize_t length = read(fd);
    tapeDriver().close(fd);
    return length;
  }
  static bool isReady(int fd) {
    mtget status{};
    return tapeDriver().status(fd, status) == 0 && GMT_ONLINE(status.mt_gstat) != 0;
  }
  void cartridge(const std::string& name, std::size_t length) {
    writeFile(bench_.path(name), tapImage({std::string(length, 'x'), MARK}));
  }
  VirtualBench bench_;
  char buffer_[100000];
};

TEST_F(OneDrive, MagazineBringsOneCartridgeAtEachUnload) {
  for (const std::size_t i : {1U, 2U, 3U}) cartridge("M" + std::to_string(i), 100 * i);
  bench_.description().cartridge = bench_.path("M1");
  bench_.description().magazine = {bench_.path("M2"), bench_.path("M3")};
  bench_.store();
  for (const ssize_t length : {100, 200, 300}) {
    const int fd = open();
    EXPECT_EQ(read(fd), length);
    EXPECT_EQ(operate(fd, MTOFFL), 0);
    EXPECT_FALSE(isReady(fd));
    tapeDriver().close(fd);
  }
  const int fd = open();
  EXPECT_FALSE(isReady(fd));  // the magazine is empty, and the last cartridge stays out
  tapeDriver().close(fd);
  bench_.store();  // until somebody's hands were at the drive
  EXPECT_EQ(firstBlock(), 100);
}

TEST_F(OneDrive, ACartridgeFileExchangedOrRewrittenIsAnotherCartridge) {
  cartridge("T1", 100);
  const int fd = open();
  EXPECT_EQ(read(fd), 100);
  EXPECT_EQ(operate(fd, MTREW), 0);
  cartridge("NEW", 200);
  std::filesystem::rename(bench_.path("NEW"), bench_.path("T1"));
  EXPECT_EQ(read(fd), -1);
  EXPECT_EQ(rewoundRead(fd), 200);
  cartridge("T1", 300);  // the same file, other contents
  EXPECT_EQ(read(fd), -1);
  EXPECT_EQ(rewoundRead(fd), 300);
  EXPECT_EQ(operate(fd, MTREW), 0);
  EXPECT_EQ(tapeDriver().write(fd, buffer_, 70000), 70000);  // our own writing is no exchange
  EXPECT_EQ(tapeDriver().write(fd, buffer_, 70000), 70000);
  EXPECT_EQ(operate(fd, MTWEOF), 0);
  EXPECT_EQ(rewoundRead(fd), 70000);
  std::filesystem::remove(bench_.path("T1"));
  EXPECT_EQ(read(fd), -1);
  tapeDriver().close(fd);
}

TEST_F(OneDrive, DamagedCartridgeGivesAnErrorAndSaysWhereOnceForEachLoad) {
  writeFile(bench_.path("T1"), tapImage({"abcd"}) + word(400) + "abcd");
  initIO(getDevPtr());
  consoleLines().clear();
  testing::internal::CaptureStderr();
  const int fd = open();
  const std::vector<std::string> news{"  *** Virtual drive TAPE-1: " + bench_.path("T1") +
                                      ": damaged at byte 12: a block runs past the end of the file."};
  EXPECT_EQ(read(fd), 4);
  for (int again = 0; again < 2; ++again) {
    EXPECT_EQ(read(fd), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(consoleLines(), news);
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  unInitIO(getDevPtr());
  EXPECT_EQ(operate(fd, MTFSR), -1);
  EXPECT_EQ(operate(fd, MTEOM), -1);
  EXPECT_EQ(operate(fd, MTFSF), -1);
  tapeDriver().close(fd);
}

TEST_F(OneDrive, AnotherProgramHoldsTheCartridge) {
  VirtualDriver other(bench_.folder());
  const int fd = open();
  EXPECT_EQ(other.open("/dev/nst0", O_RDWR | O_NONBLOCK), -1);
  EXPECT_EQ(errno, EBUSY);
  tapeDriver().close(fd);
  EXPECT_GT(other.open("/dev/nst0", O_RDWR | O_NONBLOCK), 0);
}

}  // namespace
