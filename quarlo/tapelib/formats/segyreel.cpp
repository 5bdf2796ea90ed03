#include "quarlo/tapelib/formats/segyreel.h"

#include <array>
#include <cstring>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/formats/charsets.h"

namespace {

std::string inEbcdic(const std::string& ascii) {
  std::array<int, kA2eTableSize> toEbcdic{};
  std::array<int, kE2aTableSize> toAscii{};
  initascebc(toEbcdic.data(), toAscii.data());
  std::string ebcdic(ascii.size() + 1, '\0');  // asc2ebc ends its text
  asc2ebc(ascii.data(), ebcdic.data(), static_cast<int>(ascii.size()), toEbcdic.data());
  ebcdic.pop_back();
  return ebcdic;
}

/// The first `bytes` bytes of a text file; none after a console line.
std::string startOfFile(ProcessRecord* procRecord, const FILE_SPEC& file, std::size_t bytes) {
  const std::string path = pathOf(file);
  do_console_out(procRecord, formatText("Reel header will be created from file: %s", path.c_str()).c_str());
  const FileHandle stream = openFile(path.c_str(), "rb", 0);
  if (!stream) {
    do_console_out(procRecord, "  *** Error opening text file. Reel header will be blank");
    return {};
  }
  std::string text(bytes, '\0');
  text.resize(std::fread(text.data(), 1, bytes, stream.get()));
  if (std::ferror(stream.get()) != 0) {
    do_console_out(procRecord, "  *** Error reading text file. Reel header will be blank");
    return {};
  }
  return text;
}

std::string paddedText(const char* text, std::size_t bytes) {
  std::string padded = text != nullptr ? std::string(text, strnlen(text, bytes)) : std::string();
  padded.resize(bytes, ' ');
  return padded;
}

}  // namespace

std::string segyTextHeader(ProcessRecord* procRecord, const SegyFormat& format, const char* text) {
  const auto bytes = static_cast<std::size_t>(format.itsReelBytes);
  std::string header =
      format.itUsesTextFile != 0 ? startOfFile(procRecord, format.itsTextFileSpec, bytes) : paddedText(text, bytes);
  if (format.itHasReelEBCDIC != 0) header = inEbcdic(header);
  header.resize(bytes, '\0');
  return header;
}
