#include "quarlo/tapelib/dialogs/tapectrl.h"

#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "quarlo/tapelib/dialogs/tsel_dlg.h"
#include "quarlo/tapelib/unitopen.h"
#include "resources/ids.h"

namespace {

UnitStruct* ioUnit = nullptr;
int* anotherTape = nullptr;
int sfCount = 1;
int sbCount = 1;

constexpr NumberField kFields[] = {
    {.control = IC_FILE_COUNT, .value = &sfCount},
    {.control = IC_BLOCK_COUNT, .value = &sbCount},
};

void createContinue(WINDOW window) {
  const auto* data = static_cast<const InContinue*>(xvt_vobj_get_data(window));
  ioUnit = data->units;
  anotherTape = data->anotherTape;
  sfCount = 1;
  sbCount = 1;
  setControlText(window, IC_DRIVE, ioUnit->name);
  for (const NumberField& field : kFields) showNumber(window, field);
  setInContinueState(window, ioUnit);
}

/// An open drive by its own name, a chosen one by that of the list.
void showDrive(WINDOW window) {
  const UnitStruct& unit = *ioUnit;
  const bool fromList = unit.state == 0 && unit.theListItem >= 0;
  setControlText(window, IC_DRIVE, fromList ? ioUnit->theDriveList[unit.theListItem].name : unit.name);
}

void refresh(WINDOW window) {
  setInContinueState(window, ioUnit);
  EVENT changed;
  appUpdate(&changed);
}

/// As refresh, after the drive was opened or closed: the button just used is disabled now, and the keyboard must not
/// drift to Stop.
void refreshOpened(WINDOW window) {
  refresh(window);
  xvt_vobj_set_focus(xvt_win_get_ctl(window, ioUnit->state == 1 ? IC_CONTINUE : IC_OPEN));
}

void goOn(WINDOW window) {
  *anotherTape = 1;
  xvt_vobj_destroy(window);
}

void stop(WINDOW window) {
  ioUnit->autoMode = false;
  if (ioUnit->state == 1) {
    if (!ioUnit->inputNoRewind) tlv_rewind(ioUnit, 0);
    closeUnit(ioUnit, 0);
  }
  *anotherTape = 0;
  xvt_vobj_destroy(window);
  EVENT changed;
  appUpdate(&changed);
}

void rewindAndClose(WINDOW window) {
  tlv_rewind(ioUnit, 0);
  closeUnit(ioUnit, 0);
  refreshOpened(window);
}

void unload(WINDOW window) {
  tlv_unload(ioUnit, 0);
  refreshOpened(window);
}

void open(WINDOW window) {
  if (ioUnit->state == 0) openChosenDrive(ioUnit, 0);
  showDrive(window);
  refreshOpened(window);
}

void skipFiles(WINDOW window) {
  tlv_skip_files(ioUnit, 0, sfCount);
  refresh(window);
}

void skipBlocks(WINDOW window) {
  tlv_skip_blocks(ioUnit, 0, sbCount);
  refresh(window);
}

void selectDrive(WINDOW window) {
  if (!tookDrive(chooseInputDrive(ioUnit))) return;
  closeUnit(ioUnit, 0);
  open(window);
}

constexpr ControlAction kActions[] = {
    {IC_CONTINUE, goOn},
    {IC_STOP, stop},
    {IC_REWIND, rewindAndClose},
    {IC_UNLOAD, unload},
    {IC_OPEN, open},
    {IC_SKIP_FILES, skipFiles},
    {IC_SKIP_BLOCKS, skipBlocks},
    {IC_SELECT_DRIVE, selectDrive},
};

void handleControl(WINDOW window, const EVENT& event) {
  if (isAction(event)) showControl(window, IC_HINT, false);
  for (const NumberField& field : kFields)
    if (readNumber(window, event, field)) return;
  runAction(kActions, window, event);
}

/// The close box leaves the job's answer alone; but no tape is ready in a closed drive.
void closeBox(WINDOW window) {
  if (ioUnit->state == 0) *anotherTape = 0;
  xvt_vobj_destroy(window);
}

}  // namespace

void setInContinueState(WINDOW xdWindow, const UnitStruct* unit) {
  const bool isOpen = unit->state == 1;
  enableControls(xdWindow, {IC_SELECT_DRIVE, IC_OPEN}, !isOpen);
  enableControls(xdWindow,
                 {IC_CONTINUE, IC_REWIND, IC_UNLOAD, IC_SKIP_FILES, IC_SKIP_BLOCKS, IC_FILE_COUNT, IC_BLOCK_COUNT},
                 isOpen);
  setControlText(xdWindow, IC_STATUS, isOpen ? "Online" : "Offline");
}

long tapeInContinue_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent, {.create = createContinue, .control = handleControl, .close = closeBox});
}

void askForInputTape(UnitStruct* units, int* answer) {
  *answer = 0;
  InContinue data = {units, answer};
  runModal(DLG_IN_CONTINUE, tapeInContinue_eh, &data);
}
