/// Opening and closing units for the user who just chose them.
#pragma once

#include <string>

#include "quarlo/tapelib/tlv_fcn.h"

/// Closes unit `uNum`, whether a disk file or a tape. A closed unit stays as it is.
/// @return 0, or -1 after a console line when the last of the data could not be written
int closeUnit(UnitStruct* units, int uNum);

/// Opens the drive at the unit's theListItem (none when that is negative), with a box for a failure also in automatic
/// mode, and prepares its loader where it has one. @return whether the unit is then open
/// @param readOnly see tlv_tape_open
bool openChosenDrive(UnitStruct* units, int uNum, bool readOnly = false);

/// Opens all drives of unit 0's theOutputList, as openChosenDrive does one.
void openChosenOutputs(UnitStruct* units);
/// Closes the output, whether a disk file or tapes. @return 0, or -1 as closeUnit
int closeOutputs(UnitStruct* units);
/// Rewinds every open output tape. @return 0, or -1 after a console line when one could not be rewound
int rewindOutputs(UnitStruct* units);
/// What a dialog shows of open output tapes: the drive's name, or how many there are.
std::string outputTapesName(const UnitStruct* units);
