#include "quarlo/tapelib/driver/st_driver.h"

#include <fcntl.h>
#include <scsi/scsi.h>
#include <scsi/scsi_ioctl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "libkyr/folder.h"

#ifndef SCSI_IOCTL_GET_IDLUN  // the C library's header leaves it out
#define SCSI_IOCTL_GET_IDLUN 0x5382
#endif

namespace fs = std::filesystem;

namespace {

/// The transfer length of a tape command has 24 bits; a larger request would wrap around.
constexpr std::size_t kLargestTransfer = 0xFFFFFF;
/// Bytes of the kernel's SCSI list that are looked at.
constexpr std::size_t kListBytes = 65536;

/// Repeats a system call that a signal cut short.
template <class Call>
auto unbroken(Call call) {
  for (;;) {
    const auto result = call();
    if (result != -1 || errno != EINTR) return result;
  }
}

std::string trimmedLine(const fs::path& file) {
  std::ifstream in(file);
  std::string line;
  std::getline(in, line);
  const auto first = line.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return line.substr(first, line.find_last_not_of(' ') - first + 1);
}

/// The facts of one tape from its class folder, whose `device` links to ".../HOST:CHANNEL:ID:LUN".
bool tapeFact(const fs::path& tape, DriveFact& fact) {
  std::error_code error;
  const std::string link = fs::read_symlink(tape / "device", error).filename().string();
  unsigned host = 0;
  unsigned channel = 0;
  unsigned id = 0;
  unsigned lun = 0;
  // NOLINTNEXTLINE(cert-err34-c): the kernel writes these numbers
  if (error || std::sscanf(link.c_str(), "%u:%u:%u:%u", &host, &channel, &id, &lun) != 4) return false;
  // Drives are asked for their address in one byte each.
  fact = {static_cast<int>(host & 0xFF), static_cast<int>(id & 0xFF),
          trimmedLine(tape / "device/vendor") + " " + trimmedLine(tape / "device/model")};
  return true;
}

bool isPlainTapeName(const std::string& name) {
  return name.size() > 3 && name.starts_with("nst") && name.find_first_not_of("0123456789", 3) == std::string::npos;
}

bool readSysfs(const std::string& folder, DriveFacts& drives) {
  std::vector<std::pair<long, DriveFact>> found;
  for (const fs::path& tape : pathsIn(folder)) {
    const std::string name = tape.filename().string();
    DriveFact fact;
    if (isPlainTapeName(name) && tapeFact(tape, fact)) found.emplace_back(std::stol(name.substr(3)), fact);
  }
  std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  for (auto& [number, fact] : found) drives.facts.push_back(std::move(fact));
  return !found.empty();
}

}  // namespace

StDriver::StDriver(std::string procScsi, std::string sysfsTape)
    : procScsi_(std::move(procScsi)), sysfsTape_(std::move(sysfsTape)) {}

int StDriver::open(const char* device, int flags) {
  const int fd = unbroken([&] { return ::open(device, flags | O_CLOEXEC); });
  if (fd != 0) return fd;
  // 0 stands for a closed unit; it comes up only when standard input was closed.
  const int other = fcntl(fd, F_DUPFD_CLOEXEC, 3);
  const int error = errno;
  ::close(fd);
  errno = error;
  return other;
}

int StDriver::close(int fd) { return ::close(fd); }

ssize_t StDriver::read(int fd, void* buffer, std::size_t size) {
  return unbroken([&] { return ::read(fd, buffer, std::min(size, kLargestTransfer)); });
}

ssize_t StDriver::write(int fd, const void* buffer, std::size_t size) {
  if (size > kLargestTransfer) {
    errno = EINVAL;
    return -1;
  }
  return unbroken([&] { return ::write(fd, buffer, size); });
}

int StDriver::operate(int fd, const mtop& command) {
  // The drive's own count is a signed number of 24 bits: a larger one would move the tape the other way.
  constexpr int kMostSpacing = 0x7FFFFF;
  const bool spacing =
      command.mt_op == MTFSR || command.mt_op == MTBSR || command.mt_op == MTFSF || command.mt_op == MTBSF;
  if (spacing && command.mt_count > kMostSpacing) {
    errno = EINVAL;
    return -1;
  }
  mtop request = command;
  return unbroken([&] { return ioctl(fd, MTIOCTOP, &request); });
}

int StDriver::status(int fd, mtget& status) {
  return unbroken([&] { return ioctl(fd, MTIOCGET, &status); });
}

int StDriver::position(int fd, long& block) {
  mtpos answer{};
  const int result = unbroken([&] { return ioctl(fd, MTIOCPOS, &answer); });
  if (result != -1) block = answer.mt_blkno;
  return result;
}

int StDriver::address(int fd, unsigned int& word) {
  unsigned int answer[2] = {0, 0};  // the address, then a number of the host's own
  const int result = unbroken([&] { return ioctl(fd, SCSI_IOCTL_GET_IDLUN, answer); });
  if (result != -1) word = answer[0];
  return result;
}

int StDriver::setBlocking(int fd) {
  const int flags = fcntl(fd, F_GETFL);
  return flags == -1 ? -1 : fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
}

bool StDriver::listDrives(DriveFacts& drives) {
  std::error_code error;
  if (!fs::is_directory(procScsi_, error) || !fs::exists(procScsi_ + "/scsi", error))
    return readSysfs(sysfsTape_, drives);
  std::ifstream list(procScsi_ + "/scsi", std::ios::binary);
  drives.isText = true;
  drives.text.resize(kListBytes);
  list.read(drives.text.data(), static_cast<std::streamsize>(kListBytes));
  drives.text.resize(static_cast<std::size_t>(std::max<std::streamsize>(list.gcount(), 0)));
  return !drives.text.empty();
}
