// The image copy between disk files: tape-image files good and bad, both kinds of output, the settings.

#include <gtest/gtest.h>

#include "tests/support/job_fixture.h"

namespace {

class DiskCopyTest : public JobTest {
 protected:
  /// Copies `image` through the copy dialog and returns the output file.
  std::string copy(const std::string& image, const char* outputName = "out.tpf") {
    writeFile(folder.path("in.tpf"), image);
    openCopyDialog();
    chooseInputFile(folder.path("in.tpf"));
    chooseOutputFile(folder.path(outputName));
    start();
    return readFile(folder.path(outputName));
  }
};

const Tape TWO_FILES = {block(100, 1), block(7, 2), MARK, block(32768, 3), MARK};

/// More than the copies read or write at once, in blocks of all lengths.
Tape longTape() {
  Tape tape;
  for (std::size_t i = 0; i < 160; ++i)
    tape.push_back(i % 40 == 39 ? MARK : block(1 + i * 7919 % 32768, static_cast<int>(i)));
  return tape;
}

Tape closed(Tape tape) {
  tape.insert(tape.end(), {MARK, MARK});
  return tape;
}

TEST_F(DiskCopyTest, KeepsBlocksMarksAndReservedWordsAndWritesItsOwnBlockType) {
  const std::string out = copy(tpfImage(closed(TWO_FILES), 0x2000002U, 0x12345678U));
  // What was copied passes the reserved words through; the two closing marks are the job's own.
  EXPECT_EQ(tpfShortly(out), tpfShortly(tpfImage(TWO_FILES, 0x1000001U, 0x12345678U) +
                                        tpfHeader(0, 0x1000001U, 0xF0F0F0F0U) + tpfHeader(0, 0x1000001U, 0xF0F0F0F0U)));
  EXPECT_EQ(status(), "Complete");
  EXPECT_EQ(consoleWithoutDates(), (std::vector<std::string>{" ", "Copy started at DATE.", "32875 bytes copied.", " ",
                                                             "Copy ended at DATE.", " "}));
  closeCopyDialog();
  const std::string many = tpfImage(closed(longTape()));
  EXPECT_EQ(tpfShortly(copy(many)), tpfShortly(many));
}

TEST_F(DiskCopyTest, StopsAtTwoMarksWhateverEofCountSaysAndSaysWhatIsBehindThem) {
  const Tape tape = {block(10, 1), MARK, MARK, block(20, 2), MARK, MARK, MARK};
  copy(tpfImage(tape));
  EXPECT_EQ(status(), "Complete");
  // Behind the second mark stand a block of 20 bytes with its header and three marks.
  EXPECT_TRUE(consoleHas("  ** 148 bytes of the input file behind the double file mark were not copied."));
}

TEST_F(DiskCopyTest, OutputBeginsAsTheKindChosenLastWantsIt) {
  openCopyDialog();
  writeFile(folder.path("in.tpf"), tpfImage(closed(TWO_FILES)));
  chooseInputFile(folder.path("in.tpf"));
  chooseOutputFile(folder.path("out.tpf"));
  setParameters([this](WINDOW parameters) { toolkit.press(parameters, UF_RAW); });
  start();
  EXPECT_EQ(readFile(folder.path("out.tpf")), TWO_FILES[0] + TWO_FILES[1]) << "raw, and the first file only";
}

TEST_F(DiskCopyTest, ABlockOfNoBytesIsABlock) {
  std::string image = tpfImage({block(3, 1)});
  image += tpfHeader(0, 1, 0xFFFFFFFFU) + tpfHeader(0, 1, 0xF0F0F0F0U) + tpfHeader(0, 1, 0xF0F0F0F0U);
  const std::string out = copy(image);
  EXPECT_EQ(wordAt(out, 32 + 32 + 3 + 28), 0xFFFFFFFFU);
  EXPECT_EQ(wordAt(out, 32 + 32 + 3 + 32 + 28), 0xF0F0F0F0U);
  EXPECT_EQ(status(), "Complete");
}

struct Damage {
  const char* name;
  std::string image;
  const char* line;
  const char* box;  // null for none
};

TEST_F(DiskCopyTest, DamagedFilesFailWithTheBytePositionAndKeepWhatWasWhole) {
  const std::string good = tpfImage({block(50, 1), MARK, block(60, 2)});
  const std::size_t last = good.size() - 92;
  const std::string at = std::to_string(last);
  const std::string limit = std::to_string(units->ioBufLen);
  const Damage damages[] = {
      {"negative", good.substr(0, last) + tpfHeader(0x80000000U, 1, 0xFFFFFFFFU),
       "  *** Damaged tape-image file: the block header at byte 146 announces -2147483648 bytes.", nullptr},
      {"beyond the buffer", good.substr(0, last) + tpfHeader(units->ioBufLen + 1, 1, 0xFFFFFFFFU) + block(70000, 1),
       "  *** The block at byte 146 of the tape-image file announces 32769 bytes;", nullptr},
      {"cut in a header", good.substr(0, last + 31), "  *** No whole block header at byte 146 of the tape-image file.",
       "eof encountered on disk read"},
      {"cut in a block", good.substr(0, last + 91),
       "  *** The block of 60 bytes at byte 146 of the tape-image file is not whole.", "eof encountered on disk read"},
      {"without closing marks", good, "  *** No whole block header at byte 238 of the tape-image file.",
       "eof encountered on disk read"},
  };
  ASSERT_EQ(at, "146");
  for (const Damage& damage : damages) {
    SCOPED_TRACE(damage.name);
    toolkit.errors.clear();
    forgetConsole();
    const std::string out = copy(damage.image);
    EXPECT_EQ(status(), "Failed");
    expectSaid({damage.line, "  *** Job Failed."});
    EXPECT_EQ(toolkit.errors, damage.box ? std::vector<std::string>{damage.box} : std::vector<std::string>{});
    // The output is itself a sound tape-image file of what came before, with its closing marks.
    Tape kept = {block(50, 1), MARK};
    if (std::string(damage.name) == "without closing marks") kept.push_back(block(60, 2));
    EXPECT_EQ(tpfShortly(out), tpfShortly(tpfImage(closed(kept))));
    closeCopyDialog();
  }
}

TEST_F(DiskCopyTest, RefusesFilesThatAreNoTapeImageAndTheOtherSidesFileByAnyPath) {
  openCopyDialog();
  writeFile(folder.path("in.tpf"), tpfImage(closed({block(9, 1), MARK})));
  writeFile(folder.path("not.tpf"), "1vlu and so on, long enough for a header");
  writeFile(folder.path("short.tpf"), "1vlt");
  chooseInputFile(folder.path("not.tpf"));
  chooseInputFile(folder.path("short.tpf"));
  EXPECT_EQ(toolkit.errors,
            (std::vector<std::string>{"Unrecognized format in file not.tpf", "Unrecognized format in file short.tpf"}));
  EXPECT_EQ(status(), "Idle");
  toolkit.errors.clear();

  chooseInputFile(folder.path("in.tpf"));
  std::filesystem::create_hard_link(folder.path("in.tpf"), folder.path("other.tpf"));
  std::filesystem::create_symlink(folder.path("in.tpf"), folder.path("link.tpf"));
  for (const char* name : {"in.tpf", "other.tpf", "link.tpf"}) chooseOutputFile(folder.path(name));
  EXPECT_EQ(toolkit.errors,
            std::vector<std::string>(3, "This file name is already being used for input. Choose another file name."));
  EXPECT_FALSE(readFile(folder.path("in.tpf")).empty());
  toolkit.errors.clear();

  chooseOutputFile(folder.path("out.tpf"));
  EXPECT_EQ(status(), "Ready");
  chooseInputFile(folder.path("out.tpf"));
  EXPECT_EQ(toolkit.errors,
            std::vector<std::string>{"This file is already being used for output. Choose another file."});
  EXPECT_EQ(toolkit.text(dialog, CP_INPUT_NAME), folder.path("in.tpf"));
}

TEST_F(DiskCopyTest, AFullDiskIsNamedAndTheFileEndsWithItsLastWholeBlock) {
  constexpr const char* kNoMark = "Error writing eof header to disk file";
  const struct {
    std::size_t length;
    std::size_t blocks;
    std::size_t fitting;
    rlim_t more;  // room behind the blocks that fit
    std::vector<std::string> boxes;
  } rows[] = {
      {1000, 40, 3, 500, {}},
      {30000, 40, 23, 9000, {}},
      {30000, 80, 30, 31, {"Error writing block header to disk file", kNoMark, kNoMark}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.more);
    writeFile(folder.path("in.tpf"), tpfImage(closed(Tape(row.blocks, block(row.length, 1)))));
    openCopyDialog();
    chooseInputFile(folder.path("in.tpf"));
    chooseOutputFile(folder.path("out.tpf"));
    toolkit.errors.clear();
    forgetConsole();
    {
      const FileLimit limit(32 + row.fitting * (row.length + 32) + row.more);
      start();
    }
    EXPECT_EQ(status(), "Failed");
    EXPECT_EQ(toolkit.errors, row.boxes);
    EXPECT_EQ(count("  *** Error writing to disk file \"out.tpf\": File too large."), row.boxes.empty() ? 1 : 3);
    EXPECT_TRUE(consoleHas(std::to_string(row.fitting * row.length) + " bytes copied."));
    const Tape whole(row.fitting, block(row.length, 1));
    EXPECT_EQ(tpfShortly(readFile(folder.path("out.tpf"))),
              tpfShortly(tpfImage(row.boxes.empty() ? closed(whole) : whole)));
    closeCopyDialog();
  }
}

TEST_F(DiskCopyTest, AProgressDialogThatCannotBeOpenedEndsTheJob) {
  toolkit.failNextDialog(DLG_PROGRESS);
  copy(tpfImage(closed(TWO_FILES)));
  EXPECT_EQ(toolkit.errors, std::vector<std::string>{"Error opening dialog"});
  EXPECT_EQ(status(), "Failed");
}

}  // namespace
