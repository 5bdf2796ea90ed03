/// The task window: start-up and shutdown of the device layer and the console, and what the menu offers.
#pragma once

#include "xvt/xvt.h"

long task_eh(WINDOW xdWindow, EVENT* xdEvent);
