#include "quarlo/tapelib/dialogs/tsel_dlg.h"

#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "quarlo/tapelib/dialogs/eotopts.h"
#include "quarlo/tapelib/drives.h"
#include "quarlo/tapelib/unix_fcn.h"
#include "resources/ids.h"

namespace {

DriveChoice* theChoice = nullptr;
UnitStruct* ioUnit = nullptr;
unsigned char unitType = 0;
bool nrew = false;
EndOfTapeOptions atEnd;
bool overrideM4 = false;
int model = 0;  // place in the radio group

constexpr int kModelFamily = 0;
constexpr int kModelOther = DRV_MODEL_OTHER - DRV_MODEL_FAMILY;

void enableModels(WINDOW window) { enableControls(window, {DRV_MODEL_FAMILY, DRV_MODEL_OTHER}, overrideM4); }

void loadOptions(WINDOW window) {
  nrew = ioUnit->inputNoRewind;
  checkControl(window, DRV_NO_REWIND, nrew);
  atEnd.load(window, ioUnit);
  overrideM4 = ioUnit->overrideM4 != 0;
  model = ioUnit->isM4 != 0 ? kModelFamily : kModelOther;
  checkControl(window, DRV_OVERRIDE_MODEL, overrideM4);
  xdCheckRadioButton(window, DRV_MODEL_FAMILY + model, DRV_MODEL_FAMILY, DRV_MODEL_OTHER);
  enableModels(window);
}

void createSelection(WINDOW window) {
  theChoice = static_cast<DriveChoice*>(xvt_vobj_get_data(window));
  ioUnit = theChoice->units;
  unitType = theChoice->unitNum;
  loadOptions(window);
  ioUnit[unitType].theListItem = -1;
  const int drives = getDriveList(ioUnit);
  fillDriveList(window, DRV_LIST, ioUnit, drives);
  xvt_vobj_set_focus(xvt_win_get_ctl(window, DRV_LIST));
  if (drives == 0) sayNoDrives();
}

bool optionsTouched() {
  return nrew != ioUnit->inputNoRewind || atEnd.differFrom(*ioUnit) || overrideM4 != (ioUnit->overrideM4 != 0) ||
         (model == kModelFamily) != (ioUnit->isM4 != 0);
}

/// OK without a drive stores the options; where there is nothing to store either, a drive was forgotten.
void accept(WINDOW window) {
  if (ioUnit[unitType].theListItem < 0 && !optionsTouched()) return askForDrive(window);
  theChoice->accepted = true;
  ioUnit->inputNoRewind = nrew;
  atEnd.store(ioUnit);
  ioUnit->overrideM4 = overrideM4 ? 1 : 0;
  ioUnit->isM4 = model == kModelFamily ? 1 : 0;
  xvt_vobj_destroy(window);
}

void cancel(WINDOW window) {
  ioUnit[unitType].theListItem = -1;
  xvt_vobj_destroy(window);
}

constexpr ControlAction kActions[] = {{DRV_OK, accept}, {DRV_CANCEL, cancel}};

void handleControl(WINDOW window, const EVENT& event) {
  if (event.ctl.id == DRV_LIST && (event.ctl.what == CTL_SELECT || event.ctl.what == CTL_DOUBLE)) {
    ioUnit[unitType].theListItem = xvt_list_get_selected(xvt_win_get_ctl(window, DRV_LIST));
    if (event.ctl.what == CTL_DOUBLE) accept(window);
    return;
  }
  if (toggleFlag(window, event, DRV_NO_REWIND, &nrew) || atEnd.handle(window, event)) return;
  if (toggleFlag(window, event, DRV_OVERRIDE_MODEL, &overrideM4)) return enableModels(window);
  if (chooseRadio(window, event, DRV_MODEL_FAMILY, DRV_MODEL_OTHER, &model)) return;
  runAction(kActions, window, event);
}

}  // namespace

long select_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent, {.create = createSelection, .control = handleControl, .close = cancel});
}

DriveAnswer chooseInputDrive(UnitStruct* units, int unitNum) {
  int& drive = units[unitNum].theListItem;
  const int before = drive;
  DriveChoice choice = {units, static_cast<unsigned char>(unitNum)};
  if (runModal(DLG_INPUT_DRIVE, select_eh, &choice) && drive >= 0) return DriveAnswer::Chosen;
  drive = before;
  return choice.accepted ? DriveAnswer::None : DriveAnswer::Cancelled;
}
