#include "libkyr/partfile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "libkyr/files.h"

namespace {

constexpr int kNewFileMode = 0666;

int flagsOf(PartFile::Mode mode) {
  switch (mode) {
    case PartFile::Mode::Update:
      return O_RDWR;
    case PartFile::Mode::Create:
      return O_RDWR | O_CREAT;
    case PartFile::Mode::New:
      return O_RDWR | O_CREAT | O_EXCL;
    case PartFile::Mode::Read:
      break;
  }
  return O_RDONLY;
}

}  // namespace

PartFile::~PartFile() { close(); }

bool PartFile::open(const std::string& path, Mode mode) {
  close();
  // Without O_NONBLOCK the opening of a pipe or a tape would wait for its other side.
  descriptor_ = ::open(path.c_str(), flagsOf(mode) | O_CLOEXEC | O_NONBLOCK, kNewFileMode);
  if (descriptor_ < 0) return false;
  struct stat status {};
  if (fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode)) return true;
  const int reason = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
  close();
  errno = reason;
  return false;
}

bool PartFile::claim() const {
  if (flock(descriptor_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return true;
  errno = EBUSY;
  return false;
}

std::optional<std::uint64_t> PartFile::size() const {
  struct stat status {};
  if (fstat(descriptor_, &status) != 0) return std::nullopt;
  return static_cast<std::uint64_t>(status.st_size);
}

std::optional<PartFile::Stretch> PartFile::dataFrom(std::uint64_t place) const {
  const off_t begin = lseek(descriptor_, static_cast<off_t>(place), SEEK_DATA);
  const off_t end = begin < 0 ? begin : lseek(descriptor_, begin, SEEK_HOLE);
  if (end > begin) return Stretch{static_cast<std::uint64_t>(begin), static_cast<std::uint64_t>(end)};
  const auto whole = size();
  if (begin < 0 && errno == ENXIO) return std::nullopt;
  return whole && place < *whole ? std::optional(Stretch{place, *whole}) : std::nullopt;
}

std::optional<std::size_t> PartFile::readAt(std::uint64_t offset, unsigned char* bytes, std::size_t count) const {
  return ::readAt(descriptor_, bytes, count, offset);
}

std::size_t PartFile::writeAt(std::uint64_t offset, const unsigned char* bytes, std::size_t count) const {
  return writeAllAt(descriptor_, bytes, count, offset);
}

bool PartFile::cutTo(std::uint64_t size) const { return ftruncate(descriptor_, static_cast<off_t>(size)) == 0; }

bool PartFile::sync() const { return fdatasync(descriptor_) == 0; }

bool PartFile::close() { return descriptor_ < 0 || ::close(std::exchange(descriptor_, -1)) == 0; }
