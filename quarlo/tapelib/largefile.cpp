#include "quarlo/tapelib/largefile.h"

#include <sys/stat.h>

#include <cerrno>
#include <cmath>
#include <new>

#include "libkyr/files.h"

namespace {

/// Bytes in the stream's own buffer: more brings nothing, less costs system calls.
constexpr std::size_t kStreamBuffer = std::size_t{128} * 1024;

/// First double that no longer fits a signed 64-bit offset.
constexpr double kOffsetLimit = 9223372036854775808.0;

}  // namespace

LargeFile::LargeFile(const char* name, const char* mode) : Name(name != nullptr ? name : "") {
  Open(name, mode);
  FilePosition = 0;
}

LargeFile::~LargeFile() { Close(); }

bool LargeFile::fail(int error) {
  Errno = error;
  return false;
}

bool LargeFile::usable() {
  if (TheFile != nullptr && !dead_) return true;
  return fail(EBADF);
}

bool LargeFile::Open(const char* name, const char* mode) {
  if (IsValid()) Close();
  dead_ = false;
  TheFile = name != nullptr && mode != nullptr ? openStream(name, mode) : nullptr;
  if (TheFile == nullptr) return fail(name != nullptr && mode != nullptr ? errno : EINVAL);
  Errno = 0;
  if (!streamBuffer_) streamBuffer_.reset(new (std::nothrow) char[kStreamBuffer]);
  if (streamBuffer_) std::setvbuf(TheFile, streamBuffer_.get(), _IOFBF, kStreamBuffer);
  return IsValid();
}

bool LargeFile::Close() {
  FileSize = 0;
  FilePosition = 0;
  EndOfFile = false;
  if (TheFile == nullptr) return true;
  if (dead_) return false;
  if (std::fclose(TheFile) != 0) {
    dead_ = true;  // the stream's storage is gone; the pointer stays only as a sign
    return fail(errno);
  }
  TheFile = nullptr;
  return true;
}

int LargeFile::Read(char* buffer, int bytes) {
  if (!usable()) return -1;
  if (buffer == nullptr || bytes < 0) {
    Errno = EINVAL;
    return -1;
  }
  errno = 0;
  const std::size_t count = std::fread(buffer, 1, static_cast<std::size_t>(bytes), TheFile);
  if (std::ferror(TheFile) != 0) {
    Errno = errno != 0 ? errno : EIO;
    return -1;
  }
  Errno = 0;
  if (std::feof(TheFile) != 0) EndOfFile = true;
  FilePosition += static_cast<double>(count);
  return static_cast<int>(count);
}

int LargeFile::Write(const char* buffer, int bytes) {
  if (!usable()) return -1;
  if (buffer == nullptr || bytes < 0) {
    Errno = EINVAL;
    return -1;
  }
  errno = 0;
  const std::size_t count = std::fwrite(buffer, 1, static_cast<std::size_t>(bytes), TheFile);
  if (std::ferror(TheFile) != 0) {
    Errno = errno != 0 ? errno : EIO;
    return -1;
  }
  Errno = 0;
  FilePosition += static_cast<double>(count);
  return static_cast<int>(count);
}

bool LargeFile::Seek(double offset, int whence) {
  if (!usable()) return false;
  if (!std::isfinite(offset) || offset >= kOffsetLimit || offset < -kOffsetLimit) return fail(EINVAL);
  if (fseeko(TheFile, static_cast<off_t>(offset), whence) != 0) return fail(errno);
  const off_t position = ftello(TheFile);
  if (position < 0) return fail(errno);
  Errno = 0;
  FilePosition = static_cast<double>(position);
  return true;
}

bool LargeFile::Flush() {
  if (!usable()) return false;
  if (std::fflush(TheFile) != 0) return fail(errno);
  Errno = 0;
  return true;
}

double LargeFile::GetSize() {
  struct stat facts {};
  if (stat(Name.c_str(), &facts) != 0) {
    Errno = errno;
    return FileSize = 0;
  }
  Errno = 0;
  return FileSize = static_cast<double>(facts.st_size);
}
