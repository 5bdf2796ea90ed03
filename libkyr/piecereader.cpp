#include "libkyr/piecereader.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "libkyr/files.h"

namespace {

/// Bytes of the first read of a file, and of one further on: each is twice the one before, for a short file is worked
/// on soon, and in a long one less is not worth the turn between two threads.
constexpr std::size_t kFirst = std::size_t{256} * 1024;
constexpr std::size_t kOrdinary = std::size_t{2048} * 1024;
/// Before what is read ahead.
constexpr std::size_t kRoom = kOrdinary;

}  // namespace

void PieceReader::begin(std::FILE* stream, std::uint64_t place) {
  if (ahead_.isUnderWay()) (void)ahead_.finish();
  descriptor_ = fileno(stream);
  struct stat facts {};
  isFile_ = fstat(descriptor_, &facts) == 0 && S_ISREG(facts.st_mode);
  first_ = last_ = 0;
  piece_ = kFirst;
  place_ = place;
  error_ = lseek(descriptor_, static_cast<off_t>(place), SEEK_SET) < 0 ? errno : 0;
}

std::span<const char> PieceReader::peek(std::size_t bytes) {
  if (last_ - first_ < bytes) fill(bytes);
  return {buffer_.data() + first_, std::min(bytes, last_ - first_)};
}

std::span<const char> PieceReader::take(std::size_t bytes) {
  const std::span<const char> piece = peek(bytes);
  first_ += piece.size();
  return piece;
}

/// Brings at least `bytes` bytes into the buffer, or all that there are. Of large ones no more than those: what is read
/// beyond them has to be moved.
void PieceReader::fill(std::size_t bytes) {
  if (beforeRefill) beforeRefill();
  turnOver();
  const std::size_t wanted = std::max(bytes, piece_);
  piece_ = std::min(2 * piece_, kOrdinary);
  if (last_ - first_ < bytes && error_ == 0) {
    if (buffer_.size() < first_ + wanted) buffer_.resize(first_ + wanted);
    const auto got = readAt(descriptor_, buffer_.data() + last_, first_ + wanted - last_, place_);
    if (!got) error_ = errno;
    last_ += got.value_or(0);
    place_ += got.value_or(0);
  }
  if (last_ - first_ >= wanted) lookAhead(std::max(bytes, piece_));
}

/// What is not handed out moves to the front of the buffer, or before what was read ahead, which is the buffer then.
void PieceReader::turnOver() {
  const std::size_t rest = last_ - first_;
  const bool isAhead = ahead_.isUnderWay();
  const std::size_t got = isAhead ? ahead_.finish().value_or(0) : 0;  // a failure shows again when it is read once more
  const bool isOfUse = got > 0 && rest <= kRoom;
  std::vector<char>& target = isOfUse ? next_ : buffer_;
  const std::size_t place = isOfUse ? kRoom - rest : 0;
  std::copy_n(buffer_.begin() + static_cast<std::ptrdiff_t>(first_), rest,
              target.begin() + static_cast<std::ptrdiff_t>(place));
  first_ = place;
  last_ = place + rest;
  if (!isOfUse) return;
  buffer_.swap(next_);
  last_ += got;
  place_ += got;
}

/// Behind a piece that is whole the next one is read.
void PieceReader::lookAhead(std::size_t bytes) {
  if (!isFile_) return;
  if (next_.size() < kRoom + bytes) next_.resize(kRoom + bytes);
  ahead_.start(descriptor_, place_, std::span(next_).subspan(kRoom, bytes));
}
