/// An open tape together with what is known of where it stands.
///
/// The driver's answers alone do not tell a bad block (the tape then stands behind it) from the end of data without a
/// filemark (nothing was passed), nor either of them from a cartridge that was exchanged by hand. The handle keeps the
/// logical block number that the tape must stand at, asks the drive for it when something failed, and from the
/// difference concludes what happened. After a failed read it brings the tape back in front of the block.
#pragma once

#include <cstddef>

#include "quarlo/tapelib/driver/driver.h"

/// What a read met.
enum class TapeAnswer {
  BLOCK,
  MARK,
  END_OF_DATA,
  TOO_LONG,  ///< a block longer than the buffer; the tape stands before it
  FAILED     ///< the tape stands before what could not be read, unless the position is lost
};

class TapeHandle {
 public:
  explicit TapeHandle(int fd) : fd_(fd) {}

  int fd() const { return fd_; }
  /// Learns where the tape stands; once after the open.
  void settle();
  /// One block of at most `size` bytes. @param bytes its length, or 0
  TapeAnswer read(void* buffer, std::size_t size, int& bytes);
  /// Whether a block, readable or not, follows here or behind one mark. The tape then stands where it stood, unless its
  /// position was lost by asking.
  bool goesOn(void* buffer, std::size_t size);
  /// As TapeDriver::write.
  ssize_t write(const void* buffer, std::size_t size);
  /// As TapeDriver::operate. With the position lost only a rewind or an unload reaches the drive.
  int operate(const mtop& command);
  int status(mtget& status) const;
  /// As TapeDriver::close.
  int close();

  /// Something was written since the tape was opened.
  bool wrote() const { return wrote_; }
  /// True once after the position got lost: the drive was reset, or the cartridge pulled or exchanged. Reads, writes
  /// and spacing then fail without reaching the drive until the tape is rewound.
  bool takeNewsOfLoss();
  bool isLost() const { return lost_; }
  /// The last operation was a space forward over blocks that a filemark stopped: the tape stands behind the mark.
  bool isStoppedByMark() const { return stopped_; }
  /// The last read failed at a filemark, which the tape stands before. Not known of a drive that cannot say its
  /// position.
  bool failedAtMark() const { return unreadableMark_; }

 private:
  bool move(short operation, int count);
  bool ask(long& block);
  TapeAnswer readAgain(void* buffer, std::size_t size);
  bool standsAt(long block);
  void lose();
  bool positionGone(const mtget& status) const { return status.mt_fileno < 0 && status.mt_blkno < 0; }
  TapeAnswer afterFailedRead(int error);
  TapeAnswer withoutPosition(int error);
  TapeAnswer lookAhead();
  void stepBack(int blocks);
  void afterFailedWrite(int error, bool marks);
  void afterSpace(const mtop& command, bool failed);
  mtop withoutPassed(const mtop& command);

  int fd_;
  long at_ = -1;          ///< logical block number that the tape stands at, -1 unknown
  bool answers_ = false;  ///< the drive can say its position
  bool passed_ = false;   ///< the tape stands behind a block that failed and could not be stepped back over
  bool lost_ = false;
  bool stopped_ = false;         ///< see isStoppedByMark
  bool unreadableMark_ = false;  ///< see failedAtMark
  bool news_ = false;
  bool wrote_ = false;
};
