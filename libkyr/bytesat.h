/// Bytes by their place: what the codecs that walk over whole files read from, be it a file or memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "libkyr/files.h"

/// Bytes of a file by their place.
class BytesAt {
 public:
  virtual ~BytesAt() = default;
  virtual std::uint64_t size() const = 0;
  /// `count` bytes from `place` on, valid until the next call; fewer at the end of the file or when it cannot be read.
  virtual std::span<const char> at(std::uint64_t place, std::size_t count) = 0;
};

/// A file on disk. What lies behind the last answer is read in large pieces, what lies elsewhere in small ones: a walk
/// over headers does not read the data between them.
class FileBytes : public BytesAt {
 public:
  /// Opens a regular file. @return false with errno; the file of before stays
  bool open(const std::string& path);
  /// 0 before a file is open.
  std::uint64_t size() const override { return size_; }
  std::span<const char> at(std::uint64_t place, std::size_t count) override;
  /// errno of the first read that failed; 0 while none has.
  int error() const { return error_; }

 private:
  FileHandle file_;
  std::uint64_t size_ = 0;
  std::vector<char> held_;
  std::uint64_t place_ = 0;  // of what is held
  std::size_t there_ = 0;    // bytes held
  std::uint64_t next_ = 0;   // behind the last answer
  int error_ = 0;
};

/// Bytes that are gathered in memory.
class HeldBytes : public BytesAt {
 public:
  void clear() { bytes_.clear(); }
  void add(std::span<const char> bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
  std::span<const char> all() const { return bytes_; }
  std::uint64_t size() const override { return bytes_.size(); }
  std::span<const char> at(std::uint64_t place, std::size_t count) override {
    if (place >= bytes_.size()) return {};
    const std::span<const char> rest = all().subspan(static_cast<std::size_t>(place));
    return rest.first(std::min(count, rest.size()));
  }

 private:
  std::vector<char> bytes_;
};
