#include "quarlo/tapelib/frame/piecefile.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/frame/loglines.h"

// ---- reading ----------------------------------------------------------------------------------------------------

void PieceReader::begin(std::FILE* stream) {
  descriptor = fileno(stream);
  first = last = 0;
  error = lseek(descriptor, 0, SEEK_SET) != 0;
}

std::span<const char> PieceReader::peek(std::size_t bytes) {
  if (last - first < bytes && !fill(bytes)) return {};
  return {buffer.data() + first, std::min(bytes, last - first)};
}

std::span<const char> PieceReader::take(std::size_t bytes) {
  const std::span<const char> piece = peek(bytes);
  first += piece.size();
  return piece;
}

/// Brings at least `bytes` bytes into the buffer, or all that are left. @return false on an error
bool PieceReader::fill(std::size_t bytes) {
  if (beforeRefill) beforeRefill();
  std::copy(buffer.begin() + static_cast<std::ptrdiff_t>(first), buffer.begin() + static_cast<std::ptrdiff_t>(last),
            buffer.begin());
  last -= first;
  first = 0;
  // Pieces that are lent go to the disk as they lie here: fewer and larger writes.
  constexpr std::size_t ordinary = 2 * streamBufferSize;
  if (buffer.size() < std::max(bytes, ordinary)) buffer.resize(std::max(2 * bytes, ordinary));
  while (last < bytes && !error) {
    const ssize_t now = ::read(descriptor, buffer.data() + last, buffer.size() - last);
    if (now > 0)
      last += static_cast<std::size_t>(now);
    else if (now == 0)
      break;
    else if (errno != EINTR)
      error = true;
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
  if (!lent.empty()) flush();  // a failure shows in what follows
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
  if (pieces.empty()) return !broken;
  if (broken || file == nullptr) return lose(0, EBADF);
  std::size_t written = 0;
  if (!writeBuffer(&written)) return lose(written, errno);
  forget();
  return true;
}

/// @return false with errno when not all could be written
bool PieceWriter::writeBuffer(std::size_t* written) {
  const int descriptor = fileno(file);
  if (!emptied && ftruncate(descriptor, 0) != 0 && errno != EINVAL) return false;  // EINVAL: a pipe or a device
  emptied = true;
  const std::span<const char> data = lent.empty() ? std::span<const char>(buffer) : lent;
  *written = writeAll(descriptor, data.data(), data.size());
  return *written == data.size();
}

/// Cuts the file back to its last whole piece and counts what did not reach it.
bool PieceWriter::lose(std::size_t written, int reason) {
  if (!broken) say(diskErrorText(name, reason).c_str());
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
    if (end < 0 || ftruncate(descriptor, end) != 0)
      say(formatText("  ** The end of disk file \"%s\" is no whole trace.", name.c_str()).c_str());
  }
  forget();
  return false;
}
