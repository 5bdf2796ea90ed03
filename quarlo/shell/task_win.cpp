#include "quarlo/shell/task_win.h"

#include "quarlo/common/windows.h"
#include "quarlo/help/helpwindow.h"
#include "quarlo/shell/main_dlg.h"
#include "quarlo/shell/menubar.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/dialogs/cons_win.h"
#include "quarlo/tapelib/jobstate.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "resources/ids.h"

namespace {

UnitStruct* ioUnit = nullptr;

constexpr int kStandardCommands[] = {M_EDIT_CUT, M_EDIT_COPY, M_EDIT_PASTE, M_EDIT_SELECT_ALL};
constexpr int kCompanionCommands[] = {CMD_COMPANION_1, CMD_COMPANION_2, CMD_COMPANION_3, CMD_COMPANION_4};
constexpr int kTapeCommands[] = {CMD_REWIND,   CMD_UNLOAD,    CMD_SKIP_RECORDS,   CMD_SKIP_FILES,
                                 CMD_SKIP_EOD, CMD_WRITE_EOF, CMD_COUNT_FILEMARKS};

template <int N>
void enableCommands(WINDOW window, const int (&commands)[N], bool enabled) {
  for (const int command : commands) xvt_menu_set_item_enabled(window, command, enabled);
}

void startUp(WINDOW window, EVENT* event) {
  xvt_menu_set_item_checked(window, CMD_CONSOLE, true);
  enableCommands(window, kStandardCommands, true);
  ioUnit = getDevPtr();
  initIO(ioUnit);
  consInit();
  enableCommands(window, kCompanionCommands, true);
  console_printf("I/O will be limited to %dk bytes per block.", static_cast<int>(ioUnit->ioBufLen >> 10));
  console_out(" ");
  console_out(" ");
  event->type = E_USER;
  xvt_win_dispatch_event(window, event);
  openMainDialog();
}

void unitsHaveChanged(WINDOW window, EVENT* event) {
  if (event->user.id == kUnitsMoved) {
    if (gControlWindow != NULL_WIN) xvt_win_dispatch_event(gControlWindow, event);
    return;
  }
  const UnitStruct& input = *getDevPtr();
  enableCommands(window, kTapeCommands, input.state == 1 && input.type == UT_TAPE);
  if (gTAnlsWindow != NULL_WIN) xvt_win_dispatch_event(gTAnlsWindow, event);
  if (gControlWindow != NULL_WIN) xvt_win_dispatch_event(gControlWindow, event);
  tellJobDialogs(event);
}

void shutDown() {
  if (xvt_app_is_ending()) return;
  unInitIO(getDevPtr());
  killConsole();
  xvt_app_destroy();
}

/// Asked for once: a job that is stopping already is not asked about again.
bool mayStopJobs() {
  if (!jobIsRunning() || stopIsRequested()) return true;
  return xvt_dm_post_confirm("Stop and quit", "Cancel", "A job is running. Stop it and quit?") == RESP_DEFAULT;
}

/// A job in progress first ends as by its stop button: its units and windows are under it until then.
void closeTask() {
  if (mayStopJobs()) requestStopOfJobs(shutDown);
}

void quit(bool query) {
  if (query)
    xvt_app_allow_quit();
  else
    requestStopOfJobs(xvt_app_destroy);
}

}  // namespace

long task_eh(WINDOW xdWindow, EVENT* xdEvent) {
  switch (xdEvent->type) {
    case E_CREATE:
      startUp(xdWindow, xdEvent);
      break;
    case E_COMMAND:
      do_TASK_MENUBAR(xdWindow, xdEvent);
      break;
    case E_USER:
      unitsHaveChanged(xdWindow, xdEvent);
      break;
    case E_HELP:
      helpOn(xdEvent->help.window);
      break;
    case E_CLOSE:
      closeTask();
      break;
    case E_QUIT:
      quit(xdEvent->quit.query);
      break;
    default:
      break;
  }
  return 0;
}
