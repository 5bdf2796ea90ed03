/// The comparison of two inputs, tapes or tape-image files, block for block and byte for byte.
#pragma once

#include "quarlo/tapelib/tlv_fcn.h"

/// Under it the first filemark of the first input ends each of its tapes.
extern bool hasCats;

/// Compares unit 0 with unit 1; disk files are read from behind their file header. The first difference ends the run.
/// @param mode block type as in the image copy
/// @return 0 when they agree (or the user stopped), 1 when not, -1 when the progress dialog could not be opened
int do_verify(int mode, UnitStruct* ioUnit);
