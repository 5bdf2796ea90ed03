/// The virtual drives of one folder: each file NAME.drive in it is a drive, /dev/nst0 and on in the order of their
/// names.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "quarlo/tapelib/driver/driver.h"
#include "quarlo/tapelib/driver/virtual_drive.h"

class VirtualDriver : public TapeDriver {
 public:
  /// A folder that is not there and a drive file that cannot be understood are said on standard error; the drives that
  /// are left are offered.
  explicit VirtualDriver(const std::string& folder);

  int open(const char* device, int flags) override;
  int close(int fd) override;
  ssize_t read(int fd, void* buffer, std::size_t size) override;
  ssize_t write(int fd, const void* buffer, std::size_t size) override;
  int operate(int fd, const mtop& command) override;
  int status(int fd, mtget& status) override;
  int position(int fd, long& block) override;
  int address(int fd, unsigned int& word) override;
  int setBlocking(int fd) override;
  bool listDrives(DriveFacts& drives) override;

  /// Drive number `index`, null when there is none.
  VirtualDrive* drive(std::size_t index) { return index < slots_.size() ? slots_[index].drive.get() : nullptr; }

 private:
  struct Slot {
    std::unique_ptr<VirtualDrive> drive;
    int fd = -1;
  };
  void add(const std::string& path);
  /// The drive open as `fd`, or null with errno set.
  VirtualDrive* find(int fd);

  bool found_ = false;
  std::vector<Slot> slots_;
  int opens_ = 0;
};
