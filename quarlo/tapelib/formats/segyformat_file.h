/// SEG Y format descriptions in files. Their text: docs/format-segy-description.md.
#pragma once

#include <string>
#include <vector>

#include "quarlo/tapelib/formats/segyformat.h"

/// Reads a description.
/// @param format receives it, with `file` as its file specification; a text file for the reel header that is named
///               without a whole path lies beside the description
/// @param messages receives a line for each fault ("FILE, line N: ...") or, of a sound description, for what its author
///                 hardly meant
/// @return false when the description cannot be used
bool loadSegyFormat(const FILE_SPEC& file, SegyFormat* format, std::vector<std::string>* messages);

/// Saves a description; a file that is there is replaced when the new one is whole, or stays.
/// @param format its file specification becomes `file`
/// @return false with messages when it could not be stored, or may not be: a read-only one is not saved over itself
bool saveSegyFormat(SegyFormat* format, const FILE_SPEC& file, std::vector<std::string>* messages);
