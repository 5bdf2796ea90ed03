// A virtual drive as seen from outside: opening and closing it, its status, and what an operator does to it by hand.
#include "quarlo/tapelib/driver/virtual_drive.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace {

constexpr long kAllBits = 0xFFFFFFFFL;
constexpr long kScsi2Tape = 0x72;

}  // namespace

std::chrono::milliseconds VirtualDrive::lookEvery_{250};

VirtualDrive::VirtualDrive(std::string path, DriveDescription drive)
    : path_(std::move(path)), drive_(std::move(drive)), described_(identify(path_)), cartridge_(drive_.cartridge) {}

VirtualDrive::Identity VirtualDrive::identify(const std::string& path) {
  struct stat facts {};
  if (path.empty() || stat(path.c_str(), &facts) != 0) return {};
  return {facts.st_dev, facts.st_ino, facts.st_mtim.tv_sec, facts.st_mtim.tv_nsec, facts.st_size};
}

// ---- the operator's hands ---------------------------------------------------------------------------------------

/// Reads the drive file anew when it changed. A file that cannot be understood leaves things as they are. @return
/// changed
bool VirtualDrive::refreshDescription() {
  const Identity now = identify(path_);
  if (now == described_) return false;
  described_ = now;
  DriveDescription fresh;
  std::string problem;
  if (!readDriveFile(path_, fresh, problem)) {
    std::fprintf(stderr, "virtual drives: %s: %s\n", path_.c_str(), problem.c_str());
    return false;
  }
  drive_ = std::move(fresh);
  cartridge_ = drive_.cartridge;
  nextInMagazine_ = 0;
  ejected_ = {};
  return true;
}

void VirtualDrive::loadCartridge(const Identity& identity) {
  tape_ = std::make_unique<TapFile>();
  if (const int error = tape_->open(cartridge_); error != 0) {
    tape_.reset();
    say(std::string("cannot be opened: ") + std::strerror(error));
  } else {
    said_.clear();
  }
  loaded_ = identity;
  recorded_ = false;
}

/// Puts in what the drive file says is in. A cartridge that is in already stays where it stands, unless the drive file
/// was edited since: that counts as taking it out and putting it in again.
void VirtualDrive::bringUpToDate() {
  const bool edited = refreshDescription();
  const Identity identity = drive_.offline ? Identity{} : identify(cartridge_);
  if (identity.inode == 0 || (!tape_ && identity == ejected_)) {
    tape_.reset();
    return;
  }
  if (tape_ && identity == loaded_ && !edited) return;
  loadCartridge(identity);
  stand(0, 0, Event::NONE);
  lost_ = reset_ = false;
}

/// Takes the cartridge out; the magazine's next one, if there is one, stands ready for the next open.
void VirtualDrive::takeOut() {
  tape_.reset();
  ejected_ = identify(cartridge_);
  if (nextInMagazine_ >= drive_.magazine.size()) return;
  cartridge_ = drive_.magazine[nextInMagazine_++];
  ejected_ = {};
}

/// Whether the cartridge went out, or another came in, since the drive was opened. The new one then stands at its
/// beginning.
bool VirtualDrive::handsWereHere() {
  const auto now = std::chrono::steady_clock::now();
  if (now - looked_ < lookEvery_) return false;
  looked_ = now;
  refreshDescription();
  const Identity identity = drive_.offline ? Identity{} : identify(cartridge_);
  if (tape_ && identity.sameFile(loaded_) && (recorded_ || identity == loaded_)) return false;
  if (!tape_ && identity.inode == 0) return false;
  tape_.reset();
  if (identity.inode == 0) return true;
  loadCartridge(identity);
  if (tape_) flock(tape_->fd(), LOCK_EX | LOCK_NB);
  return true;
}

/// What stands in the way of an operation before it begins. @return 0 or an errno below zero
int VirtualDrive::attention() {
  if (!ready_) return -ENOMEDIUM;
  if (reset_) {
    reset_ = false;
    lost_ = true;
    stand(-1, -1, Event::NONE);
  }
  return handsWereHere() || !tape_ ? -EIO : 0;
}

// ---- opening, closing, status -----------------------------------------------------------------------------------

int VirtualDrive::open(int flags) {
  if (open_) return -EBUSY;
  const bool wait = (flags & O_NONBLOCK) == 0;
  bringUpToDate();
  if (!tape_) {
    if (wait) return -ENOMEDIUM;  // a genuine drive waits two minutes for a cartridge before it says so
    stand(-1, -1, event_);
  } else {
    if (wait && (flags & O_ACCMODE) != O_RDONLY && isProtected()) return -EROFS;
    if (flock(tape_->fd(), LOCK_EX | LOCK_NB) != 0) return -EBUSY;
  }
  ready_ = tape_ != nullptr;
  readOnly_ = (flags & O_ACCMODE) == O_RDONLY;
  open_ = true;
  writing_ = false;
  return 0;
}

int VirtualDrive::close() {
  int result = 0;
  if (writing_ || lost_ || reset_) result = attention();
  if (result == 0 && lost_) result = -EIO;
  if (result == 0 && writing_) result = writeMarks(1);
  const int flushed = endOpen();
  return result != 0 ? result : flushed;
}

int VirtualDrive::endOpen() {
  open_ = ready_ = writing_ = false;
  if (!tape_) return 0;
  const int error = tape_->flush();
  flock(tape_->fd(), LOCK_UN);
  if (recorded_) loaded_ = identify(cartridge_);
  recorded_ = false;
  return error == 0 ? 0 : recordingFailed(error);
}

void VirtualDrive::status(mtget& status) const {
  status = mtget{};
  status.mt_type = kScsi2Tape;
  status.mt_dsreg = blockSize_;
  status.mt_fileno = file_;
  status.mt_blkno = block_;
  long bits = GMT_IM_REP_EN(kAllBits);
  bits |= ready_ ? GMT_ONLINE(kAllBits) : GMT_DR_OPEN(kAllBits);
  if (ready_ && tape_ && isProtected()) bits |= GMT_WR_PROT(kAllBits);
  if (block_ == 0) bits |= file_ == 0 ? GMT_BOT(kAllBits) : GMT_EOF(kAllBits);
  if (event_ == Event::END_OF_DATA) bits |= GMT_EOD(kAllBits);
  if (event_ == Event::EARLY_WARNING || event_ == Event::PHYSICAL_END) bits |= GMT_EOT(kAllBits);
  status.mt_gstat = bits;
}

int VirtualDrive::position(long& block) {
  if (attention() != 0 || lost_) return -EIO;
  block = tape_->number();
  if (block == 0) stand(0, 0, event_);
  return 0;
}

unsigned int VirtualDrive::address() const {
  return static_cast<unsigned>(drive_.id) | static_cast<unsigned>(drive_.lun) << 8 |
         static_cast<unsigned>(drive_.host) << 24;
}
