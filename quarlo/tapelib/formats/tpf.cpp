#include "quarlo/tapelib/formats/tpf.h"

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

bool readFileHeader(std::FILE* file) {
  HeaderBytes bytes{};
  return std::fread(bytes.data(), 1, bytes.size(), file) == bytes.size() && loadLe32(bytes.data()) == kMagic;
}

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

}  // namespace tpf
