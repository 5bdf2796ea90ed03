/// The tape-image file ("tpf"): tape blocks and filemarks on disk. Layout with example bytes: docs/format-tpf.md.
///
/// All words are 32-bit little-endian. A 32-byte file header begins the file; then a 32-byte header stands before every
/// block's bytes and for every filemark. A header's marker alone says which of the two it is.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <span>

#include "libkyr/piecereader.h"

namespace tpf {

constexpr std::uint32_t kMagic = 0x746C7631;  ///< "1vlt"
constexpr int kHeaderSize = 32;
constexpr std::uint32_t kMarkerFilemark = 0xF0F0F0F0;
constexpr std::uint32_t kMarkerBlock = 0xFFFFFFFF;

using HeaderBytes = std::array<char, kHeaderSize>;

/// A block's or a filemark's header.
struct Header {
  std::int32_t length = 0;      ///< data bytes that follow
  std::uint32_t blockType = 0;  ///< the writing job's block type word
  std::array<std::uint32_t, 5> reserved{0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
  std::uint32_t marker = kMarkerBlock;

  bool isMark() const { return marker == kMarkerFilemark; }
};
static_assert(kHeaderSize == 4 * (1 + 1 + 5 + 1));

HeaderBytes encode(const Header& header);
/// @param bytes kHeaderSize of them
Header decode(std::span<const char> bytes);
HeaderBytes fileHeader();
/// Reads the file header at the stream's place. @return false when there is none
bool readFileHeader(std::FILE* file);

/// What stands at one place of a tape-image file.
enum class Item { Block, Mark, Failed };

/// Reads a tape-image file from behind its file header, item by item. What is wrong with the file has been said in a
/// box and on the console, with the byte position, when `Failed` comes back.
class Reader {
 public:
  /// @param stream that nobody else reads meanwhile
  /// @param limit of a block's bytes
  /// @param fileName for the messages, which call the file `what`; both outlive this object
  Reader(std::FILE* stream, unsigned int limit, const char* fileName, const char* what = "tape-image file");

  /// @param block receives a block's bytes, which stay where they are until beforeRefill; none for a mark
  Item next(std::span<const char>* block);
  /// The header of what `next` answered last.
  const Header& header() const { return current_; }
  /// Whether the file ends behind the last item, with or without closing marks.
  bool atEnd() { return file_.peek(1).empty() && !file_.failed(); }
  /// Bytes of the file behind the last item when data go on there; 0 when only filemarks follow, or nothing. Nothing
  /// can be read any more, then.
  double bytesLeft();
  /// Has `act` called before blocks are overwritten.
  void beforeRefill(const std::function<void()>& act) { file_.beforeRefill = act; }

 private:
  bool lengthIsSound() const;
  std::optional<std::span<const char>> take(std::size_t bytes);

  PieceReader file_;
  unsigned int limit_;
  const char* name_;
  const char* kind_;
  double size_;
  Header current_;
  double position_ = kHeaderSize;  // byte position of the item that next() reads
};

}  // namespace tpf
