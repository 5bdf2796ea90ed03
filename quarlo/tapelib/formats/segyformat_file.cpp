#include "quarlo/tapelib/formats/segyformat_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/formats/segyformat_text.h"
#include "quarlo/tapelib/sharefolder.h"

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
  text->resize(kMaxSegyTextBytes + 1);
  text->resize(std::fread(text->data(), 1, text->size(), stream.get()));
  return std::ferror(stream.get()) == 0;
}

/// Creates a file beside `path` of a name that nobody uses. @param name receives it; empty after a failure (errno)
FileHandle createBeside(const std::string& path, std::string* name) {
  constexpr int kTries = 1000;
  for (int number = 1; number <= kTries; ++number) {
    *name = formatText("%s.new%d", path.c_str(), number);
    FileHandle stream = openFile(name->c_str(), "wbx", 0);
    if (stream) return stream;
    if (errno != EEXIST) break;
  }
  name->clear();
  return {};
}

bool writeText(FileHandle stream, const std::string& text) {
  if (!stream) return false;
  const bool whole = std::fwrite(text.data(), 1, text.size(), stream.get()) == text.size();
  const int reason = errno;
  const bool closed = closeFile(stream);
  if (!whole) errno = reason;
  return whole && closed;
}

/// Puts a whole text in the place of what `path` holds. @return false with errno; `path` is then as it was
bool replaceText(const std::string& path, const std::string& text) {
  std::string fresh;
  if (writeText(createBeside(path, &fresh), text) && std::rename(fresh.c_str(), path.c_str()) == 0) return true;
  const int reason = errno;
  if (!fresh.empty()) std::remove(fresh.c_str());
  errno = reason;
  return false;
}

/// A directory with its whole path and one slash at its end.
std::string wholeDirectory(const std::string& directory) {
  std::error_code ignored;
  std::string whole = joinPath(std::filesystem::current_path(ignored).string(), directory);
  if (!whole.ends_with('/')) whole += '/';
  return whole;
}

/// The text file as a description in `home` names it: by the rest of its path when it lies there or below, so that both
/// can move together, else by its whole path. @return false when the path is too long
bool nameForStoring(const std::string& home, FILE_SPEC* textFile) {
  if (textFile->name[0] == '\0') return true;
  const std::string directory = wholeDirectory(std::string(fieldText(textFile->dir.path)));
  const std::string base = wholeDirectory(home);
  return copyText(textFile->dir.path, directory.starts_with(base) ? directory.substr(base.size()) : directory);
}

/// The reverse. The working directory may change later: the path becomes a whole one.
bool nameForUsing(const std::string& home, FILE_SPEC* textFile) {
  if (textFile->name[0] == '\0') return true;
  std::string directory = wholeDirectory(joinPath(home, std::string(fieldText(textFile->dir.path))));
  if (directory.size() > 1) directory.pop_back();
  return copyText(textFile->dir.path, directory);
}

constexpr const char* kLongTextPath = "the path of the reel header's text file is too long";

}  // namespace

bool loadSegyFormat(const FILE_SPEC& file, SegyFormat* format, Messages* messages) {
  std::string text;
  if (!readText(pathOf(file), &text)) return refuse(messages, file, std::strerror(errno));
  if (!tell(messages, file, parseSegyFormat(text, format))) return false;
  format->itsFileSpec = file;
  if (!nameForUsing(std::string(fieldText(file.dir.path)), &format->itsTextFileSpec))
    return refuse(messages, file, kLongTextPath);
  for (const std::string& warning : checkSegyFormat(*format))
    messages->push_back(formatText("%s: %s", file.name, warning.c_str()));
  return true;
}

bool loadChosenSegyFormat(std::string_view chosen, const char* shipped, SegyFormat* format,
                          const std::function<void(const std::string& line)>& say) {
  std::string path = chosen.empty() ? findShared("formats", shipped) : std::string(chosen);
  if (path.empty()) path = shipped;
  Messages messages;
  const bool loaded = loadSegyFormat(fileSpecOf(path), format, &messages);
  for (const std::string& message : messages) say("  ** " + message);
  if (!loaded) say(formatText("  *** Error reading the format description %s.", path.c_str()));
  return loaded;
}

bool saveSegyFormat(SegyFormat* format, const FILE_SPEC& file, Messages* messages) {
  if (format->itIsReadOnly != 0 && isSameFile(format->itsFileSpec, file))
    return refuse(messages, file, "the description is read-only");
  FILE_SPEC textFile = format->itsTextFileSpec;
  if (!nameForStoring(std::string(fieldText(file.dir.path)), &textFile)) return refuse(messages, file, kLongTextPath);
  const FILE_SPEC inUse = std::exchange(format->itsTextFileSpec, textFile);
  const std::string text = printSegyFormat(*format);
  format->itsTextFileSpec = inUse;
  SegyFormat readBack;
  if (!tell(messages, file, parseSegyFormat(text, &readBack))) return false;
  if (pathOf(readBack.itsTextFileSpec) != pathOf(textFile))
    return refuse(messages, file, "the path of the reel header's text file cannot stand in a line");
  if (!replaceText(pathOf(file), text)) return refuse(messages, file, std::strerror(errno));
  format->itsFileSpec = file;
  return true;
}
