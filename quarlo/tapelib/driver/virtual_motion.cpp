// A virtual drive at work: reading, writing and spacing, with the counters and events that the genuine driver keeps.
#include <algorithm>
#include <cerrno>
#include <cstring>

#include "quarlo/tapelib/driver/driver.h"
#include "quarlo/tapelib/driver/virtual_drive.h"

using Kind = TapFile::Kind;

/// One line to the user, once for each load: retries and skips meet the same place again and again.
void VirtualDrive::say(const std::string& problem) {
  const std::string line = "  *** Virtual drive " + drive_.model + ": " + cartridge_ + ": " + problem + ".";
  if (line == said_) return;
  said_ = line;
  tellOfDrive(line);
}

void VirtualDrive::stand(int file, int block, Event event) {
  file_ = file;
  block_ = block;
  event_ = event;
}

bool VirtualDrive::isBad(const TapFile::Element& element) const {
  return element.kind == Kind::BAD_BLOCK ||
         std::find(drive_.badBlocks.begin(), drive_.badBlocks.end(), tape_->number()) != drive_.badBlocks.end();
}

// ---- reading ----------------------------------------------------------------------------------------------------

ssize_t VirtualDrive::read(void* buffer, std::size_t size) {
  if (const int stop = attention(); stop != 0 || lost_) {
    if (stop == -EIO) stand(file_, -1, Event::NONE);
    return stop != 0 ? stop : -EIO;
  }
  writing_ = false;
  if (size == 0) return 0;
  if (event_ == Event::END_OF_DATA) return -EIO;
  char* bytes = static_cast<char*>(buffer);
  return blockSize_ == 0 ? readVariable(bytes, size) : readFixed(bytes, size);
}

ssize_t VirtualDrive::readVariable(char* buffer, std::size_t size) {
  const TapFile::Element element = tape_->ahead();
  const bool isBlock = element.kind == Kind::BLOCK || element.kind == Kind::BAD_BLOCK;
  if (!isBlock) return readStopped(element);
  const bool readable = !isBad(element) && (element.length > size || tape_->copy(element, buffer, element.length));
  tape_->pass(element);
  stand(file_, readable ? countedBlock(1) : -1, Event::NONE);
  if (!readable) return -EIO;
  return element.length > size ? -ENOMEM : static_cast<ssize_t>(element.length);
}

/// A read that met no block: 0 at a mark and once at the end of data behind a mark, else an error.
ssize_t VirtualDrive::readStopped(const TapFile::Element& element) {
  if (element.kind == Kind::MARK) {
    tape_->pass(element);
    stand(countedFile(1), 0, Event::FILEMARK);
    return 0;
  }
  const bool behindMark = event_ == Event::FILEMARK;
  if (element.kind == Kind::DAMAGED) {
    say(tape_->damage());
    stand(file_, -1, Event::NONE);
    return -EIO;
  }
  stand(file_, -1, behindMark ? Event::END_OF_DATA : Event::NONE);
  return behindMark ? 0 : -EIO;
}

/// Blocks of one size, as many as there are up to the next mark.
ssize_t VirtualDrive::readFixed(char* buffer, std::size_t size) {
  const auto each = static_cast<std::size_t>(blockSize_);
  if (size % each != 0) return -EINVAL;
  std::size_t done = 0;
  while (done < size) {
    const TapFile::Element element = tape_->ahead();
    if (element.kind == Kind::MARK || element.kind == Kind::END) {
      if (done == 0) return readStopped(element);
      break;
    }
    if (element.kind != Kind::BLOCK || element.length != each || isBad(element) ||
        !tape_->copy(element, buffer + done, each)) {
      if (done == 0) return -EIO;
      break;
    }
    tape_->pass(element);
    stand(file_, countedBlock(1), Event::NONE);
    done += each;
  }
  return static_cast<ssize_t>(done);
}

// ---- writing ----------------------------------------------------------------------------------------------------

ssize_t VirtualDrive::write(const void* buffer, std::size_t size) {
  if (readOnly_) return -EBADF;
  if (const int stop = attention(); stop != 0 || lost_) {
    if (stop == -EIO) stand(file_, -1, Event::NONE);
    return stop != 0 ? stop : -EIO;
  }
  if (isProtected()) return -EACCES;
  if (size == 0) return 0;
  const std::size_t each = blockSize_ == 0 ? size : static_cast<std::size_t>(blockSize_);
  if (size % each != 0 || each > TapFile::kLargestBlock) return -EINVAL;
  writing_ = true;
  const char* bytes = static_cast<const char*>(buffer);
  for (std::size_t done = 0; done < size; done += each)
    if (const int error = writeOne(bytes + done, each); error != 0)
      return done > 0 ? static_cast<ssize_t>(done) : error;
  return static_cast<ssize_t>(size);
}

/// One block, with the end of the medium: the block that crosses early warning is written, the next one refused, the
/// one after it written again, and so on until the physical end.
int VirtualDrive::writeOne(const char* data, std::size_t size) {
  if (event_ == Event::EARLY_WARNING || event_ == Event::PHYSICAL_END) {
    event_ = Event::END_OF_DATA;
    return -ENOSPC;
  }
  const off_t after = tape_->offset() + static_cast<off_t>(size);
  if (drive_.capacity > 0 && after > drive_.capacity + drive_.reserve) {
    event_ = Event::PHYSICAL_END;
    return -ENOSPC;
  }
  if (const int error = tape_->writeBlock(data, static_cast<std::uint32_t>(size)); error != 0)
    return recordingFailed(error);
  recorded_ = true;
  const bool crossed = drive_.capacity > 0 && tape_->offset() > drive_.capacity;
  stand(file_, countedBlock(1), crossed ? Event::EARLY_WARNING : Event::NONE);
  return 0;
}

/// The cartridge's file could not take what was written, perhaps not what was written before either.
int VirtualDrive::recordingFailed(int error) {
  say(std::string("cannot be written: ") + std::strerror(error));
  stand(file_, -1, Event::NONE);
  return -EIO;
}

int VirtualDrive::writeMarks(int count) {
  for (int i = 0; i < count; ++i)
    if (const int error = tape_->writeMark(); error != 0) return recordingFailed(error);
  if (const int error = tape_->flush(); error != 0) return recordingFailed(error);
  recorded_ = recorded_ || count > 0;
  writing_ = false;
  stand(countedFile(count), 0, Event::FILEMARK);
  return 0;
}

/// The mark that the driver adds when a tape is moved away from what was just written. @param marks counts it
int VirtualDrive::finishWriting(int& marks) {
  if (!writing_) return 0;
  ++marks;
  return writeMarks(1);
}

// ---- spacing ----------------------------------------------------------------------------------------------------

int VirtualDrive::blocksForward(int count) {
  for (int moved = 0; moved < count; ++moved) {
    const TapFile::Element element = tape_->ahead();
    if (element.kind == Kind::DAMAGED || element.kind == Kind::MARK || element.kind == Kind::END) {
      if (element.kind == Kind::END)
        stand(file_, countedBlock(moved), Event::END_OF_DATA);
      else
        readStopped(element);
      return -EIO;
    }
    tape_->pass(element);
  }
  if (count > 0) stand(file_, countedBlock(count), Event::NONE);
  return 0;
}

int VirtualDrive::blocksBackward(int count) {
  for (int moved = 0; moved < count; ++moved) {
    const TapFile::Element element = tape_->behind();
    if (element.kind == Kind::DAMAGED) stand(file_, -1, Event::NONE);
    if (element.kind == Kind::END) stand(0, 0, Event::NONE);
    if (element.kind == Kind::DAMAGED || element.kind == Kind::END) return -EIO;
    tape_->passBack(element);
    if (element.kind != Kind::MARK) continue;
    stand(countedFile(-1), -1, Event::NONE);
    return -EIO;
  }
  if (count > 0) stand(file_, countedBlock(-count), Event::NONE);
  return 0;
}

int VirtualDrive::filesForward(int count) {
  int passed = 0;
  while (passed < count) {
    const TapFile::Element element = tape_->ahead();
    if (element.kind == Kind::END || element.kind == Kind::DAMAGED) {
      stand(countedFile(passed), -1, element.kind == Kind::END ? Event::END_OF_DATA : Event::NONE);
      return -EIO;
    }
    tape_->pass(element);
    if (element.kind == Kind::MARK) ++passed;
  }
  stand(countedFile(count), 0, count > 0 ? Event::FILEMARK : event_);
  return 0;
}

int VirtualDrive::filesBackward(int count) {
  int passed = 0;
  while (passed < count) {
    const TapFile::Element element = tape_->behind();
    if (element.kind == Kind::END || element.kind == Kind::DAMAGED) {
      if (element.kind == Kind::END) stand(0, 0, Event::NONE);
      return -EIO;
    }
    tape_->passBack(element);
    if (element.kind == Kind::MARK) ++passed;
  }
  stand(countedFile(-count), -1, Event::NONE);
  return 0;
}

int VirtualDrive::toEnd() {
  int marks = 0;
  for (TapFile::Element element = tape_->ahead(); element.kind != Kind::END; element = tape_->ahead()) {
    if (element.kind == Kind::DAMAGED) {
      stand(file_, -1, Event::NONE);
      return -EIO;
    }
    tape_->pass(element);
    if (element.kind == Kind::MARK) ++marks;
  }
  lost_ = false;
  stand(countedFile(marks), -1, Event::END_OF_DATA);
  return 0;
}

int VirtualDrive::rewind() {
  if (const int error = tape_->flush(); error != 0) return recordingFailed(error);
  tape_->rewind();
  lost_ = false;
  stand(0, 0, Event::NONE);
  return 0;
}

int VirtualDrive::seek(int number) {
  if (const int error = rewind(); error != 0 || number == 0) return error;
  stand(-1, -1, Event::NONE);
  for (int i = 0; i < number; ++i) {
    const TapFile::Element element = tape_->ahead();
    if (element.kind == Kind::END || element.kind == Kind::DAMAGED) return -EIO;
    tape_->pass(element);
  }
  return 0;
}

int VirtualDrive::offline() {
  const int error = tape_ ? tape_->flush() : 0;
  takeOut();
  ready_ = false;
  return error == 0 ? 0 : recordingFailed(error);
}

int VirtualDrive::operate(const mtop& command) {
  const int op = command.mt_op;
  if (command.mt_count < 0) return -EINVAL;
  const bool regains = op == MTREW || op == MTOFFL || op == MTUNLOAD || op == MTRETEN || op == MTSEEK || op == MTEOM;
  const bool moves = op != MTSETBLK && op != MTNOP && op != MTLOCK && op != MTUNLOCK;
  if (const int stop = attention(); stop != 0) {
    const bool gone = stop == -EIO && !tape_;
    if (gone && (op == MTOFFL || op == MTUNLOAD)) return offline();
    if (stop == -ENOMEDIUM || moves) {
      // The driver counts a space that met an attention condition as done.
      if (stop == -EIO && op == MTFSR) stand(file_, gone ? -1 : countedBlock(command.mt_count), event_);
      return stop;
    }
  }
  if (lost_ && moves && !regains) return -EIO;
  return perform(command);
}

int VirtualDrive::perform(const mtop& command) {
  const int op = command.mt_op;
  int count = command.mt_count;
  const bool leaves = op == MTREW || op == MTOFFL || op == MTUNLOAD || op == MTRETEN || op == MTSEEK;
  if ((op == MTWEOF || op == MTERASE) && (isProtected() || readOnly_)) return -EACCES;
  int added = 0;
  if (leaves || op == MTBSF || op == MTBSFM) {
    const int error = lost_ ? 0 : finishWriting(added);
    if (error != 0) return error;
    if (op == MTBSF || op == MTBSFM) count += added;
  }
  if (op != MTNOP && op != MTSETBLK) writing_ = false;
  switch (op) {
    case MTFSR:
      return blocksForward(count);
    case MTBSR:
      return blocksBackward(count);
    case MTFSF:
      return filesForward(count);
    case MTBSF:
      return filesBackward(count);
    case MTFSFM: {
      const int error = filesForward(count);
      return error != 0 ? error : filesBackward(1);
    }
    case MTBSFM: {
      const int error = filesBackward(count);
      return error != 0 ? error : filesForward(1);
    }
    case MTWEOF:
      return writeMarks(count);
    case MTEOM:
      return toEnd();
    case MTREW:
    case MTRETEN:
      return rewind();
    case MTSEEK:
      return seek(count);
    case MTOFFL:
    case MTUNLOAD:
      return offline();
    case MTERASE: {
      const int error = tape_->eraseRest();
      return error == 0 ? 0 : recordingFailed(error);
    }
    case MTSETBLK:
      blockSize_ = count;
      return 0;
    case MTNOP:
    case MTLOAD:
    case MTLOCK:
    case MTUNLOCK:
      return 0;
    default:
      return -ENOSYS;
  }
}
