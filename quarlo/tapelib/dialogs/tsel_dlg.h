/// Selection of the input drive.
#pragma once

#include "quarlo/tapelib/dialogs/eotopts.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/xvt.h"

/// What select_eh is created with.
struct DriveChoice {
  UnitStruct* units;
  unsigned char unitNum;  ///< the unit being chosen: 0 for the input
  bool accepted = false;  ///< set by OK
};

/// Modal, from DLG_INPUT_DRIVE, with a DriveChoice. The chosen row ends in the unit's theListItem, -1 for none; the
/// options in unit 0.
long select_eh(WINDOW xdWindow, EVENT* xdEvent);

/// Runs the dialog for a unit. Unless a drive was chosen, the unit's theListItem is what it was before, so that a drive
/// still open, or to be opened again, is found.
DriveAnswer chooseInputDrive(UnitStruct* units, int unitNum = 0);
