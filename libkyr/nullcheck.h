/// Failed allocations, reported by the name of what was to be allocated.
#pragma once

/// What the program does about a failed allocation: say it, by name.
using NullReport = void (*)(const char* name);

/// Sets the report of the whole process; null (as at start) writes a line to standard error.
void setNullReport(NullReport report);

/// @param pointer what the allocation answered
/// @param name what it was for, as the report calls it
/// @return true when there is memory; false after the report
bool NullCheck(const void* pointer, const char* name);
