/// A driver wrapped around another that makes chosen operations fail, come up short or take long. For tests, and for
/// users who want to see what their night's job does when a drive gives up.
#pragma once

#include "quarlo/tapelib/driver/driver.h"

/// One planned fault. Text form "KIND:N:WHAT":
/// - KIND: any, open, close, read, write, weof, space, rewind, offline, setblk, status, position, address
/// - N: the Nth operation of that kind (of all operations for "any"), from 1; "N+" means from the Nth on
/// - WHAT: an error name (EIO, ENOSPC, ENOMEM, ENOMEDIUM, EBUSY, EACCES, EROFS, ENODEV, ENXIO, EINVAL, EINTR) or
/// number:
///   the operation is not carried out and fails so (a close is carried out, then fails);
///   "short" or "short=BYTES": a read or write of half (or that many) of the bytes; "slow=MILLISECONDS": it takes
///   longer
struct TapeFault {
  enum Kind { ANY, OPEN, CLOSE, READ, WRITE, MARKS, SPACE, REWIND, OFFLINE, SETBLK, STATUS, POSITION, ADDRESS, OTHER };
  enum Effect { FAIL, SHORT, SLOW };
  Kind kind = ANY;
  long at = 1;
  bool onward = false;
  Effect effect = FAIL;
  long value = 0;  ///< errno; bytes (0: half); milliseconds
};

/// Reads a plan: faults separated by commas or blanks. @return false, with the piece that is wrong in `bad`
bool parseTapeFaults(const std::string& text, std::vector<TapeFault>& faults, std::string& bad);

class FaultDriver : public TapeDriver {
 public:
  FaultDriver(std::unique_ptr<TapeDriver> inner, std::vector<TapeFault> faults);

  int open(const char* device, int flags) override;
  int close(int fd) override;
  ssize_t read(int fd, void* buffer, std::size_t size) override;
  ssize_t write(int fd, const void* buffer, std::size_t size) override;
  int operate(int fd, const mtop& command) override;
  int status(int fd, mtget& status) override;
  int position(int fd, long& block) override;
  int address(int fd, unsigned int& word) override;
  int setBlocking(int fd) override { return inner_->setBlocking(fd); }
  bool listDrives(DriveFacts& drives) override { return inner_->listDrives(drives); }

  /// Operations seen so far: a sweep ends when N grows beyond it.
  long operations(TapeFault::Kind kind = TapeFault::ANY) const { return counts_[kind]; }
  /// How often a fault struck.
  long struck() const { return struck_; }
  /// Forgets the counts and takes another plan.
  void plan(std::vector<TapeFault> faults);

 private:
  /// Counts the operation, waits out a slow fault; the fault that fails or shortens it, or null.
  const TapeFault* meet(TapeFault::Kind kind);

  std::unique_ptr<TapeDriver> inner_;
  std::vector<TapeFault> faults_;
  long counts_[TapeFault::OTHER + 1] = {};
  long struck_ = 0;
};
