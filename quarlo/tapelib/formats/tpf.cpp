#include "quarlo/tapelib/formats/tpf.h"

#include <algorithm>
#include <cstring>

#include "libkyr/byteorder.h"
#include "libkyr/files.h"
#include "quarlo/tapelib/console.h"
#include "xvt/xvt.h"

namespace tpf {

HeaderBytes encode(const Header& header) {
  HeaderBytes bytes{};
  storeLe32(bytes.data(), static_cast<std::uint32_t>(header.length));
  storeLe32(bytes.data() + 4, header.blockType);
  for (std::size_t i = 0; i < header.reserved.size(); ++i) storeLe32(bytes.data() + 8 + 4 * i, header.reserved[i]);
  storeLe32(bytes.data() + 28, header.marker);
  return bytes;
}

Header decode(std::span<const char> bytes) {
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

Reader::Reader(std::FILE* stream, unsigned int limit, const char* fileName, const char* what)
    : limit_(limit), name_(fileName), kind_(what), size_(static_cast<double>(fileSize(stream).value_or(0))) {
  file_.begin(stream, kHeaderSize);
}

bool Reader::lengthIsSound() const {
  if (current_.length < 0) {
    console_printf("  *** Damaged %s: the block header at byte %.0f announces %d bytes.", kind_, position_,
                   static_cast<int>(current_.length));
    return false;
  }
  if (static_cast<unsigned int>(current_.length) > limit_) {
    console_printf("  *** The block at byte %.0f of the %s announces %d bytes;", position_, kind_,
                   static_cast<int>(current_.length));
    console_printf("      %u bytes is the current block size limit (set ST_BUFFER to change it).", limit_);
    return false;
  }
  return true;
}

/// @return nothing after a box when the file ends earlier, and after a line when it could not be read
std::optional<std::span<const char>> Reader::take(std::size_t bytes) {
  const std::span<const char> piece = file_.take(bytes);
  if (piece.size() == bytes) return piece;
  xvt_dm_post_error(file_.failed() ? "Read error from disk" : "eof encountered on disk read");
  if (file_.failed()) {
    console_printf("  *** Error reading the %s \"%s\" at byte %.0f: %s.", kind_, name_,
                   static_cast<double>(file_.place()), std::strerror(file_.error()));
  }
  return std::nullopt;
}

Item Reader::next(std::span<const char>* block) {
  *block = {};
  const auto bytes = take(kHeaderSize);
  if (!bytes) {
    if (!file_.failed()) console_printf("  *** No whole block header at byte %.0f of the %s.", position_, kind_);
    return Item::Failed;
  }
  current_ = decode(*bytes);
  if (current_.isMark()) {
    position_ += kHeaderSize;
    return Item::Mark;
  }
  if (!lengthIsSound()) return Item::Failed;
  const auto length = static_cast<std::size_t>(current_.length);
  // Together with the header that follows: of a large block no more is read than is asked for.
  (void)file_.peek(length + kHeaderSize);
  const auto data = take(length);
  if (!data) {
    if (!file_.failed())
      console_printf("  *** The block of %zu bytes at byte %.0f of the %s is not whole.", length, position_, kind_);
    return Item::Failed;
  }
  *block = *data;
  position_ += kHeaderSize + static_cast<double>(length);
  return Item::Block;
}

double Reader::bytesLeft() {
  std::span<const char> header;
  do header = file_.take(kHeaderSize);
  while (header.size() == kHeaderSize && decode(header).isMark());
  return header.empty() && !file_.failed() ? 0 : std::max(0.0, size_ - position_);
}

}  // namespace tpf
