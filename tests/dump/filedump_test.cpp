// The file dump, driven as a user would.
#include "quarlo/dump/fdmp_dlg.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include "quarlo/common/dump_win.h"
#include "quarlo/common/windows.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/jobstate.h"
#include "tests/support/job_fixture.h"

namespace {

class FileDumpTest : public JobTest {
 protected:
  void SetUp() override {
    JobTest::open(DLG_FILE_DUMP, FileDumpDlg_eh);
    window = toolkit.windowTitled("File Dump Window");
  }

  void open(const std::string& name) { chooseFile(FD_OPEN, folder.path(name)); }
  void openBytes(const std::string& bytes) {
    writeFile("in.bin", bytes);
    open("in.bin");
    forgetConsole();
  }
  std::string typed(int control, const std::string& text) { return toolkit.typed(dialog, control, text); }
  void goTo(const std::string& byte) {
    typed(FD_GO_TO_BYTE, byte);
    toolkit.press(dialog, FD_MOVE_TO_BYTE);
  }
  std::string position() { return toolkit.text(dialog, FD_CURRENT_BYTE); }
  /// Whether Read, Move forward and Rewind, which rest at the end and after an error, are enabled.
  std::string forwardControls() {
    std::string all;
    for (const int control : {FD_READ, FD_MOVE_FORWARD, FD_REWIND}) all += toolkit.enabled(dialog, control) ? '1' : '0';
    return all;
  }
  Lines shown() { return toolkit.lines(window); }

  WINDOW window = NULL_WIN;
};

TEST_F(FileDumpTest, StartsWithoutAFile) {
  EXPECT_EQ(toolkit.text(dialog, FD_FILE), "No file selected");
  EXPECT_EQ(position(), "");
  EXPECT_EQ(gFAnlsWindowUp, 1);
  for (const int control : {FD_READ, FD_MOVE_BACK, FD_MOVE_FORWARD, FD_REWIND, FD_MOVE_TO_BYTE, FD_READ_BYTES,
                            FD_SEEK_BYTES, FD_GO_TO_BYTE, FD_REPORTS, FD_START_REPORT})
    EXPECT_FALSE(toolkit.enabled(dialog, control)) << control;
  EXPECT_EQ(toolkit.rows(dialog, FD_REPORTS), (Lines{"Trace Kills Report", "A/D Converter Test", "Crossfeed Test",
                                                     "THD Test", "EIN Test", "DC Offset Test", "Dynamic Range Test",
                                                     "Impulse Resp. Test", "Gain Accuracy Test", "Gain Step Test"}));
  toolkit.press(dialog, FD_CLOSE);
  EXPECT_EQ(gFAnlsWindowUp, 0);
  EXPECT_FALSE(xvt_vobj_is_valid(window));
}

TEST_F(FileDumpTest, ReadsPieceAfterPiece) {
  writeFile("in.bin", std::string(40, 'A') + "tail");
  open("in.bin");
  EXPECT_EQ(toolkit.fileRequests.back().title, "Open Input Disk File");
  EXPECT_EQ(toolkit.text(dialog, FD_FILE), folder.path("in.bin"));
  EXPECT_EQ(position(), "0");
  typed(FD_READ_BYTES, "40");
  toolkit.press(dialog, FD_READ);
  EXPECT_TRUE(xvt_vobj_is_visible(window));
  EXPECT_EQ(shown(), (Lines{"00000  41414141 41414141 41414141 41414141 41414141 41414141 41414141 41414141",
                            "00032  41414141 41414141", " "}));
  EXPECT_EQ(position(), "40");
  toolkit.select(dialog, FD_FORMAT, "ASCII");
  toolkit.press(dialog, FD_READ);
  EXPECT_EQ(shown(), (Lines{"00000 tail", " "}));  // offsets begin anew with each piece
  EXPECT_EQ(position(), "EOF");
  EXPECT_EQ(forwardControls(), "000");
  EXPECT_EQ(consoleWithoutDates(), (Lines{"Opened file in.bin.", "Read 40 bytes", "Read 4 bytes"}));
  EXPECT_FALSE(std::filesystem::exists("tdump.txt"));
}

TEST_F(FileDumpTest, IntegersUseTheWholePiece) {
  openBytes(std::string("\x00\x01\xff\xfe", 4));
  toolkit.select(dialog, FD_FORMAT, "Short Integer");
  toolkit.press(dialog, FD_READ);
  EXPECT_EQ(shown(), (Lines{"00000 000001 0000-2 ", " "}));
  goTo("0");
  toolkit.select(dialog, FD_FORMAT, "Long Integer");
  toolkit.press(dialog, FD_UNSIGNED);
  toolkit.press(dialog, FD_LITTLE_ENDIAN);
  toolkit.press(dialog, FD_READ);
  EXPECT_EQ(shown(), (Lines{"00000 4278124800 ", " "}));
}

TEST_F(FileDumpTest, MovesToTheByteAndSaysSo) {
  openBytes(std::string(1000, 'x'));
  typed(FD_SEEK_BYTES, "-300");
  EXPECT_EQ(toolkit.text(dialog, FD_SEEK_BYTES), "300");
  toolkit.press(dialog, FD_MOVE_FORWARD);
  EXPECT_EQ(position(), "300");
  goTo("700");
  EXPECT_EQ(position(), "700");
  toolkit.press(dialog, FD_MOVE_BACK);
  EXPECT_EQ(position(), "400");
  toolkit.press(dialog, FD_REWIND);
  EXPECT_EQ(position(), "0");
  EXPECT_EQ(consoleWithoutDates(),
            (Lines{"Moved forward 300 bytes.", "Moved to byte 700.", "Moved back 300 bytes.", "Rewound file."}));
}

TEST_F(FileDumpTest, TheEndAndErrorsRestWhatLeadsForward) {
  openBytes(std::string(1000, 'x'));
  EXPECT_EQ(typed(FD_GO_TO_BYTE, "5000"), "1000");
  toolkit.press(dialog, FD_MOVE_TO_BYTE);
  EXPECT_EQ(position(), "EOF");
  EXPECT_EQ(forwardControls(), "000");
  EXPECT_NE(toolkit.text(dialog, FD_HINT), "");
  EXPECT_TRUE(toolkit.enabled(dialog, FD_MOVE_BACK));

  forgetConsole();
  typed(FD_SEEK_BYTES, "1001");
  toolkit.press(dialog, FD_MOVE_BACK);
  EXPECT_EQ(consoleWithoutDates(), Lines{"  *** Error moving file pointer."});
  EXPECT_EQ(position(), "File Error");  // though it also stands at the end
  EXPECT_EQ(forwardControls(), "000");
  goTo("999");
  EXPECT_EQ(position(), "999");
  EXPECT_EQ(forwardControls(), "111");
  EXPECT_EQ(toolkit.text(dialog, FD_HINT), "");
  toolkit.press(dialog, FD_MOVE_FORWARD);
  EXPECT_EQ(position(), "EOF");
}

TEST_F(FileDumpTest, AFileThatShrankReadsAsNothing) {
  openBytes(std::string(1000, 'x'));
  toolkit.press(dialog, FD_READ);
  goTo("500");
  std::filesystem::resize_file("in.bin", 0);
  forgetConsole();
  toolkit.press(dialog, FD_READ);
  EXPECT_EQ(consoleWithoutDates(), Lines{"Read 0 bytes"});
  EXPECT_EQ(shown(), Lines{});
}

TEST_F(FileDumpTest, AFailingReadIsReported) {
  writeFile("folder", "a file as long as the box looks");
  toolkit.answerFile(folder.path("folder"), [] {
    std::filesystem::remove("folder");
    std::filesystem::create_directory("folder");
  });
  toolkit.press(dialog, FD_OPEN);
  // A folder opens as a file does, and fails at the first read; its size is not 0.
  toolkit.press(dialog, FD_READ);
  EXPECT_EQ(toolkit.errors, Lines{"Read error from disk"});
  EXPECT_EQ(position(), "File Error");
}

TEST_F(FileDumpTest, FieldsKeepTheirLimits) {
  openBytes(std::string(10, 'x'));
  toolkit.expectTyped(dialog, FD_READ_BYTES, {{"0", "1"}, {"-7", "1"}});
  EXPECT_TRUE(toolkit.notes.empty());
  EXPECT_EQ(typed(FD_READ_BYTES, "100000"), "65536");
  EXPECT_EQ(toolkit.notes, Lines{"Maximum bytes per read is 65536."});
  EXPECT_EQ(typed(FD_READ_BYTES, "65536"), "65536");
  EXPECT_EQ(toolkit.notes.size(), 1U);
  toolkit.expectTyped(dialog, FD_GO_TO_BYTE, {{"-1", "0"}, {"-0", "0"}, {"3.9", "3"}, {"nan", "0"}});
  toolkit.expectTyped(dialog, FD_SEEK_BYTES, {{"5000000000", "5000000000"}, {"1e300", "9007199254740992"}});
}

TEST_F(FileDumpTest, PositionsBeyondFourGigabytesAreExact) {
  constexpr off_t FAR = (off_t{1} << 32) + 12345;
  const int file = ::open("sparse.bin", O_CREAT | O_WRONLY, 0600);
  ASSERT_GE(file, 0);
  const ssize_t written = pwrite(file, "needle", 6, FAR);
  ::close(file);
  if (written != 6) GTEST_SKIP() << "no sparse files of this size here";
  open("sparse.bin");
  goTo(std::to_string(FAR));
  EXPECT_EQ(position(), "4294979641");
  toolkit.select(dialog, FD_FORMAT, "ASCII");
  typed(FD_READ_BYTES, "3");
  toolkit.press(dialog, FD_READ);
  EXPECT_EQ(shown().front(), "00000 nee");
  EXPECT_EQ(position(), "4294979644");
  typed(FD_SEEK_BYTES, "4294967298");
  toolkit.press(dialog, FD_MOVE_BACK);
  EXPECT_EQ(position(), "12346");
  toolkit.press(dialog, FD_MOVE_FORWARD);
  toolkit.press(dialog, FD_READ);
  EXPECT_EQ(shown().front(), "00000 dle");
  EXPECT_EQ(position(), "EOF");
  EXPECT_TRUE(consoleHas("Moved forward 4294967298 bytes."));
}

TEST_F(FileDumpTest, AFileThatCannotBeOpenedLeavesTheOtherOpen) {
  openBytes("first");
  writeFile("missing.bin", "still here");
  toolkit.answerFile(folder.path("missing.bin"), [] { std::filesystem::remove("missing.bin"); });
  toolkit.press(dialog, FD_OPEN);
  EXPECT_EQ(toolkit.errors, Lines{"Error opening file: missing.bin"});
  EXPECT_EQ(toolkit.text(dialog, FD_FILE), folder.path("in.bin"));
  toolkit.press(dialog, FD_READ);
  EXPECT_TRUE(consoleHas("Read 5 bytes"));
  toolkit.answerCancel();
  toolkit.press(dialog, FD_OPEN);
  EXPECT_EQ(toolkit.text(dialog, FD_FILE), folder.path("in.bin"));
}

TEST_F(FileDumpTest, SavesTheTextOfTheWindow) {
  openBytes("some text");
  toolkit.select(dialog, FD_FORMAT, "ASCII");
  toolkit.press(dialog, FD_READ);
  chooseFile(FD_SAVE, folder.path("out.txt"));
  EXPECT_EQ(toolkit.fileRequests.back().title, "Save dataset as:");
  EXPECT_EQ(toolkit.fileRequests.back().type, "txt");
  EXPECT_EQ(readFile("out.txt"), "00000 some text\n \n");
  // Never over the file that is being looked at.
  chooseFile(FD_SAVE, folder.path("in.bin"));
  EXPECT_EQ(readFile("in.bin"), "some text");
  std::filesystem::create_directory("gone");
  toolkit.answerFile(folder.path("gone/out.txt"), [] { std::filesystem::remove("gone"); });
  toolkit.press(dialog, FD_SAVE);
  toolkit.answerFile(folder.path("full.txt"), [] { std::filesystem::create_symlink("/dev/full", "full.txt"); });
  toolkit.press(dialog, FD_SAVE);
  EXPECT_EQ(toolkit.errors, (Lines{"This file name is already being used for input. Choose another file name.",
                                   "Error opening file: out.txt", "Error writing to disk file"}));
}

// ---- reports on datasets ------------------------------------------------------------------------------------------

const ReportRecord* handedOver = nullptr;

long report_eh(WINDOW window, EVENT* event) {
  return reportEvents(window, *event, {.create = [](WINDOW made) {
                        handedOver = static_cast<ReportRecord*>(xvt_vobj_get_data(made));
                      }});
}

// Any dialog of the tables stands in for a report.
constexpr ReportDialog STAND_IN = {"Stand-in", DLG_ABOUT, report_eh};

TEST_F(FileDumpTest, ReportsAreOfferedForDatasetsOnly) {
  openBytes("not a dataset");
  EXPECT_FALSE(toolkit.enabled(dialog, FD_START_REPORT));
  writeFile("line.kyr", "dataset");
  open("line.kyr");
  EXPECT_TRUE(toolkit.enabled(dialog, FD_REPORTS));
  startReport(dialog, {"Some Report", 0, nullptr});
  ASSERT_EQ(toolkit.notes.size(), 1U);
  EXPECT_TRUE(toolkit.notes[0].starts_with("The Some Report "));
  EXPECT_TRUE(toolkit.enabled(dialog, FD_READ));
}

TEST_F(FileDumpTest, AReportHasTheFileForItself) {
  writeFile("line.kyr", "dataset");
  open("line.kyr");
  goTo("4");
  startReport(dialog, STAND_IN);
  ASSERT_NE(handedOver, nullptr);
  EXPECT_STREQ(handedOver->inputFile.name, "line.kyr");
  EXPECT_EQ(handedOver->textWindow, window);
  EXPECT_EQ(toolkit.text(dialog, FD_FILE), folder.path("line.kyr"));
  for (const int control : {FD_OPEN, FD_READ, FD_REWIND, FD_MOVE_BACK, FD_MOVE_TO_BYTE, FD_REPORTS, FD_START_REPORT})
    EXPECT_FALSE(toolkit.enabled(dialog, control)) << control;
  toolkit.press(dialog, FD_CLOSE);
  EXPECT_TRUE(xvt_vobj_is_valid(dialog));
  EXPECT_EQ(toolkit.notes.size(), 1U);

  xvt_vobj_destroy(toolkit.dialog(DLG_ABOUT));
  EXPECT_EQ(position(), "4");
  EXPECT_TRUE(toolkit.enabled(dialog, FD_START_REPORT));
  toolkit.failNextDialog(DLG_ABOUT);
  startReport(dialog, STAND_IN);
  EXPECT_EQ(toolkit.errors, Lines{"Error opening report dialog"});
  EXPECT_EQ(position(), "4");
  EXPECT_TRUE(toolkit.enabled(dialog, FD_READ));
}

}  // namespace
