/// The menu bar's commands.
#pragma once

#include "xvt/xvt.h"

/// Carries out a command event of the task window. Numbers without an action do nothing.
void do_TASK_MENUBAR(WINDOW xdWindow, EVENT* xdEvent);

/// Starts companion program `number` (1 to 4) by its executable name from the directory this program was started from,
/// without waiting. A failure is told in a box with its display name; an empty executable means none was set at build
/// time, which is said too.
void startCompanion(int number, const char* executable, const char* displayName);
