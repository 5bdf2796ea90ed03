#include "quarlo/tapelib/frame/piecefile.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/frame/loglines.h"

// ---- reading ----------------------------------------------------------------------------------------------------

void PieceReader::begin(std::FILE* stream) {
  descriptor_ = fileno(stream);
  first_ = last_ = 0;
  error_ = lseek(descriptor_, 0, SEEK_SET) != 0;
}

std::span<const char> PieceReader::peek(std::size_t bytes) {
  if (last_ - first_ < bytes && !fill(bytes)) return {};
  return {buffer_.data() + first_, std::min(bytes, last_ - first_)};
}

std::span<const char> PieceReader::take(std::size_t bytes) {
  const std::span<const char> piece = peek(bytes);
  first_ += piece.size();
  return piece;
}

/// Brings at least `bytes` bytes into the buffer, or all that are left. @return false on an error
bool PieceReader::fill(std::size_t bytes) {
  if (beforeRefill) beforeRefill();
  std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(first_), buffer_.begin() + static_cast<std::ptrdiff_t>(last_),
            buffer_.begin());
  last_ -= first_;
  first_ = 0;
  // Pieces that are lent go to the disk as they lie here: fewer and larger writes.
  constexpr std::size_t kOrdinary = 2 * kStreamBufferSize;
  if (buffer_.size() < std::max(bytes, kOrdinary)) buffer_.resize(std::max(2 * bytes, kOrdinary));
  while (last_ < bytes && !error_) {
    const ssize_t now = ::read(descriptor_, buffer_.data() + last_, buffer_.size() - last_);
    if (now > 0)
      last_ += static_cast<std::size_t>(now);
    else if (now == 0)
      break;
    else if (errno != EINTR)
      error_ = true;
  }
  return !error_;
}

// ---- writing ----------------------------------------------------------------------------------------------------

void PieceWriter::begin(std::FILE* stream, const char* fileName) {
  file_ = stream;
  name_ = fileName;
  forget();
  broken_ = false;
  emptied_ = false;
}

void PieceWriter::forget() {
  buffer_.clear();
  lent_ = {};
  pieces_.clear();
}

bool PieceWriter::write(std::span<const char> piece, bool isTrace) {
  if (!lent_.empty()) flush();  // a failure shows in what follows
  buffer_.insert(buffer_.end(), piece.begin(), piece.end());
  pieces_.push_back({buffer_.size(), isTrace});
  return buffer_.size() < kStreamBufferSize || flush();
}

bool PieceWriter::writeLent(std::span<const char> piece, bool isTrace) {
  if (!buffer_.empty() || lent_.data() + lent_.size() != piece.data()) {
    flush();
    lent_ = piece.first(0);
  }
  lent_ = {lent_.data(), lent_.size() + piece.size()};
  pieces_.push_back({lent_.size(), isTrace});
  return !broken_ || flush();
}

bool PieceWriter::flush() {
  if (pieces_.empty()) return !broken_;
  if (broken_ || file_ == nullptr) return lose(0, EBADF);
  std::size_t written = 0;
  if (!writeBuffer(&written)) return lose(written, errno);
  forget();
  return true;
}

/// @return false with errno when not all could be written
bool PieceWriter::writeBuffer(std::size_t* written) {
  const int descriptor = fileno(file_);
  if (!emptied_ && ftruncate(descriptor, 0) != 0 && errno != EINVAL) return false;  // EINVAL: a pipe or a device
  emptied_ = true;
  const std::span<const char> data = lent_.empty() ? std::span<const char>(buffer_) : lent_;
  *written = writeAll(descriptor, data.data(), data.size());
  return *written == data.size();
}

/// Cuts the file back to its last whole piece and counts what did not reach it.
bool PieceWriter::lose(std::size_t written, int reason) {
  if (!broken_) say_(diskErrorText(name_, reason).c_str());
  broken_ = true;
  std::size_t whole = 0;
  for (const Piece& piece : pieces_) {
    if (piece.end <= written) {
      whole = piece.end;
      continue;
    }
    const std::size_t begin = &piece == pieces_.data() ? 0 : (&piece - 1)->end;
    gone_.traces += piece.isTrace ? 1 : 0;
    (piece.isTrace ? gone_.bytes : gone_.headerBytes) += static_cast<double>(piece.end - begin);
  }
  if (file_ != nullptr && whole < written) {
    const int descriptor = fileno(file_);
    const off_t end = lseek(descriptor, 0, SEEK_CUR) - static_cast<off_t>(written - whole);
    if (end < 0 || ftruncate(descriptor, end) != 0)
      say_(formatText("  ** The end of disk file \"%s\" is no whole trace.", name_.c_str()).c_str());
  }
  forget();
  return false;
}
