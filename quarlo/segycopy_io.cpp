#include "quarlo/segycopy_io.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <optional>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/cons_win.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/loglines.h"

namespace {

constexpr TapeChangeWords OUTPUT_WORDS = {"Tape finished.", "Magazine finished.", "  "};

std::optional<std::pair<dev_t, ino_t>> nodeOf(const std::string& path) {
  struct stat facts {};
  if (stat(path.c_str(), &facts) != 0) {
    return std::nullopt;
  }
  return std::pair(facts.st_dev, facts.st_ino);
}

}  // namespace

std::size_t writeAll(int descriptor, const char* data, std::size_t bytes) {
  std::size_t done = 0;
  while (done < bytes) {
    const ssize_t now = ::write(descriptor, data + done, bytes - done);
    if (now > 0) {
      done += static_cast<std::size_t>(now);
    } else if (now == 0) {
      errno = ENOSPC;
      break;
    } else if (errno != EINTR) {
      break;
    }
  }
  return done;
}

// ---- files by what they are -------------------------------------------------------------------------------------

void FileSet::add(const std::string& path) {
  if (const auto node = nodeOf(path)) {
    nodes.insert(*node);
  }
}

bool FileSet::holds(const std::string& path) const {
  const auto node = nodeOf(path);
  return node && nodes.contains(*node);
}

void DirectoryFiles::nameOthers(void (*tell)(const char* line)) const {
  for (const std::string& name : others) {
    tell(formatText("  ** %s is no regular file and is not copied.", name.c_str()).c_str());
  }
}

DirectoryFiles listFiles(const DIRECTORY& directory, const char* pattern) {
  DirectoryFiles found;
  const DirectoryVisit visit(directory);
  if (!visit.isThere()) {
    return found;
  }
  for (const bool directories : {false, true}) {
    const std::unique_ptr<xvt_string_list, decltype(&xvt_slist_destroy)> list(xvt_fsys_list_files(pattern, directories),
                                                                              xvt_slist_destroy);
    for (SLIST_ELT element = list ? xvt_slist_get_first(list.get()) : nullptr; element != nullptr;
         element = xvt_slist_get_next(list.get(), element)) {
      const std::string name = xvt_slist_get_text(list.get(), element);
      struct stat facts {};
      const bool isOther = stat(name.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode);
      if (name != "..") {
        (isOther ? found.others : found.names).push_back(name);
      }
    }
  }
  return found;
}

// ---- reading ----------------------------------------------------------------------------------------------------

void PieceReader::begin(std::FILE* stream) {
  descriptor = fileno(stream);
  first = last = 0;
  error = lseek(descriptor, 0, SEEK_SET) != 0;
}

std::span<const char> PieceReader::peek(std::size_t bytes) {
  if (last - first < bytes && !fill(bytes)) {
    return {};
  }
  return {buffer.data() + first, std::min(bytes, last - first)};
}

std::span<const char> PieceReader::take(std::size_t bytes) {
  const std::span<const char> piece = peek(bytes);
  first += piece.size();
  return piece;
}

/// Brings at least `bytes` bytes into the buffer, or all that are left. @return false on an error
bool PieceReader::fill(std::size_t bytes) {
  if (beforeRefill) {
    beforeRefill();
  }
  std::copy(buffer.begin() + static_cast<std::ptrdiff_t>(first), buffer.begin() + static_cast<std::ptrdiff_t>(last),
            buffer.begin());
  last -= first;
  first = 0;
  // Pieces that are lent go to the disk as they lie here: fewer and larger writes.
  constexpr std::size_t ordinary = 2 * streamBufferSize;
  if (buffer.size() < std::max(bytes, ordinary)) {
    buffer.resize(std::max(2 * bytes, ordinary));
  }
  while (last < bytes && !error) {
    const ssize_t now = ::read(descriptor, buffer.data() + last, buffer.size() - last);
    if (now > 0) {
      last += static_cast<std::size_t>(now);
    } else if (now == 0) {
      break;
    } else if (errno != EINTR) {
      error = true;
    }
  }
  return !error;
}

// ---- writing ----------------------------------------------------------------------------------------------------

void PieceWriter::begin(std::FILE* stream, const char* fileName) {
  file = stream;
  name = fileName;
  forget();
  broken = false;
  emptied = false;
}

void PieceWriter::forget() {
  buffer.clear();
  lent = {};
  pieces.clear();
}

bool PieceWriter::write(std::span<const char> piece, bool isTrace) {
  if (!lent.empty()) {
    flush();  // a failure shows in what follows
  }
  buffer.insert(buffer.end(), piece.begin(), piece.end());
  pieces.push_back({buffer.size(), isTrace});
  return buffer.size() < streamBufferSize || flush();
}

bool PieceWriter::writeLent(std::span<const char> piece, bool isTrace) {
  if (!buffer.empty() || lent.data() + lent.size() != piece.data()) {
    flush();
    lent = piece.first(0);
  }
  lent = {lent.data(), lent.size() + piece.size()};
  pieces.push_back({lent.size(), isTrace});
  return !broken || flush();
}

bool PieceWriter::flush() {
  if (pieces.empty()) {
    return !broken;
  }
  if (broken || file == nullptr) {
    return lose(0, EBADF);
  }
  std::size_t written = 0;
  if (!writeBuffer(&written)) {
    return lose(written, errno);
  }
  forget();
  return true;
}

/// @return false with errno when not all could be written
bool PieceWriter::writeBuffer(std::size_t* written) {
  const int descriptor = fileno(file);
  if (!emptied && ftruncate(descriptor, 0) != 0 && errno != EINVAL) {
    return false;  // EINVAL: a pipe or a device
  }
  emptied = true;
  const std::span<const char> data = lent.empty() ? std::span<const char>(buffer) : lent;
  *written = writeAll(descriptor, data.data(), data.size());
  return *written == data.size();
}

/// Cuts the file back to its last whole piece and counts what did not reach it.
bool PieceWriter::lose(std::size_t written, int reason) {
  if (!broken) {
    say(diskErrorText(name, reason).c_str());
  }
  broken = true;
  std::size_t whole = 0;
  for (const Piece& piece : pieces) {
    if (piece.end <= written) {
      whole = piece.end;
      continue;
    }
    const std::size_t begin = &piece == pieces.data() ? 0 : (&piece - 1)->end;
    gone.traces += piece.isTrace ? 1 : 0;
    (piece.isTrace ? gone.bytes : gone.headerBytes) += static_cast<double>(piece.end - begin);
  }
  if (file != nullptr && whole < written) {
    const int descriptor = fileno(file);
    const off_t end = lseek(descriptor, 0, SEEK_CUR) - static_cast<off_t>(written - whole);
    if (end < 0 || ftruncate(descriptor, end) != 0) {
      say(formatText("  ** The end of disk file \"%s\" is no whole trace.", name.c_str()).c_str());
    }
  }
  forget();
  return false;
}

SegyOutput::SegyOutput(UnitStruct* allUnits, const FileSet& allInputs) : units(allUnits), inputs(allInputs) {
  const std::string_view name = fieldText(units[1].fs.name);
  baseName = name.substr(0, name.find('.'));
  disk.begin(units[1].fp, units[1].name);
}

bool SegyOutput::write(std::span<const char> piece, bool isTrace) {
  if (!isTape()) {
    return disk.write(piece, isTrace);
  }
  const int bytes = static_cast<int>(piece.size());
  if (tlv_tape_write(units, ALL_OUTPUTS, piece.data(), bytes) >= bytes) {
    return true;
  }
  gone = {isTrace ? 1 : 0, isTrace ? static_cast<double>(bytes) : 0, 0};
  return false;
}

// ---- volumes ----------------------------------------------------------------------------------------------------

SegyOutput::Volume SegyOutput::getAnotherOutput(int index) { return isTape() ? nextTapes() : nextFile(index); }

std::vector<std::string> SegyOutput::existingVolumes(int last) const {
  std::vector<std::string> found;
  for (const std::string& name : listFiles(units[1].fs.dir, "*.sgy").names) {
    int index = 0;
    const char* const begin = name.data() + std::min(baseName.size(), name.size());
    std::from_chars(begin, name.data() + name.size(), index);
    if (index >= 1 && index <= last && name == volumeName(index) &&
        !inputs.holds(joinPath(fieldText(units[1].fs.dir.path), name))) {
      found.push_back(name);
    }
  }
  return found;
}

void SegyOutput::startSync() {
  if (units[1].fp != nullptr) {
    sync.add(units[1].fp, pathOf(units[1].fs));
  }
}

SegyOutput::Volume SegyOutput::nextFile(int index) {
  const bool whole = flush();
  startSync();
  if (closeDiskUnit(&units[1]) != 0 || !whole) {
    return Volume::Failed;
  }
  FILE_SPEC next = units[1].fs;
  const std::string name = volumeName(index);
  const bool fits = copyText(next.name, name);
  if (fits && inputs.holds(pathOf(next))) {
    console_printf("  *** Output file %s is an input of this job and is not written.", next.name);
    return Volume::Failed;
  }
  if (!fits || !openDiskUnit(&units[1], next, "wb")) {
    console_printf("***  Error opening file %s", name.c_str());
    return Volume::Failed;
  }
  disk.begin(units[1].fp, units[1].name);
  console_printf("Output file %d: %s", index + 1, next.name);
  return Volume::Ready;
}

SegyOutput::Volume SegyOutput::nextTapes() {
  if (!completeOutputTapes(units, 2)) {
    xvt_dm_post_error("Error writing eof to output tape");
    return Volume::Failed;
  }
  return nextOutputTapes(units, OUTPUT_WORDS) != 0 ? Volume::Ready : Volume::Declined;
}

bool SegyOutput::initOutput(const std::vector<char>& ebcdic, const std::vector<char>& binary) {
  if (writeHeader(ebcdic) && writeHeader(binary)) {
    return true;
  }
  console_out(isTape() ? "  *** Error writing to output tape." : "  *** Error writing to output disk file.");
  return false;
}

bool SegyOutput::separateFiles() {
  if (tlv_weof(units, ALL_OUTPUTS, 1) == 0) {
    return true;
  }
  console_out("*** Error writing end-of-file.");
  return false;
}

bool SegyOutput::finish(JobEnd end) {
  if (isTape()) {
    return closeOutputTapes(units, end, 2);
  }
  const bool whole = flush();
  startSync();
  return sync.wait([](const DiskSync::Failure& failure) { console_out(diskErrorText(failure).c_str()); }) && whole;
}
