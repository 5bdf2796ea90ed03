#include "libkyr/files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <new>
#include <utility>

#include "libkyr/text.h"

namespace {

bool sameNode(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

std::optional<struct stat> statOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return status;
}

std::optional<std::uint64_t> regularSize(const struct stat& status) {
  if (!S_ISREG(status.st_mode)) return std::nullopt;
  return static_cast<std::uint64_t>(status.st_size);
}

// What open(2) calls a mode of fopen.
int flagsOf(std::string_view mode) {
  const int access = mode.find('+') != std::string_view::npos ? O_RDWR : mode[0] == 'r' ? O_RDONLY : O_WRONLY;
  const int exclusive = mode.find('x') != std::string_view::npos ? O_EXCL : 0;
  if (mode[0] == 'r') return access;
  return access | O_CREAT | exclusive | (mode[0] == 'a' ? O_APPEND : 0);
}

// A file system without locks has nobody who locked the file.
bool share(int descriptor) {
  if (flock(descriptor, LOCK_SH | LOCK_NB) == 0 || errno != EWOULDBLOCK) return true;
  errno = EBUSY;
  return false;
}

// What "w" does beyond opening; a pipe or a device cannot be emptied, and need not be.
bool emptied(int descriptor) { return share(descriptor) && (ftruncate(descriptor, 0) == 0 || errno == EINVAL); }

// Two names of which no file exists yet.
bool sameNewFile(const std::filesystem::path& a, const std::filesystem::path& b) {
  if (a.filename() != b.filename()) return false;
  const auto directory = [](const std::filesystem::path& path) {
    return statOf(path.has_parent_path() ? path.parent_path().string() : ".");
  };
  const auto directoryA = directory(a);
  const auto directoryB = directory(b);
  return directoryA && directoryB && sameNode(*directoryA, *directoryB);
}

}  // namespace

std::string joinPath(std::string_view directory, std::string_view name) {
  if (name.empty()) return std::string(directory);
  if (directory.empty() || name.front() == '/') return std::string(name);
  std::string path(directory);
  if (path.back() != '/') path += '/';
  return path.append(name);
}

bool sameFile(const char* pathA, const char* pathB) {
  if (pathA == nullptr || pathB == nullptr || *pathA == '\0' || *pathB == '\0') return false;
  const auto a = statOf(pathA);
  const auto b = statOf(pathB);
  if (a && b) return sameNode(*a, *b);
  return !a && !b && sameNewFile(pathA, pathB);
}

std::optional<std::uint64_t> fileSize(const char* path) {
  if (path == nullptr) return std::nullopt;
  const auto status = statOf(path);
  return status ? regularSize(*status) : std::nullopt;
}

std::optional<std::uint64_t> fileSize(std::FILE* stream) {
  struct stat status {};
  if (stream == nullptr || fstat(fileno(stream), &status) != 0) return std::nullopt;
  return regularSize(status);
}

bool StreamBuffer::attach(std::FILE* stream, std::size_t size) {
  bytes_.reset(new (std::nothrow) char[size]);
  return bytes_ && std::setvbuf(stream, bytes_.get(), _IOFBF, size) == 0;
}

std::FILE* openStream(const char* path, const char* mode) {
  constexpr mode_t kNewFileMode = 0666;
  // A pipe that nobody writes to would hold an ordinary open for ever.
  const int descriptor = ::open(path, flagsOf(mode) | O_NONBLOCK | O_CLOEXEC, kNewFileMode);
  if (descriptor < 0) return nullptr;
  const int flags = fcntl(descriptor, F_GETFL);
  const bool ready =
      flags >= 0 && fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) == 0 && (mode[0] != 'w' || emptied(descriptor));
  std::FILE* const stream = ready ? fdopen(descriptor, mode) : nullptr;
  if (stream == nullptr) {
    const int reason = errno;
    close(descriptor);
    errno = reason;
  }
  return stream;
}

bool keepFromLockers(std::FILE* stream) { return share(fileno(stream)); }

FileHandle openFile(const char* path, const char* mode, std::size_t bufferSize) {
  FileHandle file(openStream(path, mode));
  if (file && bufferSize > 0) file.get_deleter().buffer.attach(file.get(), bufferSize);
  return file;
}

bool closeFile(FileHandle& file) {
  if (!file) return true;
  // What a stream could not read was told when it was read; a close has nothing to say of it.
  const bool readsOnly = (fcntl(fileno(file.get()), F_GETFL) & O_ACCMODE) == O_RDONLY;
  const bool intact = readsOnly || std::ferror(file.get()) == 0;
  if (std::fclose(file.release()) != 0) return false;
  if (!intact) errno = EIO;  // the reason of then is not known any more
  return intact;
}

std::optional<std::size_t> readAt(int descriptor, void* bytes, std::size_t count, std::uint64_t offset) {
  std::size_t got = 0;
  while (got < count) {
    const ssize_t now =
        pread(descriptor, static_cast<char*>(bytes) + got, count - got, static_cast<off_t>(offset + got));
    if (now < 0 && errno == EINTR) continue;
    if (now < 0) return std::nullopt;
    if (now == 0) break;
    got += static_cast<std::size_t>(now);
  }
  return got;
}

namespace {

/// `writeSome` gets the bytes that are left and how many are done, and answers as write(2).
template <typename WriteSome>
std::size_t writeOn(const void* bytes, std::size_t count, WriteSome writeSome) {
  const char* const data = static_cast<const char*>(bytes);
  std::size_t done = 0;
  while (done < count) {
    const ssize_t now = writeSome(data + done, count - done, done);
    if (now > 0) {
      done += static_cast<std::size_t>(now);
    } else if (now == 0) {
      errno = ENOSPC;
      break;
    } else if (errno != EINTR) {
      break;
    }
  }
  return done;
}

}  // namespace

std::size_t writeAll(int descriptor, const void* bytes, std::size_t count) {
  return writeOn(
      bytes, count, [=](const char* data, std::size_t left, std::size_t) { return write(descriptor, data, left); });
}

std::size_t writeAllAt(int descriptor, const void* bytes, std::size_t count, std::uint64_t offset) {
  return writeOn(
      bytes, count,
      [=](const char* data, std::size_t left, std::size_t done) {
        return pwrite(descriptor, data, left, static_cast<off_t>(offset + done));
      });
}

void startToDisk(int descriptor, std::uint64_t offset, std::uint64_t bytes) {
  (void)sync_file_range(descriptor, static_cast<off_t>(offset), static_cast<off_t>(bytes), SYNC_FILE_RANGE_WRITE);
}

bool readTextLine(std::FILE* stream, std::string* line) {
  constexpr std::size_t kLimit = std::size_t{64} * 1024;
  line->clear();
  int byte = std::getc(stream);
  if (byte == EOF) return false;
  for (; byte != EOF && byte != '\n'; byte = std::getc(stream))
    if (line->size() < kLimit) *line += static_cast<char>(byte);
  *line = trimText(*line);
  return std::ferror(stream) == 0;
}
