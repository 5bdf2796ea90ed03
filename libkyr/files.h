/// Files by name and as streams: joining, comparing, sizes, and streams that own a large buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// `directory` and `name` joined by exactly one slash; an absolute name stands for itself, an empty part is left out.
std::string joinPath(std::string_view directory, std::string_view name);

/// True when both paths lead to one file, by whatever links and detours. Paths to a file that does not exist yet are
/// the same when their directory and their last name are. Null and empty paths are the same as nothing.
bool sameFile(const char* pathA, const char* pathB);

/// Size in bytes of a regular file; nothing when there is none.
std::optional<std::uint64_t> fileSize(const char* path);
std::optional<std::uint64_t> fileSize(std::FILE* stream);

/// Bytes of a stream's buffer in the jobs: small reads and writes cost half of what they do with the C library's own.
constexpr std::size_t kStreamBufferSize = std::size_t{128} * 1024;

/// Memory for one stream's buffer. It must outlive the stream: close the stream first.
class StreamBuffer {
 public:
  /// Gives the buffer to a stream that was opened just now, before anything was read or written. Without memory for
  /// it the stream keeps its own. @return true when the stream uses the buffer
  bool attach(std::FILE* stream, std::size_t size = kStreamBufferSize);

 private:
  std::unique_ptr<char[]> bytes_;
};

/// Closes a stream, then frees the buffer that it used.
struct FileCloser {
  StreamBuffer buffer{};
  void operator()(std::FILE* stream) const noexcept { std::fclose(stream); }
};

/// An open stream, closed at the end of its life. Who writes calls closeFile, to learn what the close had to say.
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a file as fopen does, not inherited by started programs, and without waiting for the other side of a pipe. A
/// mode that empties the file leaves it alone when a job has locked it as its own (see keepFromLockers): errno is
/// EBUSY.
/// @return null with errno on a failure
std::FILE* openStream(const char* path, const char* mode);

/// As long as the stream is open, no job can lock its file as its own. @return false when one has done so: errno EBUSY
bool keepFromLockers(std::FILE* stream);

/// openStream with a buffer of `bufferSize` bytes (0: the C library's). An empty handle, and errno, tell a failure.
FileHandle openFile(const char* path, const char* mode, std::size_t bufferSize = kStreamBufferSize);

/// Flushes and closes. @return false when an earlier write or the close failed (errno); true for an empty handle
bool closeFile(FileHandle& file);

/// Reads up to `count` bytes at `offset`, however many calls that takes.
/// @return bytes, fewer than asked for at the end of the file; nothing, with errno, after an error
std::optional<std::size_t> readAt(int descriptor, void* bytes, std::size_t count, std::uint64_t offset);

/// Writes all of it at the descriptor's position, or at `offset`, however many calls that takes. A disk that takes
/// nothing is full: errno is ENOSPC.
/// @return bytes written, fewer with errno after a failure
std::size_t writeAll(int descriptor, const void* bytes, std::size_t count);
std::size_t writeAllAt(int descriptor, const void* bytes, std::size_t count, std::uint64_t offset);

/// Bytes behind one another that are worth being sent on their way to the disk.
constexpr std::uint64_t kDiskStretch = std::uint64_t{1024} * 1024;

/// Starts what was written there (0 bytes: to the end) on its way to the disk, so that who waits for all of it at the
/// end waits less. What this cannot do, or fails at, shows then.
void startToDisk(int descriptor, std::uint64_t offset, std::uint64_t bytes);

/// Reads the next line without the blanks around it; what a line has beyond 64 KB is passed over.
/// @return false at the end of the file or on an error
bool readTextLine(std::FILE* stream, std::string* line);
