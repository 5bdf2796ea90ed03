/// Asking for the next tape of an output.
#pragma once

#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/xvt.h"

/// What tapeOutContinue_eh is created with.
struct OutContinue {
  UnitStruct* units;
  int* anotherTape;  ///< the job's answer: 1 another tape is ready, 0 none
  int uNum;          ///< the output
};

/// Modal, from DLG_OUT_CONTINUE, with an OutContinue.
long tapeOutContinue_eh(WINDOW xdWindow, EVENT* xdEvent);

/// Enables what fits the state of output `uNum`.
void setOutContinueState(WINDOW xdWindow, const UnitStruct* units, int uNum);

/// Asks for the next tape of output `uNum`: clears the answer, runs the dialog. "Error opening dialog" when it cannot
/// be opened; the answer is then 0.
void askForOutputTape(UnitStruct* units, int uNum, int* anotherTape);
