#include "quarlo/shell/main_dlg.h"

#include <algorithm>
#include <iterator>

#include "quarlo/common/windows.h"
#include "quarlo/copy/copy_dlg.h"
#include "quarlo/copy/vrfy_dlg.h"
#include "quarlo/dump/fdmp_dlg.h"
#include "quarlo/dump/tdmp_dlg.h"
#include "quarlo/index/indx_dlg.h"
#include "quarlo/merge/mergedlg.h"
#include "quarlo/reformat/rfmt_dlg.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "resources/ids.h"

namespace {

/// What a button opens. Handlers keep their state in statics, so a dialog that is open already is raised instead.
struct JobButton {
  int control;
  int resource;
  EVENT_HANDLER handler;
  const char* failure;
  const int* up;      ///< while this is set the button does nothing; null for none
  bool followsUnits;  ///< is told when the units change
};

constexpr JobButton kButtons[] = {
    {MAIN_TAPE_DUMP, DLG_TAPE_DUMP, tapeDumpDlg_eh, "Error opening Tape Analysis dialog", &gTAnlsWindowUp, false},
    {MAIN_IMAGE_COPY, DLG_COPY, CopyDialog_eh, "Error opening Image Copy dialog", nullptr, true},
    {MAIN_REFORMAT, DLG_REFORMAT, ReformatDialog_eh, "Error opening Data Reformat dialog", nullptr, true},
    // Named after the copy on purpose: both are the image copy's dialogs to those who read the message.
    {MAIN_VERIFY, DLG_VERIFY, VerifyDialog_eh, "Error opening Image Copy dialog", nullptr, true},
    {MAIN_MERGE, DLG_MERGE, FileMergeDlg_eh, "Error opening Kyr File Merge dialog", nullptr, false},
    {MAIN_FILE_DUMP, DLG_FILE_DUMP, FileDumpDlg_eh, "Error opening File Analysis dialog", &gFAnlsWindowUp, false},
    {MAIN_FILE_SCAN, DLG_FILE_SCAN, FileIndexDialog_eh, "Error opening File Scan dialog", nullptr, true},
};

WINDOW openDialogs[std::size(kButtons)] = {};

void openJob(std::size_t place) {
  const JobButton& button = kButtons[place];
  if (button.up != nullptr && *button.up != 0) return;
  WINDOW& dialog = openDialogs[place];
  if (xvt_vobj_is_valid(dialog)) {
    xvt_vobj_raise(dialog);
    xvt_vobj_set_focus(dialog);
    return;
  }
  dialog = xvt_dlg_create_res(WD_MODELESS, button.resource, button.handler, nullptr);
  if (dialog == NULL_WIN) xvt_dm_post_error("%s", button.failure);
}

}  // namespace

void tellJobDialogs(EVENT* event) {
  for (std::size_t place = 0; place < std::size(kButtons); ++place)
    if (kButtons[place].followsUnits && xvt_vobj_is_valid(openDialogs[place]))
      xvt_win_dispatch_event(openDialogs[place], event);
}

namespace {

void pressButton(WINDOW /*dialog*/, const EVENT& event) {
  if (event.ctl.what != CTL_PRESS) return;
  const auto* found = std::ranges::find(kButtons, event.ctl.id, &JobButton::control);
  if (found != std::end(kButtons)) openJob(static_cast<std::size_t>(found - kButtons));
}

void mainDialogGone(WINDOW /*dialog*/) {
  gMainWindowUp = 0;
  gMainDialogWindow = NULL_WIN;
}

}  // namespace

long MainDlg_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent,
                      {.create = [](WINDOW) { gMainWindowUp = 1; }, .control = pressButton, .destroy = mainDialogGone});
}

void openMainDialog() {
  if (gMainWindowUp != 0) {
    xvt_vobj_raise(gMainDialogWindow);
    xvt_vobj_set_focus(gMainDialogWindow);
    return;
  }
  gMainDialogWindow = xvt_dlg_create_res(WD_MODELESS, DLG_MAIN, MainDlg_eh, nullptr);
  gMainWindowUp = gMainDialogWindow != NULL_WIN ? 1 : 0;
}
