#include "quarlo/copy/vrfy_dlg.h"

#include "quarlo/common/unitdialog.h"
#include "quarlo/copy/unfmtcpy.h"
#include "quarlo/copy/verifyjob.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/tsel_dlg.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/formats/tpf.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/unitopen.h"
#include "resources/ids.h"

namespace {

UnitStruct* ioUnit = nullptr;
int secondBlockType = 0;  // place in the radio group; kept between runs, as hasCats is

std::string label(int uNum) { return ioUnit[uNum].state == 1 ? choiceName(ioUnit[uNum]) : "No input chosen"; }

bool isM4(int uNum) { return ioUnit[uNum].type == UT_TAPE && ioUnit[uNum].isM4 != 0; }

bool isReady() { return ioUnit[0].state == 1 && ioUnit[1].state == 1; }

void showState(WINDOW dialog, COPY_STATE state) {
  set_verify_state(dialog, state, label(0).c_str(), label(1).c_str(), isM4(0) || isM4(1) ? 1 : 0);
}

/// Closes an input. The second one stands where outputs do: all that is open there goes with it.
void closeVerifyInput(int uNum) {
  if (uNum == 1 && ioUnit[1].type == UT_TAPE)
    tlv_tape_close(ioUnit, kAllOutputs);
  else
    closeUnit(ioUnit, uNum);
}

int closeAfterRun() {
  for (int uNum = 0; uNum <= 1; ++uNum) {
    if (ioUnit[uNum].type == UT_TAPE && ioUnit[uNum].state == 1) tlv_rewind(ioUnit, uNum);
    closeVerifyInput(uNum);
  }
  return 0;
}

void closeBoth() {
  closeVerifyInput(0);
  closeVerifyInput(1);
}

UnitDialog theDialog({.status = VF_STATUS,
                      .closeButton = VF_CLOSE,
                      .ready = isReady,
                      .showState = showState,
                      .endUnits = closeAfterRun,
                      .closeUnits = closeBoth});

void chooseTape(WINDOW dialog, int uNum) {
  if (theDialog.takes(dialog, chooseInputDrive(ioUnit, uNum))) {
    closeVerifyInput(uNum);
    openChosenDrive(ioUnit, uNum, true);
    theDialog.showChange(dialog);
  }
}

void chooseDisk(WINDOW dialog, int uNum, const char* refusal) {
  FILE_SPEC file{};
  if (!chooseFileToOpen(&file, "tpf", "Open Disk File")) return;
  if (isOpenFile(ioUnit[1 - uNum], file)) return xvt_dm_post_error("%s", refusal);
  closeVerifyInput(uNum);
  if (!openDiskUnit(&ioUnit[uNum], file, "rb")) {
    xvt_dm_post_error("Error opening file %s", file.name);
  } else if (!tpf::readFileHeader(ioUnit[uNum].fp)) {
    xvt_dm_post_error("Unrecognized format in file %s", file.name);
    closeVerifyInput(uNum);
  }
  theDialog.showChange(dialog);
}

void chooseFirstTape(WINDOW dialog) { chooseTape(dialog, 0); }
void chooseSecondTape(WINDOW dialog) { chooseTape(dialog, 1); }
void chooseFirstDisk(WINDOW dialog) {
  chooseDisk(dialog, 0, "This file is already being used for other input. Choose another file.");
}
void chooseSecondDisk(WINDOW dialog) {
  chooseDisk(dialog, 1, "This file name is already being used for input. Choose another file name.");
}

/// From Start to the last word in the dialog. The program, or the dialog, may be asked to go meanwhile: both wait.
void start(WINDOW dialog) {
  theDialog.start(
      dialog,
      [](const int& /*stopped*/) { return do_verify(secondBlockType != 0 ? kBlockType2 : kBlockType1, ioUnit); });
}

constexpr ControlAction kActions[] = {
    {VF_START, start},
    {VF_FIRST_TAPE, chooseFirstTape},
    {VF_FIRST_DISK, chooseFirstDisk},
    {VF_SECOND_TAPE, chooseSecondTape},
    {VF_SECOND_DISK, chooseSecondDisk},
};

void create(WINDOW dialog) {
  ioUnit = getDevPtr();
  xdCheckRadioButton(dialog, VF_BLOCK_TYPE_1 + secondBlockType, VF_BLOCK_TYPE_1, VF_BLOCK_TYPE_2);
  checkControl(dialog, VF_CONCATENATED, hasCats);
  theDialog.open(dialog);
}

void control(WINDOW dialog, const EVENT& event) {
  if (theDialog.admits(dialog, event) &&
      !chooseRadio(dialog, event, VF_BLOCK_TYPE_1, VF_BLOCK_TYPE_2, &secondBlockType) &&
      !toggleFlag(dialog, event, VF_CONCATENATED, &hasCats))
    runAction(kActions, dialog, event);
}

}  // namespace

void set_verify_state(WINDOW theWindow, int newState, const char* str1, const char* str2, int m4) {
  const bool idle = newState != COPY_RUNNING;
  enableControls(theWindow, {VF_FIRST_TAPE, VF_FIRST_DISK, VF_SECOND_TAPE, VF_SECOND_DISK, VF_CONCATENATED}, idle);
  enableControls(theWindow, {VF_BLOCK_TYPE_1, VF_BLOCK_TYPE_2}, idle && m4 != 0);
  enableControl(theWindow, VF_START, newState == COPY_READY);
  if (idle) {
    setControlText(theWindow, VF_FIRST_NAME, str1);
    setControlText(theWindow, VF_SECOND_NAME, str2);
  }
}

long VerifyDialog_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return theDialog.events(xdWindow, *xdEvent, {.create = create, .control = control});
}
