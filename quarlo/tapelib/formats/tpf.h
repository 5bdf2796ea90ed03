/// The tape-image file ("tpf"): tape blocks and filemarks on disk. Layout with example bytes: docs/format-tpf.md.
///
/// All words are 32-bit little-endian. A 32-byte file header begins the file; then a 32-byte header stands before every
/// block's bytes and for every filemark. A header's marker alone says which of the two it is.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <vector>

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
bool isFileHeader(const HeaderBytes& bytes);

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

/// Writes blocks and filemarks to a disk file in large pieces. When a write fails, the file is cut back to its last
/// whole item, so that all that it holds can be read; what had been accepted behind that is counted as lost.
class Writer {
 public:
  /// What a failed write took back of what had been accepted before it.
  struct Lost {
    int blocks = 0;
    double bytes = 0;
  };

  explicit Writer(std::FILE* stream) : file_(stream) {}

  /// Empties the file and, for a tape-image file, writes the file header at once. @return false with errno on failure
  bool begin(bool withFileHeader);
  /// One block behind its header, or bare for a raw file (null). @return false with errno on failure: the block, and
  /// what lost() says, is not in the file
  bool writeBlock(const Header* header, const char* data, int length);
  bool writeMark(const Header& header);
  /// Brings to disk what is still held here. @return false with errno on failure
  bool flush();
  const Lost& lost() const { return taken_; }
  /// Whether the last block that failed did so before its own bytes began.
  bool failedAtHeader() const { return cutAtHeader_; }

 private:
  /// An accepted item that is not wholly on disk yet.
  struct Item {
    long long end;
    int blockLength;  // -1 for a mark
  };

  bool writeItem(const char* first, int firstLength, const char* second, int secondLength, int blockLength);
  bool put(const char* bytes, std::size_t count);
  bool store(const char* bytes, std::size_t count);
  void settle();
  void cutBack();

  std::FILE* file_;
  std::vector<char> held_;   // behind what is on disk
  std::deque<Item> unsure_;  // items that end there
  long long onDisk_ = 0;
  long long whole_ = 0;  // end of the last item that is wholly on disk
  Lost taken_;
  bool cutAtHeader_ = false;
};

}  // namespace tpf

/// Reads as fread does. @return the count read, or -1 after the box "Read error from disk" or "eof encountered on disk
/// read"
int tpfRead(char* buf, int objSize, int numObj, std::FILE* fPtr);
