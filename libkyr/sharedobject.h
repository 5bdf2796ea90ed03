/// Shared objects: found by path, loaded, searched for symbols, unloaded.
///
/// A file is judged before it is let into the program: first by its headers (elfcheck.h), then by loading it once in a
/// child process that has nothing to lose. One that kills or hangs its process while it is loaded (a damaged table, a
/// crashing constructor) so becomes a failure with a reason. A file that has passed is not tried again until it
/// changes.
#pragma once

#include <string>

/// Loads the shared object at `path` (relative ones from the working directory; never searched for elsewhere) with all
/// its symbols resolved.
/// @param why receives the reason of a failure; may be null
/// @return its handle; null when it cannot be loaded
void* loadSharedObject(const std::string& path, std::string* why);

/// Address of an exported symbol, or null, as for a null handle or name.
void* findSymbol(void* handle, const char* name);

/// Unloads; a null handle is nothing.
void unloadSharedObject(void* handle);
