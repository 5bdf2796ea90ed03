/// A/D converter accuracy: records of constant voltages, with signs that change and levels that halve or double, and
/// how far each channel's samples are from them.
#pragma once

#include "xvt/xvt.h"

long ConvTest_eh(WINDOW xdWindow, EVENT* xdEvent);
/// @return 1 when the report was written to its end, also when the user stopped it, else 0
int runADConverterTest();

/// Largest deviation from a reference in percent of it, with the reference's sign. The samples are changed.
float deviationFrom(float voltage, float* samples, int count);
