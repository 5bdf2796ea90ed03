/// The two dump windows, one for tape dumps and one for file dumps: text windows that can be cleared between dumps and
/// whose text can be taken out. They start hidden.
#pragma once

#include <cstddef>
#include <functional>

#include "quarlo/tapelib/dialogs/docscroll.h"
#include "xvt/xvt.h"

struct DumpWindow {
  WIN_DEF dumpWin[3];  ///< the window, its text field, the terminator
  XVT_FNTID dumpFont = NULL_FNTID;
  WINDOW theWindow = NULL_WIN;  ///< NULL_WIN when not created or destroyed
  TXEDIT dumpText = NULL_TXEDIT;
  DOC dumpDoc;
};

extern DumpWindow tDumpWin;   ///< the tape dump window
extern DumpWindow fDumpWin;   ///< the file dump window
extern DumpWindow* aDumpWin;  ///< the one last initialised

// Shown or not; used by the dump dialogs, cleared here when a window is created or closed.
extern short gTDumpIsVisible;
extern short gFDumpIsVisible;

constexpr int kTapeDump = 2;  ///< dumpInit's type for a tape dump; any other is a file dump

/// User events of a dump window.
enum DUMP_USER_CODE : long { DUMP_APPEND = 2, DUMP_CLEAR = 3 };

/// Creates a dump window, in place of one of the same type that is still there. Answers the window, or -1 after an
/// error box.
WINDOW dumpInit(int dumpType);
/// Has `told` called when the close box of a dump window has hidden it and cleared the flags; null ends it. One for
/// each type of dump.
void onDumpHidden(int dumpType, std::function<void()> told);
/// Appends one line, without its newline.
void dumpOut(const char* textStr, WINDOW theWindow);
/// Empties the window.
void dumpClear(WINDOW theWindow);
/// Bytes of all lines and one more for each: the size that dumpTextGet needs.
std::size_t getTextLength(WINDOW theWindow);
/// Copies every line and a newline behind each into `theText`; no NUL at the end.
void dumpTextGet(WINDOW theWindow, char* theText);

long dump_window_eh(WINDOW xdWindow, EVENT* xdEvent);
/// Keeps the bookkeeping of the window that owns `theText` in step when the field scrolls by itself.
void dumpScrollCallback(TXEDIT theText, T_LNUM origLine, T_LNUM nLines, T_CPOS origOffset);
