#include "libkyr/bytesat.h"

#include <algorithm>
#include <cerrno>

namespace {

constexpr std::size_t kLargePiece = std::size_t{256} * 1024;
constexpr std::size_t kSmallPiece = 512;

}  // namespace

bool FileBytes::open(const std::string& path) {
  FileHandle file = openFile(path.c_str(), "rb", 0);
  if (!file) return false;
  const std::optional<std::uint64_t> size = fileSize(file.get());
  if (!size) {
    errno = EINVAL;
    return false;
  }
  file_ = std::move(file);
  size_ = *size;
  there_ = 0;
  next_ = 0;
  error_ = 0;
  return true;
}

std::span<const char> FileBytes::at(std::uint64_t place, std::size_t count) {
  if (place >= size_) return {};
  count = static_cast<std::size_t>(std::min<std::uint64_t>(count, size_ - place));
  const bool isHeld = place >= place_ && place - place_ <= there_ && there_ - (place - place_) >= count;
  if (!isHeld) {
    const std::size_t wanted = std::max(count, place == next_ ? kLargePiece : kSmallPiece);
    if (held_.size() < wanted) held_.resize(wanted);
    place_ = place;
    const std::optional<std::size_t> read = readAt(fileno(file_.get()), held_.data(), wanted, place);
    if (!read && error_ == 0) error_ = errno;
    there_ = read.value_or(0);
  }
  const auto first = static_cast<std::size_t>(place - place_);
  const std::span<const char> found = std::span(held_).subspan(first, std::min(count, there_ - first));
  next_ = place + found.size();
  return found;
}
