/// Equivalent input noise: what shorted inputs record, as the root mean square of each trace, in microvolts.
#pragma once

#include "xvt/xvt.h"

long EINTest_eh(WINDOW xdWindow, EVENT* xdEvent);
/// @return 1 when the report was written to its end, else 0
int runEquivInputNoiseTest();

/// The noise of a trace in microvolts, around its mean or around 0.
float noiseLevel(const float* samples, int count, bool removeDC);
