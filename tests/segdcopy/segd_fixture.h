/// SEG D copies without their dialogs: settings straight in SgdParams, units opened straight on files and drives; field
/// files made and read here independently of the program's own code.
#pragma once

#include <cmath>
#include <cstdio>
#include <numeric>

#include "quarlo/segdcopy/segdcopy.h"
#include "tests/support/units_fixture.h"

inline char bcd(int twoDigits) { return static_cast<char>(twoDigits / 10 * 16 + twoDigits % 10); }

/// A channel set as a test wants it: traces of `milliseconds`, 4-byte samples every 2 ms.
struct ChannelSet {
  int traces = 2;
  int milliseconds = 20;
};

/// A field file in the making.
struct FieldFile {
  int number = 1;
  int code = 8058;
  std::vector<ChannelSet> sets = {{}};
  int milliseconds = 20;
  int extended = 0;    // blocks
  int external = 0;    // blocks
  int extensions = 0;  // of every trace header
  int samples = 0;     // count in the first of them
  unsigned seed = 1;

  std::string header() const {
    std::string block1(32, '\0');
    block1[0] = bcd(number / 100);
    block1[1] = bcd(number % 100);
    block1[2] = bcd(code / 100);
    block1[3] = bcd(code % 100);
    block1[10] = bcd(21);
    block1[11] = 0x10;  // one more general header
    block1[22] = 2 * 16;
    block1[25] = static_cast<char>(0x8F);
    block1[26] = static_cast<char>(0xFF);
    block1[27] = bcd(1);
    block1[28] = bcd(static_cast<int>(sets.size()));
    block1[30] = bcd(extended);
    block1[31] = bcd(external);
    std::string block2(32, '\0');
    block2[14] = static_cast<char>(milliseconds >> 16);
    block2[15] = static_cast<char>(milliseconds >> 8);
    block2[16] = static_cast<char>(milliseconds);
    std::string all = block1 + block2;
    for (std::size_t i = 0; i < sets.size(); ++i) {
      std::string set(32, '\0');
      set[0] = bcd(1);
      set[1] = bcd(static_cast<int>(i) + 1);
      set[4] = static_cast<char>(sets[i].milliseconds / 2 >> 8);
      set[5] = static_cast<char>(sets[i].milliseconds / 2);
      set[8] = bcd(sets[i].traces / 100);
      set[9] = bcd(sets[i].traces % 100);
      set[10] = 0x10;
      all += set;
    }
    const std::size_t blocks = static_cast<std::size_t>(extended) + static_cast<std::size_t>(external);
    return all + (blocks > 0 ? block(32 * blocks, seed + 77) : "");
  }

  std::string trace(int set, int place, int sampleCount) const {
    std::string head(20, '\0');
    head[0] = bcd(number / 100);
    head[1] = bcd(number % 100);
    head[2] = bcd(1);
    head[3] = bcd(set);
    head[4] = bcd(place / 100);
    head[5] = bcd(place % 100);
    head[9] = static_cast<char>(extensions);
    std::string more(static_cast<std::size_t>(extensions) * 32, '\x55');
    if (extensions > 0) {
      more[7] = static_cast<char>(samples >> 16);
      more[8] = static_cast<char>(samples >> 8);
      more[9] = static_cast<char>(samples);
    }
    const unsigned which = seed * 1000 + static_cast<unsigned>(set * 100 + place);
    return head + more + block(4 * static_cast<std::size_t>(sampleCount), which);
  }

  /// All traces; those of a set as long as the record, or as the set with `bySet`.
  std::vector<std::string> traces(bool bySet = false) const {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < sets.size(); ++i) {
      const int record = std::max(milliseconds / 2, extensions > 0 ? samples : 0);
      for (int place = 1; place <= sets[i].traces; ++place)
        all.push_back(trace(static_cast<int>(i) + 1, place, bySet ? sets[i].milliseconds / 2 : record));
    }
    return all;
  }

  std::string file(bool bySet = false) const {
    std::string all = header();
    for (const std::string& each : traces(bySet)) all += each;
    return all;
  }

  /// As it stands on tape, its mark included.
  Tape tape() const {
    Tape all = {header()};
    for (const std::string& each : traces()) all.push_back(each);
    all.push_back(MARK);
    return all;
  }
};

inline FieldFile fileOf(int number, unsigned seed = 1) { return {.number = number, .seed = seed}; }

class SegdTest : public UnitsTest {
 protected:
  SegdTest() {
    segdInit();
    copyText(SgdParams.logDir, folder.path(""));
    std::filesystem::create_directory("in");
    std::filesystem::create_directory("out");
  }
  /// A buffer of so many KB for blocks.
  void put(const std::string& name, const FieldFile& file) { writeFile(folder.path("in/" + name), file.file()); }
  /// As the copy dialog leaves it: a directory, here with the name that output files begin with.
  void openOutputDirectory(const std::string& name = "line.sgd") {
    units[1].fs = specOf("out/" + name);
    units[1].type = UT_DISK;
    units[1].state = 1;
  }
  void openInputTape(const std::string& name) {
    load(0, name);
    UnitsTest::openInputTape();
  }
  void openOutputTape(const std::string& name = "out.tap", const std::string& more = "") {
    makeCartridge(name, {});
    load(1, name, more);
    openOutputTapes({1});
  }
  /// Runs the job on the open units and closes the tapes; the job itself leaves no disk file open.
  int run() {
    forgetConsole();
    const bool fromDisk = units[0].type == UT_DISK;
    const int result = doSegdCopy(units);
    EXPECT_TRUE(!fromDisk || (units[0].fp == nullptr && units[0].state == 0));
    EXPECT_EQ(SgdParams.logFp, nullptr);
    EXPECT_EQ(SgdParams.prepFp, nullptr);
    EXPECT_EQ(SgdParams.theFile, nullptr);
    closeUnits();
    return result;
  }
  int copyFiles(const std::string& first = "in/a.segd") {
    openInputFile(first);
    openOutputDirectory();
    return run();
  }
  int copyTape(const Tape& tape, const std::vector<std::size_t>& bad = {}) {
    makeCartridge("in.tap", tape, bad);
    openInputTape("in.tap");
    openOutputDirectory();
    return run();
  }
  int copyTapeToTape(const Tape& tape) {
    makeCartridge("in.tap", tape);
    openInputTape("in.tap");
    openOutputTape();
    return run();
  }
  int copyFilesToTape(const std::string& first = "in/a.segd") {
    openInputFile(first);
    openOutputTape();
    return run();
  }
  std::string out(const std::string& name) { return readFile(folder.path("out/" + name)); }
  bool hasOut(const std::string& name) { return std::filesystem::exists("out/" + name); }
  Lines outNames() {
    Lines names;
    for (const auto& entry : std::filesystem::directory_iterator("out"))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }
  /// The first console line that begins so, or nothing.
  std::string lineWith(const std::string& beginning) {
    for (const std::string& line : consoleWithoutDates())
      if (line.starts_with(beginning)) return line;
    return "";
  }
  void listFieldFiles(const std::string& text, int sense = SEGD_INCLUDE) {
    writeFile(folder.path("files.txt"), text);
    SgdParams.limit = true;
    SgdParams.recLimType = sense;
    copyText(SgdParams.recLimDir, folder.path(""));
    copyText(SgdParams.recLimFile, "files.txt");
  }
  void listZeroes(const std::string& text, int byte, int type) {
    writeFile(folder.path("zero.txt"), text);
    SgdParams.zeroTraces = true;
    SgdParams.trcLimByte = byte;
    SgdParams.trcLimType = type;
    copyText(SgdParams.trcLimDir, folder.path(""));
    copyText(SgdParams.trcLimFile, "zero.txt");
  }
};
