/// Shared objects and file names with the toolkit's types, and the list of the format modules.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "xvt/xvt.h"

/// One usable format module.
struct DllList {
  char name[256];     ///< the module's file name
  char menuName[32];  ///< what the module calls itself in lists
  int uniqueId;       ///< the module's identifier
};

/// Loads the shared object of a file specification (a name without a directory: from the working directory).
/// @param why receives the reason of a failure; may be null
/// @param entries names of all entry points that will be asked for, so that a damaged object is found out before
/// @return its handle, or null
void* KyrLoadDLL(const FILE_SPEC* file, std::string* why = nullptr, std::span<const char* const> entries = {});
/// Address of an exported entry point, or null.
void* KyrFindSymbol(const char* name, void* handle);
/// Unloads; a null handle is nothing.
void KyrUnloadDLL(void* handle);

/// Joins a directory and a file name into a path of at most `size` bytes, the terminator included.
/// @return false, with an empty path, when it does not fit
bool BuildFileName(const DIRECTORY* directory, const char* name, char* fullName, std::size_t size);

template <std::size_t N>
bool BuildFileName(const DIRECTORY* directory, const char* name, char (&fullName)[N]) {
  return BuildFileName(directory, name, fullName, N);
}
