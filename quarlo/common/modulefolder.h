/// Where the format modules lie, and which of them may become part of the program.
#pragma once

#include <string>
#include <vector>

#include "xvt/xvt.h"

/// The modules' directory, below their home.
extern char DLLDirectory[4];

/// Looks for files that could be modules: "io*.so" in "lib" below the start-up directory (KYRHOME where that is set);
/// where there is none, in "lib" beside the program, which is then the modules' home and is told on the console. The
/// working directory is then the start-up directory.
/// @return their names, sorted, those of directories behind them
std::vector<std::string> findModuleFiles();

/// The home of the modules that were found last; empty for the working directory.
const DIRECTORY& moduleHome();

/// A module is code: it and its directory have to belong to the user, to root or to the owner of the program's file,
/// and nobody else may be able to write there.
/// @return what speaks against the file at `path`, with the command that mends it; empty for nothing, or no such file
std::string accessFault(const std::string& path);
