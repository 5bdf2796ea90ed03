#include "quarlo/tapelib/dialogs/cons_win.h"

#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "libkyr/nullcheck.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/dialogs/docscroll.h"
#include "quarlo/tapelib/homefolder.h"

short gConsIsVisible = 1;

namespace {

constexpr const char* kLogName = "console.txt";
constexpr int kMostLogs = 99;
constexpr int kMenuItem = 1032;
constexpr int kTextField = 1;
constexpr PNT kWishedPlace{30, 10};
constexpr int kColumns = 84;
constexpr int kLines = 24;

enum USER_CODE : long { TOGGLE = 1, APPEND = 2 };

WIN_DEF consWin[3];
XVT_FNTID consFont = NULL_FNTID;
WINDOW consWindow = NULL_WIN;
TXEDIT consText = NULL_TXEDIT;
DOC consDoc;
EVENT consEvent;

// Kept by the window handler.
std::FILE* consFp = nullptr;
std::string logName = kLogName;
std::string whyNoLog;
bool logFailed = false;
short n1 = 0;

DocView consView() { return {consWindow, consText, &consFont, &consDoc}; }

void setVisible(bool visible) {
  gConsIsVisible = visible ? 1 : 0;
  xvt_vobj_set_visible(consWindow, visible);
  xvt_menu_set_item_checked(TASK_WIN, kMenuItem, visible);
}

void toggle(WINDOW /*window*/) { setVisible(gConsIsVisible == 0); }

/// A log that cannot be written is said so once; the console goes on on screen and keeps trying.
void reportLogFailure(int reason) {
  if (logFailed) return;
  logFailed = true;
  const std::string line = "  *** Error writing to \"" + logName + "\": " + std::strerror(reason) + ".";
  std::fprintf(stderr, "quarlo:%s\n", line.c_str());
  docAppend(consView(), &n1, line);
}

/// Each line is flushed at once: the file is complete even if the program dies. @return 0 or errno
int writeLog(std::string_view line) {
  if (consFp == nullptr) return 0;
  std::clearerr(consFp);
  std::fwrite(line.data(), 1, line.size(), consFp);
  std::fputc('\n', consFp);
  return std::fflush(consFp) != 0 ? errno : 0;
}

void closeLog() {
  if (consFp != nullptr && std::fclose(consFp) != 0)
    std::fprintf(stderr, "quarlo: %s: %s\n", logName.c_str(), std::strerror(errno));
  consFp = nullptr;
}

/// Begins the log anew. Where another program writes it, and where file systems know of that, the next number's turn
/// has come. @return why there is none; empty where there is
std::string openLog() {
  for (int number = 1; number <= kMostLogs; ++number) {
    logName = number == 1 ? kLogName : formatText("console-%d.txt", number);
    consFp = std::fopen(inHomeFolder(logName.c_str()).c_str(), "ae");
    if (consFp == nullptr) return std::strerror(errno);
    const bool isTaken = flock(fileno(consFp), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    if (!isTaken) {
      static_cast<void>(ftruncate(fileno(consFp), 0));  // a device stays as it is
      return "";
    }
    closeLog();
  }
  return formatText("the files of %d others are there", kMostLogs);
}

void created(WINDOW window) {
  consWindow = window;
  consText = xvt_tx_get(window, kTextField);
  whyNoLog = openLog();
  logFailed = false;
  n1 = 0;
  gConsIsVisible = 1;
}

void destroyed(WINDOW window) {
  if (consWindow == NULL_WIN) return;
  if (gConsIsVisible != 0) setVisible(false);
  closeLog();
  setConsoleSink(nullptr);
  consWindow = NULL_WIN;
  consText = NULL_TXEDIT;
  xvt_vobj_destroy(window);
  xvt_font_destroy(consFont);
  consFont = NULL_FNTID;
}

void userEvent(const EVENT& event) {
  if (event.user.id == TOGGLE) {
    toggle(consWindow);
    if (gConsIsVisible != 0) xvt_vobj_raise(consWindow);
  } else if (event.user.id == APPEND && event.user.ptr != nullptr) {
    const std::string_view line = static_cast<const char*>(event.user.ptr);
    const int failure = writeLog(line);  // first, for it needs no memory
    docAppend(consView(), &n1, line);
    if (failure != 0) reportLogFailure(failure);
  }
}

void send(EVENT_TYPE type, long code, const char* text) {
  if (consWindow == NULL_WIN) return;
  consEvent = EVENT{};
  consEvent.type = type;
  consEvent.user.id = code;
  consEvent.user.ptr = text;
  xvt_win_dispatch_event(consWindow, &consEvent);
}

void append(const char* line) { send(E_USER, APPEND, line); }

void reportNull(const char* name) {
  console_printf("  *** Error allocating memory for %s.", name);
  xvt_dm_post_error("Error allocating memory for %s.", name);
}

}  // namespace

void consInit() {
  setNullReport(reportNull);
  consFont = docFont();
  const RCT area = docRectangle(consFont, kWishedPlace, kColumns, kLines);
  consWin[0] = {W_DOC, area,       "Console",
                0,     NULL_FNTID, WSF_SIZE | WSF_CLOSE | WSF_HSCROLL | WSF_VSCROLL | WSF_UPPER_LEFT};
  const RCT field{0, 0, area.bottom - area.top, area.right - area.left};
  consWin[1] = {WC_TEXTEDIT, field, nullptr, kTextField, consFont, 0};
  consWin[2] = {};
  if (xvt_win_create_def(consWin, TASK_WIN, console_window_eh, nullptr) == NULL_WIN) {
    consWindow = NULL_WIN;
    setConsoleSink(nullptr);
    xvt_font_destroy(consFont);
    consFont = NULL_FNTID;
    xvt_dm_post_error("Error opening console window");
    return;
  }
  setConsoleSink(append);
  xvt_tx_set_scroll_callback(consText, consScrollCallback);
  if (!whyNoLog.empty())
    console_printf("  ** \"%s\" cannot be written (%s). These lines stand here only.", logName.c_str(),
                   whyNoLog.c_str());
  else if (logName != kLogName)
    console_printf("  ** Another Quarlo writes \"%s\" here. These lines go to \"%s\".", kLogName, logName.c_str());
}

void raiseConsole() { send(E_USER, TOGGLE, nullptr); }

void killConsole() { send(E_DESTROY, 0, nullptr); }

long console_window_eh(WINDOW xdWindow, EVENT* xdEvent) {
  if (xdEvent->type == E_CREATE) created(xdWindow);
  if (xdWindow != consWindow) return 0;
  return docEvents(consView(), xdEvent,
                   {.user = [&](WINDOW) { userEvent(*xdEvent); }, .close = toggle, .destroy = destroyed});
}

void consScrollCallback(TXEDIT, T_LNUM origLine, T_LNUM, T_CPOS origOffset) {
  docFollow(consView(), origLine, origOffset);
}
