/// Dynamic range: the level of a signal against the noise of another record, in dB.
#pragma once

#include "xvt/xvt.h"

long DynRangeTest_eh(WINDOW xdWindow, EVENT* xdEvent);
/// @return 1 when the report was written to its end, else 0
int runDynamicRangeTest();
