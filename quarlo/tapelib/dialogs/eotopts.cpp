#include "quarlo/tapelib/dialogs/eotopts.h"

#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "resources/ids.h"

namespace {

constexpr int USUAL_WAIT = 2;
constexpr int LONGEST_WAIT = 9;

NumberField waitField(int* minutes) {
  return {.control = DRV_WAIT, .value = minutes, .low = 0, .high = LONGEST_WAIT, .absolute = true};
}

}  // namespace

void EndOfTapeOptions::load(WINDOW dialog, UnitStruct* unit) {
  if (unit->timeout == 0) unit->timeout = USUAL_WAIT;
  unloadAtEot = unit->unloadAtEot;
  autoLoader = unit->autoMode;
  timeout = unit->timeout;
  checkControl(dialog, DRV_UNLOAD_AT_EOT, unloadAtEot);
  checkControl(dialog, DRV_AUTO_LOAD, autoLoader);
  showNumber(dialog, waitField(&timeout));
  enable(dialog);
}

bool EndOfTapeOptions::handle(WINDOW dialog, const EVENT& event) {
  if (toggleFlag(dialog, event, DRV_UNLOAD_AT_EOT, &unloadAtEot) ||
      toggleFlag(dialog, event, DRV_AUTO_LOAD, &autoLoader)) {
    enable(dialog);
    return true;
  }
  return readNumber(dialog, event, waitField(&timeout));
}

void EndOfTapeOptions::store(UnitStruct* unit) const {
  unit->unloadAtEot = unloadAtEot;
  unit->autoMode = autoLoader;
  unit->timeout = timeout;
}

bool EndOfTapeOptions::differFrom(const UnitStruct& unit) const {
  return unloadAtEot != unit.unloadAtEot || autoLoader != unit.autoMode || timeout != unit.timeout;
}

void EndOfTapeOptions::enable(WINDOW dialog) const {
  enableControl(dialog, DRV_AUTO_LOAD, unloadAtEot);
  enableControls(dialog, {DRV_WAIT, DRV_WAIT_LABEL, DRV_WAIT_UNIT}, unloadAtEot && autoLoader);
}

bool fillDriveList(WINDOW dialog, int control, const UnitStruct* units, int drives) {
  const WINDOW list = xvt_win_get_ctl(dialog, control);
  if (list == NULL_WIN) return false;
  xvt_list_clear(list);
  for (int row = 0; row < drives; ++row)
    if (!xvt_list_add(list, -1, units->theDriveList[row].string)) return false;
  return true;
}

bool tookDrive(DriveAnswer answer) {
  if (answer == DriveAnswer::None) console_out(NO_DRIVE_CHOSEN);
  return answer == DriveAnswer::Chosen;
}

void askForDrive(WINDOW dialog) {
  setControlText(dialog, DRV_STATUS, "Choose a drive in the list, or press Cancel.");
  xvt_scr_beep();
}

void sayNoDrives() { xvt_dm_post_note("No available drives were found."); }
