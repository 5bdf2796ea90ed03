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

constexpr mode_t NEW_FILE_MODE = 0666;

std::string withoutLinks(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr), &std::free);
  return resolved ? resolved.get() : path;
}

}  // namespace

TempFile::~TempFile() { release(); }

void TempFile::release() {
  if (made && !kept && isInPlace()) (void)unlink(place.c_str());
  if (file >= 0) close(std::exchange(file, -1));  // and with it goes the lock
  made = kept = false;
}

bool TempFile::isInPlace() const {
  struct stat mine {};
  struct stat there {};
  return file >= 0 && fstat(file, &mine) == 0 && lstat(place.c_str(), &there) == 0 && mine.st_dev == there.st_dev &&
         mine.st_ino == there.st_ino;
}

std::uint64_t TempFile::size() const {
  struct stat facts {};
  return fstat(file, &facts) == 0 ? static_cast<std::uint64_t>(facts.st_size) : 0;
}

std::time_t TempFile::written() const {
  struct stat facts {};
  return fstat(file, &facts) == 0 ? facts.st_mtime : 0;
}

TempFile::Claim TempFile::claim(const std::string& path) {
  // Who held the file may have removed it between the opening and the lock.
  constexpr int ATTEMPTS = 20;
  Claim result = Claim::InUse;
  for (int i = 0; i < ATTEMPTS; ++i) {
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
  constexpr int FLAGS = O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK;  // the opening of a pipe is not to be waited for
  file = ::open(path.c_str(), FLAGS | O_EXCL, NEW_FILE_MODE);
  made = file >= 0;
  if (!made && errno == EEXIST) file = ::open(path.c_str(), FLAGS, NEW_FILE_MODE);
  struct stat facts {};
  if (file < 0 || fstat(file, &facts) != 0) return Claim::Failed;
  if (!S_ISREG(facts.st_mode)) {
    errno = EINVAL;
    return Claim::Failed;
  }
  place = withoutLinks(path);
  if (flock(file, LOCK_EX | LOCK_NB) == 0) return Claim::Taken;
  if (errno != EWOULDBLOCK) return Claim::NoLocks;
  made = false;  // whoever locked it first has it
  return Claim::InUse;
}

bool TempFile::empty() {
  if (ftruncate(file, 0) != 0) return false;
  made = true;
  return true;
}
