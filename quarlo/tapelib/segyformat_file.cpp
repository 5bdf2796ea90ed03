#include "quarlo/tapelib/segyformat_file.h"

#include <cerrno>
#include <cstring>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/segyformat_text.h"

namespace {

using Messages = std::vector<std::string>;

bool refuse(Messages* messages, const FILE_SPEC& file, const char* reason) {
  messages->push_back(formatText("%s: %s", file.name, reason));
  return false;
}

bool tell(Messages* messages, const FILE_SPEC& file, const std::vector<SegyTextFault>& faults) {
  for (const SegyTextFault& fault : faults)
    messages->push_back(fault.line == 0 ? formatText("%s: %s", file.name, fault.text.c_str())
                                        : formatText("%s, line %d: %s", file.name, fault.line, fault.text.c_str()));
  return faults.empty();
}

/// At most one byte more than a description may have.
bool readText(const std::string& path, std::string* text) {
  const FileHandle stream = openFile(path.c_str(), "rb", 0);
  if (!stream) return false;
  text->resize(maxSegyTextBytes + 1);
  text->resize(std::fread(text->data(), 1, text->size(), stream.get()));
  return std::ferror(stream.get()) == 0;
}

bool writeText(const std::string& path, const std::string& text) {
  FileHandle stream = openFile(path.c_str(), "wb", 0);
  if (!stream) return false;
  const bool whole = std::fwrite(text.data(), 1, text.size(), stream.get()) == text.size();
  const int reason = errno;
  const bool closed = closeFile(stream);
  if (!whole) errno = reason;
  return whole && closed;
}

}  // namespace

bool loadSegyFormat(const FILE_SPEC& file, SegyFormat* format, Messages* messages) {
  std::string text;
  if (!readText(pathOf(file), &text)) return refuse(messages, file, std::strerror(errno));
  if (!tell(messages, file, parseSegyFormat(text, format))) return false;
  format->itsFileSpec = file;
  DIRECTORY& directory = format->itsTextFileSpec.dir;
  if (format->itUsesTextFile != 0 &&
      !copyText(directory.path, joinPath(fieldText(file.dir.path), std::string(fieldText(directory.path)))))
    return refuse(messages, file, "the path of the reel header's text file is too long");
  for (const std::string& warning : checkSegyFormat(*format))
    messages->push_back(formatText("%s: %s", file.name, warning.c_str()));
  return true;
}

bool saveSegyFormat(SegyFormat* format, const FILE_SPEC& file, Messages* messages) {
  if (format->itIsReadOnly != 0 && isSameFile(format->itsFileSpec, file))
    return refuse(messages, file, "the description is read-only");
  const std::string text = printSegyFormat(*format);
  SegyFormat readBack;
  if (!tell(messages, file, parseSegyFormat(text, &readBack))) return false;
  const std::string path = pathOf(file);
  const std::string whole = path + ".new";
  if (!writeText(whole, text) || std::rename(whole.c_str(), path.c_str()) != 0) {
    refuse(messages, file, std::strerror(errno));
    std::remove(whole.c_str());
    return false;
  }
  format->itsFileSpec = file;
  return true;
}
