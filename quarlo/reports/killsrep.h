/// The trace kills report: the dead traces of a dataset, record by record, by the kind of their kill.
#pragma once

#include "xvt/xvt.h"

long KillsRep_eh(WINDOW xdWindow, EVENT* xdEvent);
/// Writes the report on the open dialog's dataset into the dump window.
/// @return 1 when it was written to its end, also when the user stopped it; 0 when the dataset or the progress dialog
/// cannot be opened, after a box
int createKillsReport();
