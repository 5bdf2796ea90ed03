/// Selection of the output drives.
#pragma once

#include "quarlo/tapelib/dialogs/eotopts.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/xvt.h"

/// What selectOut_eh is created with.
struct OutputChoice {
  UnitStruct* units;
  int isContinue;  ///< 1: one drive for the next tape of an output, the choice of several drives is closed
  int uNum;        ///< that output
  DriveAnswer answer = DriveAnswer::Cancelled;  ///< set by OK
};

/// Modal, from DLG_OUTPUT_DRIVE, with an OutputChoice. OK stores the rows as unit 0's theOutputList, the options in
/// units 0 and 1.
long selectOut_eh(WINDOW xdWindow, EVENT* xdEvent);

/// Runs the dialog for a job's outputs. With DriveAnswer::Chosen there is at least one drive in unit 0's theOutputList.
DriveAnswer chooseOutputDrives(UnitStruct* units);
/// Runs the dialog for the next tape of output `uNum`. A drive that was chosen stands in that unit's theListItem.
DriveAnswer chooseContinuationDrive(UnitStruct* units, int uNum);
