/// Shared objects: found by path, loaded, searched for symbols, unloaded.
///
/// A file is judged before it is let into the program: first by its headers (elfcheck.h), then by loading and searching
/// it once in a child process that has nothing to lose. One that kills or hangs its process while it is loaded or
/// searched (a damaged table, a crashing constructor) so becomes a failure with a reason. What came of the trial holds
/// for the program's life, or until the file changes: one that hangs costs its ten seconds once.
#pragma once

#include <span>
#include <string>

/// Loads the shared object at `path` (relative ones from the working directory; never searched for elsewhere) with all
/// its symbols resolved.
/// @param why receives the reason of a failure; may be null
/// @param symbols names that findSymbol will be asked for; the trial looks them up too, whether they are there or not
/// @return its handle; null when it cannot be loaded
void* loadSharedObject(const std::string& path, std::string* why, std::span<const char* const> symbols = {});

/// Address of an exported symbol, or null, as for a null handle or name. In a damaged object only names that
/// loadSharedObject was told of are safe to ask for.
void* findSymbol(void* handle, const char* name);

/// Unloads; a null handle is nothing.
void unloadSharedObject(void* handle);
