/// The file scan dialog: the format and the file to index, the trace table, the run.
#pragma once

#include "quarlo/common/tprcstep.h"
#include "xvt/xvt.h"

/// Modeless, from DLG_FILE_SCAN.
long FileIndexDialog_eh(WINDOW xdWindow, EVENT* xdEvent);

/// Finds the modules, chooses the first format that can be indexed, begins its block and fills the list. The list
/// belongs to the caller (std::free), the record and the block too (FreeProcessRecord, std::free).
/// @param theList null after an error, which has been told @return the row of the chosen format; 0 after an error
int initParms(DllList** theList, ProcessRecord** procRecord, int** inputFmt, WINDOW theWindow);

/// Fills the list of formats and selects one.
void initLists(WINDOW theWindow, const DllList* inputDllList, int numInTypes, int theInputDefault);

/// Enables what the dialog can do in a state (COPY_STATE) and shows the name of its input.
void setIndxState(WINDOW theWindow, int newState, const char* inputName);
