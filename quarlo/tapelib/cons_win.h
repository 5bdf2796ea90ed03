/// The console: one window that keeps every line of the run and copies each to "console.txt".
#pragma once

#include "xvt/xvt.h"

/// Creates the console. When that fails it says so in a box and the program goes on without one.
void consInit();
/// Appends one line (without its newline) to the window and to the file; on screen and on disk when it returns.
void console_out(const char* textStr);
/// printf into console_out; lines of any length.
void console_printf(const char* format, ...) XVT_PRINTF(1, 2);
/// Shows a hidden console, hides a shown one.
void raiseConsole();
/// Ends the console.
void killConsole();
