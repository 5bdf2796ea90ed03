/// DC offset: the mean of each trace, in microvolts.
#pragma once

#include "xvt/xvt.h"

long DCOffsetTest_eh(WINDOW xdWindow, EVENT* xdEvent);
/// @return 1 when the report was written to its end, else 0
int runDCOffsetTest();
