#include "quarlo/jobframe.h"

#include "resources/ids.h"

JobFrame::JobFrame(int jobType, int inputType, int* first, int* percent, int* items, long refreshMilliseconds)
    : counters{jobType, inputType, first, percent, items, &abortFlag}, running(&abortFlag) {
  if (xvt_dlg_create_res(WD_MODELESS, DLG_PROGRESS, ProgressDlg_eh, &record) == NULL_WIN) {
    xvt_dm_post_error("Error opening dialog");
    return;
  }
  opened = true;
  timer = xvt_timer_create(progress, refreshMilliseconds);
}

JobFrame::~JobFrame() { close(); }

bool JobFrame::goOn() {
  xvt_app_process_pending_events();
  return abortFlag == 0 && !xvt_app_is_ending();
}

void JobFrame::close() {
  if (timer != 0) {
    xvt_timer_destroy(timer);
    timer = 0;
  }
  // The dialog may be gone already: its handle is then NULL_WIN.
  if (progress != NULL_WIN) {
    EVENT destroy;
    destroy.type = E_DESTROY;
    xvt_win_dispatch_event(progress, &destroy);
    progress = NULL_WIN;
  }
}
