#include "quarlo/tapelib/formats/tpf.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "libkyr/byteorder.h"
#include "quarlo/tapelib/console.h"
#include "xvt/xvt.h"

int tpfRead(char* buf, int objSize, int numObj, std::FILE* fPtr) {
  const std::size_t count = std::fread(buf, static_cast<std::size_t>(objSize), static_cast<std::size_t>(numObj), fPtr);
  if (std::ferror(fPtr) != 0) {
    const int reason = errno;
    xvt_dm_post_error("Read error from disk");
    errno = reason;
    return -1;
  }
  if (std::feof(fPtr) != 0) {
    xvt_dm_post_error("eof encountered on disk read");
    return -1;
  }
  return static_cast<int>(count);
}

namespace tpf {

HeaderBytes encode(const Header& header) {
  HeaderBytes bytes{};
  storeLe32(bytes.data(), static_cast<std::uint32_t>(header.length));
  storeLe32(bytes.data() + 4, header.blockType);
  for (std::size_t i = 0; i < header.reserved.size(); ++i) storeLe32(bytes.data() + 8 + 4 * i, header.reserved[i]);
  storeLe32(bytes.data() + 28, header.marker);
  return bytes;
}

Header decode(const HeaderBytes& bytes) {
  Header header;
  header.length = static_cast<std::int32_t>(loadLe32(bytes.data()));
  header.blockType = loadLe32(bytes.data() + 4);
  for (std::size_t i = 0; i < header.reserved.size(); ++i) header.reserved[i] = loadLe32(bytes.data() + 8 + 4 * i);
  header.marker = loadLe32(bytes.data() + 28);
  return header;
}

HeaderBytes fileHeader() {
  HeaderBytes bytes{};
  storeLe32(bytes.data(), kMagic);
  return bytes;
}

bool isFileHeader(const HeaderBytes& bytes) { return loadLe32(bytes.data()) == kMagic; }

bool Reader::lengthIsSound() const {
  if (current_.length < 0) {
    console_printf("  *** Damaged %s: the block header at byte %.0f announces %d bytes.", kind_, position_,
                   static_cast<int>(current_.length));
    return false;
  }
  if (static_cast<unsigned int>(current_.length) > bufferSize_) {
    console_printf("  *** The block at byte %.0f of the %s announces %d bytes;", position_, kind_,
                   static_cast<int>(current_.length));
    console_printf("      %u bytes is the current block size limit (set ST_BUFFER to change it).", bufferSize_);
    return false;
  }
  return true;
}

/// After a failed read, with its errno. @return false when nothing went wrong but that the file ends here
bool Reader::sayReadError() const {
  const int reason = errno;
  if (std::ferror(file_) == 0) return false;
  const off_t place = ftello(file_);
  console_printf("  *** Error reading the %s \"%s\" at byte %.0f: %s.", kind_, name_,
                 place < 0 ? position_ : static_cast<double>(place), std::strerror(reason));
  return true;
}

bool Reader::atEnd() {
  const int byte = std::getc(file_);
  return byte == EOF ? std::ferror(file_) == 0 : std::ungetc(byte, file_) == EOF;
}

Item Reader::next(char* buffer, int* length) {
  *length = 0;
  HeaderBytes bytes{};
  if (tpfRead(bytes.data(), 1, kHeaderSize, file_) < 0) {
    if (!sayReadError()) console_printf("  *** No whole block header at byte %.0f of the %s.", position_, kind_);
    return Item::Failed;
  }
  current_ = decode(bytes);
  if (current_.isMark()) {
    position_ += kHeaderSize;
    return Item::Mark;
  }
  if (!lengthIsSound()) return Item::Failed;
  if (current_.length > 0 && tpfRead(buffer, 1, current_.length, file_) < 0) {
    if (!sayReadError()) {
      console_printf("  *** The block of %d bytes at byte %.0f of the %s is not whole.",
                     static_cast<int>(current_.length), position_, kind_);
    }
    return Item::Failed;
  }
  *length = current_.length;
  position_ += kHeaderSize + static_cast<double>(current_.length);
  return Item::Block;
}

double Reader::bytesLeft() {
  HeaderBytes bytes{};
  std::size_t got = 0;
  do {
    got = std::fread(bytes.data(), 1, bytes.size(), file_);
  } while (got == bytes.size() && decode(bytes).isMark());
  const bool ends = got == 0 && std::ferror(file_) == 0;
  if (ends || fseeko(file_, 0, SEEK_END) != 0) return 0;
  return static_cast<double>(ftello(file_)) - position_;
}

namespace {

/// Bytes of one write: every write but the last ends at a multiple of this.
constexpr std::size_t kPiece = std::size_t{128} * 1024;

}  // namespace

bool Writer::begin(bool withFileHeader) {
  const int descriptor = fileno(file_);
  if (std::fflush(file_) != 0 || lseek(descriptor, 0, SEEK_SET) < 0) return false;
  // A device cannot be cut, and need not be.
  if (ftruncate(descriptor, 0) != 0 && errno != EINVAL) return false;
  held_.clear();
  held_.reserve(kPiece);
  unsure_.clear();
  onDisk_ = 0;
  whole_ = 0;
  taken_ = {};
  const HeaderBytes bytes = fileHeader();
  return !withFileHeader || (writeItem(bytes.data(), kHeaderSize, nullptr, 0, -1) && flush());
}

bool Writer::writeBlock(const Header* header, const char* data, int length) {
  if (header == nullptr) return writeItem(data, length, nullptr, 0, length);
  const HeaderBytes bytes = encode(*header);
  return writeItem(bytes.data(), kHeaderSize, data, length, length);
}

bool Writer::writeMark(const Header& header) {
  const HeaderBytes bytes = encode(header);
  return writeItem(bytes.data(), kHeaderSize, nullptr, 0, -1);
}

bool Writer::writeItem(const char* first, int firstLength, const char* second, int secondLength, int blockLength) {
  if (!put(first, static_cast<std::size_t>(firstLength)) || !put(second, static_cast<std::size_t>(secondLength))) {
    const long long begin = unsure_.empty() ? whole_ : unsure_.back().end;
    cutAtHeader_ = blockLength >= 0 && second != nullptr && onDisk_ >= begin && onDisk_ < begin + firstLength;
    cutBack();
    return false;
  }
  unsure_.push_back({onDisk_ + static_cast<long long>(held_.size()), blockLength});
  settle();
  return true;
}

bool Writer::put(const char* bytes, std::size_t count) {
  while (count > 0) {
    const std::size_t room = kPiece - static_cast<std::size_t>(onDisk_) % kPiece;
    if (held_.empty() && count >= room) {  // large blocks need not be copied first
      if (!store(bytes, room)) return false;
      bytes += room;
      count -= room;
      continue;
    }
    const std::size_t now = std::min(count, room - held_.size());
    held_.insert(held_.end(), bytes, bytes + now);
    bytes += now;
    count -= now;
    if (held_.size() == room) {
      if (!store(held_.data(), room)) return false;
      held_.clear();
    }
  }
  return true;
}

bool Writer::flush() {
  if (!store(held_.data(), held_.size())) {
    cutBack();
    return false;
  }
  held_.clear();
  settle();
  return true;
}

/// All of the bytes to disk; `onDisk` tells how many arrived.
bool Writer::store(const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t now = write(fileno(file_), bytes, count);
    if (now < 0 && errno == EINTR) continue;
    if (now <= 0) {
      errno = now < 0 ? errno : ENOSPC;
      return false;
    }
    onDisk_ += now;
    bytes += now;
    count -= static_cast<std::size_t>(now);
  }
  return true;
}

/// Forgets the items that are wholly on disk.
void Writer::settle() {
  for (; !unsure_.empty() && unsure_.front().end <= onDisk_; unsure_.pop_front()) whole_ = unsure_.front().end;
}

/// After a failed write: counts what is lost, ends the file with its last whole item. Keeps errno.
void Writer::cutBack() {
  const int reason = errno;
  settle();
  for (const Item& item : unsure_) {
    taken_.blocks += item.blockLength >= 0 ? 1 : 0;
    taken_.bytes += std::max(item.blockLength, 0);
  }
  unsure_.clear();
  held_.clear();
  if (ftruncate(fileno(file_), whole_) == 0) (void)lseek(fileno(file_), whole_, SEEK_SET);
  onDisk_ = whole_;
  errno = reason;
}

}  // namespace tpf
