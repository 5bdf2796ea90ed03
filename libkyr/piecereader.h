/// Files read in large pieces, each while the one before is worked on, whose bytes are handed out where they lie.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <span>
#include <vector>

#include "libkyr/sidework.h"

class PieceReader {
 public:
  /// Starts at a place of a stream that nobody else reads meanwhile.
  void begin(std::FILE* stream, std::uint64_t place = 0);
  /// The next `bytes` bytes, which stay until beforeRefill; fewer at the end of the file, or before an error
  /// (failed()).
  std::span<const char> take(std::size_t bytes);
  /// The same bytes, which the next call hands out again.
  std::span<const char> peek(std::size_t bytes);
  bool failed() const { return error_ != 0; }
  /// The errno of the failure.
  int error() const { return error_; }
  /// Where the file has been read to.
  std::uint64_t place() const { return place_; }
  /// Called before bytes that were handed out are overwritten; empty for nobody.
  std::function<void()> beforeRefill;

 private:
  void fill(std::size_t bytes);
  void turnOver();
  void lookAhead(std::size_t bytes);

  int descriptor_ = -1;
  bool isFile_ = false;
  std::size_t piece_ = 0;  // bytes of the next read
  std::vector<char> buffer_;
  std::size_t first_ = 0;  // of what is not handed out yet
  std::size_t last_ = 0;
  std::uint64_t place_ = 0;
  int error_ = 0;
  std::vector<char> next_;  // what is read ahead, behind room for what is not handed out before it
  ReadAhead ahead_;
};
