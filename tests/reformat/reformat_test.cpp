// The reformat dialog: its lists, its states, what it hands to modules, and what becomes of units and names.
#include "quarlo/reformat/rfmt_dlg.h"
#include "quarlo/tapelib/diskunit.h"
#include "tests/support/job_fixture.h"

namespace {

constexpr const char* kMinusTwo = "1";
constexpr const char* kThrows = "2";

class ReformatTest : public JobTest {
 protected:
  ReformatTest() {
    setenv("KYRHOME", std::filesystem::current_path().c_str(), 1);
    std::filesystem::create_directory("lib");
    writeFile("in.dat", "0123456789");
  }
  ~ReformatTest() override {
    if (xvt_vobj_is_valid(dialog)) toolkit.close(dialog);
    unsetenv("KYRHOME");
    unsetenv("MODULE_ANSWER");
    unsetenv("QUARLO_TAPE_FAULT");
  }
  /// Opens the dialog with modules of these identifiers and names.
  void open(const Lines& modules = {"io0-SEG Y", "io1-Kyr", "io10-SEG D", "io2-SEG Y"}) {
    for (const std::string& module : modules)
      std::filesystem::copy(QUARLO_TEST_MODULES "ioswitch.so", "lib/" + module + ".so");
    dialog = xvt_dlg_create_res(WD_MODELESS, DLG_REFORMAT, ReformatDialog_eh, nullptr);
    ASSERT_NE(dialog, NULL_WIN);
    forgetConsole();
  }
  void chooseFile(int control, const std::string& name) {
    toolkit.answerFile(folder.path(name));
    toolkit.press(dialog, control);
  }
  void chooseDrives() {
    putIn(0, "in.tap", {"abc", "de", MARK, "f"});
    putIn(1, "out.tap", {"old"});
    const auto take = [this](int row) {
      return [this, row](WINDOW drives) {
        toolkit.select(drives, DRV_LIST, row);
        if (row == 0 && !toolkit.checked(drives, DRV_NO_REWIND)) toolkit.press(drives, DRV_NO_REWIND);
        toolkit.press(drives, DRV_OK);
      };
    };
    toolkit.onModal(DLG_INPUT_DRIVE, take(0));
    toolkit.press(dialog, RF_INPUT_TAPE);
    toolkit.onModal(DLG_OUTPUT_DRIVE, take(1));
    toolkit.press(dialog, RF_OUTPUT_TAPE);
  }
  void setParameters(int control, const char* answer) {
    setenv("MODULE_ANSWER", answer, 1);
    toolkit.press(dialog, control);
  }
  std::string run(int button = RF_RUN) {
    forgetConsole();
    toolkit.press(dialog, button);
    return text(RF_STATUS);
  }
  std::string text(int control) { return toolkit.text(dialog, control); }
  std::string choice(int list) { return toolkit.selected(dialog, list).at(0); }
  /// Which controls are enabled, as letters in the order of their numbers.
  std::string enabled() {
    const std::string letters = "RCLPTD.lptd.cE";
    std::string all;
    for (int control = RF_RUN; control <= RF_ERRORS; ++control)
      if (letters[control - 1U] != '.' && toolkit.enabled(dialog, control)) all += letters[control - 1U];
    return all;
  }
};

TEST_F(ReformatTest, NothingCanBeDoneWithoutModules) {
  open({});
  EXPECT_EQ(toolkit.errors, Lines{"No valid shared objects found in lib directory."});
  EXPECT_EQ(enabled(), "CLlE");
  toolkit.close(dialog);
  open({"io2-Text"});
  EXPECT_EQ(toolkit.errors.back(), "No valid output shared objects have been found.");
  toolkit.press(dialog, RF_ERRORS);
  toolkit.press(dialog, RF_CLOSE);
  EXPECT_FALSE(xvt_vobj_is_valid(dialog));
}

TEST_F(ReformatTest, FileToFile) {
  open();
  EXPECT_EQ(toolkit.rows(dialog, RF_INPUT_FORMAT), (Lines{"SEG Y", "Kyr", "SEG D", "SEG Y"}));
  EXPECT_EQ(toolkit.rows(dialog, RF_OUTPUT_FORMAT), (Lines{"SEG Y", "Kyr"}));
  EXPECT_EQ(choice(RF_INPUT_FORMAT) + choice(RF_OUTPUT_FORMAT) + text(RF_STATUS), "SEG YKyrIdle");
  EXPECT_EQ(enabled(), "CLPTDlpdE");
  chooseFile(RF_INPUT_DISK, "in.dat");
  EXPECT_EQ(enabled(), "CLPTDlpdcE");
  std::filesystem::create_hard_link("in.dat", "same.kyr");
  chooseFile(RF_OUTPUT_DISK, "same.kyr");
  chooseFile(RF_OUTPUT_DISK, "out.kyr");
  EXPECT_EQ(text(RF_OUTPUT_NAME) + text(RF_STATUS), folder.path("out.kyr") + "Ready");
  EXPECT_EQ(enabled(), "RCLPTDlpdcE");
  writeFile("out.kyr", "somebody else's, longer than the input");
  chooseFile(RF_INPUT_DISK, "out.kyr");
  EXPECT_EQ(toolkit.errors, (Lines{"This file name is already being used for input. Choose another file name.",
                                   "This file is already being used for output. Choose another file."}));
  EXPECT_EQ(text(RF_INPUT_NAME), folder.path("in.dat"));
  toolkit.asks.clear();
  toolkit.answerAsk(RESP_2);
  EXPECT_EQ(run(), "Ready") << "it was not there when it was chosen";
  toolkit.answerAsk(RESP_DEFAULT);
  toolkit.onPump = [this](long) { EXPECT_EQ(enabled() + text(RF_STATUS), "Running"); };
  EXPECT_EQ(run(), "Complete");
  EXPECT_EQ(toolkit.asks,
            Lines(2, "This file was not there when it was chosen. Overwrite it?\n" + folder.path("out.kyr")));
  EXPECT_EQ(consoleWithoutDates(), Lines{"10 bytes for 1"});
  EXPECT_EQ(readFile("out.kyr"), "0123456789");
  EXPECT_EQ(text(RF_INPUT_NAME) + ", " + text(RF_OUTPUT_NAME), "No input chosen, No output chosen");
  EXPECT_EQ(toolkit.fileRequests[0].type + toolkit.fileRequests[1].type, "kyr");
}

TEST_F(ReformatTest, AFailedRunEndsAsOneThatDidNot) {
  open();
  for (const char* answer : {kMinusTwo, kThrows}) {
    chooseFile(RF_INPUT_DISK, "in.dat");
    chooseFile(RF_OUTPUT_DISK, "out.kyr");
    setParameters(RF_INPUT_PARAMETERS, answer);
    EXPECT_EQ(run(), "Failed");
    EXPECT_FALSE(consoleHas("10 bytes for 1")) << "a phase behind one that failed";
    EXPECT_EQ(units[0].state + units[1].state, 0);
    EXPECT_EQ(enabled(), "CLPTDlpdE");
  }
  std::filesystem::rename("lib/io0-SEG Y.so", "gone");
  chooseFile(RF_INPUT_DISK, "in.dat");
  chooseFile(RF_OUTPUT_DISK, "out.kyr");
  EXPECT_EQ(run(), "Failed");
  EXPECT_EQ(toolkit.errors, Lines{"Error opening shared object : io0-SEG Y.so "});
  std::filesystem::rename("gone", "lib/io0-SEG Y.so");
}

TEST_F(ReformatTest, ParametersBelongToTheirModule) {
  open();
  setParameters(RF_INPUT_PARAMETERS, kThrows);
  toolkit.select(dialog, RF_OUTPUT_FORMAT, 0);
  EXPECT_EQ(text(RF_HINT), "") << "those of the dataset output were as they came";
  toolkit.press(dialog, RF_OUTPUT_PARAMETERS);
  toolkit.select(dialog, RF_INPUT_FORMAT, 1);
  EXPECT_EQ(text(RF_HINT), "SEG Y: the parameters start from the defaults again.");
  EXPECT_EQ(enabled(), "CLPDlptdE") << "from disk only";
  chooseFile(RF_OUTPUT_DISK, "out.sgy");
  toolkit.answerCancel();
  toolkit.press(dialog, RF_INPUT_DISK);
  EXPECT_EQ(toolkit.fileRequests[0].type + " " + toolkit.fileRequests[1].type, "sgy kyr");
  toolkit.select(dialog, RF_OUTPUT_FORMAT, 1);
  EXPECT_EQ(text(RF_OUTPUT_NAME), "No output chosen") << "its extension was the other format's";
  toolkit.close(dialog);
  EXPECT_EQ(consoleWithoutDates(),
            (Lines{"input dialog of 0, output 1", "1: output 0 destroyed", "output dialog of 0, input 0: 2 0",
                   "0: input 2 destroyed", "0: output 0 destroyed", "1: output 0 destroyed", "1: input 0 destroyed"}));
}

TEST_F(ReformatTest, ACheckKeepsWhatIsChosen) {
  open();
  chooseFile(RF_INPUT_DISK, "in.dat");
  chooseFile(RF_OUTPUT_DISK, "out.kyr");
  for (int time = 0; time < 2; ++time) {
    EXPECT_EQ(run(RF_CHECK), "Complete");
    EXPECT_EQ(consoleWithoutDates(), Lines{"10 bytes for 999999"}) << "from the file's start";
    EXPECT_EQ(enabled(), "RCLPTDlpdcE");
  }
  EXPECT_FALSE(std::filesystem::exists("out.kyr"));
  toolkit.select(dialog, RF_INPUT_FORMAT, 3);
  EXPECT_EQ(enabled(), "RCLPTDlpdE") << "no other module is asked for a check";
}

TEST_F(ReformatTest, TapeToTape) {
  setenv("QUARLO_TAPE_FAULT", "weof:2:EIO", 1);
  setTapeDriver(nullptr);
  open();
  toolkit.select(dialog, RF_OUTPUT_FORMAT, 0);
  chooseDrives();
  EXPECT_EQ(text(RF_STATUS), "Ready");
  EXPECT_EQ(run(RF_CHECK), "Complete");
  EXPECT_TRUE(consoleHas("The input tape is rewound behind its check, whatever its options say."));
  EXPECT_EQ(tapeIn("out.tap"), Tape{"old"});
  EXPECT_EQ(run(), "Complete");
  EXPECT_EQ(tapeIn("out.tap"), (Tape{"abc", "de", MARK, MARK}));
  EXPECT_EQ(units[0].state + 10 * units[1].state, 1) << "the input stays where it is";
  toolkit.onModal(DLG_TAPE_POSITION, [this](WINDOW box) { toolkit.press(box, TP_OK); });
  EXPECT_EQ(run(RF_CHECK), "Complete");
  EXPECT_TRUE(consoleHas("1 bytes for 999999")) << "from behind the mark";

  chooseDrives();
  EXPECT_EQ(run(), "Failed");
  EXPECT_EQ(toolkit.errors, Lines{"Error writing double eof to output tape"});
}

}  // namespace
