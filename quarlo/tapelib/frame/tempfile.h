/// A temporary file that one job alone uses.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <string>

/// Locked from before it is emptied until it is removed, so that no second job, of this program or another, takes it
/// meanwhile. What this did not make or empty it does not remove, nor a file that has come to stand in its place.
class TempFile {
 public:
  enum class Claim {
    Taken,
    InUse,    ///< locked by somebody else
    NoLocks,  ///< the file system has none (errno)
    Failed    ///< neither opened nor made, or no regular file (errno)
  };

  TempFile() = default;
  ~TempFile();
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;

  /// Opens the file, or makes it, and locks it. What it holds stays.
  Claim claim(const std::string& path);
  /// Empties the file, which belongs to this object from then on. @return false with errno
  bool empty();
  /// Lets it stay at the end of this object.
  void keep() { kept_ = true; }

  int descriptor() const { return file_; }
  std::uint64_t size() const;
  /// When it was last written to, in seconds.
  std::time_t written() const;
  /// The path without links.
  const std::string& path() const { return place_; }
  /// Whether this file still stands at its path.
  bool isInPlace() const;

 private:
  Claim open(const std::string& path);
  void release();

  int file_ = -1;
  std::string place_;
  bool made_ = false;
  bool kept_ = false;
};
