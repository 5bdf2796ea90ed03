/// The seam between the device layer and whatever carries out its tape operations: the system's tape driver, the
/// virtual drives, or a wrapper that makes operations fail.
///
/// Every operation answers as the system call it stands for: 0, a count or a descriptor for success, -1 with errno set
/// for failure. What an operation means, which errno it gives and what the status says afterwards is laid down by the
/// genuine driver; tests/device/conformance_test.cpp holds every implementation to it.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "quarlo/tapelib/driver/mtio_records.h"

/// One tape drive as the system knows it.
struct DriveFact {
  int host;          ///< SCSI host number
  int id;            ///< SCSI target id
  std::string name;  ///< vendor and model joined by one blank
};

/// Everything the system says about its drives: a text in the form of the kernel's SCSI device list, or ready facts.
struct DriveFacts {
  bool isText = false;
  std::string text;
  std::vector<DriveFact> facts;
};

class TapeDriver {
 public:
  TapeDriver() = default;
  TapeDriver(const TapeDriver&) = delete;
  TapeDriver& operator=(const TapeDriver&) = delete;
  virtual ~TapeDriver() = default;

  /// @param flags of open(2): O_RDONLY or O_RDWR, with O_NONBLOCK to open a drive without a cartridge
  /// @return a descriptor above 0
  virtual int open(const char* device, int flags) = 0;
  /// Adds a filemark when the last operation was a write. The descriptor is gone even when -1 is answered.
  virtual int close(int fd) = 0;
  /// One block. 0 at a filemark or at the end of data; ENOMEM for a block longer than `size`.
  virtual ssize_t read(int fd, void* buffer, std::size_t size) = 0;
  virtual ssize_t write(int fd, const void* buffer, std::size_t size) = 0;
  /// MTIOCTOP
  virtual int operate(int fd, const mtop& command) = 0;
  /// MTIOCGET
  virtual int status(int fd, mtget& status) = 0;
  /// MTIOCPOS: the logical block number, filemarks counted as blocks.
  virtual int position(int fd, long& block) = 0;
  /// SCSI_IOCTL_GET_IDLUN: id, lun << 8, channel << 16, host << 24.
  virtual int address(int fd, unsigned int& word) = 0;
  /// Ends the O_NONBLOCK of a descriptor opened with it.
  virtual int setBlocking(int fd) = 0;
  /// What the system knows of its drives; false when it cannot say.
  virtual bool listDrives(DriveFacts& drives) = 0;
};

/// Takes a line that a driver has for the user, such as the damage that it met on a cartridge: standard error until
/// setDriveNews says where else (null: standard error again).
void tellOfDrive(const std::string& line);
void setDriveNews(void (*tell)(const char* line));

/// The driver that the whole process uses. Chosen at the first call: virtual drives when QUARLO_VIRTUAL_DRIVES names a
/// folder (a relative path begins where the program was started), else the genuine driver; either behind the fault
/// wrapper when QUARLO_TAPE_FAULT is set.
TapeDriver& tapeDriver();

/// Puts another driver in place (null: choose anew at the next use) and hands back the one that stood there. No tape
/// may be open.
std::unique_ptr<TapeDriver> setTapeDriver(std::unique_ptr<TapeDriver> driver);
