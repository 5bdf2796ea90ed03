/// The tape-image file ("tpf"): tape blocks and filemarks on disk. Layout with example bytes: docs/format-tpf.md.
///
/// All words are 32-bit little-endian. A 32-byte file header begins the file; then a 32-byte header stands before every
/// block's bytes and for every filemark. A header's marker alone says which of the two it is.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>

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
Header decode(const HeaderBytes& bytes);
HeaderBytes fileHeader();
/// Reads the file header at the stream's place. @return false when there is none
bool readFileHeader(std::FILE* file);

/// What stands at one place of a tape-image file.
enum class Item { Block, Mark, Failed };

/// Reads a tape-image file from behind its file header, item by item. What is wrong with the file has been said in a
/// box and on the console, with the byte position, when `Failed` comes back.
class Reader {
 public:
  /// @param limit size of the buffer that blocks are read into
  /// @param fileName for the messages, which call the file `what`; both outlive this object
  Reader(std::FILE* stream, unsigned int limit, const char* fileName, const char* what = "tape-image file")
      : file_(stream), bufferSize_(limit), name_(fileName), kind_(what) {}

  /// @param buffer receives a block's bytes, @param length their count (0 for a mark)
  Item next(char* buffer, int* length);
  /// The header of what `next` answered last.
  const Header& header() const { return current_; }
  /// Whether the file ends behind the last item, with or without closing marks.
  bool atEnd();
  /// Bytes of the file behind the last item when data go on there; 0 when only filemarks follow, or nothing.
  double bytesLeft();

 private:
  bool lengthIsSound() const;
  bool sayReadError() const;

  std::FILE* file_;
  unsigned int bufferSize_;
  const char* name_;
  const char* kind_;
  Header current_;
  double position_ = kHeaderSize;  // byte position of the item that next() reads
};

}  // namespace tpf

/// Reads as fread does. @return the count read, or -1 after the box "Read error from disk" or "eof encountered on disk
/// read"
int tpfRead(char* buf, int objSize, int numObj, std::FILE* fPtr);
