#include "quarlo/common/dump_win.h"

#include <algorithm>
#include <utility>

DumpWindow tDumpWin;
DumpWindow fDumpWin;
DumpWindow* aDumpWin = nullptr;

short gTDumpIsVisible = 0;
short gFDumpIsVisible = 0;

namespace {

constexpr int kTextField = 1;
constexpr PNT kWishedPlace{30, 375};
constexpr int kColumns = 80;  // a hexadecimal line, its offset below 10,000,000
constexpr int kLines = 36;

/// The running paragraph number, one for both windows: lines of one window move it on for the other, and clearing
/// either resets it.
short n1 = 0;

DumpWindow* dumpOf(WINDOW window) { return static_cast<DumpWindow*>(xvt_vobj_get_data(window)); }

DocView viewOf(DumpWindow* dump) { return {dump->theWindow, dump->dumpText, &dump->dumpFont, &dump->dumpDoc}; }

std::function<void()> hiddenHooks[2];  // by type: tape, file

/// The close box of one window clears the flags of both.
void hideBoth(WINDOW window) {
  gTDumpIsVisible = 0;
  gFDumpIsVisible = 0;
  xvt_vobj_set_visible(window, false);
  for (const auto& told : hiddenHooks)
    if (told) told();
}

void destroyed(DumpWindow* dump) {
  const WINDOW window = dump->theWindow;
  dump->theWindow = NULL_WIN;
  dump->dumpText = NULL_TXEDIT;
  xvt_vobj_destroy(window);
  xvt_font_destroy(dump->dumpFont);
  dump->dumpFont = NULL_FNTID;
}

void userEvent(DumpWindow* dump, const EVENT& event) {
  if (event.user.id == DUMP_APPEND && event.user.ptr != nullptr) {
    docAppend(viewOf(dump), &n1, static_cast<const char*>(event.user.ptr));
  } else if (event.user.id == DUMP_CLEAR) {
    docClear(viewOf(dump));
    n1 = 0;
  }
}

void send(WINDOW window, EVENT_TYPE type, long code, const char* text) {
  EVENT event;
  event.type = type;
  event.user.id = code;
  event.user.ptr = text;
  xvt_win_dispatch_event(window, &event);
}

void define(DumpWindow* dump, const char* title) {
  dump->dumpFont = docFont();
  const RCT area = docRectangle(dump->dumpFont, kWishedPlace, kColumns, kLines);
  constexpr unsigned kFlags = WSF_SIZE | WSF_CLOSE | WSF_HSCROLL | WSF_VSCROLL | WSF_INVISIBLE;
  dump->dumpWin[0] = {W_DOC, area, title, 0, NULL_FNTID, kFlags};
  const RCT field{0, 0, area.bottom - area.top, area.right - area.left};
  dump->dumpWin[1] = {WC_TEXTEDIT, field, nullptr, kTextField, dump->dumpFont, 0};
  dump->dumpWin[2] = {};
}

}  // namespace

void onDumpHidden(int dumpType, std::function<void()> told) {
  hiddenHooks[dumpType == kTapeDump ? 0 : 1] = std::move(told);
}

WINDOW dumpInit(int dumpType) {
  aDumpWin = dumpType == kTapeDump ? &tDumpWin : &fDumpWin;
  if (aDumpWin->theWindow != NULL_WIN) send(aDumpWin->theWindow, E_DESTROY, 0, nullptr);
  define(aDumpWin, dumpType == kTapeDump ? "Tape Dump Window" : "File Dump Window");
  if (xvt_win_create_def(aDumpWin->dumpWin, TASK_WIN, dump_window_eh, aDumpWin) == NULL_WIN) {
    xvt_font_destroy(aDumpWin->dumpFont);
    *aDumpWin = DumpWindow{};
    xvt_dm_post_error("Error opening dump window");
    return -1;
  }
  xvt_tx_set_scroll_callback(aDumpWin->dumpText, dumpScrollCallback);
  gTDumpIsVisible = 0;
  gFDumpIsVisible = 0;
  return aDumpWin->theWindow;
}

void dumpOut(const char* textStr, WINDOW theWindow) { send(theWindow, E_USER, DUMP_APPEND, textStr); }

void dumpClear(WINDOW theWindow) { send(theWindow, E_USER, DUMP_CLEAR, nullptr); }

std::size_t getTextLength(WINDOW theWindow) {
  const TXEDIT text = xvt_tx_get(theWindow, kTextField);
  const T_LNUM lines = xvt_tx_get_num_pars(text);
  std::size_t total = 0;
  for (T_LNUM line = 0; line < lines; ++line) {
    std::size_t length = 0;
    xvt_tx_get_par(text, line, &length);
    total += length + 1;
  }
  return total;
}

void dumpTextGet(WINDOW theWindow, char* theText) {
  const TXEDIT text = xvt_tx_get(theWindow, kTextField);
  const T_LNUM lines = xvt_tx_get_num_pars(text);
  for (T_LNUM line = 0; line < lines; ++line) {
    std::size_t length = 0;
    const char* bytes = xvt_tx_get_par(text, line, &length);
    theText = std::copy_n(bytes, length, theText);
    *theText++ = '\n';
  }
}

long dump_window_eh(WINDOW xdWindow, EVENT* xdEvent) {
  DumpWindow* dump = dumpOf(xdWindow);
  if (dump == nullptr) return 0;
  if (xdEvent->type == E_CREATE) {
    dump->theWindow = xdWindow;
    dump->dumpText = xvt_tx_get(xdWindow, kTextField);
  }
  if (xdWindow != dump->theWindow) return 0;
  return docEvents(viewOf(dump), xdEvent,
                   {.user = [&](WINDOW) { userEvent(dump, *xdEvent); },
                    .close = hideBoth,
                    .destroy = [dump](WINDOW) { destroyed(dump); }});
}

void dumpScrollCallback(TXEDIT theText, T_LNUM origLine, T_LNUM, T_CPOS origOffset) {
  if (DumpWindow* dump = dumpOf(xvt_tx_get_window(theText))) docFollow(viewOf(dump), origLine, origOffset);
}
