/// Gain accuracy: the level of each trace against that of the signal that went in, in percent.
#pragma once

#include "xvt/xvt.h"

long GainAccuTest_eh(WINDOW xdWindow, EVENT* xdEvent);
/// @return 1 when the report was written to its end, else 0
int runGainAccuracyTest();
