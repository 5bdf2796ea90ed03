#include "quarlo/common/windows.h"

#include "libkyr/text.h"
#include "quarlo/tapelib/jobstate.h"
#include "quarlo/tapelib/tlv_fcn.h"

WINDOW gMainDialogWindow = NULL_WIN;
int gMainWindowUp = 0;
WINDOW gControlWindow = NULL_WIN;
int gControlWindowUp = 0;
WINDOW gTAnlsWindow = NULL_WIN;
int gTAnlsWindowUp = 0;
int gFAnlsWindowUp = 0;

void unitsChanged(EVENT* event) {
  appUpdate(event);
  if (gTAnlsWindow != NULL_WIN) xvt_win_dispatch_event(gTAnlsWindow, event);
}

void tellUnitsChanged() {
  EVENT event;
  unitsChanged(&event);
}

void tellControlDialog() {
  if (gControlWindow == NULL_WIN) return;
  EVENT moved;
  moved.type = E_USER;
  xvt_win_dispatch_event(gControlWindow, &moved);
}

void destroyBehindJob(WINDOW dialog, bool runsJob) {
  if (runsJob)
    requestStopOfJobs([dialog] { xvt_vobj_destroy(dialog); });
  else
    xvt_vobj_destroy(dialog);
}

void notYetBuilt(const char* what) { tellUser(formatText("%s is not part of this build yet.", what).c_str()); }
