#include "quarlo/tapelib/driver/virtual_driver.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <utility>

namespace {

/// Descriptors of virtual drives lie above any that the system hands out, and none is used twice.
constexpr int kFirstDescriptor = 1 << 24;

/// A result below zero is an errno.
template <class Result>
Result answer(Result result) {
  if (result >= 0) return result;
  errno = static_cast<int>(-result);
  return -1;
}

}  // namespace

VirtualDriver::VirtualDriver(const std::string& folder) {
  std::vector<std::string> paths;
  found_ = findDriveFiles(folder, paths);
  if (!found_) std::fprintf(stderr, "virtual drives: %s is not a folder\n", folder.c_str());
  for (const std::string& path : paths) add(path);
}

void VirtualDriver::add(const std::string& path) {
  DriveDescription description;
  std::string problem;
  if (!readDriveFile(path, description, problem)) {
    std::fprintf(stderr, "virtual drives: %s: %s\n", path.c_str(), problem.c_str());
    return;
  }
  for (const Slot& other : slots_) {
    const DriveDescription& taken = other.drive->description();
    if (taken.host != description.host || taken.id != description.id) continue;
    std::fprintf(stderr, "virtual drives: %s: host %d id %d is taken by drive %s\n", path.c_str(), taken.host, taken.id,
                 taken.model.c_str());
    return;
  }
  slots_.push_back({std::make_unique<VirtualDrive>(path, std::move(description)), -1});
}

VirtualDrive* VirtualDriver::find(int fd) {
  for (Slot& slot : slots_)
    if (slot.fd == fd && fd >= kFirstDescriptor) return slot.drive.get();
  errno = EBADF;
  return nullptr;
}

int VirtualDriver::open(const char* device, int flags) {
  constexpr char kPrefix[] = "/dev/nst";
  const std::size_t length = std::strlen(device);
  std::size_t index = 0;
  const auto [end, error] = length > sizeof kPrefix - 1 && std::strncmp(device, kPrefix, sizeof kPrefix - 1) == 0
                                ? std::from_chars(device + sizeof kPrefix - 1, device + length, index)
                                : std::from_chars_result{device, std::errc::invalid_argument};
  if (error != std::errc() || end != device + length || index >= slots_.size()) return answer(-ENOENT);
  const int result = slots_[index].drive->open(flags);
  if (result != 0) return answer(result);
  return slots_[index].fd = kFirstDescriptor + opens_++;
}

int VirtualDriver::close(int fd) {
  VirtualDrive* drive = find(fd);
  if (drive == nullptr) return -1;
  for (Slot& slot : slots_)
    if (slot.fd == fd) slot.fd = -1;
  return answer(drive->close());
}

ssize_t VirtualDriver::read(int fd, void* buffer, std::size_t size) {
  VirtualDrive* drive = find(fd);
  return drive == nullptr ? -1 : answer(drive->read(buffer, size));
}

ssize_t VirtualDriver::write(int fd, const void* buffer, std::size_t size) {
  VirtualDrive* drive = find(fd);
  return drive == nullptr ? -1 : answer(drive->write(buffer, size));
}

int VirtualDriver::operate(int fd, const mtop& command) {
  VirtualDrive* drive = find(fd);
  return drive == nullptr ? -1 : answer(drive->operate(command));
}

int VirtualDriver::status(int fd, mtget& status) {
  VirtualDrive* drive = find(fd);
  if (drive == nullptr) return -1;
  drive->status(status);
  return 0;
}

int VirtualDriver::position(int fd, long& block) {
  VirtualDrive* drive = find(fd);
  return drive == nullptr ? -1 : answer(drive->position(block));
}

int VirtualDriver::address(int fd, unsigned int& word) {
  VirtualDrive* drive = find(fd);
  if (drive == nullptr) return -1;
  word = drive->address();
  return 0;
}

int VirtualDriver::setBlocking(int fd) { return find(fd) == nullptr ? -1 : 0; }

bool VirtualDriver::listDrives(DriveFacts& drives) {
  for (const Slot& slot : slots_) {
    const DriveDescription& drive = slot.drive->description();
    drives.facts.push_back({drive.host, drive.id, drive.vendor + " " + drive.model});
  }
  return found_;
}
