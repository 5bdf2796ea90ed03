#include "libkyr/disksync.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <utility>

#include "libkyr/files.h"

namespace {

/// Files held open at a time: what is written sooner is waited for sooner.
constexpr std::size_t kHeld = 256;

/// What is not kept on a disk has nothing to be brought there.
bool synced(int result) { return result == 0 || errno == EINVAL || errno == EROFS || errno == ENOTSUP; }

}  // namespace

DiskSync::~DiskSync() {
  for (const File& file : files_) close(file.descriptor);
}

void DiskSync::note(bool done, const std::string& path, bool isDirectory) {
  if (!done) failures_.push_back({path, isDirectory, errno});
}

void DiskSync::add(int written, const std::string& path) {
  const std::filesystem::path directory = std::filesystem::path(path).parent_path();
  directories_.insert(directory.empty() ? "." : directory.string());
  const int descriptor = fcntl(written, F_DUPFD_CLOEXEC, 0);
  if (descriptor < 0) {
    note(synced(fdatasync(written)), path);
    return;
  }
  startToDisk(descriptor, 0, 0);
  files_.push_back({descriptor, path});
  if (files_.size() > kHeld) waitForOldest();
}

void DiskSync::waitForOldest() {
  const File file = std::move(files_.front());
  files_.pop_front();
  note(synced(fdatasync(file.descriptor)), file.path);
  close(file.descriptor);
}

bool DiskSync::wait(const Failed& failed) {
  while (!files_.empty()) waitForOldest();
  for (const std::string& path : directories_) {
    const int directory = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory < 0) continue;  // who may write into it need not be allowed to read it
    note(synced(fsync(directory)), path, true);
    close(directory);
  }
  directories_.clear();
  for (const Failure& failure : failures_) failed(failure);
  return std::exchange(failures_, {}).empty();
}
