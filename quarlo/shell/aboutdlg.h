/// The About box.
#pragma once

#include "xvt/xvt.h"

/// Answers 1 when its button has closed it.
long aboutDlg_eh(WINDOW xdWindow, EVENT* xdEvent);
