/// The messages of a SEG D copy: to the console and, when wished, to a log file.
#pragma once

/// The next line goes to the log file only.
extern bool Silent;

/// Writes a line to the console (unless Silent) and to the log file, where it is on disk when this returns. A log that
/// takes no more is said so in a box and turned off.
void logMessage(const char* str);
/// printf into logMessage; lines of any length.
[[gnu::format(printf, 1, 2)]] void logMessagef(const char* format, ...);

/// Opens the log that SgdParams names, emptied. A log that cannot be opened is said so in a box and turned off.
void openSegdLog();
void closeSegdLog();
