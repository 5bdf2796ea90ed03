#include "quarlo/shell/ctrl_dlg.h"

#include <cstdint>
#include <cstdio>

#include "quarlo/common/windows.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "quarlo/tapelib/dialogs/tsel_dlg.h"
#include "quarlo/tapelib/jobstate.h"
#include "quarlo/tapelib/unitopen.h"
#include "resources/ids.h"

namespace {

UnitStruct* ioUnit = nullptr;
int sfCount = 1;
int sbCount = 1;

constexpr NumberField kFields[] = {
    {.control = TC_BLOCK_COUNT, .value = &sbCount},
    {.control = TC_FILE_COUNT, .value = &sfCount},
};

void resetCounts(WINDOW window) {
  sfCount = 1;
  sbCount = 1;
  for (const NumberField& field : kFields) showNumber(window, field);
}

void refresh(WINDOW window) {
  setControlNumber(window, TC_BLOCK_NUMBER, ioUnit->blockNum);
  setControlNumber(window, TC_FILE_NUMBER, ioUnit->fileNum);
  const bool isTape = ioUnit->state == 1 && ioUnit->type == UT_TAPE;
  set_ctrl_state(window, isTape ? 1 : 0, isTape ? ioUnit->name : "No drive selected", ioUnit);
}

void createControl(WINDOW window) {
  ioUnit = getDevPtr();
  gControlWindow = window;
  gControlWindowUp = 1;
  resetCounts(window);
  refresh(window);
}

void refreshByEvent(WINDOW window) {
  EVENT changed;
  changed.type = E_USER;
  xvt_win_dispatch_event(window, &changed);
}

void rewind(WINDOW window) {
  tlv_rewind(ioUnit, 0);
  refreshByEvent(window);
}

void unload(WINDOW window) {
  tlv_unload(ioUnit, 0);
  set_ctrl_state(window, 0, "No drive selected", ioUnit);
  tellUnitsChanged();
}

void skipBlocks(WINDOW window) {
  tlv_skip_blocks(ioUnit, 0, sbCount);
  refreshByEvent(window);
}

void skipFiles(WINDOW window) {
  tlv_skip_files(ioUnit, 0, sfCount);
  refreshByEvent(window);
}

void skipToEnd(WINDOW window) {
  tlv_skip_eod(ioUnit, 0);
  refreshByEvent(window);
}

void writeFilemark(WINDOW window) {
  if (tlv_weof(ioUnit, 0, 1) != -1) console_out("Wrote EOF.");
  refreshByEvent(window);
}

void selectDrive(WINDOW window) {
  if (!tookDrive(chooseInputDrive(ioUnit))) return;
  closeUnit(ioUnit, 0);
  if (openChosenDrive(ioUnit, 0)) {
    resetCounts(window);
    refresh(window);
  }
  tellUnitsChanged();
}

// All of them move the tape or change the input unit.
constexpr ControlAction kTapeActions[] = {
    {TC_REWIND, rewind},      {TC_UNLOAD, unload},           {TC_SKIP_BLOCKS, skipBlocks},   {TC_SKIP_FILES, skipFiles},
    {TC_SKIP_EOD, skipToEnd}, {TC_WRITE_EOF, writeFilemark}, {TC_SELECT_DRIVE, selectDrive},
};

void handleControl(WINDOW window, const EVENT& event) {
  for (const NumberField& field : kFields)
    if (readNumber(window, event, field)) return;
  if (event.ctl.what != CTL_PRESS) return;
  if (isPress(event, TC_CLOSE)) return xvt_vobj_destroy(window);
  if (!refuseDuringJob()) runAction(kTapeActions, window, event);
}

void controlGone(WINDOW /*window*/) {
  gControlWindow = NULL_WIN;
  gControlWindowUp = 0;
}

}  // namespace

void makeBlockStr(char* dst, int bytes) {
  constexpr int kKilo = 1024;
  constexpr int kMega = kKilo * kKilo;
  if (bytes < kKilo)
    std::snprintf(dst, kBlockStrSize, "%d byte%s", bytes, bytes == 1 ? "" : "s");
  else if (bytes / kKilo < kKilo)
    std::snprintf(dst, kBlockStrSize, "%d KB", bytes / kKilo);
  else
    std::snprintf(dst, kBlockStrSize, "%d MB", static_cast<std::int16_t>(bytes / kMega));
}

void set_ctrl_state(WINDOW xdWindow, int enable, const char* driveName, const UnitStruct* unit) {
  enableControls(
      xdWindow,
      {TC_REWIND, TC_UNLOAD, TC_SKIP_BLOCKS, TC_SKIP_FILES, TC_BLOCK_COUNT, TC_FILE_COUNT, TC_SKIP_EOD, TC_WRITE_EOF},
      enable != 0);
  setControlText(xdWindow, TC_DRIVE, driveName);
  char smallest[kBlockStrSize] = "";
  char largest[kBlockStrSize] = "";
  if (enable != 0) {
    makeBlockStr(smallest, static_cast<int>(unit->minBlockSize));
    makeBlockStr(largest, static_cast<int>(unit->maxBlockSize));
  }
  setControlText(xdWindow, TC_MIN_BLOCK, smallest);
  setControlText(xdWindow, TC_MAX_BLOCK, largest);
}

long control_dialog_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent,
                      {.create = createControl, .control = handleControl, .user = refresh, .destroy = controlGone});
}

void openTapeControl() {
  if (gControlWindowUp != 0) {
    xvt_vobj_raise(gControlWindow);
    xvt_vobj_set_focus(gControlWindow);
    return;
  }
  gControlWindow = xvt_dlg_create_res(WD_MODELESS, DLG_TAPE_CONTROL, control_dialog_eh, nullptr);
  gControlWindowUp = gControlWindow != NULL_WIN ? 1 : 0;
}
