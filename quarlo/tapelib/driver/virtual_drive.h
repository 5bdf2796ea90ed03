/// One virtual drive: answers every operation as the genuine driver answers for a drive that holds the same cartridge.
#pragma once

#include <sys/types.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "quarlo/tapelib/driver/drive_file.h"
#include "quarlo/tapelib/driver/mtio_records.h"
#include "quarlo/tapelib/driver/tap_file.h"

class VirtualDrive {
 public:
  /// @param path the drive file, already read into `drive`
  VirtualDrive(std::string path, DriveDescription drive);

  const DriveDescription& description() const { return drive_; }

  // The operations answer 0 or a count, or the errno below zero.
  int open(int flags);
  int close();
  bool isOpen() const { return open_; }
  ssize_t read(void* buffer, std::size_t size);
  ssize_t write(const void* buffer, std::size_t size);
  int operate(const mtop& command);
  void status(mtget& status) const;
  int position(long& block);
  unsigned int address() const;
  /// A reset of the drive's bus, seen by the next operation.
  void reset() { reset_ = true; }
  /// How often the files are looked at for an exchange by hand while the drive is open (250 ms).
  static void lookEvery(std::chrono::milliseconds interval) { lookEvery_ = interval; }

 private:
  /// What the driver remembers of the last event; decides the status bits and what the next operation answers.
  enum class Event { NONE, FILEMARK, END_OF_DATA, EARLY_WARNING, PHYSICAL_END };

  /// What tells one cartridge file, or one edit of a drive file, from another.
  struct Identity {
    dev_t device = 0;
    ino_t inode = 0;  ///< 0: there is no such file
    long seconds = 0;
    long nanoseconds = 0;
    off_t size = 0;
    bool sameFile(const Identity& other) const { return device == other.device && inode == other.inode; }
    bool operator==(const Identity&) const = default;
  };

  // The cartridge and the operator's hands (virtual_drive.cpp).
  static Identity identify(const std::string& path);
  bool refreshDescription();
  void bringUpToDate();
  void loadCartridge(const Identity& identity);
  void takeOut();
  bool handsWereHere();
  int attention();
  bool isProtected() const { return drive_.writeProtect || !tape_ || !tape_->writable(); }
  int endOpen();

  // Moving over the tape (virtual_motion.cpp).
  void say(const std::string& problem);
  bool isBad(const TapFile::Element& element) const;
  void stand(int file, int block, Event event);
  int countedBlock(int moved) const { return block_ < 0 || block_ + moved < 0 ? -1 : block_ + moved; }
  int countedFile(int moved) const { return file_ < 0 ? -1 : std::max(0, file_ + moved); }
  ssize_t readVariable(char* buffer, std::size_t size);
  ssize_t readFixed(char* buffer, std::size_t size);
  ssize_t readStopped(const TapFile::Element& element);
  int writeOne(const char* data, std::size_t size);
  int recordingFailed(int error);
  int writeMarks(int count);
  int finishWriting(int& marks);
  int blocksForward(int count);
  int blocksBackward(int count);
  int filesForward(int count);
  int filesBackward(int count);
  int toEnd();
  int rewind();
  int seek(int number);
  int offline();
  int perform(const mtop& command);

  static std::chrono::milliseconds lookEvery_;

  std::string path_;
  DriveDescription drive_;
  Identity described_;             ///< the drive file as it was read
  std::unique_ptr<TapFile> tape_;  ///< the cartridge in the drive
  std::string cartridge_;          ///< its path, or that of the next one
  Identity loaded_;                ///< the cartridge's file as it was loaded, or as our last writing left it
  Identity ejected_;               ///< a cartridge that was unloaded stays out until its file or the drive file changes
  std::string said_;               ///< the last problem told of; not told again before another cartridge is loaded
  std::size_t nextInMagazine_ = 0;
  std::chrono::steady_clock::time_point looked_;

  bool open_ = false;
  bool readOnly_ = false;
  bool ready_ = false;     ///< the driver believes that a cartridge is in; decided at open
  bool writing_ = false;   ///< the next close, rewind or unload adds a filemark
  bool recorded_ = false;  ///< written to since loaded_ was taken
  bool reset_ = false;     ///< a reset that no operation has met yet
  bool lost_ = false;      ///< position unknown since a reset
  int file_ = 0;
  int block_ = 0;
  Event event_ = Event::NONE;
  int blockSize_ = 0;  ///< 0: blocks of any length
};
