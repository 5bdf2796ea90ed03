/// The parameter dialog of the image copy.
#pragma once

#include "xvt/xvt.h"

/// data: the address of the input unit's isM4.
long NoFmtParam_eh(WINDOW xdWindow, EVENT* xdEvent);
