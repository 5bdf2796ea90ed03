/// A cartridge in the SIMH tape format, as a row of elements (blocks and filemarks) with a position between two of
/// them.
///
/// Every element begins with a 32-bit little-endian word: 0 a filemark, 0xFFFFFFFF the end of the recording, 0xFFFFFFFE
/// an erase gap, else a block's length in the low 28 bits with a class above it: class 0 a good block, class 8 a block
/// recorded as unreadable. The block's bytes follow, one byte of padding when the length is odd (files of some makers
/// go without it and are taken as well), and the same word again. Elements of other classes are somebody's private data
/// and are passed over. Every length is held against the file's size before anything is read.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// A descriptor that closes itself.
class Descriptor {
 public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(other.fd_) { other.fd_ = -1; }
  Descriptor& operator=(Descriptor&& other) noexcept;
  ~Descriptor();
  int get() const { return fd_; }
  bool isOpen() const { return fd_ >= 0; }

 private:
  int fd_;
};

class TapFile {
 public:
  /// What stands behind or before the position.
  enum class Kind {
    BLOCK,
    BAD_BLOCK,  ///< recorded as unreadable
    MARK,
    END,     ///< the end of the recording; looking back: the beginning of the tape
    DAMAGED  ///< no element can be made out here; `damage()` says why
  };
  struct Element {
    Kind kind = Kind::END;
    std::uint32_t length = 0;  ///< bytes of a block
    off_t start = 0;           ///< where the element begins
    off_t data = 0;            ///< where a block's bytes begin
    off_t next = 0;            ///< where the element behind it begins
  };
  static constexpr std::uint32_t kLargestBlock = 0xFFFFFF;  ///< that a drive can write

  TapFile();
  ~TapFile();
  TapFile(const TapFile&) = delete;
  TapFile& operator=(const TapFile&) = delete;

  /// Opens a cartridge, read-write if the file allows it. @return 0 or an errno
  int open(const std::string& path);
  /// Takes an open file over, for tests.
  void adopt(Descriptor file, bool writable);
  bool writable() const { return writable_; }
  int fd() const { return file_.get(); }

  /// Looks at the element behind (before) the position without moving.
  Element ahead();
  Element behind();
  /// Moves over an element got from ahead() or behind().
  void pass(const Element& element);
  void passBack(const Element& element);
  /// Copies `count` bytes from the beginning of a block. @return false on a read error of the file
  bool copy(const Element& block, char* buffer, std::size_t count);

  /// Writes at the position; what was recorded behind it is gone. @return 0 or an errno
  int writeBlock(const char* data, std::uint32_t length);
  int writeMark();
  /// Ends the recording at the position. @return 0 or an errno
  int eraseRest();
  /// Hands what is buffered to the system. @return 0 or an errno; after a failure the file ends with its last whole
  /// block
  int flush();

  void rewind();
  /// Blocks and marks before the position.
  long number() const { return number_; }
  /// Bytes of the file before the position.
  off_t offset() const { return position_; }
  /// Why the last element was DAMAGED, with the byte it began at.
  const std::string& damage() const { return damage_; }

 private:
  /// Where `bytes` bytes at `at` can be read, or null; they lie in the window.
  const unsigned char* view(off_t at, std::size_t bytes);
  bool word(off_t at, std::uint32_t& value);
  off_t end() const { return pendingStart_ + static_cast<off_t>(pending_.size()); }
  Element damaged(off_t at, const char* reason);
  Element parseForward(off_t at);
  bool parsePrivate(off_t at, std::uint32_t head, off_t& next);
  Element parseBlock(off_t at, std::uint32_t head);
  Element parseBackward(off_t at);
  bool closesAt(off_t start, std::uint32_t head, off_t after);
  int beginWrite();
  int put(const void* data, std::size_t bytes);
  int writeOut(const char* data, std::size_t bytes);
  void cutToWhole();

  Descriptor file_;
  bool writable_ = false;
  off_t position_ = 0;
  long number_ = 0;
  off_t pendingStart_ = 0;     ///< bytes of the recording that are on the file; the rest is in pending_
  std::vector<char> pending_;  ///< written, not yet handed to the system
  std::vector<unsigned char> window_;
  off_t windowStart_ = 0;
  std::size_t windowSize_ = 0;
  std::string damage_;
};
