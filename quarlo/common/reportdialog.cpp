#include "quarlo/common/reportdialog.h"

#include "quarlo/common/dump_win.h"
#include "quarlo/common/held.h"
#include "quarlo/common/windows.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/jobstate.h"
#include "resources/ids.h"

namespace {

bool running = false;  // there is one dataset to report on, and so one report

const ReportRecord& recordOf(WINDOW dialog) { return *static_cast<const ReportRecord*>(xvt_vobj_get_data(dialog)); }

void showTextWindow(const ReportRecord& record) {
  if (gFDumpIsVisible != 0) return;
  EVENT press;
  press.type = E_CONTROL;
  press.ctl.id = FD_SHOW_WINDOW;
  press.ctl.what = CTL_PRESS;
  xvt_win_dispatch_event(record.dlgWindow, &press);
}

void enableStart(const ReportRecord& record, bool enabled) {
  if (xvt_vobj_is_valid(record.dlgWindow)) enableControl(record.dlgWindow, FD_START_REPORT, enabled);
}

void giveBack(const ReportRecord& record) {
  *record.windowIsUp = 0;
  EVENT ended;
  ended.type = E_USER;
  if (xvt_vobj_is_valid(record.dlgWindow)) xvt_win_dispatch_event(record.dlgWindow, &ended);
}

}  // namespace

bool openReport(const ReportDialog& report, ReportRecord* record) {
  if (xvt_dlg_create_res(WD_MODELESS, report.resource, report.handler, record) != NULL_WIN) return true;
  xvt_dm_post_error("Error opening report dialog");
  *record->windowIsUp = 0;
  return false;
}

void closeReport(WINDOW dialog) { destroyBehindJob(dialog, running); }

long reportEvents(WINDOW dialog, const EVENT& event, DialogEvents does) {
  does.close = closeReport;
  const long answer = dialogEvents(dialog, event, does);
  if (event.type == E_DESTROY) giveBack(recordOf(dialog));
  return answer;
}

void runReport(WINDOW dialog, const std::function<bool(int* stopFlag)>& report) {
  if (refuseDuringJob()) return;
  const ReportRecord& record = recordOf(dialog);
  int stopped = 0;
  const RunningJob place(&stopped);  // a close that waits for the report's end comes behind all else of it
  const Held held(&running);
  bool written = false;
  runGuarded([&] {
    showTextWindow(record);
    dumpClear(record.textWindow);
    enableStart(record, false);
    written = report(&stopped);
  });
  if (written) enableStart(record, true);
}
