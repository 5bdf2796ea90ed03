/// The data reformat dialog: the choice of an input and an output format, of what is read and what is written, and the
/// run of the input's format module.
#pragma once

#include "quarlo/common/tprcstep.h"
#include "xvt/xvt.h"

/// Modeless, from DLG_REFORMAT.
long ReformatDialog_eh(WINDOW xdWindow, EVENT* xdEvent);

/// Finds the modules, chooses the first formats, begins their blocks and fills the lists. Blocks and record belong to
/// the caller (std::free, FreeProcessRecord), the lists too (std::free).
/// @param theList receives all modules, @param outputList those that can be written, @param outputDataType the row
///        chosen there; both lists are null after an error, which has been told
/// @return the row of the chosen input format; 0 after an error
int initParms(DllList** theList, DllList** outputList, ProcessRecord** procRecord, int** inputFmt, int** outputFmt,
              int* outputDataType, WINDOW theWindow);

/// Fills both lists with the modules' names and selects a row in each.
void initLists(WINDOW theWindow, const DllList* inputDllList, int numInTypes, int theInputDefault,
               const DllList* outputDllList, int numOutTypes, int theOutputDefault);

/// Enables what fits the state (COPY_STATE) and the flags of the chosen modules (tprcstep.h) and, unless running, shows
/// the names of input and output.
void setRfmtState(WINDOW theWindow, int newState, const char* str1, const char* str2);

/// Runs the phases of a module, each if the one before it succeeded.
/// @param outType the output format's identifier, or KYR_CHECK_RUN
/// @return 0 for success
int doReformat(ProcessRecord* procRecord, const char* dllName, int* inputFmt, int* outputFmt, int outType);
