/// Crossfeed isolation: how far channels without a signal lie below those that are driven by one.
#pragma once

#include "xvt/xvt.h"

long XFeedTest_eh(WINDOW xdWindow, EVENT* xdEvent);
/// @return 1 when the report was written to its end, else 0
int runXFeedTest();

/// Whether the settings say that a trace of the record is driven by the signal.
bool IsSignalTrace(int traceIndex);
