#include "quarlo/tpf.h"

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "libkyr/byteorder.h"
#include "quarlo/tapelib/cons_win.h"
#include "xvt/xvt.h"

int tpfRead(char* buf, int objSize, int numObj, std::FILE* fPtr) {
  const std::size_t count = std::fread(buf, static_cast<std::size_t>(objSize), static_cast<std::size_t>(numObj), fPtr);
  if (std::ferror(fPtr) != 0) {
    xvt_dm_post_error("Read error from disk");
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
  for (std::size_t i = 0; i < header.reserved.size(); ++i) {
    storeLe32(bytes.data() + 8 + 4 * i, header.reserved[i]);
  }
  storeLe32(bytes.data() + 28, header.marker);
  return bytes;
}

Header decode(const HeaderBytes& bytes) {
  Header header;
  header.length = static_cast<std::int32_t>(loadLe32(bytes.data()));
  header.blockType = loadLe32(bytes.data() + 4);
  for (std::size_t i = 0; i < header.reserved.size(); ++i) {
    header.reserved[i] = loadLe32(bytes.data() + 8 + 4 * i);
  }
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
    console_printf("  *** Damaged tape-image file: the block header at byte %.0f announces %d bytes.", position,
                   static_cast<int>(current.length));
    return false;
  }
  if (static_cast<unsigned int>(current.length) > bufferSize) {
    console_printf("  *** The block at byte %.0f of the tape-image file announces %d bytes;", position,
                   static_cast<int>(current.length));
    console_printf("      %u bytes is the current block size limit (set ST_BUFFER to change it).", bufferSize);
    return false;
  }
  return true;
}

Item Reader::next(char* buffer, int* length) {
  *length = 0;
  HeaderBytes bytes{};
  if (tpfRead(bytes.data(), 1, HEADER_SIZE, file) < 0) {
    console_printf("  *** No whole block header at byte %.0f of the tape-image file.", position);
    return Item::Failed;
  }
  current = decode(bytes);
  if (current.isMark()) {
    position += HEADER_SIZE;
    return Item::Mark;
  }
  if (!lengthIsSound()) {
    return Item::Failed;
  }
  if (current.length > 0 && tpfRead(buffer, 1, current.length, file) < 0) {
    console_printf("  *** The block of %d bytes at byte %.0f of the tape-image file is not whole.",
                   static_cast<int>(current.length), position);
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
  if (got == 0 || fseeko(file, 0, SEEK_END) != 0) {
    return 0;
  }
  return static_cast<double>(ftello(file)) - position;
}

bool Writer::begin(bool withFileHeader) {
  const int descriptor = fileno(file);
  if (std::fflush(file) != 0 || lseek(descriptor, 0, SEEK_SET) < 0) {
    return false;
  }
  // A device cannot be cut, and need not be.
  if (ftruncate(descriptor, 0) != 0 && errno != EINVAL) {
    return false;
  }
  whole = 0;
  const HeaderBytes bytes = fileHeader();
  return !withFileHeader || writeWhole(bytes.data(), HEADER_SIZE, nullptr, 0) == HEADER_SIZE;
}

int Writer::writeBlock(const Header& header, const char* data, int length) {
  const HeaderBytes bytes = encode(header);
  const long long written = writeWhole(bytes.data(), HEADER_SIZE, data, length);
  return written < HEADER_SIZE ? -1 : static_cast<int>(written - HEADER_SIZE);
}

int Writer::writeBare(const char* data, int length) { return static_cast<int>(writeWhole(data, length, nullptr, 0)); }

bool Writer::writeMark(const Header& header) {
  const HeaderBytes bytes = encode(header);
  return writeWhole(bytes.data(), HEADER_SIZE, nullptr, 0) == HEADER_SIZE;
}

/// One system call for both pieces where the disk takes them; what it did not take whole is cut off again.
long long Writer::writeWhole(const char* first, int firstLength, const char* second, int secondLength) {
  const int descriptor = fileno(file);
  const long long wanted = static_cast<long long>(firstLength) + secondLength;
  long long done = 0;
  while (done < wanted) {
    const long long inFirst = std::min<long long>(done, firstLength);
    const long long inSecond = done - inFirst;
    iovec pieces[2] = {{const_cast<char*>(first) + inFirst, static_cast<std::size_t>(firstLength - inFirst)},
                       {const_cast<char*>(second) + (second != nullptr ? inSecond : 0),
                        static_cast<std::size_t>(secondLength - inSecond)}};
    const ssize_t now = writev(descriptor, pieces, second != nullptr ? 2 : 1);
    if (now < 0 && errno == EINTR) {
      continue;
    }
    if (now <= 0) {
      const int reason = now < 0 ? errno : ENOSPC;
      if (ftruncate(descriptor, whole) == 0) {
        (void)lseek(descriptor, whole, SEEK_SET);
      }
      errno = reason;
      return done;
    }
    done += now;
  }
  whole += wanted;
  return done;
}

}  // namespace tpf
