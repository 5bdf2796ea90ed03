#include "quarlo/tapelib/dialogs/tapctrl2.h"

#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "quarlo/tapelib/dialogs/tsel2dlg.h"
#include "quarlo/tapelib/unitopen.h"
#include "resources/ids.h"

namespace {

UnitStruct* ioUnit = nullptr;
int* anotherTape = nullptr;
int uNum = 1;

/// An open drive by its own name, a chosen one by that of the list.
void showDrive(WINDOW window) {
  const UnitStruct& unit = ioUnit[uNum];
  const bool fromList = unit.state == 0 && unit.theListItem >= 0;
  setControlText(window, OC_DRIVE, fromList ? ioUnit->theDriveList[unit.theListItem].name : unit.name);
}

void createContinue(WINDOW window) {
  const auto* data = static_cast<const OutContinue*>(xvt_vobj_get_data(window));
  ioUnit = data->units;
  anotherTape = data->anotherTape;
  uNum = data->uNum;
  showDrive(window);
  setOutContinueState(window, ioUnit, uNum);
}

void refresh(WINDOW window) {
  setOutContinueState(window, ioUnit, uNum);
  EVENT changed;
  appUpdate(&changed);
}

/// As refresh, after the drive was opened or closed: the button just used is disabled now, and the keyboard must not
/// drift to Stop.
void refreshOpened(WINDOW window) {
  refresh(window);
  xvt_vobj_set_focus(xvt_win_get_ctl(window, ioUnit[uNum].state == 1 ? OC_CONTINUE : OC_OPEN));
}

void goOn(WINDOW window) {
  *anotherTape = 1;
  xvt_vobj_destroy(window);
}

/// The outputs' options stand in unit 1, whether they rewind in unit 0.
void stop(WINDOW window) {
  ioUnit[1].autoMode = false;
  if (ioUnit[uNum].state == 1) {
    if (!ioUnit->outputNoRewind) tlv_rewind(ioUnit, uNum);
    closeUnit(ioUnit, uNum);
  }
  *anotherTape = 0;
  xvt_vobj_destroy(window);
  EVENT changed;
  appUpdate(&changed);
}

void rewindAndClose(WINDOW window) {
  tlv_rewind(ioUnit, uNum);
  closeUnit(ioUnit, uNum);
  refreshOpened(window);
}

void unload(WINDOW window) {
  tlv_unload(ioUnit, uNum);
  refreshOpened(window);
}

void open(WINDOW window) {
  if (ioUnit[uNum].state == 0) openChosenDrive(ioUnit, uNum);
  showDrive(window);
  refreshOpened(window);
}

void selectDrive(WINDOW window) {
  if (!tookDrive(chooseContinuationDrive(ioUnit, uNum))) return;
  closeUnit(ioUnit, uNum);
  open(window);
}

constexpr ControlAction kActions[] = {
    {OC_CONTINUE, goOn}, {OC_STOP, stop}, {OC_REWIND, rewindAndClose},
    {OC_UNLOAD, unload}, {OC_OPEN, open}, {OC_SELECT_DRIVE, selectDrive},
};

void handleControl(WINDOW window, const EVENT& event) {
  if (isAction(event)) showControl(window, OC_HINT, false);
  runAction(kActions, window, event);
}

/// The close box leaves the job's answer alone; but no tape is ready in a closed drive.
void closeBox(WINDOW window) {
  if (ioUnit[uNum].state == 0) *anotherTape = 0;
  xvt_vobj_destroy(window);
}

}  // namespace

void setOutContinueState(WINDOW xdWindow, const UnitStruct* units, int unitNum) {
  const bool isOpen = units[unitNum].state == 1;
  enableControls(xdWindow, {OC_SELECT_DRIVE, OC_OPEN}, !isOpen);
  enableControls(xdWindow, {OC_CONTINUE, OC_REWIND, OC_UNLOAD}, isOpen);
  setControlText(xdWindow, OC_STATUS, isOpen ? "Online" : "Offline");
}

long tapeOutContinue_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent, {.create = createContinue, .control = handleControl, .close = closeBox});
}

void askForOutputTape(UnitStruct* units, int unitNum, int* answer) {
  *answer = 0;
  OutContinue data = {units, answer, unitNum};
  runModal(DLG_OUT_CONTINUE, tapeOutContinue_eh, &data);
}
