/// The genuine driver: the system's tape calls and nothing else.
#pragma once

#include "quarlo/tapelib/driver/driver.h"

class StDriver : public TapeDriver {
 public:
  /// @param procScsi the folder of the kernel's SCSI list, @param sysfsTape that of its tape class
  explicit StDriver(std::string procScsi = "/proc/scsi", std::string sysfsTape = "/sys/class/scsi_tape");

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

 private:
  std::string procScsi_;
  std::string sysfsTape_;
};
