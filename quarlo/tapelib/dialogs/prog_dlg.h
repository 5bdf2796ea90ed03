/// The progress dialog: two counters of a running job and its stop button.
#pragma once

#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/xvt.h"

/// Values of ProgrStruct::jobType. Any other value is a reformat.
enum JOB_TYPE : int {
  JOB_SCAN = 0,
  JOB_TRACES_OUT = 10,
  JOB_UNFORMATTED = 99,
  JOB_SEGY = 100,
  JOB_SEGD = 101,
  JOB_VERIFY = 999,
  JOB_MERGE = 9999,
  JOB_REPORT = 99999
};

/// The period at which a job's timer refreshes the dialog, in milliseconds.
constexpr long kProgressPeriod = 750;

/// What the dialog is created with, as its data. The job owns all of it for as long as it runs.
struct ProgressRecord {
  ProgrStruct* items;
  WINDOW* window;     ///< the job's variable for the dialog's handle: written on creation, NULL_WIN once it is gone
  const long* steps;  ///< what the job has done, in steps of any size: while it stands still, the job waits
};

/// Created modeless from DLG_PROGRESS with a ProgressRecord. The stop button and the close box set the abort flag; a
/// timer event refreshes the counters; a destroy event ends it.
long ProgressDlg_eh(WINDOW xdWindow, EVENT* xdEvent);

/// Writes the counters and their labels.
void doUpdate(WINDOW theDialog, const ProgrStruct* items);

/// Places the disk meter where it stands already: the bar stays as the resource drew it, whatever `width` is.
void setMeter(WINDOW theDialog, int width);
