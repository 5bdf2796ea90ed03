#include "quarlo/tapelib/dialogs/eotopts.h"

#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "resources/ids.h"

namespace {

constexpr int kUsualWait = 2;
constexpr int kLongestWait = 9;

NumberField waitField(int* minutes) {
  return {.control = DRV_WAIT, .value = minutes, .low = 0, .high = kLongestWait, .absolute = true};
}

}  // namespace

void EndOfTapeOptions::load(WINDOW dialog, UnitStruct* unit) {
  if (unit->timeout == 0) unit->timeout = kUsualWait;
  unloadAtEot_ = unit->unloadAtEot;
  autoLoader_ = unit->autoMode;
  timeout_ = unit->timeout;
  checkControl(dialog, DRV_UNLOAD_AT_EOT, unloadAtEot_);
  checkControl(dialog, DRV_AUTO_LOAD, autoLoader_);
  showNumber(dialog, waitField(&timeout_));
  enable(dialog);
}

bool EndOfTapeOptions::handle(WINDOW dialog, const EVENT& event) {
  if (toggleFlag(dialog, event, DRV_UNLOAD_AT_EOT, &unloadAtEot_) ||
      toggleFlag(dialog, event, DRV_AUTO_LOAD, &autoLoader_)) {
    enable(dialog);
    return true;
  }
  return readNumber(dialog, event, waitField(&timeout_));
}

void EndOfTapeOptions::store(UnitStruct* unit) const {
  unit->unloadAtEot = unloadAtEot_;
  unit->autoMode = autoLoader_;
  unit->timeout = timeout_;
}

bool EndOfTapeOptions::differFrom(const UnitStruct& unit) const {
  return unloadAtEot_ != unit.unloadAtEot || autoLoader_ != unit.autoMode || timeout_ != unit.timeout;
}

void EndOfTapeOptions::enable(WINDOW dialog) const {
  enableControl(dialog, DRV_AUTO_LOAD, unloadAtEot_);
  enableControls(dialog, {DRV_WAIT, DRV_WAIT_LABEL, DRV_WAIT_UNIT}, unloadAtEot_ && autoLoader_);
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
  if (answer == DriveAnswer::None) console_out(kNoDriveChosen);
  return answer == DriveAnswer::Chosen;
}

void askForDrive(WINDOW dialog) {
  setControlText(dialog, DRV_STATUS, "Choose a drive in the list, or press Cancel.");
  xvt_scr_beep();
}

void sayNoDrives() { xvt_dm_post_note("No available drives were found."); }
