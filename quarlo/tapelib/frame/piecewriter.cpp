#include "quarlo/tapelib/frame/piecewriter.h"

#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/frame/loglines.h"

namespace {

/// What the buffer is filled to before it is written.
constexpr std::size_t kPiece = kStreamBufferSize;
/// Lent bytes that are worth a write of their own: fewer are copied.
constexpr std::size_t kLentPiece = std::size_t{32} * 1024;
/// Of one body: a shorter one is copied at once.
constexpr std::size_t kShort = 1024;
/// Every write but the last ends at a multiple of this in the file, whose pages are written whole.
constexpr std::size_t kPage = 4096;

}  // namespace

void PieceWriter::begin(std::FILE* stream, const char* fileName) {
  file_ = stream;
  name_ = fileName;
  runs_.clear();
  held_.clear();
  waiting_ = 0;
  pieces_.clear();
  onDisk_ = whole_ = started_ = 0;
  endsInHead_ = false;
  failure_ = 0;
  emptied_ = false;
}

void PieceWriter::beginBehind(std::FILE* stream, const char* fileName) {
  begin(stream, fileName);
  const off_t place = lseek(fileno(stream), 0, SEEK_CUR);
  onDisk_ = whole_ = started_ = place > 0 ? static_cast<std::uint64_t>(place) : 0;
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

bool PieceWriter::write(std::span<const char> head, std::span<const char> body, bool isData) {
  return writeLent(head, body, isData) && settle();
}

bool PieceWriter::writeLent(std::span<const char> head, std::span<const char> body, bool isData) {
  hold(head);
  if (body.size() < kShort)
    hold(body);
  else
    lend(body);
  const std::size_t bytes = head.size() + body.size();
  pieces_.push_back({end(), body.size(), bytes, isData});
  return failure_ == 0 || lose(failure_);
}

bool PieceWriter::settle() {
  const bool due = waiting_ >= kPiece || lentBytes() >= kLentPiece;
  if (due && !storeUpTo(end() / kPage * kPage)) return false;
  keep();
  return true;
}

bool PieceWriter::flush() { return storeUpTo(end()); }

void PieceWriter::hold(std::span<const char> bytes) {
  if (bytes.empty()) return;
  if (runs_.empty() || runs_.back().lent != nullptr) runs_.push_back({nullptr, 0});
  runs_.back().bytes += bytes.size();
  held_.insert(held_.end(), bytes.begin(), bytes.end());
  waiting_ += bytes.size();
}

void PieceWriter::lend(std::span<const char> bytes) {
  const bool goesOn =
      !runs_.empty() && runs_.back().lent != nullptr && runs_.back().lent + runs_.back().bytes == bytes.data();
  if (!goesOn) runs_.push_back({bytes.data(), 0});
  runs_.back().bytes += bytes.size();
  waiting_ += bytes.size();
}

/// What is lent and not on disk yet, into the buffer.
void PieceWriter::keep() {
  std::ptrdiff_t place = 0;
  for (const Run& run : runs_) {
    if (run.lent != nullptr) held_.insert(held_.begin() + place, run.lent, run.lent + run.bytes);
    place += static_cast<std::ptrdiff_t>(run.bytes);
  }
  runs_.assign(held_.empty() ? 0 : 1, {nullptr, held_.size()});
}

bool PieceWriter::storeUpTo(std::uint64_t place) {
  if (failure_ != 0) {
    errno = failure_;
    return false;
  }
  if (place <= onDisk_) return true;
  if (!empty()) return false;
  while (onDisk_ < place) {
    const std::size_t stored = storeSome(static_cast<std::size_t>(place - onDisk_));
    if (stored == 0) return lose(errno);
    onDisk_ += stored;
    drop(stored);
  }
  for (; !pieces_.empty() && pieces_.front().end <= onDisk_; pieces_.pop_front()) whole_ = pieces_.front().end;
  if (whole_ >= started_ + kDiskStretch) {
    startToDisk(fileno(file_), started_, whole_ - started_);
    started_ = whole_;
  }
  return true;
}

/// @return bytes that arrived; 0 with errno when the disk takes none
std::size_t PieceWriter::storeSome(std::size_t bytes) {
  std::array<iovec, 256> parts;
  std::size_t count = 0;
  char* held = held_.data();
  for (auto run = runs_.begin(); bytes > 0 && run != runs_.end() && count < parts.size(); ++run) {
    const std::size_t part = std::min(bytes, run->bytes);
    parts[count++] = {run->lent != nullptr ? const_cast<char*>(run->lent) : held, part};
    if (run->lent == nullptr) held += part;
    bytes -= part;
  }
  ssize_t now = 0;
  do now = writev(fileno(file_), parts.data(), static_cast<int>(count));
  while (now < 0 && errno == EINTR);
  if (now == 0) errno = ENOSPC;
  return now > 0 ? static_cast<std::size_t>(now) : 0;
}

/// Forgets bytes that are on disk.
void PieceWriter::drop(std::size_t bytes) {
  waiting_ -= bytes;
  std::size_t ofHeld = 0;
  auto run = runs_.begin();
  for (std::size_t left = bytes; left > 0;) {
    const std::size_t part = std::min(left, run->bytes);
    if (run->lent != nullptr)
      run->lent += part;
    else
      ofHeld += part;
    run->bytes -= part;
    left -= part;
    if (run->bytes == 0) ++run;
  }
  runs_.erase(runs_.begin(), run);
  held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(ofHeld));
}

/// Cuts the file back to its last whole piece and counts what did not reach it. Keeps errno as `reason`.
bool PieceWriter::lose(int reason) {
  const bool isNews = std::exchange(failure_, reason) == 0;
  bool isFirst = isNews;
  if (isNews) say_(diskErrorText(name_, reason).c_str());
  for (; !pieces_.empty(); pieces_.pop_front()) {
    const Piece& piece = pieces_.front();
    if (piece.end <= onDisk_) {
      whole_ = piece.end;
      continue;
    }
    if (std::exchange(isFirst, false)) endsInHead_ = piece.isData && piece.end - onDisk_ > piece.dataBytes;
    gone_.traces += piece.isData ? 1 : 0;
    (piece.isData ? gone_.bytes : gone_.headerBytes) += static_cast<double>(piece.dataBytes);
  }
  runs_.clear();
  held_.clear();
  waiting_ = 0;
  const auto place = static_cast<off_t>(whole_);
  if (onDisk_ > whole_ && (ftruncate(fileno(file_), place) != 0 || lseek(fileno(file_), place, SEEK_SET) != place))
    say_(formatText("  ** The end of disk file \"%s\" is no whole %s.", name_.c_str(), noun_).c_str());
  onDisk_ = whole_;
  errno = reason;
  return false;
}
