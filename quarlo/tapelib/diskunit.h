/// Units that are disk files: opening and closing their streams. The stream stands in the unit's `fp`; it and its large
/// buffer belong to this file.
#pragma once

#include <string>

#include "quarlo/tapelib/tlv_fcn.h"

/// The path of a file specification.
std::string pathOf(const FILE_SPEC& file);

/// The specification of a path; its directory stays empty for a name alone. One that a specification cannot hold
/// becomes an empty one.
FILE_SPEC fileSpecOf(const std::string& path);

/// What stands in a dialog for what an open unit was chosen to be: a file's whole path, or a drive's name.
std::string choiceName(const UnitStruct& unit);

/// True when both specifications lead to one file, by whatever path.
bool isSameFile(const FILE_SPEC& one, const FILE_SPEC& other);

/// Whether the unit is that very file, open.
bool isOpenFile(const UnitStruct& unit, const FILE_SPEC& file);

/// Says so when an output could not be opened (errno) because a job has locked it as its own.
void sayIfLocked(const std::string& path);

/// Opens `file` as this unit: fp, fs, name, type, state and, as block limit, the tape buffer's size. The unit must be
/// closed. What is only read has to be a regular file: a pipe or a device has no size and no places.
/// @return false with errno when the file could not be opened; the unit is then unchanged
bool openDiskUnit(UnitStruct* unit, const FILE_SPEC& file, const char* mode);

/// Closes a disk unit's stream (if it has one) and clears its names, state and limits. Closed and tape units are left
/// alone.
/// @return 0, or -1 after a console line when the file system reported an error at the last moment
int closeDiskUnit(UnitStruct* unit);
