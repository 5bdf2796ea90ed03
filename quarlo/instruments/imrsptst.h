/// Impulse response: how far each trace is from the average of all, in percent of that.
#pragma once

#include "xvt/xvt.h"

long ImpRespTest_eh(WINDOW xdWindow, EVENT* xdEvent);
/// @return 1 when the report was written to its end, else 0
int runImpulseResponseTest();
