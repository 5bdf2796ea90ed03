#include "quarlo/tapelib/dll_fcn.h"

#include "libkyr/files.h"
#include "libkyr/sharedobject.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/diskunit.h"

void* KyrLoadDLL(const FILE_SPEC* file, std::string* why, std::span<const char* const> entries) {
  return file != nullptr ? loadSharedObject(pathOf(*file), why, entries) : nullptr;
}

void* KyrFindSymbol(const char* name, void* handle) { return findSymbol(handle, name); }

void KyrUnloadDLL(void* handle) { unloadSharedObject(handle); }

bool BuildFileName(const DIRECTORY* directory, const char* name, char* fullName, std::size_t size) {
  const std::string path =
      joinPath(directory != nullptr ? fieldText(directory->path) : "", name != nullptr ? name : "");
  const bool fits = path.size() < size;
  copyText(fullName, size, fits ? path : "");
  return fits;
}
