#include "quarlo/tapelib/dialogs/savetext.h"

#include "libkyr/files.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/diskunit.h"

void saveTextAs(FILE_SPEC* file, const char* extension, const char* title, const FILE_SPEC* input,
                const std::function<bool(std::FILE* to)>& write) {
  if (!chooseFileToSave(file, extension, title)) return;
  if (input != nullptr && isSameFile(*file, *input))
    return xvt_dm_post_error("This file name is already being used for input. Choose another file name.");
  FileHandle handle = openFile(pathOf(*file).c_str(), "w");
  if (!handle) return xvt_dm_post_error("Error opening file: %s", file->name);
  const bool written = write(handle.get());
  if (!closeFile(handle) || !written) xvt_dm_post_error("Error writing to disk file");
}

bool writeText(std::FILE* to, const std::string& text) {
  return std::fwrite(text.data(), 1, text.size(), to) == text.size();
}
