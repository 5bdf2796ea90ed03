/// One file of a dataset: reads and writes at places, whole or with errno.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

class PartFile {
 public:
  enum class Mode { Read, Update, Create, New };

  PartFile() = default;
  ~PartFile();
  PartFile(PartFile&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  PartFile& operator=(PartFile&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;

  /// Only regular files are opened. Create makes the file when there is none and leaves its bytes otherwise; New
  /// refuses a name that is there, be it only a link to nothing (EEXIST).
  /// @return false with errno
  bool open(const std::string& path, Mode mode);
  bool isOpen() const { return descriptor_ >= 0; }
  int descriptor() const { return descriptor_; }

  /// Keeps all others from writing the file until it is closed, as far as they ask (files.h); a file system without
  /// locks has no others. @return false with EBUSY when another one writes it
  bool claim() const;

  std::optional<std::uint64_t> size() const;
  /// A stretch of bytes that are no hole. Where the file system knows no holes it reaches to the file's end.
  struct Stretch {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
  };
  /// The first one at or behind a place; nothing behind the last.
  std::optional<Stretch> dataFrom(std::uint64_t place) const;
  /// @return how many bytes there were up to `count`; nothing on a failure (errno)
  std::optional<std::size_t> readAt(std::uint64_t offset, unsigned char* bytes, std::size_t count) const;
  /// @return how many bytes were taken; fewer than `count` with errno
  std::size_t writeAt(std::uint64_t offset, const unsigned char* bytes, std::size_t count) const;
  bool cutTo(std::uint64_t size) const;
  /// Waits until what was written is on the disk.
  bool sync() const;
  /// @return false with errno when the close failed; the file is closed all the same
  bool close();

 private:
  int descriptor_ = -1;
};
