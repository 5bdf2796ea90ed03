/// SEG Y format descriptions in files. Their text: docs/format-segy-description.md.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "quarlo/tapelib/formats/segyformat.h"

/// Reads a description.
/// @param format receives it, with `file` as its file specification; a text file for the reel header that is named
///               without a whole path lies beside the description
/// @param messages receives a line for each fault ("FILE, line N: ...") or, of a sound description, for what its author
///                 hardly meant
/// @return false when the description cannot be used
bool loadSegyFormat(const FILE_SPEC& file, SegyFormat* format, std::vector<std::string>* messages);

/// Reads the description that a user chose by its path, or where it is empty a shipped one by its name.
/// @param say takes lines about what is wrong or worth a look
/// @return false after a line when the description cannot be used
bool loadChosenSegyFormat(std::string_view chosen, const char* shipped, SegyFormat* format,
                          const std::function<void(const std::string& line)>& say);

/// Saves a description; a file that is there is replaced when the new one is whole, or stays.
/// @param format its file specification becomes `file`
/// @return false with messages when it could not be stored, or may not be: a read-only one is not saved over itself
bool saveSegyFormat(SegyFormat* format, const FILE_SPEC& file, std::vector<std::string>* messages);
