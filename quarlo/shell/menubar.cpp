#include "quarlo/shell/menubar.h"

#include <algorithm>
#include <iterator>

#include "libkyr/launch.h"
#include "libkyr/text.h"
#include "quarlo/common/windows.h"
#include "quarlo/help/helptopics.h"
#include "quarlo/help/helpwindow.h"
#include "quarlo/help/messagehelp.h"
#include "quarlo/shell/aboutdlg.h"
#include "quarlo/shell/ctrl_dlg.h"
#include "quarlo/shell/main_dlg.h"
#include "quarlo/shell/sfil_dlg.h"
#include "quarlo/shell/srec_dlg.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/dialogs/cons_win.h"
#include "quarlo/tapelib/jobstate.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "resources/ids.h"

namespace {

struct Companion {
  const char* executable;
  const char* displayName;
};

constexpr Companion kCompanions[] = {
    {QUARLO_COMPANION_1, QUARLO_COMPANION_1_NAME},
    {QUARLO_COMPANION_2, QUARLO_COMPANION_2_NAME},
    {QUARLO_COMPANION_3, QUARLO_COMPANION_3_NAME},
    {QUARLO_COMPANION_4, QUARLO_COMPANION_4_NAME},
};

void runCompanion(EVENT* event) {
  const int place = event->cmd.tag - CMD_COMPANION_1;
  startCompanion(place + 1, kCompanions[place].executable, kCompanions[place].displayName);
}

/// The tape control dialog, when there is one, acts in the menu's place, so that it shows what became of it.
bool forwarded(EVENT* event, int control) {
  if (gControlWindow == NULL_WIN) return false;
  event->type = E_CONTROL;
  event->ctl = {.id = control, .what = CTL_PRESS};
  xvt_win_dispatch_event(gControlWindow, event);
  return true;
}

void rewind(EVENT* event) {
  if (!forwarded(event, TC_REWIND)) tlv_rewind(getDevPtr(), 0);
}

void unload(EVENT* event) {
  if (forwarded(event, TC_UNLOAD)) return;
  tlv_unload(getDevPtr(), 0);
  unitsChanged(event);
}

void skipRecords(EVENT* /*event*/) { xvt_dlg_create_res(WD_MODAL, DLG_SKIP_RECORDS, skiprecords_dialog_eh, nullptr); }

void skipFiles(EVENT* /*event*/) { xvt_dlg_create_res(WD_MODAL, DLG_SKIP_FILES, skipfiles_dialog_eh, nullptr); }

void skipToEnd(EVENT* event) {
  if (!forwarded(event, TC_SKIP_EOD)) tlv_skip_eod(getDevPtr(), 0);
}

void writeFilemark(EVENT* event) {
  if (forwarded(event, TC_WRITE_EOF)) return;
  if (tlv_weof(getDevPtr(), 0, 1) != -1) console_out("Wrote EOF.");
}

void countFilemarks(EVENT* /*event*/) {
  if (gTAnlsWindowUp == 0) {
    xvt_dm_post_error("Error: this option requires the Tape Analysis window to be open.");
    return;
  }
  tlv_rewind(getDevPtr(), 0);
  const int filemarks = countTapeFiles();
  console_out(" ");
  console_printf("Counted %d filemarks on tape.", filemarks);
  console_out(" ");
  tlv_rewind(getDevPtr(), 0);
}

void showTapeControl(EVENT* /*event*/) { openTapeControl(); }
void showMainWindow(EVENT* /*event*/) { openMainDialog(); }
void toggleConsole(EVENT* /*event*/) { raiseConsole(); }
void showAbout(EVENT* /*event*/) { xvt_dlg_create_res(WD_MODELESS, DLG_ABOUT, aboutDlg_eh, nullptr); }

void goBack(EVENT* /*event*/) { showLastHelp(); }
void showContents(EVENT* /*event*/) { showHelpContents(); }
void showShortcuts(EVENT* /*event*/) { showHelp(kShortcuts); }
void showMessages(EVENT* /*event*/) { showHelp(kMessagesPage); }

void quit(EVENT* event) {
  event->type = E_CLOSE;
  xvt_win_dispatch_event(TASK_WIN, event);
}

struct MenuAction {
  int command;
  bool movesTape;  ///< refused while a job is running
  void (*act)(EVENT* event);
};

constexpr MenuAction kActions[] = {
    {CMD_COMPANION_1, false, runCompanion},
    {CMD_COMPANION_2, false, runCompanion},
    {CMD_COMPANION_3, false, runCompanion},
    {CMD_COMPANION_4, false, runCompanion},
    {CMD_REWIND, true, rewind},
    {CMD_UNLOAD, true, unload},
    {CMD_SKIP_RECORDS, true, skipRecords},
    {CMD_SKIP_FILES, true, skipFiles},
    {CMD_SKIP_EOD, true, skipToEnd},
    {CMD_TAPE_CONTROL, false, showTapeControl},
    {CMD_MAIN_WINDOW, false, showMainWindow},
    {CMD_CONSOLE, false, toggleConsole},
    {CMD_ABOUT, false, showAbout},
    {CMD_QUIT, false, quit},
    {CMD_WRITE_EOF, true, writeFilemark},
    {CMD_COUNT_FILEMARKS, true, countFilemarks},
    {CMD_HELP_BACK, false, goBack},
    {CMD_HELP_CONTENTS, false, showContents},
    {CMD_HELP_SHORTCUTS, false, showShortcuts},
    {CMD_HELP_MESSAGES, false, showMessages},
};

}  // namespace

void startCompanion(int number, const char* executable, const char* displayName) {
  if (*executable == '\0') {
    tellUser(formatText("Companion program %d is not set up in this build.", number).c_str());
    return;
  }
  xvt_fsys_save_dir();
  xvt_fsys_set_dir_startup();
  if (!wxExecuteHack(executable))
    xvt_dm_post_error("Error: could not start %s.", *displayName != '\0' ? displayName : executable);
  xvt_fsys_restore_dir();
}

void do_TASK_MENUBAR(WINDOW /*xdWindow*/, EVENT* xdEvent) {
  const auto* found = std::ranges::find(kActions, xdEvent->cmd.tag, &MenuAction::command);
  if (found == std::end(kActions) || (found->movesTape && refuseDuringJob())) return;
  found->act(xdEvent);
}
