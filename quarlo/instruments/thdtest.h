/// Harmonic distortion of a recorded sine: the levels of its harmonics by a Fourier transform, or by correlation with
/// sines and cosines.
#pragma once

#include "xvt/xvt.h"

long HarmDistTest_eh(WINDOW xdWindow, EVENT* xdEvent);
/// @return 1 when the report was written to its end, else 0
int runTHDTest();
