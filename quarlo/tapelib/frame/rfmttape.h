/// Jobs on process records and their devices: the next tape, and the way out after a failure.
#pragma once

#include "libkyr/datasets.h"
#include "xvt/xvt.h"

/// The end of the record's input tape. @return 1 when another tape follows, else 0
int doTapeContinue(ProcessRecord* procRecord);
/// The end of the record's output tapes: each drive gets its next. @return 1 when all have theirs, else 0
int doOutTapeContinue(ProcessRecord* procRecord);

/// The failure exit of a reformat: closes the input's disk file or rewinds its tape (which stays open), closes the
/// output's disk file or dataset, ends the progress dialog, and says so in a box.
/// @param theLink the dataset output, closed by CloseFile; an invalid one when there is none
/// @param progressWindow,progressTimer NULL_WIN and 0 for none
void bail(ProcessRecord* procRecord, Link theLink, WINDOW progressWindow, long progressTimer);
