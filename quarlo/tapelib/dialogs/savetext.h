/// A text that the user keeps in a file.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

#include "xvt/xvt.h"

/// Asks for a file and writes a text to it; what goes wrong is told in a box.
/// @param file the proposal, and then the choice
/// @param input the file that is being looked at, which is never written over; null for none
/// @param write writes the text, once a file has been chosen; false when that fails
void saveTextAs(FILE_SPEC* file, const char* extension, const char* title, const FILE_SPEC* input,
                const std::function<bool(std::FILE* to)>& write);

/// For saveTextAs: writes a text that is at hand.
bool writeText(std::FILE* to, const std::string& text);
