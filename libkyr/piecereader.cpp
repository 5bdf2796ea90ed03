#include "libkyr/piecereader.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

void PieceReader::begin(std::FILE* stream, std::uint64_t place) {
  descriptor_ = fileno(stream);
  first_ = last_ = 0;
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
  constexpr std::size_t kOrdinary = std::size_t{512} * 1024;
  if (beforeRefill) beforeRefill();
  std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(first_), buffer_.begin() + static_cast<std::ptrdiff_t>(last_),
            buffer_.begin());
  last_ -= first_;
  first_ = 0;
  const std::size_t wanted = std::max(bytes, kOrdinary);
  if (buffer_.size() < wanted) buffer_.resize(wanted);
  while (last_ < bytes && error_ == 0) {
    const ssize_t now = ::read(descriptor_, buffer_.data() + last_, wanted - last_);
    if (now == 0) break;
    if (now > 0) {
      last_ += static_cast<std::size_t>(now);
      place_ += static_cast<std::uint64_t>(now);
    } else if (errno != EINTR) {
      error_ = errno;
    }
  }
}
