#include "quarlo/tapelib/dialogs/tsel2dlg.h"

#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "quarlo/tapelib/dialogs/eotopts.h"
#include "quarlo/tapelib/drives.h"
#include "quarlo/tapelib/unix_fcn.h"
#include "resources/ids.h"

namespace {

constexpr COORD kListGrowth = 120;

OutputChoice* theChoice = nullptr;
UnitStruct* ioUnit = nullptr;
bool isContinue = false;
bool nrew = false;
bool multOut = false;
EndOfTapeOptions atEnd;
bool resized = false;

/// The outputs share the options of unit 1.
UnitStruct* outputOptions() { return ioUnit + 1; }

int visibleList() { return multOut ? DRV_MULTIPLE_LIST : DRV_LIST; }

void growLists(WINDOW window) {
  if (resized) return;
  resized = true;
  for (const int list : {DRV_LIST, DRV_MULTIPLE_LIST}) xvt_list_grow(xvt_win_get_ctl(window, list), kListGrowth);
}

void showVisibleList(WINDOW window) {
  showControl(window, DRV_LIST, !multOut);
  showControl(window, DRV_MULTIPLE_LIST, multOut);
}

void loadOptions(WINDOW window) {
  nrew = ioUnit->outputNoRewind;
  checkControl(window, DRV_NO_REWIND, nrew);
  multOut = !isContinue && ioUnit->useMultipleOut;
  checkControl(window, DRV_MULTIPLE, multOut);
  enableControls(window, {DRV_MULTIPLE, DRV_MULTIPLE_LABEL}, !isContinue);
  atEnd.load(window, outputOptions());
}

void createSelection(WINDOW window) {
  theChoice = static_cast<OutputChoice*>(xvt_vobj_get_data(window));
  theChoice->answer = DriveAnswer::Cancelled;
  ioUnit = theChoice->units;
  isContinue = theChoice->isContinue != 0;
  loadOptions(window);
  growLists(window);
  showVisibleList(window);
  const int drives = getDriveList(ioUnit);
  if (drives == 0) {
    sayNoDrives();
    xvt_vobj_destroy(window);
    return;
  }
  for (const int list : {DRV_LIST, DRV_MULTIPLE_LIST})
    if (!fillDriveList(window, list, ioUnit, drives)) return xvt_dm_post_error("Memory error getting drive list.");
  xvt_vobj_set_focus(xvt_win_get_ctl(window, visibleList()));
}

bool optionsTouched() {
  return nrew != ioUnit->outputNoRewind || (!isContinue && multOut != ioUnit->useMultipleOut) ||
         atEnd.differFrom(*outputOptions());
}

/// Stores the selected rows as the outputs to open, in their order.
bool storeSelection(WINDOW window) {
  const SLIST rows = xvt_list_get_selection(xvt_win_get_ctl(window, visibleList()));
  if (rows == nullptr) {
    xvt_dm_post_error("Memory error getting drive list.");
    return false;
  }
  const bool chosen = xvt_slist_count(rows) > 0;
  if (!chosen && !optionsTouched()) {
    xvt_slist_destroy(rows);
    askForDrive(window);
    return false;
  }
  if (ioUnit->theOutputList != nullptr) xvt_slist_destroy(ioUnit->theOutputList);
  ioUnit->theOutputList = rows;
  theChoice->answer = chosen ? DriveAnswer::Chosen : DriveAnswer::None;
  return true;
}

/// OK without a drive stores the options; where there is nothing to store either, a drive was forgotten.
void accept(WINDOW window) {
  if (!storeSelection(window)) return;
  ioUnit->outputNoRewind = nrew;
  if (!isContinue) ioUnit->useMultipleOut = multOut;
  atEnd.store(outputOptions());
  xvt_vobj_destroy(window);
}

constexpr ControlAction kActions[] = {{DRV_OK, accept}, {DRV_CANCEL, xvt_vobj_destroy}};

void swapLists(WINDOW window) {
  showVisibleList(window);
  for (const int list : {DRV_LIST, DRV_MULTIPLE_LIST}) xvt_list_clear_selection(xvt_win_get_ctl(window, list));
}

void handleControl(WINDOW window, const EVENT& event) {
  if (event.ctl.id == DRV_LIST && event.ctl.what == CTL_DOUBLE) return accept(window);
  if (toggleFlag(window, event, DRV_NO_REWIND, &nrew) || atEnd.handle(window, event)) return;
  if (toggleFlag(window, event, DRV_MULTIPLE, &multOut)) return swapLists(window);
  runAction(kActions, window, event);
}

}  // namespace

long selectOut_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(
      xdWindow, *xdEvent,
      {.create = createSelection, .control = handleControl, .destroy = [](WINDOW) { resized = false; }});
}

DriveAnswer chooseOutputDrives(UnitStruct* units) {
  OutputChoice choice = {.units = units, .isContinue = 0, .uNum = kAllOutputs};
  runModal(DLG_OUTPUT_DRIVE, selectOut_eh, &choice);
  return choice.answer;
}

DriveAnswer chooseContinuationDrive(UnitStruct* units, int uNum) {
  OutputChoice choice = {.units = units, .isContinue = 1, .uNum = uNum};
  runModal(DLG_OUTPUT_DRIVE, selectOut_eh, &choice);
  if (choice.answer != DriveAnswer::Chosen) return choice.answer;
  const SLIST list = units->theOutputList;
  units[uNum].theListItem = static_cast<int>(xvt_slist_get_data(list, xvt_slist_get_first(list)));
  return DriveAnswer::Chosen;
}
