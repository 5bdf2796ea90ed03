/// The pieces that every job's console lines are made of.
#pragma once

#include <string>

#include "libkyr/disksync.h"

/// The local date and time as the C library's ctime writes it, without the newline: "Sat Nov 21 03:02:01 2026".
std::string dateText();

/// "1 trace", "0 traces", "7 traces".
std::string counted(long long count, const char* noun);

/// The line of one blank that separates.
void logBlank();

/// " " and "%s started at DATE."
void logStarted(const char* job);

/// "%s ended at DATE." and " "
void logEnded(const char* job);

/// "  *** %s aborted by user at DATE."
void logAborted(const char* job);

/// "  *** Job Failed." and " "
void logFailed();

/// The line about a disk file that could not be written. @param reason errno
std::string diskErrorText(const std::string& name, int reason);

/// The same about what did not reach the disk, a file or the entries of a directory.
std::string diskErrorText(const DiskSync::Failure& failure);
