/// Asking for the next input tape.
#pragma once

#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/xvt.h"

/// What tapeInContinue_eh is created with.
struct InContinue {
  UnitStruct* units;
  int* anotherTape;  ///< the job's answer: 1 another tape is ready, 0 none
};

/// Modal, from DLG_IN_CONTINUE, with an InContinue.
long tapeInContinue_eh(WINDOW xdWindow, EVENT* xdEvent);

/// Enables what fits the state of the input unit.
void setInContinueState(WINDOW xdWindow, const UnitStruct* unit);

/// Asks for the next input tape: clears the answer, runs the dialog. "Error opening dialog" when it cannot be opened;
/// the answer is then 0.
void askForInputTape(UnitStruct* units, int* anotherTape);
