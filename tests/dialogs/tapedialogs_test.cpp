// The dialogs around tapes, on virtual drives: choice of drives, the next tape of a job, control by hand, progress.
#include <cstring>

#include "quarlo/common/bot_dlg.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/errhandl.h"
#include "quarlo/tapelib/dialogs/pace.h"
#include "quarlo/tapelib/dialogs/prog_dlg.h"
#include "quarlo/tapelib/dialogs/tapctrl2.h"
#include "quarlo/tapelib/dialogs/tapectrl.h"
#include "quarlo/tapelib/dialogs/tsel2dlg.h"
#include "quarlo/tapelib/dialogs/tsel_dlg.h"
#include "quarlo/tapelib/driver/drive_file.h"
#include "quarlo/tapelib/driver/driver.h"
#include "quarlo/tapelib/driver/virtual_driver.h"
#include "quarlo/tapelib/unitopen.h"
#include "tests/support/shell_fixture.h"
#include "tests/support/tap_images.h"

namespace {

/// Three drives: 0 holds a recorded tape, 1 a write-protected one, 2 none.
class TapeDialogs : public ShellTest {
 protected:
  TapeDialogs() {
    const Tape recorded = {block(512, 1), block(512, 2), block(512, 3), MARK, block(100, 4), MARK, MARK};
    writeFile(folder.path("recorded.tap"), tapImage(recorded));
    writeFile(folder.path("protected.tap"), tapImage(recorded));
    addDrive("one", 1, "recorded.tap", false);
    addDrive("three", 3, "", false);
    addDrive("two", 2, "protected.tap", true);
    setTapeDriver(std::make_unique<VirtualDriver>(folder.path("")));
    startUp();
  }
  ~TapeDialogs() override {
    tlv_tape_close(units, kAllOutputs);
    tlv_tape_close(units, 0);
    if (units->theOutputList != nullptr) xvt_slist_destroy(units->theOutputList);
    for (int n = 0; n < kMaxUnits; ++n) units[n] = UnitStruct{};
    toolkit.close(TASK_WIN);
    setTapeDriver(nullptr);
  }

  void addDrive(const std::string& name, int id, const std::string& cartridge, bool writeProtect) {
    DriveDescription drive;
    drive.model = name;
    drive.id = id;
    drive.cartridge = cartridge;
    drive.writeProtect = writeProtect;
    writeDriveFile(folder.path(name + ".drive"), drive);
  }
  int rowOf(const std::string& model) {
    for (int n = 0; n < getDriveCount(); ++n)
      if (std::string(units->theDriveList[n].name).find(model) != std::string::npos) return n;
    return -1;
  }
  int getDriveCount() {
    int count = 0;
    while (count < kMaxUnits && units->theDriveList[count].string[0] != '\0') ++count;
    return count;
  }

  /// Runs the input selection with `use` as the user.
  bool selectInput(const TestToolkit::ModalScript& use) {
    toolkit.onModal(DLG_INPUT_DRIVE, use);
    return chooseInputDrive(units) == DriveAnswer::Chosen;
  }
  bool selectOutput(const TestToolkit::ModalScript& use) {
    toolkit.onModal(DLG_OUTPUT_DRIVE, use);
    return chooseOutputDrives(units) == DriveAnswer::Chosen;
  }
  void openInput(const std::string& model) {
    ASSERT_TRUE(selectInput([&](WINDOW d) { toolkit.doubleClick(d, DRV_LIST, rowOf(model)); }));
    ASSERT_TRUE(openChosenDrive(units, 0));
    tellUnitsChanged();
  }
};

// ---- choice of drives -------------------------------------------------------------------------------------------

TEST_F(TapeDialogs, InputSelectionListsDrivesAndStoresOptionsOnOk) {
  const bool chosen = selectInput([&](WINDOW d) {
    EXPECT_EQ(toolkit.rows(d, DRV_LIST),
              (Lines{"  0:1   VIRTUAL one", "  0:3   VIRTUAL three (offline)", "  0:2   VIRTUAL two (wrt-prot)"}));
    EXPECT_EQ(units->theListItem, -1);
    EXPECT_EQ(toolkit.text(d, DRV_WAIT), "2");
    EXPECT_FALSE(toolkit.enabled(d, DRV_AUTO_LOAD));
    EXPECT_FALSE(toolkit.enabled(d, DRV_WAIT));
    toolkit.press(d, DRV_UNLOAD_AT_EOT);
    EXPECT_FALSE(toolkit.enabled(d, DRV_WAIT));
    toolkit.press(d, DRV_AUTO_LOAD);
    toolkit.typeInto(d, DRV_WAIT, "4");
    toolkit.press(d, DRV_NO_REWIND);
    EXPECT_FALSE(toolkit.enabled(d, DRV_MODEL_FAMILY));
    toolkit.press(d, DRV_OVERRIDE_MODEL);
    toolkit.press(d, DRV_MODEL_FAMILY);
    EXPECT_FALSE(units->autoMode) << "nothing is stored before OK";
    toolkit.select(d, DRV_LIST, 2);
    toolkit.press(d, DRV_OK);
  });
  EXPECT_TRUE(chosen);
  EXPECT_EQ(units->theListItem, 2);
  EXPECT_TRUE(units->inputNoRewind && units->unloadAtEot && units->autoMode);
  EXPECT_EQ(std::tuple(units->timeout, units->overrideM4, units->isM4), std::tuple(4, 1, 1));
}

TEST_F(TapeDialogs, WaitIsKeptWithinNineMinutes) {
  selectInput([&](WINDOW d) {
    toolkit.press(d, DRV_UNLOAD_AT_EOT);
    toolkit.press(d, DRV_AUTO_LOAD);
    const std::pair<const char*, const char*> cases[] = {
        {"-15", "9"}, {"4", "4"}, {"soon", "0"}, {"99999999999999999999", "9"}, {"-9223372036854775808", "9"}};
    for (const auto& [typed, shown] : cases) EXPECT_EQ(toolkit.typed(d, DRV_WAIT, typed), shown) << typed;
    toolkit.press(d, DRV_UNLOAD_AT_EOT);
    EXPECT_TRUE(toolkit.checked(d, DRV_AUTO_LOAD));
    EXPECT_FALSE(toolkit.enabled(d, DRV_AUTO_LOAD) || toolkit.enabled(d, DRV_WAIT));
    toolkit.press(d, DRV_CANCEL);
  });
}

TEST_F(TapeDialogs, CancelChoosesNoDriveAndForgetsOptions) {
  units->theListItem = 2;
  DriveChoice choice = {units, 0};
  toolkit.onModal(DLG_INPUT_DRIVE, [&](WINDOW d) {
    toolkit.select(d, DRV_LIST, 0);
    toolkit.press(d, DRV_NO_REWIND);
    toolkit.press(d, DRV_CANCEL);
  });
  xvt_dlg_create_res(WD_MODAL, DLG_INPUT_DRIVE, select_eh, &choice);
  EXPECT_EQ(units->theListItem, -1);
  EXPECT_FALSE(units->inputNoRewind);

  units->theListItem = 2;
  EXPECT_FALSE(selectInput([&](WINDOW d) { toolkit.close(d); }));
  EXPECT_EQ(units->theListItem, 2) << "an open drive is found again";
}

TEST_F(TapeDialogs, OkWithoutADriveStoresTheOptionsOrAsksForOne) {
  const auto okTwice = [&](WINDOW d) {
    EXPECT_EQ(toolkit.focus(d), xvt_win_get_ctl(d, DRV_LIST));
    toolkit.press(d, DRV_OK);
    EXPECT_NE(toolkit.text(d, DRV_STATUS), "") << "nothing was touched: a drive was forgotten";
    toolkit.press(d, DRV_NO_REWIND);
    toolkit.press(d, DRV_OK);
  };
  mark();
  toolkit.onModal(DLG_INPUT_DRIVE, okTwice);
  EXPECT_EQ(chooseInputDrive(units), DriveAnswer::None);
  toolkit.onModal(DLG_OUTPUT_DRIVE, okTwice);
  EXPECT_EQ(chooseOutputDrives(units), DriveAnswer::None);
  EXPECT_TRUE(units->inputNoRewind && units->outputNoRewind);

  toolkit.onModal(DLG_INPUT_DRIVE, okTwice);
  units->inputNoRewind = false;
  toolkit.chooseMenu(CMD_TAPE_CONTROL);
  toolkit.press(gControlWindow, TC_SELECT_DRIVE);
  EXPECT_EQ(newLines(), Lines{kNoDriveChosen});
}

TEST_F(TapeDialogs, OutputSelectionSwapsItsLists) {
  const bool chosen = selectOutput([&](WINDOW d) {
    EXPECT_TRUE(toolkit.visible(d, DRV_LIST));
    EXPECT_FALSE(toolkit.visible(d, DRV_MULTIPLE_LIST));
    toolkit.select(d, DRV_LIST, 0);
    toolkit.press(d, DRV_MULTIPLE);
    EXPECT_FALSE(toolkit.visible(d, DRV_LIST));
    EXPECT_TRUE(toolkit.selected(d, DRV_LIST).empty());
    toolkit.select(d, DRV_MULTIPLE_LIST, 2);
    toolkit.selectAlso(d, DRV_MULTIPLE_LIST, 0);
    toolkit.press(d, DRV_OK);
  });
  EXPECT_TRUE(chosen);
  EXPECT_TRUE(units->useMultipleOut);
  ASSERT_EQ(xvt_slist_count(units->theOutputList), 2);
  const SLIST_ELT first = xvt_slist_get_first(units->theOutputList);
  EXPECT_EQ(xvt_slist_get_data(units->theOutputList, first), 0);
  EXPECT_EQ(xvt_slist_get_data(units->theOutputList, xvt_slist_get_next(units->theOutputList, first)), 2);
}

TEST_F(TapeDialogs, ContinuationSelectionLeavesSeveralOutputsAlone) {
  units->useMultipleOut = true;
  toolkit.onModal(DLG_OUTPUT_DRIVE, [&](WINDOW d) {
    EXPECT_FALSE(toolkit.checked(d, DRV_MULTIPLE));
    EXPECT_FALSE(toolkit.enabled(d, DRV_MULTIPLE) || toolkit.enabled(d, DRV_MULTIPLE_LABEL));
    toolkit.doubleClick(d, DRV_LIST, 1);
  });
  EXPECT_EQ(chooseContinuationDrive(units, 3), DriveAnswer::Chosen);
  EXPECT_EQ(units[3].theListItem, 1);
  EXPECT_TRUE(units->useMultipleOut);

  toolkit.onModal(DLG_OUTPUT_DRIVE, [&](WINDOW d) { toolkit.press(d, DRV_CANCEL); });
  EXPECT_EQ(chooseContinuationDrive(units, 2), DriveAnswer::Cancelled) << "an older choice does not count";
}

TEST_F(TapeDialogs, WithoutDrivesTheInputDialogStaysAndTheOutputDialogCloses) {
  std::filesystem::create_directory(folder.path("empty"));
  setTapeDriver(std::make_unique<VirtualDriver>(folder.path("empty")));
  selectInput([&](WINDOW d) {
    EXPECT_TRUE(toolkit.rows(d, DRV_LIST).empty());
    toolkit.press(d, DRV_CANCEL);
  });
  EXPECT_EQ(chooseOutputDrives(units), DriveAnswer::Cancelled);
  EXPECT_EQ(toolkit.notes, (Lines(2, "No available drives were found.")));
}

// ---- the next tape ----------------------------------------------------------------------------------------------

TEST_F(TapeDialogs, InputContinuationOpensTheNextTape) {
  units->unloadAtEot = true;
  openInput("one");
  tlv_unload(units, 0);
  writeFile(folder.path("recorded.tap"), tapImage({block(700, 9), MARK, MARK}));
  toolkit.onModal(DLG_IN_CONTINUE, [&](WINDOW d) {
    EXPECT_EQ(toolkit.text(d, IC_DRIVE), "VIRTUAL one");
    EXPECT_EQ(toolkit.text(d, IC_STATUS), "Offline");
    EXPECT_EQ(toolkit.text(d, IC_FILE_COUNT), "1");
    toolkit.goTo(d, IC_FILE_COUNT);
    EXPECT_TRUE(toolkit.visible(d, IC_HINT)) << "the keyboard at opening is no action";
    for (const int control : {1, 3, 4, 10, 11, 6, 7}) EXPECT_FALSE(toolkit.enabled(d, control)) << control;
    toolkit.press(d, IC_OPEN);
    EXPECT_FALSE(toolkit.visible(d, IC_HINT));
    EXPECT_EQ(toolkit.text(d, IC_STATUS), "Online");
    EXPECT_EQ(toolkit.focus(d), xvt_win_get_ctl(d, IC_CONTINUE)) << "Return must not stop the job";
    for (const int control : {5, 14}) EXPECT_FALSE(toolkit.enabled(d, control)) << control;
    EXPECT_TRUE(xvt_menu_is_item_enabled(TASK_WIN, CMD_REWIND));
    toolkit.typeInto(d, IC_BLOCK_COUNT, "1");
    toolkit.press(d, IC_SKIP_BLOCKS);
    toolkit.press(d, IC_CONTINUE);
  });
  int more = 0;
  askForInputTape(units, &more);
  EXPECT_EQ(more, 1);
  EXPECT_EQ(units->state, 1);
}

TEST_F(TapeDialogs, StopRewindsUnlessToldNotTo) {
  for (const bool noRewind : {false, true}) {
    openInput("one");
    units->inputNoRewind = noRewind;
    units->autoMode = true;
    mark();
    toolkit.onModal(DLG_IN_CONTINUE, [&](WINDOW d) { toolkit.press(d, IC_STOP); });
    int more = 1;
    askForInputTape(units, &more);
    EXPECT_EQ(more, 0);
    EXPECT_EQ(units->state, 0);
    EXPECT_FALSE(units->autoMode);
    EXPECT_EQ(newLines(), noRewind ? Lines{} : Lines{"Rewind \"VIRTUAL one\"."});
  }
}

TEST_F(TapeDialogs, ClosingTheContinuationMeansNoTape) {
  int more = 1;
  toolkit.onModal(DLG_IN_CONTINUE, [&](WINDOW d) { toolkit.close(d); });
  askForInputTape(units, &more);
  EXPECT_EQ(more, 0);

  // Asked without the job's reset: an answer given before stands, but a closed drive holds no tape.
  more = 1;
  InContinue data = {units, &more};
  toolkit.onModal(DLG_IN_CONTINUE, [&](WINDOW d) { toolkit.close(d); });
  xvt_dlg_create_res(WD_MODAL, DLG_IN_CONTINUE, tapeInContinue_eh, &data);
  EXPECT_EQ(more, 0);
  openInput("one");
  more = 1;
  toolkit.onModal(DLG_IN_CONTINUE, [&](WINDOW d) { toolkit.close(d); });
  xvt_dlg_create_res(WD_MODAL, DLG_IN_CONTINUE, tapeInContinue_eh, &data);
  EXPECT_EQ(more, 1);

  toolkit.failNextDialog(DLG_IN_CONTINUE);
  askForInputTape(units, &more);
  EXPECT_EQ(more, 0);
  EXPECT_EQ(toolkit.errors, Lines{"Error opening dialog"});
}

TEST_F(TapeDialogs, OutputContinuationTakesAnotherDrive) {
  units->nOutputs = 1;
  units[1].theListItem = -1;
  toolkit.onModal(DLG_OUT_CONTINUE, [&](WINDOW d) {
    EXPECT_FALSE(toolkit.enabled(d, OC_CONTINUE));
    toolkit.press(d, OC_OPEN);
    EXPECT_EQ(units[1].state, 0) << "no drive was chosen yet";
    toolkit.onModal(DLG_OUTPUT_DRIVE, [&](WINDOW s) { toolkit.doubleClick(s, DRV_LIST, rowOf("two")); });
    toolkit.press(d, OC_SELECT_DRIVE);
    EXPECT_EQ(toolkit.errors,
              (Lines{"Tape in drive \"VIRTUAL two\" is write protected.", "Error opening drive \"VIRTUAL two\"."}));
    EXPECT_EQ(toolkit.text(d, OC_STATUS), "Offline");
    toolkit.onModal(DLG_OUTPUT_DRIVE, [&](WINDOW s) { toolkit.doubleClick(s, DRV_LIST, rowOf("one")); });
    toolkit.press(d, OC_SELECT_DRIVE);
    EXPECT_EQ(toolkit.text(d, OC_DRIVE), "VIRTUAL one");
    EXPECT_EQ(toolkit.text(d, OC_STATUS), "Online");
    toolkit.press(d, OC_CONTINUE);
  });
  int more = 0;
  askForOutputTape(units, 1, &more);
  EXPECT_EQ(more, 1);
  EXPECT_EQ(units[1].state, 1);
}

// ---- control by hand --------------------------------------------------------------------------------------------

TEST_F(TapeDialogs, ControlDialogFollowsTheDrive) {
  toolkit.chooseMenu(CMD_TAPE_CONTROL);
  const WINDOW d = gControlWindow;
  EXPECT_EQ(toolkit.text(d, TC_DRIVE), "No drive selected");
  EXPECT_FALSE(toolkit.enabled(d, TC_REWIND) || toolkit.enabled(d, TC_SKIP_BLOCKS));
  toolkit.onModal(DLG_INPUT_DRIVE, [&](WINDOW s) { toolkit.doubleClick(s, DRV_LIST, rowOf("one")); });
  toolkit.press(d, TC_SELECT_DRIVE);
  EXPECT_EQ(toolkit.text(d, TC_DRIVE), "VIRTUAL one");
  EXPECT_EQ(toolkit.text(d, TC_MIN_BLOCK), "1 byte");
  EXPECT_EQ(toolkit.text(d, TC_MAX_BLOCK), "32 KB");
  EXPECT_TRUE(xvt_menu_is_item_enabled(TASK_WIN, CMD_REWIND));

  toolkit.typeInto(d, TC_BLOCK_COUNT, "2");
  mark();
  toolkit.press(d, TC_SKIP_BLOCKS);
  EXPECT_EQ(newLines(), Lines{"2 blocks skipped forward."});
  EXPECT_EQ(toolkit.text(d, TC_BLOCK_NUMBER), "2") << "the driver's number";
  toolkit.chooseMenu(CMD_REWIND);
  EXPECT_EQ(toolkit.text(d, TC_BLOCK_NUMBER), "1") << "the menu acts through the dialog";

  mark();
  toolkit.press(d, TC_WRITE_EOF);
  EXPECT_EQ(std::ranges::count(newLines(), "Wrote EOF."), 0) << "an input is open for reading only";

  toolkit.onModal(DLG_SKIP_FILES, [&](WINDOW s) {
    EXPECT_EQ(toolkit.text(s, SKIP_COUNT), "1");
    toolkit.press(s, SKIP_OK);
  });
  toolkit.chooseMenu(CMD_SKIP_FILES);
  EXPECT_EQ(toolkit.text(d, TC_FILE_NUMBER), "1");

  toolkit.press(d, TC_UNLOAD);
  EXPECT_EQ(toolkit.text(d, TC_DRIVE), "No drive selected");
  EXPECT_EQ(toolkit.text(d, TC_MAX_BLOCK), "");
  EXPECT_FALSE(xvt_menu_is_item_enabled(TASK_WIN, CMD_REWIND));
  toolkit.close(d);
  EXPECT_EQ(gControlWindow, NULL_WIN);
  EXPECT_EQ(gControlWindowUp, 0);
}

TEST_F(TapeDialogs, OpeningByHandReportsAlsoInAutomaticMode) {
  units->autoMode = true;
  selectInput([&](WINDOW d) {
    toolkit.select(d, DRV_LIST, rowOf("three"));
    toolkit.press(d, DRV_OK);
  });
  units->autoMode = true;
  EXPECT_FALSE(openChosenDrive(units, 0));
  EXPECT_FALSE(toolkit.errors.empty());
  EXPECT_TRUE(units->autoMode);
}

TEST(BlockSizes, InWords) {
  const std::pair<int, const char*> cases[] = {{0, "0 bytes"},    {1, "1 byte"},          {1023, "1023 bytes"},
                                               {1024, "1 KB"},    {65535, "63 KB"},       {1048575, "1023 KB"},
                                               {1048576, "1 MB"}, {2147483647, "2047 MB"}};
  for (const auto& [bytes, words] : cases) {
    char text[kBlockStrSize];
    makeBlockStr(text, bytes);
    EXPECT_STREQ(text, words);
  }
}

TEST_F(TapeDialogs, WarnsOnceForEachTapeNotAtItsBeginning) {
  openInput("one");
  checkBOT(units);
  EXPECT_EQ(toolkit.beeps, 0);
  tlv_skip_blocks(units, 0, 2);
  toolkit.onModal(DLG_TAPE_POSITION, [&](WINDOW d) {
    EXPECT_EQ(toolkit.text(d, TP_DRIVE), "VIRTUAL one");
    toolkit.press(d, TP_REWIND);
    EXPECT_EQ(toolkit.text(d, TP_HEADING), "This tape is at its beginning");
    EXPECT_TRUE(xvt_vobj_is_valid(d));
    toolkit.press(d, TP_OK);
  });
  checkBOT(units);
  EXPECT_EQ(toolkit.beeps, 1);
  EXPECT_EQ(units->blockNum, 1);
  // One block or one file on, the numbers, which count from 0 after spacing, are those of a tape at its beginning; and
  // a tape that was left elsewhere stands there when it is opened.
  for (const auto& move : std::initializer_list<std::function<void()>>{[this] { tlv_skip_blocks(units, 0, 1); },
                                                                       [this] { tlv_skip_files(units, 0, 1); },
                                                                       [this] { tlv_tape_open(units, 0); }}) {
    const int before = toolkit.beeps;
    move();
    EXPECT_EQ(units->blockNum * units->fileNum, 1);
    toolkit.onModal(DLG_TAPE_POSITION, [&](WINDOW d) { toolkit.press(d, TP_OK); });
    checkBOT(units);
    EXPECT_EQ(toolkit.beeps, before + 1);
  }
  tlv_rewind(units, 0);
  toolkit.failNextDialog(DLG_TAPE_POSITION);
  tlv_skip_blocks(units, 0, 2);
  checkBOT(units);
  EXPECT_EQ(toolkit.errors, Lines{"Error opening dialog"});
}

// ---- progress and error options ---------------------------------------------------------------------------------

class Progress : public ShellTest {
 protected:
  Progress() { startUp(); }
  WINDOW open(int jobType, int inputType, int* first) {
    items = {jobType, inputType, first, &percent, &tapeCounter, &abortFlag};
    return xvt_dlg_create_res(WD_MODELESS, DLG_PROGRESS, ProgressDlg_eh, &record);
  }
  void end() {
    EVENT destroy;
    destroy.type = E_DESTROY;
    xvt_win_dispatch_event(window, &destroy);
  }
  int percent = 42;
  int tapeCounter = 8;
  int abortFlag = 0;
  WINDOW window = NULL_WIN;
  ProgrStruct items{};
  long steps = 0;
  ProgressRecord record{&items, &window, &steps};
};

TEST_F(Progress, WordsAndCountersOfEachJob) {
  struct Case {
    int jobType;
    const char *title, *first, *second, *value;
    const char* pace = "";
  };
  const Case cases[] = {
      {JOB_SCAN, "Reformat Progress", "Records processed:", "Tape files processed:", "7", "8 traces"},
      {100, "SEG Y Copy Progress", "Traces input:", "Traces output:", "8"},
      {101, "SEG D Copy Progress", "Files processed:", "Traces output:", "8"},
      {9999, "Merge Progress", "Traces input:", "Tape files processed:", "7"},
      {99999, "Report Progress", "Records processed:", "Tape files processed:", "7"},
      {10, "Reformat Progress", "Traces output:", "Tape files processed:", "7"},
      {55, "Reformat Progress", "Records processed:", "Tape files processed:", "7"},
  };
  for (const Case& expected : cases) {
    int things = 17;
    const WINDOW d = open(expected.jobType, UT_TAPE, &things);
    EXPECT_EQ(window, d);
    EXPECT_EQ(std::tuple(toolkit.title(d), toolkit.text(d, 1), toolkit.text(d, 2), toolkit.text(d, 4),
                         toolkit.text(d, 3), toolkit.text(d, 5)),
              std::tuple(expected.title, expected.title, expected.first, "17", expected.second, expected.value));
    EXPECT_TRUE(toolkit.text(d, PROG_PACE).starts_with(expected.pace));
    abortFlag = 0;
    expected.jobType == JOB_SEGY ? toolkit.press(d, PROG_STOP) : toolkit.close(d);
    EXPECT_EQ(abortFlag, 1);
    EXPECT_TRUE(xvt_vobj_is_valid(d)) << "the job closes it";
    end();
    EXPECT_FALSE(xvt_vobj_is_valid(d));
    EXPECT_EQ(window, NULL_WIN);
  }
}

TEST_F(Progress, ImageCopyCountsBytesInAFloat) {
  float bytes = 1234567.0F;
  int first = 0;
  static_assert(sizeof first == sizeof bytes);
  const WINDOW d = open(99, UT_TAPE, static_cast<int*>(static_cast<void*>(&bytes)));
  EXPECT_EQ(std::tuple(toolkit.text(d, 2), toolkit.text(d, 4), toolkit.text(d, 3), toolkit.text(d, 5)),
            std::tuple("Bytes copied:", "1234567", "Tape blocks copied:", "7"));
  for (const int fromDisk : {6, int{PROG_LEFT}, int{PROG_BAR}}) EXPECT_FALSE(toolkit.visible(d, fromDisk));
  EXPECT_EQ(toolkit.text(d, PROG_PACE), "1.23 MB");
  const long timer = xvt_timer_create(d, kProgressPeriod);
  bytes = 2e9F;
  toolkit.advance(kProgressPeriod);
  EXPECT_EQ(toolkit.text(d, 4), "2000000000");
  EXPECT_EQ(toolkit.title(d), "Unformatted Copy Progress") << "the share of a tape is not known";
  xvt_timer_destroy(timer);
  end();
}

TEST_F(Progress, DiskInputShowsTheMeterAsItWasDrawnAndABarThatMoves) {
  int traces = 3;
  const WINDOW d = open(100, UT_DISK, &traces);
  EXPECT_TRUE(toolkit.visible(d, 6));
  EXPECT_TRUE(toolkit.visible(d, 8));
  EXPECT_FALSE(toolkit.visible(d, 3));
  EXPECT_FALSE(toolkit.visible(d, 5));
  const WINDOW meter = xvt_win_get_ctl(d, 6);
  RCT before;
  xvt_vobj_get_outer_rect(meter, &before);
  setMeter(d, 77);
  RCT after;
  xvt_vobj_get_outer_rect(meter, &after);
  EXPECT_EQ(std::memcmp(&before, &after, sizeof before), 0);
  EXPECT_EQ(xvt_ctl_get_meter(meter), 0);
  EXPECT_EQ(toolkit.title(d), "SEG Y Copy Progress");
  EXPECT_EQ(toolkit.text(d, PROG_LEFT), "not known yet");
  const long timer = xvt_timer_create(d, kProgressPeriod);
  for (percent = 42; percent <= 100; percent += 58) {
    toolkit.advance(kProgressPeriod);
    EXPECT_EQ(toolkit.title(d), "SEG Y Copy Progress - " + std::to_string(percent) + " %");
    EXPECT_EQ(xvt_ctl_get_meter(xvt_win_get_ctl(d, PROG_BAR)), percent);
  }
  percent = 100;
  EXPECT_EQ(toolkit.text(d, 1), "SEG Y Copy Progress");
  EXPECT_EQ(toolkit.text(d, PROG_LEFT), "all input is read");
  xvt_timer_destroy(timer);
  end();
}

// 10 a second and a percent in each, then a wait of a minute, a rewind of three, and half as fast.
TEST(Pace, TellsTheRateOfTheLastSecondsAndLeavesOutWaits) {
  Pace pace;
  Pace::Sample now;
  const auto go = [&](int seconds, int faster) {
    for (int at = 0; at < 2 * seconds; ++at) {
      now.time += 500;
      now.done += 5 * faster;
      now.steps += faster;
      now.percent = static_cast<int>(now.done / 20);
      pace.take(now);
    }
  };
  pace.take(now);
  go(1, 2);
  EXPECT_FALSE(pace.perSecond() || pace.secondsLeft()) << "a guess";
  go(39, 2);
  EXPECT_EQ(pace.perSecond(), 20);
  EXPECT_EQ(pace.secondsLeft(), 60);
  go(60, 0);
  EXPECT_TRUE(pace.isWaiting());
  EXPECT_EQ(pace.secondsLeft(), 60) << "waits are no work";
  now.time += 180'000;
  go(3, 1);
  EXPECT_FALSE(pace.isWaiting());
  EXPECT_EQ(pace.perSecond(), 10) << "neither the wait nor the rewind";
  go(57, 1);
  EXPECT_EQ(now.percent, 70);
  EXPECT_NEAR(static_cast<double>(pace.secondsLeft().value()), 60, 15) << "the later half counts";
  now.percent = 100;
  now.done = 0;
  now.time += 500;
  pace.take(now);
  EXPECT_FALSE(pace.perSecond() || pace.secondsLeft()) << "a counter that begins anew, and all is read";
}

TEST(Pace, NumbersAreReadable) {
  EXPECT_EQ(amountText(999, nullptr) + amountText(12.34e9, nullptr), "999 bytes12.3 GB");
  EXPECT_EQ(rateText(103.4e6, nullptr) + rateText(999.96e6, nullptr), "103 MB/s1.00 GB/s");
  EXPECT_EQ(amountText(1234567, "traces") + rateText(12345, "traces"), "1,234,567 traces12,345/s");
  EXPECT_EQ(rateText(0.2, "records") + rateText(3.456, "records"), "12.0/min3.46/s");
  EXPECT_EQ(durationText(3 * 3600 + 65), "3:01:05");
}

class ErrorOptions : public ShellTest {
 protected:
  ErrorOptions() { startUp(); }
  ~ErrorOptions() override { set(false, false, false, false); }
  void set(bool abort, bool inRewind, bool outRewind, bool multiple) {
    units->inputAbort = abort;
    units->inputNoRewind = inRewind;
    units->outputNoRewind = outRewind;
    units->useMultipleOut = multiple;
  }
  std::vector<bool> flags() {
    return {units->inputAbort, units->inputNoRewind, units->outputNoRewind, units->useMultipleOut};
  }
  void run(const TestToolkit::ModalScript& use) {
    toolkit.onModal(DLG_ERROR_OPTIONS, use);
    xvt_dlg_create_res(WD_MODAL, DLG_ERROR_OPTIONS, ErrorDlg_eh, &units->inputAbort);
  }
};

TEST_F(ErrorOptions, ATouchClearsTheOtherThreeFlagsAndOnlyOkStores) {
  using Flags = std::vector<bool>;
  const struct {
    Flags before;
    int touches, end;  // 0: its close box
    Flags after;
  } rows[] = {{{false, true, false, true}, 0, 3, {false, true, false, true}},
              {{false, true, true, true}, 2, 3, {true, false, false, false}},
              {{true, false, false, false}, 1, 4, {true, false, false, false}},
              {{true, false, false, false}, 1, 0, {true, false, false, false}}};
  for (const auto& [before, touches, end, after] : rows) {
    set(before[0], before[1], before[2], before[3]);
    run([&, touches = touches, end = end](WINDOW d) {
      EXPECT_TRUE(toolkit.checked(d, 2)) << "any of the four checks the box";
      for (int touch = 1; touch <= touches; ++touch) {
        toolkit.press(d, 2);
        EXPECT_EQ(toolkit.checked(d, 2), touch % 2 == 0);
      }
      end != 0 ? toolkit.press(d, end) : toolkit.close(d);
    });
    EXPECT_EQ(flags(), after);
  }
  toolkit.onModal(DLG_ERROR_OPTIONS, [&](WINDOW d) {
    EXPECT_FALSE(toolkit.enabled(d, 2));
    toolkit.press(d, 3);
  });
  xvt_dlg_create_res(WD_MODAL, DLG_ERROR_OPTIONS, ErrorDlg_eh, nullptr);
}

}  // namespace
