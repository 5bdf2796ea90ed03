/// Gain step: how far the levels of two records, one recorded with a gain step more, are apart, in percent.
#pragma once

#include "xvt/xvt.h"

long GainStepTest_eh(WINDOW xdWindow, EVENT* xdEvent);
/// @return 1 when the report was written to its end, else 0
int runGainStepTest();
