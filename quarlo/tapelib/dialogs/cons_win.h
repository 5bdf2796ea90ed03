/// The console: one window that keeps every line of the run and copies each to "console.txt".
#pragma once

#include "xvt/xvt.h"

/// 1 while the console is shown.
extern short gConsIsVisible;

/// Creates the console. When that fails it says so in a box and the program goes on without one. From then on a failed
/// allocation (NullCheck) is told in a box and a line, and the lines of records without a console of their own come
/// here.
void consInit();
/// Shows a hidden console, hides a shown one.
void raiseConsole();
/// Ends the console.
void killConsole();

/// The console window's event handler. User event 1 toggles its visibility, 2 appends the line that comes with it.
long console_window_eh(WINDOW xdWindow, EVENT* xdEvent);
/// Keeps the console's bookkeeping in step when its text field scrolls by itself.
void consScrollCallback(TXEDIT theText, T_LNUM origLine, T_LNUM nLines, T_CPOS origOffset);
