// The owner of a run: whatever leaves a job, its dialog, its units and its windows are as they were before Start.

#include <new>

#include "quarlo/copy/vrfy_dlg.h"
#include "quarlo/dump/tdmp_dlg.h"
#include "quarlo/tapelib/jobstate.h"
#include "tests/support/job_fixture.h"

namespace {

const Tape BLOCKS = {block(100, 1), block(200, 2), block(300, 3), block(400, 4), MARK, MARK};

class UnitDialogTest : public JobTest {
 protected:
  void SetUp() override {
    makeCartridge("in.tap", BLOCKS);
    load(0, "in.tap");
    writeFile("a.tpf", tpfImage(BLOCKS));
  }
  /// Memory is wanting at the job's third look at the events.
  void startWithoutMemory(int control) {
    forgetConsole();
    pumpsOfJob = 0;
    toolkit.onPump = [this](long) {
      if (++pumpsOfJob == 3) throw std::bad_alloc();
    };
    toolkit.press(dialog, control);
    toolkit.onPump = nullptr;
    EXPECT_EQ(count("  *** There is not enough memory for this job."), 1);
    EXPECT_FALSE(jobIsRunning());
    EXPECT_EQ(toolkit.dialog(DLG_PROGRESS), NULL_WIN);
    EXPECT_FALSE(toolkit.hasTimers());
  }
  /// The same dialog fails once and then does its job.
  void expectFailureAndSuccess(int statusControl, int startControl, const std::function<void()>& choose) {
    choose();
    startWithoutMemory(startControl);
    EXPECT_EQ(toolkit.text(dialog, statusControl), "Failed");
    EXPECT_EQ(count("  *** Job Failed."), 1);
    EXPECT_EQ(units[0].state + units[1].state, 0);
    choose();
    toolkit.press(dialog, startControl);
    EXPECT_EQ(toolkit.text(dialog, statusControl), "Complete");
  }
};

TEST_F(UnitDialogTest, VerifySurvivesAnException) {
  open(DLG_VERIFY, VerifyDialog_eh);
  expectFailureAndSuccess(VF_STATUS, VF_START, [this] {
    chooseFile(VF_FIRST_DISK, folder.path("a.tpf"));
    noFurtherTape();
    chooseDrive(VF_SECOND_TAPE, 0);
    toolkit.modals.clear();
  });
}

TEST_F(UnitDialogTest, TheTapeDumpSurvivesAnException) {
  open(DLG_TAPE_DUMP, tapeDumpDlg_eh);
  chooseDrive(TD_SELECT_DRIVE, 0);
  toolkit.typeInto(dialog, TD_READ_BLOCKS, "4");
  startWithoutMemory(TD_DUMP);
  EXPECT_TRUE(toolkit.enabled(dialog, TD_DUMP));
  forgetConsole();
  toolkit.press(dialog, TD_DUMP);
  EXPECT_TRUE(consoleHas("Block 3, 300 bytes")) << "the tape stayed where it was";
  toolkit.close(dialog);
  EXPECT_FALSE(xvt_vobj_is_valid(dialog)) << "nothing waits for a job that is over";
}

}  // namespace
