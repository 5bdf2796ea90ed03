/// The error options dialog: does an input error stop the job?
#pragma once

#include "xvt/xvt.h"

/// Modal, from DLG_ERROR_OPTIONS, with the address of the input unit's `inputAbort` as its data (null: nothing to set).
/// It edits the four flags that begin there as one word: the box is checked when any of them is set; once the box was
/// toggled, OK stores the new value in `inputAbort` and clears the other three.
long ErrorDlg_eh(WINDOW xdWindow, EVENT* xdEvent);
