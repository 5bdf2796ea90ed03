/// Disk files read and written in large pieces.
#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "quarlo/tapelib/console.h"

/// Reads a file in large pieces and hands its bytes out where they lie.
class PieceReader {
 public:
  /// Starts at the beginning of a stream that nobody else reads meanwhile.
  void begin(std::FILE* stream);
  /// The next `bytes` bytes, valid until the next call; fewer at the end of the file, none (and failed()) on an error.
  std::span<const char> take(std::size_t bytes);
  /// The same bytes, which the next call hands out again.
  std::span<const char> peek(std::size_t bytes);
  bool failed() const { return error_; }
  /// Called before bytes that were handed out are overwritten; empty for nobody.
  std::function<void()> beforeRefill;

 private:
  bool fill(std::size_t bytes);

  int descriptor_ = -1;
  std::vector<char> buffer_;
  std::size_t first_ = 0;  // of what is not handed out yet
  std::size_t last_ = 0;
  bool error_ = false;
};

/// What a failed write took back of what it had accepted.
struct LostOutput {
  int traces = 0;
  double bytes = 0;        ///< of the traces
  double headerBytes = 0;  ///< of what was no trace
};

/// Writes pieces to a file through a large buffer. A file that runs full ends with its last whole piece.
class PieceWriter {
 public:
  /// @param tell takes the lines about what went wrong
  explicit PieceWriter(void (*tell)(const char* line) = console_out) : say_(tell) {}

  /// Writes to this stream from now on, which nobody else writes to meanwhile. What the file holds goes with the first
  /// write, not before. @param fileName for the messages
  void begin(std::FILE* stream, const char* fileName);
  /// @return false when the disk took it not: lost() says what went with it
  bool write(std::span<const char> piece, bool isTrace);
  /// The same for a piece whose bytes stay where they are until the next flush: it is not copied into the buffer.
  bool writeLent(std::span<const char> piece, bool isTrace);
  /// Hands what is still in the buffer, or lent, to the disk.
  bool flush();
  const LostOutput& lost() const { return gone_; }

 private:
  struct Piece {
    std::size_t end;  // in the buffer, or in what is lent
    bool isTrace;
  };

  bool writeBuffer(std::size_t* written);
  bool lose(std::size_t written, int reason);

  void (*say_)(const char* line);
  std::FILE* file_ = nullptr;
  std::string name_;
  void forget();

  std::vector<char> buffer_;
  std::span<const char> lent_;  // pieces one behind the other; nothing is in the buffer then
  std::vector<Piece> pieces_;   // of either
  LostOutput gone_;
  bool broken_ = false;
  bool emptied_ = false;  // what stood in the file is gone
};
