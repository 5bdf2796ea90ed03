#include "quarlo/tapelib/driver/tap_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "libkyr/files.h"

namespace {

constexpr std::size_t kBuffer = std::size_t{128} * 1024;
constexpr std::uint32_t kMark = 0;
constexpr std::uint32_t kEndOfMedium = 0xFFFFFFFF;
constexpr std::uint32_t kEraseGap = 0xFFFFFFFE;
constexpr std::uint32_t kLengthBits = 0x0FFFFFFF;
constexpr off_t kWord = 4;

constexpr unsigned classOf(std::uint32_t word) { return word >> 28; }
constexpr bool isMarker(std::uint32_t word) { return classOf(word) == 7 || classOf(word) == 15; }
constexpr bool isBlock(std::uint32_t word) { return classOf(word) == 0 || classOf(word) == 8; }
constexpr off_t lengthOf(std::uint32_t word) { return static_cast<off_t>(word & kLengthBits); }
constexpr off_t padded(off_t length) { return length + (length & 1); }

void storeWord(std::uint32_t value, char* to) {
  for (int i = 0; i < 4; ++i) to[i] = static_cast<char>((value >> (8 * i)) & 0xFF);
}

}  // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(fd_, other.fd_);
  return *this;
}

Descriptor::~Descriptor() {
  if (fd_ >= 0) close(fd_);
}

TapFile::TapFile() = default;

TapFile::~TapFile() { flush(); }

int TapFile::open(const std::string& path) {
  // A file without any write permission is a cartridge with its tab set, also for a superuser.
  struct stat facts {};
  if (stat(path.c_str(), &facts) != 0) return errno;
  if (!S_ISREG(facts.st_mode)) return EINVAL;
  const bool tab = (facts.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
  Descriptor file(tab ? -1 : ::open(path.c_str(), O_RDWR | O_CLOEXEC));
  const bool writable = file.isOpen();
  if (!writable) file = Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) return errno;
  adopt(std::move(file), writable);
  return 0;
}

void TapFile::adopt(Descriptor file, bool writable) {
  struct stat facts {};
  file_ = std::move(file);
  writable_ = writable;
  pending_.clear();
  windowSize_ = 0;
  pendingStart_ = fstat(file_.get(), &facts) == 0 ? facts.st_size : 0;
  posix_fadvise(file_.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
  rewind();
}

void TapFile::rewind() {
  position_ = 0;
  number_ = 0;
}

// ---- reading ----------------------------------------------------------------------------------------------------

const unsigned char* TapFile::view(off_t at, std::size_t bytes) {
  if (at < 0 || at + static_cast<off_t>(bytes) > end()) return nullptr;
  if (at >= windowStart_ && at + static_cast<off_t>(bytes) <= windowStart_ + static_cast<off_t>(windowSize_))
    return window_.data() + (at - windowStart_);
  if (!pending_.empty() && flush() != 0) return nullptr;
  const off_t last = at + static_cast<off_t>(bytes);
  const bool backward = at < windowStart_ && windowSize_ > 0;
  window_.resize(kBuffer);
  windowStart_ = backward ? std::max<off_t>(0, last - static_cast<off_t>(kBuffer)) : at;
  windowSize_ = 0;
  while (windowStart_ + static_cast<off_t>(windowSize_) < last) {
    const ssize_t got = pread(file_.get(), window_.data() + windowSize_, window_.size() - windowSize_,
                              windowStart_ + static_cast<off_t>(windowSize_));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return nullptr;
    windowSize_ += static_cast<std::size_t>(got);
  }
  return window_.data() + (at - windowStart_);
}

bool TapFile::word(off_t at, std::uint32_t& value) {
  const unsigned char* bytes = view(at, kWord);
  if (bytes == nullptr) return false;
  value = bytes[0] | (std::uint32_t{bytes[1]} << 8) | (std::uint32_t{bytes[2]} << 16) | (std::uint32_t{bytes[3]} << 24);
  return true;
}

bool TapFile::copy(const Element& block, char* buffer, std::size_t count) {
  std::size_t done = 0;
  while (done < count) {
    const off_t at = block.data + static_cast<off_t>(done);
    const off_t windowEnd = windowStart_ + static_cast<off_t>(windowSize_);
    if (at < windowStart_ || at >= windowEnd) {
      if (view(at, 1) == nullptr) return false;
      continue;
    }
    const std::size_t part = std::min(count - done, static_cast<std::size_t>(windowEnd - at));
    std::memcpy(buffer + done, window_.data() + (at - windowStart_), part);
    done += part;
  }
  return true;
}

TapFile::Element TapFile::damaged(off_t at, const char* reason) {
  damage_ = "damaged at byte " + std::to_string(at) + ": " + reason;
  return {Kind::DAMAGED, 0, at, at, at};
}

TapFile::Element TapFile::ahead() { return parseForward(position_); }

TapFile::Element TapFile::parseForward(off_t at) {
  const off_t start = at;
  std::uint32_t head = 0;
  for (;;) {
    if (at >= end()) return {Kind::END, 0, at, at, at};
    if (!word(at, head)) return damaged(at, "the file ends inside a length word");
    if (head == kEndOfMedium) return {Kind::END, 0, at, at, at};
    if (head == kMark) return {Kind::MARK, 0, start, at, at + kWord};
    if (isBlock(head)) break;
    if (isMarker(head))  // an erase gap or a private marker
      at += kWord;
    else if (!parsePrivate(at, head, at))
      return damaged(at, "a private record runs past the end of the file or is not closed by its length");
  }
  Element block = parseBlock(at, head);
  if (block.kind != Kind::DAMAGED) block.start = start;
  return block;
}

bool TapFile::parsePrivate(off_t at, std::uint32_t head, off_t& next) {
  const off_t after = at + 2 * kWord + padded(lengthOf(head));
  if (after > end() || !closesAt(at, head, after)) return false;
  next = after;
  return true;
}

TapFile::Element TapFile::parseBlock(off_t at, std::uint32_t head) {
  const off_t length = lengthOf(head);
  const off_t data = at + kWord;
  const Kind kind = classOf(head) == 0 ? Kind::BLOCK : Kind::BAD_BLOCK;
  for (const off_t room : {padded(length), length}) {
    const off_t next = data + room + kWord;
    if (closesAt(at, head, next)) return {kind, static_cast<std::uint32_t>(length), at, data, next};
  }
  return damaged(at, data + length + kWord > end() ? "a block runs past the end of the file"
                                                   : "a block is not closed by its length");
}

/// Whether the element that begins at `start` with `head` is closed by the same word just before `after`. A word
/// outside the window is fetched by itself: the window stays where copy() will want it.
bool TapFile::closesAt(off_t start, std::uint32_t head, off_t after) {
  const off_t tail = after - kWord;
  if (after > end() || tail < start + kWord) return false;
  std::uint32_t closing = 0;
  if (tail >= windowStart_ && after <= windowStart_ + static_cast<off_t>(windowSize_))
    return word(tail, closing) && closing == head;
  if (!pending_.empty() && flush() != 0) return false;
  char wanted[kWord];
  char bytes[kWord];
  storeWord(head, wanted);
  return pread(file_.get(), bytes, kWord, tail) == kWord && std::memcmp(bytes, wanted, kWord) == 0;
}

TapFile::Element TapFile::behind() { return parseBackward(position_); }

TapFile::Element TapFile::parseBackward(off_t at) {
  std::uint32_t tail = 0;
  for (;;) {
    if (at == 0) return {Kind::END, 0, 0, 0, 0};
    if (at < kWord || !word(at - kWord, tail)) return damaged(at, "no length word stands before it");
    if (tail == kMark) return {Kind::MARK, 0, at - kWord, at - kWord, at};
    if (isMarker(tail)) {
      at -= kWord;
      continue;
    }
    off_t start = -1;
    for (const off_t room : {padded(lengthOf(tail)), lengthOf(tail)}) {
      const off_t candidate = at - 2 * kWord - room;
      std::uint32_t head = 0;
      if (candidate < 0 || !word(candidate, head) || head != tail) continue;
      start = candidate;
      break;
    }
    if (start < 0) return damaged(at, "the block before it does not begin with its length");
    if (isBlock(tail)) {
      const Kind kind = classOf(tail) == 0 ? Kind::BLOCK : Kind::BAD_BLOCK;
      return {kind, static_cast<std::uint32_t>(lengthOf(tail)), start, start + kWord, at};
    }
    at = start;
  }
}

void TapFile::pass(const Element& element) {
  position_ = element.next;
  if (element.kind != Kind::END && element.kind != Kind::DAMAGED) ++number_;
}

void TapFile::passBack(const Element& element) {
  position_ = element.start;
  if (element.kind != Kind::END && element.kind != Kind::DAMAGED) --number_;
}

// ---- writing ----------------------------------------------------------------------------------------------------

int TapFile::beginWrite() {
  if (!writable_) return EACCES;
  return position_ == end() ? 0 : eraseRest();
}

int TapFile::eraseRest() {
  if (position_ == end()) return 0;
  if (const int error = flush(); error != 0) return error;
  if (ftruncate(file_.get(), position_) != 0) return errno;
  pendingStart_ = position_;
  windowSize_ = 0;
  return 0;
}

int TapFile::writeBlock(const char* data, std::uint32_t length) {
  if (const int error = beginWrite(); error != 0) return error;
  char head[kWord];
  storeWord(length, head);
  const char pad = 0;
  int error = put(head, sizeof head);
  if (error == 0) error = put(data, length);
  if (error == 0 && (length & 1) != 0) error = put(&pad, 1);
  if (error == 0) error = put(head, sizeof head);
  if (error != 0) return error;
  position_ = end();
  ++number_;
  return 0;
}

int TapFile::writeMark() {
  if (const int error = beginWrite(); error != 0) return error;
  const char mark[kWord] = {0, 0, 0, 0};
  int error = put(mark, sizeof mark);
  if (error == 0) error = flush();
  if (error != 0) return error;
  position_ = end();
  ++number_;
  return 0;
}

int TapFile::put(const void* data, std::size_t bytes) {
  if (pending_.capacity() < kBuffer) pending_.reserve(kBuffer);
  const char* from = static_cast<const char*>(data);
  while (bytes > 0) {
    if (pending_.empty() && bytes >= kBuffer) {  // nothing gained by buffering it
      const std::size_t whole = bytes - bytes % kBuffer;
      if (const int error = writeOut(from, whole); error != 0) return error;
      from += whole;
      bytes -= whole;
      continue;
    }
    const std::size_t part = std::min(bytes, kBuffer - pending_.size());
    pending_.insert(pending_.end(), from, from + part);
    from += part;
    bytes -= part;
    if (pending_.size() == kBuffer)
      if (const int error = flush(); error != 0) return error;
  }
  return 0;
}

int TapFile::writeOut(const char* data, std::size_t bytes) {
  const std::size_t done = writeAllAt(file_.get(), data, bytes, static_cast<std::uint64_t>(pendingStart_));
  pendingStart_ += static_cast<off_t>(done);
  return done == bytes ? 0 : errno;
}

int TapFile::flush() {
  if (pending_.empty()) return 0;
  const int error = writeOut(pending_.data(), pending_.size());
  pending_.clear();
  if (error == 0) return 0;
  cutToWhole();
  return error;
}

/// After a write that failed half-way: leaves the recording, and the position, at its last whole element.
void TapFile::cutToWhole() {
  windowSize_ = 0;
  position_ = 0;
  number_ = 0;
  for (Element element = ahead(); element.kind != Kind::END && element.kind != Kind::DAMAGED; element = ahead())
    pass(element);
  if (ftruncate(file_.get(), position_) == 0) pendingStart_ = position_;
}
