/// The copy dialog: choice of an input, an output and a format, and the start of the copy.
#pragma once

#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/xvt.h"

/// States of the copy dialog's controls.
enum COPY_STATE : int {
  COPY_NOT_READY = 0,  ///< inputs and outputs can be chosen, Start is disabled
  COPY_READY = 1,
  COPY_RUNNING = 2  ///< nothing can be chosen or started
};

/// Modeless, from DLG_COPY.
long CopyDialog_eh(WINDOW xdWindow, EVENT* xdEvent);

/// Enables what fits the state and, unless running, shows the names of input and output.
/// @param m4 the input drive is of the M4 family
void setCopyState(WINDOW theWindow, int newState, const char* str1, const char* str2, int m4);
