// The SEG D copy from disk to disk: names, lists, zeroed traces, damaged headers, the log.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/segdcopy/segd_fixture.h"

namespace {

/// The bytes with others in one place.
std::string with(std::string all, std::size_t place, const std::string& bytes) {
  return all.replace(place, bytes.size(), bytes);
}

class SegdDiskTest : public SegdTest {
 protected:
  Lines logLines(const std::string& name = "SegdCopy.txt") {
    Lines lines;
    std::ifstream file(folder.path(name));
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }
  /// The bytes come out again as they are.
  void copies(const std::string& bytes) {
    writeFile("in/a.segd", bytes);
    EXPECT_EQ(copyFiles(), 0);
    EXPECT_EQ(out("line_00001.sgd"), bytes);
  }
  void refuses(const std::string& bytes, std::initializer_list<std::string> lines) {
    writeFile("in/a.segd", bytes);
    EXPECT_EQ(copyFiles(), -1);
    expectSaid(lines);
  }
};

TEST_F(SegdDiskTest, WritesOneFileForEachAndEveryLine) {
  const FieldFile one{.number = 1234, .sets = {{2, 20}, {0, 20}, {1, 20}}, .extended = 2, .external = 1};
  const FieldFile two = fileOf(7, 2);
  put("b.segd", two);
  put("a.segd", one);
  put("c.sgd", fileOf(9));  // another extension
  EXPECT_EQ(copyFiles("in/b.segd"), 0);
  EXPECT_EQ(outNames(), (Lines{"line_00001.sgd", "line_00002.sgd"}));
  EXPECT_EQ(out("line_00001.sgd"), one.file());
  EXPECT_EQ(out("line_00002.sgd"), two.file());
  const std::string head = " \nSEG D copy started at DATE.\n \n \n \nSEG D format code:   8058\n \n";
  EXPECT_EQ(consoleText(), head +
                               "Field File:   1234  -     3 traces\nCopied file  a.segd .\n"
                               "Field File:      7  -     2 traces\nCopied file  b.segd .\n \n \n"
                               "SEG D Copy Summary:\n   " +
                               std::to_string(one.file().size() + two.file().size()) +
                               " bytes copied.\n   2 field files copied.\n \nSEG D copy ended at DATE.\n \n");
  Lines log = logLines();
  ASSERT_EQ(log.size(), consoleWithoutDates().size());
  for (std::string& line : log) line = withoutDates(line);
  EXPECT_EQ(log, consoleWithoutDates());

  SgdParams.useLog = false;
  SgdParams.ffidOption = true;
  std::filesystem::remove(folder.path("SegdCopy.txt"));
  EXPECT_EQ(copyFiles("in/b.segd"), 0);
  EXPECT_EQ(out("line_01234.sgd"), one.file());
  EXPECT_EQ(out("line_00007.sgd"), two.file());
  EXPECT_FALSE(std::filesystem::exists("SegdCopy.txt"));
}

TEST_F(SegdDiskTest, NamesComeFromWhatStandsBeforeTheLastPoint) {
  put("a.segd", fileOf(1));
  const std::pair<const char*, const char*> names[] = {
      {"line.old.sgd", "line.old_00001.sgd"}, {"line", "line_00001.sgd"}, {"", "_00001.sgd"}};
  for (const auto& [given, made] : names) {
    SgdParams.outFile[0] = '\0';
    openInputFile("in/a.segd");
    openOutputDirectory("x");
    copyText(units[1].fs.name, given);
    EXPECT_EQ(run(), 0);
    EXPECT_TRUE(hasOut(made)) << made;
  }
  const FieldFile none{.sets = {}};
  writeFile("in/a.segd", with(with(none.file(), 0, "\xFF\xFF"), 32, "\x12\xD6\x87"));
  SgdParams.ffidOption = true;
  EXPECT_EQ(copyFiles(), 0);
  EXPECT_TRUE(hasOut("line_1234567.sgd"));
  EXPECT_TRUE(consoleHas("Field File: 1234567  -     0 traces"));
}

TEST_F(SegdDiskTest, SkippedFilesCountInTheNamesOnly) {
  for (int number = 9; number <= 13; ++number) put("f" + std::to_string(number + 10) + ".segd", fileOf(number));
  listFieldFiles("10 - 11\n13\n");
  EXPECT_EQ(copyFiles("in/f20.segd"), 0);
  EXPECT_EQ(outNames(), (Lines{"line_00002.sgd", "line_00003.sgd", "line_00005.sgd"}));
  expectSaid({"Field File:      9  skipped", "   3 field files copied."});
  EXPECT_EQ(logLines().at(0), " ");
  EXPECT_EQ(logLines().at(1).substr(0, 10), "SEG D copy");  // the list was read before

  std::filesystem::remove(folder.path("files.txt"));
  EXPECT_EQ(copyFiles("in/f20.segd"), -1);
  EXPECT_FALSE(consoleHas("SEG D copy started at DATE."));
}

TEST_F(SegdDiskTest, ZeroedTracesKeepTheirHeaders) {
  const FieldFile file{.sets = {{4, 20}}, .extensions = 2, .samples = 12};  // more than the record's 10
  put("a.segd", file);
  listZeroes("2 - 3\n", 5, SEGD_KEY_INT16);
  std::string expected = file.file();
  const std::size_t header = file.header().size();
  const std::size_t trace = 20 + 64 + 48;
  for (const std::size_t i : {1U, 2U}) expected.replace(header + i * trace + 84, 48, std::string(48, '\0'));
  EXPECT_EQ(copyFiles(), 0);
  EXPECT_EQ(out("line_00001.sgd"), expected);

  SgdParams.trcLimByte = 20;
  EXPECT_EQ(copyFiles(), -1);
  expectSaid("  *** The zero list key (byte 20, 2 byte integer) does not lie within the 20 bytes of a trace header.");
}

TEST_F(SegdDiskTest, LengthsComeFromRecordSetsOrExtensions) {
  const FieldFile file{.sets = {{2, 10}, {1, 40}}};
  SgdParams.useScanHdr = true;
  copies(file.file(true));

  // Without them the reading ends up among samples, and that is said.
  SgdParams.useScanHdr = false;
  refuses(file.file(true),
          {"  *** The lengths in the channel set headers would fit a.segd exactly: turn \"Take trace lengths from "
           "the channel set headers\" on.",
           "  *** Error reading input file a.segd - job will abort.",
           "  ** Field file 1 is not complete: " + folder.path("out/line_00001.sgd") + " holds 1 trace of it.",
           "   0 field file copied."});
  EXPECT_TRUE(lineWith("  *** a.segd, byte ")
                  .starts_with("  *** a.segd, byte 189: the header of trace 2 cannot be true; traces may have other "
                               "lengths than the record"));
  EXPECT_EQ(out("line_00001.sgd").size(), file.header().size() + 60);
}

TEST_F(SegdDiskTest, AnOverriddenUnitChangesTheLengths) {
  const std::string bytes = with(FieldFile{.milliseconds = 200}.file(), 25, "\x80\x02");  // 2 units in block 1 itself
  SgdParams.recLenOR = true;
  SgdParams.recLenFactor = 1.0F;
  copies(bytes);
  SgdParams.recLenOR = false;
  refuses(bytes, {});  // 204 ms
}

TEST_F(SegdDiskTest, HeadersLargerThanTheTapeBufferAreReadWhole) {
  FieldFile file = fileOf(1);
  file.sets.assign(99, {0, 20});
  file.sets[98].traces = 3;
  std::string bytes = file.header();
  bytes[29] = bcd(40);  // skew blocks
  bytes[30] = bytes[31] = static_cast<char>(0xFF);
  bytes.replace(32 + 5, 4, std::string("\x05\x00\x01\x2C", 4));  // 1280 extended, 300 external blocks
  bytes += block(32 * std::size_t{40 + 1280 + 300}, 5);
  for (const std::string& each : file.traces()) bytes += each;
  copies(bytes);
  EXPECT_TRUE(consoleHas("Field File:      1  -     3 traces"));
}

/// A trailer is announced, or zeros, or shorter than a trace; anything else are traces that were not read.
TEST_F(SegdDiskTest, WhatFollowsTheLastTraceIsCounted) {
  const std::string file = fileOf(1).file();
  writeFile("in/a.segd", file + std::string(59, 'x'));
  writeFile("in/b.segd", file + "x");
  writeFile("in/c.segd", file + std::string(300000, '\0'));
  writeFile("in/d.segd", with(file, 32 + 13, "\x03") + std::string(96, 'x'));
  EXPECT_EQ(copyFiles(), 0);
  EXPECT_EQ(out("line_00001.sgd"), file);
  expectSaid({"  ** 59 bytes of a.segd behind its last announced trace were not copied.",
              "  ** 1 byte of b.segd behind its last announced trace was not copied.", "   4 field files copied."});
  writeFile("in/d.segd", with(file, 32 + 13, "\x02") + std::string(96, 'x'));
  EXPECT_EQ(copyFiles(), -1);
  expectSaid(
      {"  *** d.segd, byte 217: the trace lengths do not fit the file: 96 bytes follow behind the last of 2 "
       "traces.",
       "   3 field files copied.",
       "  ** Field file 1: " + folder.path("out/line_00004.sgd") +
           " holds all of its 2 announced traces, and not the 96 bytes that follow."});
}

/// Samples that are zero pass for trace headers, in either direction of the mistake.
TEST_F(SegdDiskTest, HalfOfAFileDoesNotStayBehind) {
  for (const bool bySets : {false, true}) {
    SCOPED_TRACE(bySets);
    const FieldFile file{.sets = {{4, bySets ? 20 : 40}}, .milliseconds = bySets ? 40 : 20};
    std::string bytes = file.header();
    for (const std::string& each : file.traces()) bytes += each.substr(0, 20) + std::string(80, '\0');
    SgdParams.useScanHdr = bySets;
    refuses(
        bytes,
        {"  *** a.segd, byte 337: the trace lengths do not fit the file: 160 bytes follow behind the last of 4 traces.",
         "   0 field file copied."});
    EXPECT_FALSE(lineWith(bySets ? "  *** The lengths of the record would fit a.segd exactly: turn"
                                 : "  *** The lengths in the channel set headers would fit a.segd exactly: turn")
                     .empty());
    SgdParams.useScanHdr = !bySets;
    copies(bytes);
  }
}

TEST_F(SegdDiskTest, ChannelSetsThatAreNoNumbersAreWarnedOfWhereTheLengthsFit) {
  const std::string bytes = with(with(fileOf(1).file(), 96 + 2, "\xAB"), 96 + 60 + 3, "\xFA");
  copies(bytes);
  expectSaid(
      "  ** a.segd, byte 97: the scan type (0xAB) or channel set (0x01) of trace 1 is no number; the trace lengths fit "
      "the file, and it is copied.");
  EXPECT_TRUE(lineWith("  ** a.segd, byte 157").empty());  // once for a file
  writeFile(folder.path("in/a.segd"), bytes + std::string(512, '\0'));
  EXPECT_EQ(copyFiles(), 0);
  EXPECT_EQ(out("line_00001.sgd"), bytes);
  refuses(
      bytes.substr(0, bytes.size() - 1),
      {"  *** a.segd, byte 97: the header of trace 1 cannot be true; there may be headers that no count announces."});
}

/// Every length that a file can be cut to: an error with its place, no crash, whole traces only.
TEST_F(SegdDiskTest, CutFilesFailAtTheirPlace) {
  const FieldFile file{.extended = 1, .extensions = 1, .samples = 11};
  const std::string whole = file.file();
  const std::size_t header = file.header().size();
  const std::size_t trace = 20 + 32 + 44;
  for (std::size_t length = 0; length < whole.size(); length += length < header ? 13 : 7) {
    SCOPED_TRACE(length);
    std::filesystem::remove("out/line_00001.sgd");
    refuses(whole.substr(0, length), {"  *** Error reading input file a.segd - job will abort.", "  *** Job Failed.",
                                      "SEG D copy ended at DATE."});
    EXPECT_FALSE(lineWith("  *** a.segd, byte ").empty());
    const std::size_t kept = length < header ? 0 : header + (length - header) / trace * trace;
    EXPECT_EQ(out("line_00001.sgd"), whole.substr(0, kept));
    EXPECT_TRUE(consoleHas("   " + std::to_string(kept) + " bytes copied."));
  }
}

TEST_F(SegdDiskTest, HeadersThatCannotBeTrueAreNamed) {
  const std::string file = fileOf(1).file();
  const struct {
    std::size_t place;
    std::string bytes;
    std::string line;
  } cases[] = {
      {28, "\xFF", "  *** a.segd, byte 29: the general header cannot be true (0xFF is no number of blocks)."},
      {64 + 9, "\x2F",
       "  *** a.segd, byte 74: channel set descriptor 1 cannot be true (0x2F in its number of channels)."},
      {30, "\x99", "  *** a.segd, byte 97: 3168 bytes of extended headers should follow; the file holds 120 more."},
      {2, "\x80\x80",
       "  *** a.segd, byte 3: SEG D format code 8080 is unknown, and no file came before: the size of a sample is not "
       "known."},
      {46, std::string("\x01\x00\x00", 3),
       "  *** a.segd, byte 97: trace 1 should have 131072 bytes of samples; the file holds 100 more."},
      {96 + 9, "\xFF",
       "  *** a.segd, byte 97: the header of trace 1 of 2 announces 255 extensions (8160 bytes); the file holds 100 "
       "more."},
      {96 + 9, '\x01' + std::string(19, '\0') + '\x64',
       "  *** a.segd, byte 97: trace 1 should have 400 bytes of samples; the file holds 68 more; the header of trace 1 "
       "announces 1 extension (32 bytes)."},
      {96 + 60 + 9, '\x01' + std::string(19, '\0') + '\x64',
       "  *** a.segd, byte 157: trace 2 should have 400 bytes of samples; the file holds 8 more; the header of trace 2 "
       "announces 1 extension (32 bytes), that of trace 1 0."},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.line);
    refuses(with(file, each.place, each.bytes), {each.line});
  }
  SgdParams.useScanHdr = true;
  refuses(with(file, 64 + 2, std::string("\x00\x10\x00\x01", 4)),
          {"  *** a.segd, byte 97: the channel set of trace 1 ends before it begins."});
}

TEST_F(SegdDiskTest, AnIntervalOfZeroNeedsCountsInTheTraces) {
  const std::string zero(1, '\0');
  copies(with(FieldFile{.extensions = 1, .samples = 10}.file(), 22, zero));
  EXPECT_FALSE(lineWith("  ** a.segd, byte 23: the sample interval is 0;").empty());
  refuses(with(fileOf(1).file(), 22, zero),
          {"  *** a.segd, byte 97: the length of trace 1 is not known (the sample interval is 0)."});
}

TEST_F(SegdDiskTest, AnUnknownFormatKeepsTheSampleSizeOfTheFileBefore) {
  put("a.segd", fileOf(1));
  writeFile("in/b.segd", with(fileOf(2).file(), 2, "\x80\x80"));
  EXPECT_EQ(copyFiles(), 0);
  EXPECT_EQ(out("line_00002.sgd"), readFile(folder.path("in/b.segd")));
  expectSaid("  ** b.segd: SEG D format code 8080 is unknown; samples are taken as 4 bytes, as in the file before.");
}

// ---- what must not be overwritten -------------------------------------------------------------------------------

TEST_F(SegdDiskTest, InputsAreNeverOverwritten) {
  const FieldFile file = fileOf(1);
  put("a.segd", file);
  put("b.segd", fileOf(2));
  std::filesystem::create_hard_link("in/b.segd", "out/line_00001.sgd");
  EXPECT_EQ(copyFiles(), -1);
  expectSaid("  *** Output file " + folder.path("out/line_00001.sgd") + " is an input of this job and is not written.");
  EXPECT_EQ(readFile("in/b.segd"), fileOf(2).file());
  EXPECT_EQ(readFile("in/a.segd"), file.file());

  // The log, too, by whatever path.
  std::filesystem::remove("out/line_00001.sgd");
  std::filesystem::remove("SegdCopy.txt");
  std::filesystem::create_symlink(folder.path("in/a.segd"), "SegdCopy.txt");
  EXPECT_EQ(copyFiles(), 0);
  EXPECT_EQ(readFile("in/a.segd"), file.file());
  EXPECT_FALSE(SgdParams.useLog);
  EXPECT_EQ(toolkit.errors, Lines{"Error opening file " + folder.path("SegdCopy.txt")});
}

TEST_F(SegdDiskTest, TheSameNumberGivesTheSameNameAndOtherwiseNoFileIsWrittenTwice) {
  put("a.segd", fileOf(5, 1));
  put("b.segd", fileOf(5, 2));
  SgdParams.ffidOption = true;
  EXPECT_EQ(copyFiles(), 0);
  EXPECT_EQ(outNames(), Lines{"line_00005.sgd"});
  EXPECT_EQ(out("line_00005.sgd"), fileOf(5, 2).file());
  EXPECT_TRUE(consoleHas("   2 field files copied."));
  EXPECT_FALSE(lineWith("  ** Output file " + folder.path("out/line_00005.sgd") + " is written again").empty());

  SgdParams.ffidOption = false;
  std::filesystem::create_symlink("line_00001.sgd", "out/line_00002.sgd");
  EXPECT_EQ(copyFiles(), -1);
  EXPECT_EQ(out("line_00001.sgd"), fileOf(5, 1).file());
  expectSaid("  *** Output file " + folder.path("out/line_00002.sgd") +
             " is used by this job already and is not written.");
}

TEST_F(SegdDiskTest, WithoutInputsTheJobFails) {
  put("a.segd", fileOf(1));
  openInputFile("in/a.segd");
  std::filesystem::remove("in/a.segd");
  ASSERT_EQ(mkfifo("in/a.segd", 0600), 0);
  openOutputDirectory();
  EXPECT_EQ(run(), -1);
  EXPECT_TRUE(consoleHas("  ** a.segd is no regular file and is not copied."));
  std::filesystem::remove("in/a.segd");
  EXPECT_TRUE(consoleHas("  *** No valid files found in directory."));
  put("a.s*", fileOf(1));  // an extension is no pattern
  put("a.segd", fileOf(2));
  EXPECT_EQ(copyFiles("in/a.s*"), 0);
  EXPECT_EQ(outNames(), Lines{"line_00001.sgd"});
}

// ---- log, messages, ends ----------------------------------------------------------------------------------------

TEST_F(SegdDiskTest, TheConsoleShowsEveryNthFileAndTheLogAll) {
  for (int number = 1; number <= 5; ++number) put("f" + std::to_string(number) + ".segd", fileOf(number));
  SgdParams.itDecimates = true;
  SgdParams.itsDecimateIntvl = 2;
  EXPECT_EQ(copyFiles("in/f1.segd"), 0);
  EXPECT_EQ(count("Field File:      1  -     2 traces"), 0);
  EXPECT_EQ(count("Field File:      2  -     2 traces"), 1);
  EXPECT_EQ(count("Field File:      3  -     2 traces"), 0);
  EXPECT_EQ(count("Copied file  f3.segd ."), 1);  // one line only is held back
  const Lines log = logLines();
  EXPECT_EQ(
      std::count_if(log.begin(), log.end(), [](const std::string& line) { return line.starts_with("Field File"); }), 5);
  SgdParams.itsDecimateIntvl = 0;
  EXPECT_EQ(copyFiles("in/f1.segd"), 0);
  EXPECT_TRUE(consoleHas("  ** An interval of 0 field files is none: every one is shown."));
  EXPECT_EQ(count("Field File:      3  -     2 traces"), 1);
}

TEST_F(SegdDiskTest, ALogThatFailsIsTurnedOffWithABox) {
  put("a.segd", fileOf(1));
  copyText(SgdParams.logDir, "/dev");
  copyText(SgdParams.logFile, "full");
  EXPECT_EQ(copyFiles(), 0);
  EXPECT_EQ(toolkit.errors, Lines{"Error writing to log file"});
  EXPECT_FALSE(SgdParams.useLog);
  toolkit.errors.clear();
  SgdParams.useLog = true;
  copyText(SgdParams.logDir, folder.path("nowhere"));
  EXPECT_EQ(copyFiles(), 0);
  EXPECT_EQ(toolkit.errors, Lines{"Error opening file " + folder.path("nowhere/full")});
  EXPECT_FALSE(SgdParams.useLog);
}

TEST_F(SegdDiskTest, AnUnwritableDirectoryAndAMissingDialogFailTheJob) {
  put("a.segd", fileOf(1));
  std::filesystem::create_directory("out/line_00001.sgd");
  EXPECT_EQ(copyFiles(), -1);
  expectSaid({"  *** Error opening output file " + folder.path("out/line_00001.sgd") + " - job will abort.",
              "   0 bytes copied."});
  toolkit.failNextDialog(DLG_PROGRESS);
  EXPECT_EQ(copyFiles(), -1);
  EXPECT_EQ(toolkit.errors, Lines{"Error opening dialog"});
  toolkit.scarce = TestToolkit::Scarce::timers;
  EXPECT_EQ(copyFiles(), -1);
  EXPECT_TRUE(consoleHas("  *** There is not enough memory for this job."));
  EXPECT_EQ(toolkit.dialog(DLG_PROGRESS), NULL_WIN);
}

/// As a user does it: the format in the copy dialog, any file of a directory for the output.
TEST_F(SegdDiskTest, RunsFromTheCopyDialogWithTheProgressInFiles) {
  put("a.segd", fileOf(1));
  put("b.segd", fileOf(2));
  writeFile("out/any.sgd", "stays");
  openCopyDialog();
  copyText(SgdParams.logDir, folder.path(""));
  toolkit.select(dialog, CP_FORMAT, 2);
  chooseInputFile(folder.path("in/b.segd"));
  chooseOutputFile(folder.path("out/any.sgd"));
  ASSERT_EQ(status(), "Ready");
  std::string shown;
  toolkit.onPump = [&](long) {
    toolkit.advance(800);
    shown = toolkit.title(toolkit.dialog(DLG_PROGRESS));
  };
  start();
  toolkit.onPump = nullptr;
  EXPECT_EQ(status(), "Complete");
  EXPECT_EQ(shown, "SEG D Copy Progress - 100 %");
  EXPECT_EQ(outNames(), (Lines{"any.sgd", "any_00001.sgd", "any_00002.sgd"}));
  EXPECT_EQ(out("any.sgd"), "stays");
  EXPECT_EQ(units[0].fp, nullptr);
  EXPECT_EQ(units[0].state, 0);
}

}  // namespace
