#include "quarlo/tapelib/diskunit.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/console.h"

namespace {

/// Streams and buffers of the disk units, by unit number.
FileHandle& streamOf(const UnitStruct* unit) {
  static std::array<FileHandle, kMaxUnits> streams;
  return streams.at(static_cast<std::size_t>(unit - getDevPtr()));
}

}  // namespace

void sayIfLocked(const std::string& path) {
  const int reason = errno;
  if (reason == EBUSY)
    console_printf("  *** %s is a temporary file of a job that runs: choose another output.", path.c_str());
  errno = reason;
}

std::string pathOf(const FILE_SPEC& file) { return joinPath(fieldText(file.dir.path), fieldText(file.name)); }

std::string choiceName(const UnitStruct& unit) { return unit.type == UT_DISK ? pathOf(unit.fs) : unit.name; }

FILE_SPEC fileSpecOf(const std::string& path) {
  FILE_SPEC file{};
  const std::size_t slash = path.rfind('/');
  const std::size_t begin = slash == std::string::npos ? 0 : slash + 1;
  const bool fits =
      copyText(file.dir.path, path.substr(0, begin > 1 ? begin - 1 : begin)) && copyText(file.name, path.substr(begin));
  return fits ? file : FILE_SPEC{};
}

bool isSameFile(const FILE_SPEC& one, const FILE_SPEC& other) {
  return sameFile(pathOf(one).c_str(), pathOf(other).c_str());
}

bool isOpenFile(const UnitStruct& unit, const FILE_SPEC& file) {
  return unit.type == UT_DISK && unit.state == 1 && isSameFile(file, unit.fs);
}

bool openDiskUnit(UnitStruct* unit, const FILE_SPEC& file, const char* mode) {
  const bool isInput = std::string_view(mode) == "rb";
  FileHandle stream = openFile(pathOf(file).c_str(), mode);
  if (!stream || (!isInput && !keepFromLockers(stream.get()))) {
    if (!isInput) sayIfLocked(pathOf(file));
    return false;
  }
  if (isInput && !fileSize(stream.get())) {
    errno = EINVAL;
    return false;
  }
  unit->fp = stream.get();
  streamOf(unit) = std::move(stream);
  unit->fs = file;
  copyText(unit->name, fieldText(file.name));
  unit->type = UT_DISK;
  unit->state = 1;
  unit->minBlockSize = 1;
  unit->maxBlockSize = getDevPtr()->ioBufLen;
  unit->eofMark = 0;
  unit->eodMark = 0;
  return true;
}

int closeDiskUnit(UnitStruct* unit) {
  if (unit->type != UT_DISK) return 0;
  int result = 0;
  if (unit->fp != nullptr && !closeFile(streamOf(unit))) {
    console_printf("  *** Error closing disk file \"%s\": %s.", unit->name, std::strerror(errno));
    result = -1;
  }
  unit->fp = nullptr;
  unit->state = 0;
  unit->minBlockSize = 0;
  unit->maxBlockSize = 0;
  unit->name[0] = '\0';
  unit->fs.name[0] = '\0';
  return result;
}
