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
  storeLe32(bytes.data(), MAGIC);
  return bytes;
}

bool isFileHeader(const HeaderBytes& bytes) { return loadLe32(bytes.data()) == MAGIC; }

bool Reader::lengthIsSound() const {
  if (current.length < 0) {
    console_printf("  *** Damaged %s: the block header at byte %.0f announces %d bytes.", kind, position,
                   static_cast<int>(current.length));
    return false;
  }
  if (static_cast<unsigned int>(current.length) > bufferSize) {
    console_printf("  *** The block at byte %.0f of the %s announces %d bytes;", position, kind,
                   static_cast<int>(current.length));
    console_printf("      %u bytes is the current block size limit (set ST_BUFFER to change it).", bufferSize);
    return false;
  }
  return true;
}

/// After a failed read, with its errno. @return false when nothing went wrong but that the file ends here
bool Reader::sayReadError() const {
  const int reason = errno;
  if (std::ferror(file) == 0) return false;
  const off_t place = ftello(file);
  console_printf("  *** Error reading the %s \"%s\" at byte %.0f: %s.", kind, name,
                 place < 0 ? position : static_cast<double>(place), std::strerror(reason));
  return true;
}

bool Reader::atEnd() {
  const int byte = std::getc(file);
  return byte == EOF ? std::ferror(file) == 0 : std::ungetc(byte, file) == EOF;
}

Item Reader::next(char* buffer, int* length) {
  *length = 0;
  HeaderBytes bytes{};
  if (tpfRead(bytes.data(), 1, HEADER_SIZE, file) < 0) {
    if (!sayReadError()) console_printf("  *** No whole block header at byte %.0f of the %s.", position, kind);
    return Item::Failed;
  }
  current = decode(bytes);
  if (current.isMark()) {
    position += HEADER_SIZE;
    return Item::Mark;
  }
  if (!lengthIsSound()) return Item::Failed;
  if (current.length > 0 && tpfRead(buffer, 1, current.length, file) < 0) {
    if (!sayReadError()) {
      console_printf("  *** The block of %d bytes at byte %.0f of the %s is not whole.",
                     static_cast<int>(current.length), position, kind);
    }
    return Item::Failed;
  }
  *length = current.length;
  position += HEADER_SIZE + static_cast<double>(current.length);
  return Item::Block;
}

double Reader::bytesLeft() {
  HeaderBytes bytes{};
  std::size_t got = 0;
  do {
    got = std::fread(bytes.data(), 1, bytes.size(), file);
  } while (got == bytes.size() && decode(bytes).isMark());
  const bool ends = got == 0 && std::ferror(file) == 0;
  if (ends || fseeko(file, 0, SEEK_END) != 0) return 0;
  return static_cast<double>(ftello(file)) - position;
}

namespace {

/// Bytes of one write: every write but the last ends at a multiple of this.
constexpr std::size_t PIECE = std::size_t{128} * 1024;

}  // namespace

bool Writer::begin(bool withFileHeader) {
  const int descriptor = fileno(file);
  if (std::fflush(file) != 0 || lseek(descriptor, 0, SEEK_SET) < 0) return false;
  // A device cannot be cut, and need not be.
  if (ftruncate(descriptor, 0) != 0 && errno != EINVAL) return false;
  held.clear();
  held.reserve(PIECE);
  unsure.clear();
  onDisk = 0;
  whole = 0;
  taken = {};
  const HeaderBytes bytes = fileHeader();
  return !withFileHeader || (writeItem(bytes.data(), HEADER_SIZE, nullptr, 0, -1) && flush());
}

bool Writer::writeBlock(const Header* header, const char* data, int length) {
  if (header == nullptr) return writeItem(data, length, nullptr, 0, length);
  const HeaderBytes bytes = encode(*header);
  return writeItem(bytes.data(), HEADER_SIZE, data, length, length);
}

bool Writer::writeMark(const Header& header) {
  const HeaderBytes bytes = encode(header);
  return writeItem(bytes.data(), HEADER_SIZE, nullptr, 0, -1);
}

bool Writer::writeItem(const char* first, int firstLength, const char* second, int secondLength, int blockLength) {
  if (!put(first, static_cast<std::size_t>(firstLength)) || !put(second, static_cast<std::size_t>(secondLength))) {
    const long long begin = unsure.empty() ? whole : unsure.back().end;
    cutAtHeader = blockLength >= 0 && second != nullptr && onDisk >= begin && onDisk < begin + firstLength;
    cutBack();
    return false;
  }
  unsure.push_back({onDisk + static_cast<long long>(held.size()), blockLength});
  settle();
  return true;
}

bool Writer::put(const char* bytes, std::size_t count) {
  while (count > 0) {
    const std::size_t room = PIECE - static_cast<std::size_t>(onDisk) % PIECE;
    if (held.empty() && count >= room) {  // large blocks need not be copied first
      if (!store(bytes, room)) return false;
      bytes += room;
      count -= room;
      continue;
    }
    const std::size_t now = std::min(count, room - held.size());
    held.insert(held.end(), bytes, bytes + now);
    bytes += now;
    count -= now;
    if (held.size() == room) {
      if (!store(held.data(), room)) return false;
      held.clear();
    }
  }
  return true;
}

bool Writer::flush() {
  if (!store(held.data(), held.size())) {
    cutBack();
    return false;
  }
  held.clear();
  settle();
  return true;
}

/// All of the bytes to disk; `onDisk` tells how many arrived.
bool Writer::store(const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t now = write(fileno(file), bytes, count);
    if (now < 0 && errno == EINTR) continue;
    if (now <= 0) {
      errno = now < 0 ? errno : ENOSPC;
      return false;
    }
    onDisk += now;
    bytes += now;
    count -= static_cast<std::size_t>(now);
  }
  return true;
}

/// Forgets the items that are wholly on disk.
void Writer::settle() {
  for (; !unsure.empty() && unsure.front().end <= onDisk; unsure.pop_front()) whole = unsure.front().end;
}

/// After a failed write: counts what is lost, ends the file with its last whole item. Keeps errno.
void Writer::cutBack() {
  const int reason = errno;
  settle();
  for (const Item& item : unsure) {
    taken.blocks += item.blockLength >= 0 ? 1 : 0;
    taken.bytes += std::max(item.blockLength, 0);
  }
  unsure.clear();
  held.clear();
  if (ftruncate(fileno(file), whole) == 0) (void)lseek(fileno(file), whole, SEEK_SET);
  onDisk = whole;
  errno = reason;
}

}  // namespace tpf
