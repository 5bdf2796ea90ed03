#include "quarlo/common/bot_dlg.h"

#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "resources/ids.h"

namespace {

UnitStruct* ioUnit = nullptr;
int unitNum = 0;

bool isOpenTape(const UnitStruct& unit) { return unit.type == UT_TAPE && unit.state == 1; }

void warnUnlessAtBeginning(UnitStruct* units, int uNum) {
  if (!isOpenTape(units[uNum]) || !tlv_away_from_beginning(units, uNum)) return;
  int number = uNum;
  runModal(DLG_TAPE_POSITION, BotDlg_eh, &number);
}

void createWarning(WINDOW window) {
  ioUnit = getDevPtr();
  unitNum = *static_cast<const int*>(xvt_vobj_get_data(window));
  xvt_scr_beep();
  setControlText(window, TP_DRIVE, ioUnit[unitNum].name);
}

void rewind(WINDOW window) {
  if (tlv_rewind(ioUnit, unitNum) != 0) return;
  setControlText(window, TP_HEADING, "This tape is at its beginning");
  setControlText(window, TP_HINT, "The job starts there.");
  xvt_vobj_set_focus(xvt_win_get_ctl(window, TP_OK));
}

constexpr ControlAction kActions[] = {{TP_OK, xvt_vobj_destroy}, {TP_REWIND, rewind}};

}  // namespace

void checkInputBOT(UnitStruct* units) { warnUnlessAtBeginning(units, 0); }

void checkBOT(UnitStruct* units) {
  checkInputBOT(units);
  if (units[1].type != UT_TAPE) return;
  for (int uNum = 1; uNum <= units->nOutputs && uNum < kMaxUnits; ++uNum) warnUnlessAtBeginning(units, uNum);
}

long BotDlg_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent, {.create = createWarning, .control = actionsOf(kActions)});
}
