/// The warning before a job starts on a tape that is not at its beginning.
#pragma once

#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/xvt.h"

/// Warns, once for each, about the input and the outputs that are open tapes and not at their beginning, by their
/// numbers or by what their driver says. The job goes on from wherever the tapes then stand.
void checkBOT(UnitStruct* units);
/// The same about the input alone, for a job that has no use for outputs.
void checkInputBOT(UnitStruct* units);

/// Modal, from DLG_TAPE_POSITION; its data is the address of the unit's number (int).
long BotDlg_eh(WINDOW xdWindow, EVENT* xdEvent);
