/// The verify dialog: choice of the two inputs and the start of their comparison.
#pragma once

#include "xvt/xvt.h"

/// Modeless, from DLG_VERIFY.
long VerifyDialog_eh(WINDOW xdWindow, EVENT* xdEvent);

/// Enables what fits the state (COPY_STATE) and, unless running, shows the names of the two inputs.
/// @param m4 an input drive is of the M4 family: the block type means something
void set_verify_state(WINDOW theWindow, int newState, const char* str1, const char* str2, int m4);
