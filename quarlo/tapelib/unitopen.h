/// Opening and closing units for the user who just chose them.
#pragma once

#include "quarlo/tapelib/tlv_fcn.h"

/// Closes unit `uNum`, whether a disk file or a tape. A closed unit stays as it is.
/// @return 0, or -1 after a console line when the last of the data could not be written
int closeUnit(UnitStruct* units, int uNum);

/// Opens the drive at the unit's theListItem (none when that is negative), with a box for a failure also in automatic
/// mode, and prepares its loader where it has one. @return whether the unit is then open
/// @param readOnly see tlv_tape_open
bool openChosenDrive(UnitStruct* units, int uNum, bool readOnly = false);
