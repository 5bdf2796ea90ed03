/// The merge dialog: which datasets are joined, in what order, where they go, and the run.
#pragma once

#include "xvt/xvt.h"

/// Modeless, from DLG_MERGE. The list of the inputs goes with the dialog; output and forced type stay.
long FileMergeDlg_eh(WINDOW xdWindow, EVENT* xdEvent);
