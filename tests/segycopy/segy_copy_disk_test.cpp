// The SEG Y copy between disk files: what is kept, in which order, in which files, and what the console says.

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "quarlo/tapelib/frame/jobframe.h"
#include "tests/segycopy/segy_fixture.h"

namespace {

using Serials = std::vector<int>;

constexpr std::size_t TRACE = 240 + 4 * SAMPLES;

/// A trace of the usual length.
std::vector<std::string> numbered(int first, int last, int step = 1, int samples = SAMPLES) {
  std::vector<std::string> traces;
  for (int serial = first; serial <= last; serial += step)
    traces.push_back(segyTrace({serial, 1, serial, serial % 3}, samples, serial));
  return traces;
}

class SegyDiskTest : public SegyTest {
 protected:
  void makeInput(const std::vector<std::string>& traces, const std::string& name = "in.sgy") {
    writeFile(folder.path(name), segyFile(traces, SAMPLES));
  }
  Serials serials(const std::string& name = "out.sgy") { return serialsOf(output(name), TRACE); }
  void expectNoTemporaryFiles() {
    EXPECT_FALSE(exists("Sort.tmp"));
    EXPECT_FALSE(exists("SegyCopy.idx"));
  }
};

TEST_F(SegyDiskTest, CopiesByteForByteAndDropsAPartialTrace) {
  const std::string whole = segyFile(numbered(1, 4), SAMPLES);
  writeFile("in.sgy", whole + std::string(TRACE - 1, 'x'));
  SgyParams.reportFFIDs = true;
  EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
  EXPECT_EQ(output(), whole);
  EXPECT_EQ(consoleWithoutDates(),
            (Lines{" ", "Copy started at DATE.", "  Field File - 1", "  Field File - 2", "  Field File - 3",
                   "  Field File - 4", "  ** The last 259 bytes of \"in.sgy\" are no whole trace and are not copied.",
                   " ", "4 traces read.", "4 traces written.", " ", "1040 bytes read.", "1040 bytes written.", " ",
                   "SEG Y copy ended at DATE.", " "}));
}

TEST_F(SegyDiskTest, HandlesTheLongestTraceWhateverTheTapeBuffer) {
  const std::string in = segyText() + segyBinary(65535) + segyTrace({}, 65535, 1) + segyTrace({}, 65535, 2);
  writeFile("in.sgy", in);
  ASSERT_GT(240U + 4 * 65535U, units->ioBufLen);
  EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
  EXPECT_EQ(output(), in);
  // Two-byte samples by format 3, four-byte ones by every other code.
  writeFile("two.sgy", segyText() + segyBinary(40000, 3) + segyTrace({}, 40000, 1, 2));
  EXPECT_EQ(copyFile("two.sgy"), JOB_OK);
  EXPECT_TRUE(consoleHas("80240 bytes read."));
}

TEST_F(SegyDiskTest, FilesThatCannotBeCopiedGetALineAndNoBeginningOfAnOutput) {
  const std::string headers = segyText() + segyBinary(SAMPLES);
  const struct {
    const char* name;
    std::string bytes;
    const char* line;
  } cases[] = {
      {"empty", "", "  *** Error reading EBCDIC header from input file."},
      {"cut in the text", segyText().substr(0, 3199), "  *** Error reading EBCDIC header from input file."},
      {"text only", segyText(), "  *** Error reading binary header from input file."},
      {"cut in the binary header", headers.substr(0, 3599), "  *** Error reading binary header from input file."},
      {"no samples", segyText() + segyBinary(0) + trace(1),
       "  *** The binary header of \"in.sgy\" announces traces of 0 samples."},
      {"absurd count", segyText() + segyBinary(-2) + trace(1),
       "  *** The binary header of \"in.sgy\" announces 65534 samples a trace (262376 bytes); the file holds 260 bytes "
       "of data."},
  };
  for (const auto& damage : cases) {
    SCOPED_TRACE(damage.name);
    writeFile("in.sgy", damage.bytes);
    EXPECT_EQ(copyFile("in.sgy"), JOB_FAILED);
    expectSaid({damage.line, "  *** Job Failed.", "0 traces written."});
    EXPECT_EQ(output(), "");
  }
}

TEST_F(SegyDiskTest, SaysWhatMayBeMistaken) {
  std::string second = segyBinary(SAMPLES, 8);
  second[300] = 2;
  putBig(&second, 304, 3, 2);
  std::string first = second;
  first[300] = 0;  // before revision 1 nobody says what stands there
  for (const auto& [binary, words] : {std::pair{second, "samples of 1 byte, revision 2, extended text headers (3)"},
                                      {first, "samples of 1 byte"},
                                      {segyBinary(SAMPLES, 0x0100), "little-endian"}}) {
    writeFile("in.sgy", segyText() + binary + trace(1));
    EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
    expectSaid(std::string("  ** The binary header says: ") + words +
               ". The file is read as big-endian, with 3600 bytes of headers and samples of 4 bytes.");
  }
}

TEST_F(SegyDiskTest, KeepsWhatAListSays) {
  makeInput(numbered(1, 20));
  limitByList("3\n5\n21\n18\n");
  EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
  EXPECT_EQ(serials(), (Serials{3, 5, 18}));
  EXPECT_EQ(readFile(folder.path("RangeLimitLogFile.txt")), "3.0000\n5.0000\n18.0000\n");
  expectSaid(
      {" \nInitializing inclusion list...\n \n \n~~~~~  Input data will be range limited  ~~~~~\n \n"
       "    - Primary Range Limit Key -\n  Header location   = byte 193\n  Data type         = 4 byte integer\n \n \n"
       "  Range limit inclusion list file:\n  " +
       folder.path("list.txt") +
       "\n\n"
       "  4 inclusion points in the inclusion list.\n \n \n20 traces read.\n3 traces written."});
  EXPECT_NE(consoleText().find("\nPrimary header value range in output    = "), std::string::npos);

  SgyParams.listParams.listType = LS_EXCLUSION;
  EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
  EXPECT_EQ(serials().size(), 17U);
}

TEST_F(SegyDiskTest, KeepsWhatAPolygonSaysAndReportsIt) {
  makeInput(numbered(1, 20));
  limitByPolygonFile("3\n4 -1\n9.5 -1\n9.5 5\n");
  SgyParams.polyParams.polyType = LS_EXCLUSION;
  EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
  EXPECT_EQ(serials(), (Serials{1, 2, 3, 4, 5, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20}));
  expectSaid({"  Range limit exclusion polygon control points:", "  2.  9.50                -1.00",
              "    - Secondary Range Limit Key -"});
  EXPECT_EQ(count("  Header location   = byte 21"), 1);
}

TEST_F(SegyDiskTest, KeysOutsideTheHeaderAreRefused) {
  makeInput(numbered(1, 3));
  limitByList("1\n");
  SgyParams.listParams.primByte = 238;
  EXPECT_EQ(copyFile("in.sgy"), JOB_FAILED);
  expectSaid(
      "  *** The primary range limit key (byte 238, 4 byte integer) does not lie within the 240 bytes of a trace "
      "header.");
  SgyParams.listParams.primByte = 237;
  EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
}

// ---- sorting ----------------------------------------------------------------------------------------------------

TEST_F(SegyDiskTest, SortsByThreeKeysInBothDirectionsAndCountsNoTracesWritten) {
  std::vector<std::string> traces;
  std::vector<std::pair<int, int>> order;
  for (int i = 0; i < 300; ++i) {
    const int serial = i * 7 % 300;
    traces.push_back(trace(serial, {(serial * 13) % 4, (serial * 5) % 6, serial, 0}));
    order.emplace_back(((serial * 13) % 4) * 100000 + ((serial * 5) % 6) * 1000 + serial, serial);
  }
  std::sort(order.begin(), order.end());
  Serials sorted;
  for (const auto& entry : order) sorted.push_back(entry.second);
  makeInput(traces);
  sortTraces();
  SgyParams.useTertiary = true;
  EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
  EXPECT_EQ(serials(), sorted);
  EXPECT_EQ(output().substr(0, 3600), segyText() + segyBinary(SAMPLES));
  expectNoTemporaryFiles();
  EXPECT_TRUE(consoleText().ends_with(
      "    - Tertiary Sort Key -\n  Header location   = byte 1\n  Data type         = 4 byte integer\n \n \n"
      "Starting Input Phase...\n \n \nStarting Sort Phase...\n \nStarting Output Phase...\n \n \n"
      "300 traces read.\n0 traces written.\n \n78000 bytes read.\n78000 bytes written.\n \n"
      "SEG Y copy ended at DATE.\n \n"))
      << consoleText();

  SgyParams.reverseSort = true;
  EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
  std::reverse(sorted.begin(), sorted.end());
  EXPECT_EQ(serials(), sorted);
}

TEST_F(SegyDiskTest, TheKeptTemporaryFileHoldsHeadersAndKeptTraces) {
  const auto traces = numbered(1, 6);
  makeInput(traces);
  limitByList("2\n4\n");
  sortTraces();
  SgyParams.keepSortFile = true;
  EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
  EXPECT_EQ(readFile(folder.path("Sort.tmp")), segyFile({traces[1], traces[3]}, SAMPLES));
  EXPECT_FALSE(exists("SegyCopy.idx"));
}

TEST_F(SegyDiskTest, TemporaryFilesBelongToOneJobAtATime) {
  makeInput(numbered(1, 6));
  sortTraces();
  std::filesystem::create_directory("links");
  std::filesystem::create_symlink("../Sort.tmp", "links/other.tmp");
  for (const std::string name : {"Sort.tmp", "SegyCopy.idx"}) {
    SCOPED_TRACE(name);
    const bool byLink = name == "Sort.tmp";
    copyText(SgyParams.sortDir, folder.path(byLink ? "links" : ""));
    copyText(SgyParams.sortFile, "other.tmp");
    writeFile(name, "another program's");
    const FileHandle theirs = openFile(name.c_str(), "r+");
    ASSERT_EQ(flock(fileno(theirs.get()), LOCK_EX), 0);
    EXPECT_EQ(copyFile("in.sgy"), JOB_FAILED);
    expectSaid("  *** " + folder.path(byLink ? "links/other.tmp" : name) +
               " is in use by another job: choose a sort file in another directory.");
    EXPECT_EQ(readFile(name), "another program's");
    EXPECT_FALSE(exists("other.tmp"));
    EXPECT_FALSE(exists("links/SegyCopy.idx"));
    EXPECT_FALSE(openDiskUnit(&units[1], specOf(name), "w+b"));
    expectSaid("  *** " + folder.path(name) + " is a temporary file of a job that runs: choose another output.");
    EXPECT_EQ(readFile(name), "another program's");
    std::filesystem::remove(name);
  }
}

/// What a killed program left is written over; what is anything else is asked about and stays if so wished.
TEST_F(SegyDiskTest, OnlyLeftoversAreWrittenOverWithoutAQuestion) {
  makeInput(numbered(1, 6));
  sortTraces();
  std::string left[2];
  for (const long at : {1L, 2L, 5L, 9L}) {
    SCOPED_TRACE(at);
    pumpsOfJob = 0;
    toolkit.onPump = [&](long) {
      if (++pumpsOfJob == at) {
        left[0] = readFile("Sort.tmp");
        left[1] = readFile("SegyCopy.idx");
      }
    };
    EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
    toolkit.onPump = nullptr;
    for (const std::string name : {"", "Sort.tmp", "SegyCopy.idx"}) {
      const std::string mine = name.empty() ? "" : "a file of mine, longer than the lengths of both headers";
      for (const ASK_RESPONSE answer : {RESP_2, RESP_DEFAULT}) {
        writeFile("Sort.tmp", left[0]);
        writeFile("SegyCopy.idx", left[1]);
        if (!mine.empty()) {
          writeFile(name, mine);
          toolkit.answerAsk(answer);
        }
        const bool stops = !mine.empty() && answer == RESP_2;
        EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
        EXPECT_EQ(count("  *** Copy aborted by user at DATE."), stops ? 1 : 0);
        EXPECT_EQ(serials(), stops ? Serials{} : (Serials{1, 2, 3, 4, 5, 6}));
        EXPECT_EQ(name.empty() ? "" : readFile(name), stops ? mine : "");
      }
    }
  }
  EXPECT_EQ(toolkit.asks.size(), 4U * 2 * 2);
  expectNoTemporaryFiles();

  // A file that was kept, of more traces or of the same, beside what is left of another sort.
  for (const std::string& kept : {left[0] + std::string(140000, '\0'), left[0]}) {
    writeFile("Sort.tmp", kept);
    writeFile("SegyCopy.idx", left[1]);
    if (kept == left[0]) {
      std::filesystem::last_write_time("Sort.tmp",
                                       std::filesystem::file_time_type::clock::now() - std::chrono::minutes(2));
    }
    toolkit.answerAsk(RESP_2);
    EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
    EXPECT_TRUE(consoleHas("  ** " + folder.path("Sort.tmp") + " stays as it is: choose another sort file."));
    EXPECT_EQ(readFile("Sort.tmp"), kept);
  }
}

TEST_F(SegyDiskTest, RefusesToSortSeveralInputsThatAreNotJoined) {
  makeInput(numbered(1, 3));
  sortTraces();
  SgyParams.multipleIn = true;
  EXPECT_EQ(copyFile("in.sgy"), JOB_FAILED);
  EXPECT_TRUE(consoleHas("  *** Several inputs can be sorted only when they are joined into one output."));
  expectNoTemporaryFiles();
}

TEST_F(SegyDiskTest, ATemporaryFileThatVanishesOrCannotBeMadeEndsTheJobInOrder) {
  makeInput(numbered(1, 3));
  sortTraces();
  toolkit.onPump = [this](long) { std::filesystem::remove(folder.path("Sort.tmp")); };
  EXPECT_EQ(copyFile("in.sgy"), JOB_FAILED);
  expectSaid({"  *** Error opening temporary file " + folder.path("Sort.tmp") + ".", "3 traces read."});
  expectNoTemporaryFiles();
  toolkit.onPump = [this](long) {
    writeFile("new", "somebody else's");
    std::filesystem::rename(folder.path("new"), folder.path("Sort.tmp"));
  };
  EXPECT_EQ(copyFile("in.sgy"), JOB_FAILED);
  EXPECT_EQ(readFile(folder.path("Sort.tmp")), "somebody else's");
  std::filesystem::remove(folder.path("Sort.tmp"));
  toolkit.onPump = nullptr;

  std::filesystem::create_directory(folder.path("SegyCopy.idx"));
  EXPECT_EQ(copyFile("in.sgy"), JOB_FAILED);
  EXPECT_TRUE(consoleHas("  *** Error creating SegyCopy.idx file."));
  EXPECT_FALSE(exists("Sort.tmp"));
  EXPECT_TRUE(exists("SegyCopy.idx"));  // not this job's
  copyText(SgyParams.sortDir, folder.path("none"));
  EXPECT_EQ(copyFile("in.sgy"), JOB_FAILED);
  EXPECT_TRUE(consoleHas("  *** Error creating temporary file " + folder.path("none/Sort.tmp") + "."));
}

// ---- several inputs and outputs ---------------------------------------------------------------------------------

class SegyManyTest : public SegyDiskTest {
 protected:
  void SetUp() override {
    std::filesystem::create_directory("in");
    makeInput(numbered(1, 3), "in/a.sgy");
    makeInput(numbered(4, 5), "in/b.sgy");
    makeInput(numbered(6, 9), "in/c.sgy");
    writeFile("in/d.txt", "no SEG Y");
    SgyParams.multipleIn = true;
  }
};

TEST_F(SegyManyTest, EachInputGetsItsOwnOutput) {
  writeFile("in/b.sgy", segyText('b') + segyBinary(7, 3) + segyTrace({}, 7, 44, 2));
  SgyParams.multipleOut = true;  // counts as off
  SgyParams.bytesPerPart = 1;
  EXPECT_EQ(copyFile("in/a.sgy", "line.old.sgy"), JOB_OK);
  EXPECT_EQ(serials("line.old.sgy"), (Serials{1, 2, 3}));
  EXPECT_EQ(output("line001.sgy"), readFile(folder.path("in/b.sgy")));
  EXPECT_EQ(serials("line002.sgy"), (Serials{6, 7, 8, 9}));
  EXPECT_EQ(consoleWithoutDates(),
            (Lines{" ", "Copy started at DATE.", "Input file 1: a.sgy", "Input file 2: b.sgy",
                   "Output file 2: line001.sgy", "Input file 3: c.sgy", "Output file 3: line002.sgy", "", " ",
                   "3 segy files processed.", " ", "8 traces read.", "8 traces written.", " ", "2074 bytes read.",
                   "2074 bytes written.", " ", "SEG Y copy ended at DATE.", " "}));
  EXPECT_EQ(std::filesystem::current_path(), std::filesystem::canonical(folder.path("")));
}

TEST_F(SegyManyTest, VolumesThatExistAreAskedAboutOnceBeforeAnythingIsWritten) {
  for (const char* name : {"line001.sgy", "line002.sgy", "line003.sgy", "line1.sgy", "line0004.sgy"})
    writeFile(folder.path(name), "old");
  toolkit.answerAsk(RESP_2);
  EXPECT_EQ(copyFile("in/a.sgy", "line.sgy"), JOB_OK);
  expectSaid({"  ** line001.sgy stays as it is: choose another output.", "  *** Copy aborted by user at DATE."});
  EXPECT_EQ(output("line.sgy") + output("line001.sgy"), "old");
  SgyParams.multipleIn = false;
  SgyParams.multipleOut = true;
  SgyParams.bytesPerPart = 1;
  toolkit.answerAsk(RESP_DEFAULT);
  EXPECT_EQ(copyFile("in/c.sgy", "line.sgy"), JOB_OK);
  EXPECT_EQ(serials("line003.sgy"), Serials{9});
  EXPECT_EQ(output("line1.sgy") + output("line0004.sgy"), "oldold");
  EXPECT_EQ(toolkit.asks,
            (Lines{"2 further volumes of this output may be written and exist already:\nline001.sgy to line002.sgy\n"
                   "Overwrite?",
                   "3 further volumes of this output may be written and exist already:\nline001.sgy to line003.sgy\n"
                   "Overwrite?"}));
}

TEST_F(SegyManyTest, JoinsInputsWithTheFirstOnesTraceLengthAndWarns) {
  const std::string odd = segyTrace({}, SAMPLES, 50) + segyTrace({}, SAMPLES, 51);
  writeFile("in/b.sgy", segyText() + segyBinary(0, 3, 500) + odd);
  SgyParams.concatInputs = true;
  sortTraces();
  SgyParams.sortPrimByte = 1;
  EXPECT_EQ(copyFile("in/a.sgy", "in/z.sgy"), JOB_OK);  // an output in the input directory is no input
  EXPECT_EQ(serials("in/z.sgy"), (Serials{1, 2, 3, 6, 7, 8, 9, 50, 51}));
  expectCounts({{"  ** Sample interval (500) does not match previous input (2000).", 1},
                {"  ** Sample interval (2000) does not match previous input (500).", 1},
                {"  ** Samples per trace (0) do not match previous input (5).", 1},
                {"  ** Samples format code (3) does match previous input (1).", 1}});
  EXPECT_TRUE(consoleHas("3 segy files processed."));
}

TEST_F(SegyManyTest, NeverWritesOverAnInput) {
  // The second output would be line001.sgy, which is an input by another name.
  std::filesystem::create_hard_link(folder.path("in/c.sgy"), folder.path("line001.sgy"));
  const std::string before = readFile(folder.path("in/c.sgy"));
  EXPECT_EQ(copyFile("in/a.sgy", "line.sgy"), JOB_FAILED);
  EXPECT_TRUE(consoleHas("  *** Output file line001.sgy is an input of this job and is not written."));
  EXPECT_EQ(readFile(folder.path("in/c.sgy")), before);
  EXPECT_TRUE(consoleHas("3 traces written."));

  SgyParams.multipleIn = false;
  sortTraces();
  std::filesystem::create_symlink(folder.path("in/a.sgy"), folder.path("Sort.tmp"));
  EXPECT_EQ(copyFile("in/a.sgy"), JOB_FAILED);
  expectSaid("  *** " + folder.path("Sort.tmp") + " is used by this job already and cannot be a temporary file.");
  EXPECT_EQ(serials("in/a.sgy"), (Serials{1, 2, 3}));
  SgyParams.sort = false;
  limitByList("1\n");
  std::filesystem::rename(folder.path("list.txt"), folder.path("RangeLimitLogFile.txt"));
  copyText(SgyParams.listParams.file, "RangeLimitLogFile.txt");
  EXPECT_EQ(copyFile("in/a.sgy"), JOB_FAILED);
  expectSaid("  *** " + folder.path("RangeLimitLogFile.txt") +
             " is read by this job and would be emptied as its log: give the file another name.");
  EXPECT_EQ(output("RangeLimitLogFile.txt"), "1\n");
  std::filesystem::remove(folder.path("RangeLimitLogFile.txt"));
  limitByList("1\n");
  std::filesystem::create_symlink(folder.path("in/a.sgy"), folder.path("RangeLimitLogFile.txt"));
  EXPECT_EQ(copyFile("in/a.sgy"), JOB_FAILED);
  EXPECT_EQ(serials("in/a.sgy"), (Serials{1, 2, 3}));
}

TEST_F(SegyManyTest, AnOutputThatWasThereBeforeIsAnInputAndStays) {
  const std::string before = readFile(folder.path("in/b.sgy"));
  openInputFile("in/a.sgy");
  ASSERT_TRUE(openDiskUnit(&units[1], specOf("in/b.sgy"), "r+b"));
  EXPECT_EQ(run(), JOB_FAILED);
  EXPECT_TRUE(consoleHas("  *** Output file b.sgy is an input of this job and is not written."));
  EXPECT_EQ(readFile(folder.path("in/b.sgy")), before);

  // Elsewhere it is written over, but not by a job that cannot read its input.
  writeFile("old.sgy", std::string(100000, 'x'));
  writeFile("short.sgy", "no SEG Y");
  SgyParams.multipleIn = false;
  for (const char* input : {"short.sgy", "in/a.sgy"}) {
    openInputFile(input);
    ASSERT_TRUE(openDiskUnit(&units[1], specOf("old.sgy"), "r+b"));
    EXPECT_EQ(run(), input == std::string("short.sgy") ? JOB_FAILED : JOB_OK);
    EXPECT_EQ(output("old.sgy"), input == std::string("short.sgy") ? std::string(100000, 'x') : output("in/a.sgy"));
  }
}

/// A pipe that nobody writes to would hold whoever opens it.
void makePipe(const std::string& path) { ASSERT_EQ(mkfifo(path.c_str(), 0600), 0); }

TEST_F(SegyManyTest, NothingToCopyOrAFileThatCannotBeOpened) {
  makePipe(folder.path("pipe"));
  std::filesystem::create_symlink("../pipe", folder.path("in/a0.sgy"));
  std::filesystem::create_symlink("nothing", folder.path("in/dev.sgy"));
  std::filesystem::create_directory(folder.path("in/old.sgy"));
  openOutputFile("line.sgy");
  EXPECT_FALSE(openDiskUnit(&units[0], specOf("pipe"), "rb"));
  units[0].type = UT_DISK;
  units[0].fs = specOf("in/a.sgy");
  EXPECT_EQ(run(), JOB_OK);
  EXPECT_TRUE(consoleHas("3 segy files processed."));
  for (const char* name : {"a0.sgy", "dev.sgy", "old.sgy"})
    EXPECT_EQ(count("  ** " + std::string(name) + " is no regular file and is not copied."), 1);
  toolkit.onPump = [&](long) { std::filesystem::remove(folder.path("in/b.sgy")); };
  EXPECT_EQ(copyFile("in/a.sgy"), JOB_FAILED);
  toolkit.onPump = nullptr;
  expectSaid({"***  Error opening file b.sgy", "1 segy files processed."});
  std::filesystem::create_directory("none");
  writeFile("none/x.segy", "");
  EXPECT_EQ(copyFile("none/x.segy"), JOB_FAILED);
  EXPECT_TRUE(consoleHas("  *** No valid files found in directory."));
}

TEST_F(SegyDiskTest, SplitsAtTheChangeOfRecordThatFollowsAFullVolume) {
  std::vector<std::string> traces;
  for (int serial = 0; serial < 12; ++serial) traces.push_back(trace(serial, {1 + serial / 3, 1, 0, 0}));
  makeInput(traces);
  SgyParams.multipleOut = true;
  SgyParams.bytesPerPart = 3600 + 4 * TRACE;
  EXPECT_EQ(copyFile("in.sgy", "line.sgy"), JOB_OK);
  EXPECT_EQ(serials("line.sgy"), (Serials{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(serials("line001.sgy"), (Serials{6, 7, 8, 9, 10, 11}));
  EXPECT_EQ(output("line001.sgy").substr(0, 3600), segyText() + segyBinary(SAMPLES));
  expectSaid(
      " \nFirst record =  1.0\nLast record  =  2.0\n \nOutput file 1 is full with:\n     6 traces\n     5160 bytes\n "
      "\nOutput file 2: line001.sgy\nContinuing output on file 2\n \nFirst record =  3.0");
}

TEST_F(SegyDiskTest, ARecordThatNeverChangesWarnsOnceAndOneOfZeroIsNoRecord) {
  std::vector<std::string> traces(6000, trace(1, {4, 1, 0, 0}));
  traces.push_back(trace(2, {0, 1, 0, 0}));
  traces.push_back(trace(3, {5, 1, 0, 0}));
  makeInput(traces);
  SgyParams.multipleOut = true;
  SgyParams.bytesPerPart = 1e12;
  EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
  EXPECT_EQ(count(" ** Warning: record has not changed after 5000 traces."), 1);
  expectCounts({{"             Disk file may exceed maximum specified output.", 1},
                {"First record =  4.0", 1},
                {"First record =  5.0", 1}});
}

TEST_F(SegyDiskTest, AVolumeThatCannotBeOpenedNamesTheTraceInHand) {
  makeInput(numbered(1, 3));
  std::filesystem::create_directory("line001.sgy");
  SgyParams.multipleOut = true;
  SgyParams.bytesPerPart = 1;
  EXPECT_EQ(copyFile("in.sgy", "line.sgy"), JOB_FAILED);
  expectSaid({"***  Error opening file line001.sgy", "  *** Trace 2 and what follows it were not written.",
              "1 traces written."});
  EXPECT_EQ(serials("line.sgy"), (Serials{1}));
}

// ---- stopping and full disks ------------------------------------------------------------------------------------

TEST_F(SegyDiskTest, StopsInEachPhaseWithATrueSummaryAndNoTemporaryFiles) {
  makeInput(numbered(1, 100));
  sortTraces();
  for (const long at : {10L, 110L}) {
    SCOPED_TRACE(at);
    pumpsOfJob = 0;
    toolkit.onPump = [this, at](long) {
      if (++pumpsOfJob == at) toolkit.press(toolkit.dialog(DLG_PROGRESS), PROG_STOP);
    };
    EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
    EXPECT_EQ(count("  *** Copy aborted by user at DATE."), 1);
    expectNoTemporaryFiles();
    // The 101st step finds the end of the input; the 102nd is the first of the output phase.
    const std::size_t written = at < 100 ? 0 : static_cast<std::size_t>(at) - 102;
    EXPECT_EQ(serials().size(), written);
    EXPECT_TRUE(consoleHas(std::to_string(written * TRACE) + " bytes written."));
    EXPECT_EQ(toolkit.dialog(DLG_PROGRESS), NULL_WIN);
  }
  toolkit.onPump = nullptr;
  toolkit.failNextDialog(DLG_PROGRESS);
  EXPECT_EQ(copyFile("in.sgy"), JOB_NO_DIALOG);
  expectNoTemporaryFiles();
  EXPECT_EQ(toolkit.errors, std::vector<std::string>{"Error opening dialog"});
}

TEST_F(SegyDiskTest, AFullDiskLeavesWholeTracesAndATrueCount) {
  for (const int samples : {SAMPLES, 1000}) {
    writeFile("in.sgy", segyFile(numbered(1, 3000, 1, samples), samples));
    const std::size_t bytes = 240 + 4 * static_cast<std::size_t>(samples);
    for (const std::size_t kept : {10, 2000, 2999}) {
      openInputFile("in.sgy");
      openOutputFile("out.sgy");
      int result = JOB_OK;
      {
        const FileLimit limit(3600 + kept * bytes + 100);
        result = run();
      }
      EXPECT_EQ(result, JOB_FAILED);
      EXPECT_EQ(output().size(), 3600 + kept * bytes);
      EXPECT_EQ(count("  *** Error writing to disk file \"out.sgy\": File too large."), 1);
      EXPECT_EQ(count("  *** Error writing trace " + std::to_string(kept + 1) + " to output device."), 1);
      expectSaid({std::to_string(kept) + " traces written.", std::to_string(kept * bytes) + " bytes written."});
    }
  }
}

// More than the copies read or write at once, with gaps between what goes on.
TEST_F(SegyDiskTest, LongTracesGoThroughWhole) {
  constexpr int kLong = 1000;
  writeFile("in.sgy", segyFile(numbered(1, 900, 1, kLong), kLong));
  std::vector<std::string> odd = numbered(1, 900, 2, kLong);
  std::string list;
  for (int serial = 1; serial <= 900; serial += 2) list += std::to_string(serial) + "\n";
  limitByList(list);
  EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
  EXPECT_TRUE(output() == segyFile(odd, kLong));
  sortTraces();
  SgyParams.reverseSort = true;
  EXPECT_EQ(copyFile("in.sgy"), JOB_OK);
  std::reverse(odd.begin(), odd.end());
  EXPECT_TRUE(output() == segyFile(odd, kLong));
}

TEST_F(SegyDiskTest, AFullTemporaryDirectoryFailsTheJobAndIsLeftClean) {
  makeInput(numbered(1, 3000));
  sortTraces();
  openInputFile("in.sgy");
  openOutputFile("out.sgy");
  int result = JOB_OK;
  {
    const FileLimit limit(400000);
    result = run();
  }
  EXPECT_EQ(result, JOB_FAILED);
  EXPECT_EQ(
      count("  *** Error writing sort trace " + std::to_string((400000 - 3600) / TRACE + 1) + " to temporary file"), 1);
  EXPECT_TRUE(consoleHas("  *** Job Failed."));
  EXPECT_EQ(output(), "");
  expectNoTemporaryFiles();
}

}  // namespace
