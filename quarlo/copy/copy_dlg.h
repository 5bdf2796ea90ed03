/// The copy dialog: choice of an input, an output and a format, and the start of the copy.
#pragma once

#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/xvt.h"

/// Modeless, from DLG_COPY.
long CopyDialog_eh(WINDOW xdWindow, EVENT* xdEvent);

/// Enables what fits the state (COPY_STATE) and, unless running, shows the names of input and output.
/// @param m4 the input drive is of the M4 family
void setCopyState(WINDOW theWindow, int newState, const char* str1, const char* str2, int m4);
