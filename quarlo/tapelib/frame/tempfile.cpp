#include "quarlo/tapelib/frame/tempfile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <utility>

namespace {

constexpr mode_t kNewFileMode = 0666;

std::string withoutLinks(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr), &std::free);
  return resolved ? resolved.get() : path;
}

}  // namespace

TempFile::~TempFile() { release(); }

void TempFile::release() {
  if (made_ && !kept_ && isInPlace()) (void)unlink(place_.c_str());
  if (file_ >= 0) close(std::exchange(file_, -1));  // and with it goes the lock
  made_ = kept_ = false;
}

bool TempFile::isInPlace() const {
  struct stat mine {};
  struct stat there {};
  return file_ >= 0 && fstat(file_, &mine) == 0 && lstat(place_.c_str(), &there) == 0 && mine.st_dev == there.st_dev &&
         mine.st_ino == there.st_ino;
}

std::uint64_t TempFile::size() const {
  struct stat facts {};
  return fstat(file_, &facts) == 0 ? static_cast<std::uint64_t>(facts.st_size) : 0;
}

std::time_t TempFile::written() const {
  struct stat facts {};
  return fstat(file_, &facts) == 0 ? facts.st_mtime : 0;
}

TempFile::Claim TempFile::claim(const std::string& path) {
  // Who held the file may have removed it between the opening and the lock.
  constexpr int kAttempts = 20;
  Claim result = Claim::InUse;
  for (int i = 0; i < kAttempts; ++i) {
    result = open(path);
    if (result != Claim::Taken || isInPlace()) break;
    result = Claim::InUse;
    release();
  }
  if (result != Claim::Taken) {
    const int reason = errno;
    release();
    errno = reason;
  }
  return result;
}

TempFile::Claim TempFile::open(const std::string& path) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK;  // the opening of a pipe is not to be waited for
  file_ = ::open(path.c_str(), kFlags | O_EXCL, kNewFileMode);
  made_ = file_ >= 0;
  if (!made_ && errno == EEXIST) file_ = ::open(path.c_str(), kFlags, kNewFileMode);
  struct stat facts {};
  if (file_ < 0 || fstat(file_, &facts) != 0) return Claim::Failed;
  if (!S_ISREG(facts.st_mode)) {
    errno = EINVAL;
    return Claim::Failed;
  }
  place_ = withoutLinks(path);
  if (flock(file_, LOCK_EX | LOCK_NB) == 0) return Claim::Taken;
  if (errno != EWOULDBLOCK) return Claim::NoLocks;
  made_ = false;  // whoever locked it first has it
  return Claim::InUse;
}

bool TempFile::empty() {
  if (ftruncate(file_, 0) != 0) return false;
  made_ = true;
  return true;
}
