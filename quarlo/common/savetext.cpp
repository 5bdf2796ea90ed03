#include "quarlo/common/savetext.h"

#include <cstdio>

#include "libkyr/files.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/diskunit.h"

void saveTextAs(FILE_SPEC* file, const char* extension, const char* title, const FILE_SPEC* input,
                const std::function<std::string()>& text) {
  if (!chooseFileToSave(file, extension, title)) return;
  if (input != nullptr && isSameFile(*file, *input))
    return xvt_dm_post_error("This file name is already being used for input. Choose another file name.");
  const std::string whole = text();
  FileHandle handle = openFile(pathOf(*file).c_str(), "w");
  if (!handle) return xvt_dm_post_error("Error opening file: %s", file->name);
  const bool written = std::fwrite(whole.data(), 1, whole.size(), handle.get()) == whole.size();
  if (!closeFile(handle) || !written) xvt_dm_post_error("Error writing to disk file");
}
