#include "quarlo/tapelib/frame/piecefile.h"

#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
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

namespace {

/// What the buffer is filled to: every write but the last ends at a multiple of this in the file.
constexpr std::size_t kPiece = kStreamBufferSize;
/// Lent bytes go out to a multiple of this: the pages of the file are written whole.
constexpr std::size_t kPage = 4096;

}  // namespace

void PieceWriter::begin(std::FILE* stream, const char* fileName) {
  file_ = stream;
  name_ = fileName;
  held_.clear();
  lent_ = {};
  pieces_.clear();
  onDisk_ = whole_ = 0;
  broken_ = false;
  emptied_ = false;
}

void PieceWriter::beginBehind(std::FILE* stream, const char* fileName) {
  begin(stream, fileName);
  const off_t place = lseek(fileno(stream), 0, SEEK_CUR);
  onDisk_ = whole_ = place > 0 ? static_cast<std::uint64_t>(place) : 0;
  emptied_ = true;
}

bool PieceWriter::empty() {
  if (emptied_) return true;
  const int descriptor = file_ != nullptr ? fileno(file_) : -1;
  struct stat facts {};
  // A pipe or a device has no size and no places. A file that is empty stays untouched: some file systems bring a file
  // that was cut to the disk before they close it.
  const bool isFile = fstat(descriptor, &facts) == 0 && S_ISREG(facts.st_mode);
  const bool cut =
      !isFile || ((facts.st_size == 0 || ftruncate(descriptor, 0) == 0) && lseek(descriptor, 0, SEEK_SET) == 0);
  if (descriptor < 0 || !cut) return lose(descriptor < 0 ? EBADF : errno);
  emptied_ = true;
  return true;
}

/// Bytes that are too many to be copied go out from where they lie, together with what is held before them.
bool PieceWriter::write(std::span<const char> head, std::span<const char> body, bool isData) {
  if (!lent_.empty()) settle();  // a failure shows in what follows
  held_.insert(held_.end(), head.begin(), head.end());
  lent_ = body;
  return accept(head.size() + body.size(), body.size(), isData) && storeUpTo(end() / kPiece * kPiece) && keep();
}

bool PieceWriter::writeLent(std::span<const char> piece, bool isData) {
  if (!lent_.empty() && lent_.data() + lent_.size() != piece.data()) settle();
  lent_ = lent_.empty() ? piece : std::span(lent_.data(), lent_.size() + piece.size());
  return accept(piece.size(), piece.size(), isData);
}

bool PieceWriter::settle() { return storeUpTo(end() / kPage * kPage) && keep(); }

bool PieceWriter::flush() { return storeUpTo(end()); }

bool PieceWriter::accept(std::size_t bytes, std::size_t dataBytes, bool isData) {
  pieces_.push_back({end(), dataBytes, bytes, isData});
  return !broken_ || lose(EBADF);
}

/// What is lent and not on disk yet, into the buffer.
bool PieceWriter::keep() {
  held_.insert(held_.end(), lent_.begin(), lent_.end());
  lent_ = {};
  return true;
}

bool PieceWriter::storeUpTo(std::uint64_t place) {
  if (broken_) return false;
  if (place <= onDisk_) return true;
  if (!empty()) return false;
  while (onDisk_ < place) {
    const std::size_t stored = storeSome(static_cast<std::size_t>(place - onDisk_));
    if (stored == 0) return lose(errno);
    onDisk_ += stored;
  }
  for (; !pieces_.empty() && pieces_.front().end <= onDisk_; pieces_.pop_front()) whole_ = pieces_.front().end;
  return true;
}

/// @return bytes that arrived; 0 with errno when the disk takes none
std::size_t PieceWriter::storeSome(std::size_t bytes) {
  const std::size_t held = std::min(bytes, held_.size());
  const std::size_t lent = std::min(bytes - held, lent_.size());
  const std::array<iovec, 2> parts = {iovec{held_.data(), held}, iovec{const_cast<char*>(lent_.data()), lent}};
  ssize_t now = 0;
  do now = writev(fileno(file_), parts.data(), static_cast<int>(parts.size()));
  while (now < 0 && errno == EINTR);
  if (now == 0) errno = ENOSPC;
  const std::size_t stored = now > 0 ? static_cast<std::size_t>(now) : 0;
  const std::size_t ofHeld = std::min(stored, held);
  held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(ofHeld));
  lent_ = lent_.subspan(stored - ofHeld);
  return stored;
}

/// Cuts the file back to its last whole piece and counts what did not reach it. Keeps errno as `reason`.
bool PieceWriter::lose(int reason) {
  if (!broken_) say_(diskErrorText(name_, reason).c_str());
  broken_ = true;
  reached_.reset();
  for (; !pieces_.empty(); pieces_.pop_front()) {
    const Piece& piece = pieces_.front();
    if (piece.end <= onDisk_) {
      whole_ = piece.end;
      continue;
    }
    gone_.traces += piece.isData ? 1 : 0;
    (piece.isData ? gone_.bytes : gone_.headerBytes) += static_cast<double>(piece.dataBytes);
    const std::uint64_t begin = piece.end - piece.bytes;
    if (pieces_.size() == 1 && onDisk_ >= begin) reached_ = static_cast<std::size_t>(onDisk_ - begin);
  }
  held_.clear();
  lent_ = {};
  const auto place = static_cast<off_t>(whole_);
  if (onDisk_ > whole_ && (ftruncate(fileno(file_), place) != 0 || lseek(fileno(file_), place, SEEK_SET) != place))
    say_(formatText("  ** The end of disk file \"%s\" is no whole %s.", name_.c_str(), noun_).c_str());
  onDisk_ = whole_;
  errno = reason;
  return false;
}
