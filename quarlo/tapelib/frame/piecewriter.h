/// Disk files written in large pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "quarlo/tapelib/console.h"

/// What a failed write took back of what it had accepted.
struct LostOutput {
  int traces = 0;          ///< or blocks: pieces of data
  double bytes = 0;        ///< of these, without what stands before each
  double headerBytes = 0;  ///< of what was no data
};

/// Writes pieces to a file, through a buffer or from where they lie, in large writes that end at round places of the
/// file. A file that runs full ends with its last whole piece.
class PieceWriter {
 public:
  /// @param tell takes the lines about what went wrong @param noun what a piece is called there
  explicit PieceWriter(void (*tell)(const char* line) = console_out, const char* noun = "trace")
      : say_(tell), noun_(noun) {}

  /// Writes to this stream from now on, which nobody else writes to meanwhile. What the file holds goes with the first
  /// write, not before. @param fileName for the messages
  void begin(std::FILE* stream, const char* fileName);
  /// The same behind what the stream's file holds up to its position, which stays.
  void beginBehind(std::FILE* stream, const char* fileName);
  /// Empties the file at once. @return false after a line
  bool empty();
  /// One piece: trace, block, header, mark. @return false when the disk took it not: lost() says what went with it
  bool write(std::span<const char> piece, bool isData) { return write({}, piece, isData); }
  /// The same with a head before the bytes that count.
  bool write(std::span<const char> head, std::span<const char> body, bool isData);
  /// The same for a body whose bytes stay where they are until settle() or flush(): it is not copied. A failure shows
  /// at the next one.
  bool writeLent(std::span<const char> head, std::span<const char> body, bool isData);
  /// Lets go of what was lent. @return false when the disk took it not
  bool settle();
  /// Hands all that is still held here to the disk. @return false, with errno, when the disk took it not
  bool flush();
  /// Behind a failure nothing more is accepted, for it would stand behind a hole. This says that it may.
  void mend() { failure_ = 0; }

  const LostOutput& lost() const { return gone_; }
  /// Whether the disk came to its end within the head of a piece of data.
  bool endsInHead() const { return endsInHead_; }

 private:
  /// An accepted piece that is not wholly on disk yet.
  struct Piece {
    std::uint64_t end;      // its place in the file
    std::size_t dataBytes;  // without its head
    std::size_t bytes;
    bool isData;
  };
  /// Bytes that are still to be written.
  struct Run {
    const char* lent;  // null: the next ones of those held
    std::size_t bytes;
  };

  void hold(std::span<const char> bytes);
  void lend(std::span<const char> bytes);
  bool storeUpTo(std::uint64_t place);
  std::size_t storeSome(std::size_t bytes);
  void drop(std::size_t bytes);
  void keep();
  bool lose(int reason);
  std::size_t lentBytes() const { return waiting_ - held_.size(); }
  std::uint64_t end() const { return onDisk_ + waiting_; }

  void (*say_)(const char* line);
  const char* noun_;
  std::FILE* file_ = nullptr;
  std::string name_;
  std::vector<Run> runs_;  // behind what is on disk
  std::vector<char> held_;
  std::size_t waiting_ = 0;  // bytes of the runs
  std::deque<Piece> pieces_;
  std::uint64_t onDisk_ = 0;
  std::uint64_t whole_ = 0;    // end of the last piece that is wholly on disk
  std::uint64_t started_ = 0;  // what is before it has been sent on its way to the disk
  LostOutput gone_;
  bool endsInHead_ = false;
  int failure_ = 0;       // errno: nothing more is accepted
  bool emptied_ = false;  // what stood in the file is gone
};
