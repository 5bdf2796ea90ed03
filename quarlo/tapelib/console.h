/// Where the lines of jobs and unit operations go: standard error, until the console window (cons_win.h), or whoever
/// stands for it, takes them.
#pragma once

#include "libkyr/console.h"
#include "xvt/xvt.h"

struct ProcessRecord;

/// Who takes the lines from now on; null drops them: a console that could not be created, or was killed.
void setConsoleSink(ConsoleSink sink);

/// One line (without its newline) to the console: to its window and its file, on screen and on disk when it returns. A
/// text with newlines in it becomes several lines.
void console_out(const char* textStr);
/// printf into console_out; lines of any length.
void console_printf(const char* format, ...) XVT_PRINTF(1, 2);
/// console_out for a format module's job: the line goes to the console that the record was given, or nowhere.
void do_console_out(ProcessRecord* procRecord, const char* textStr);
/// Gives a record the console; none while there is none.
void setConsole(ProcessRecord* procRecord);
