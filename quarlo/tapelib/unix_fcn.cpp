#include "quarlo/tapelib/unix_fcn.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <map>
#include <utility>

#include "libkyr/text.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/driver/tape_handle.h"
#include "quarlo/tapelib/drives.h"

mtop StCommand{};
int StCounter = 0;
char* TapeBuffer = nullptr;
int StTimeout = 60;

namespace {

constexpr unsigned kDefaultBuffer = 32768;
constexpr unsigned kLargestBuffer = 1U << 30;
constexpr unsigned kSmallestBuffer = 1024;

/// The open tapes by descriptor.
std::map<int, TapeHandle>& handles() {
  static std::map<int, TapeHandle> open;
  return open;
}

/// The handle behind a unit, or null when the unit is closed.
TapeHandle* handleOf(const UnitStruct& unit) {
  if (unit.fd == 0) return nullptr;
  return &handles().try_emplace(unit.fd, unit.fd).first->second;
}

int magnitudeOf(int count) { return count == INT_MIN ? INT_MAX : std::abs(count); }

/// Says once that the tape's position is lost, if it just was.
void reportLoss(const UnitStruct& unit, TapeHandle* handle) {
  if (handle == nullptr || !handle->takeNewsOfLoss()) return;
  console_printf("  *** The tape position is lost on drive \"%s\" (drive reset, or cartridge pulled or exchanged).",
                 unit.name);
  console_printf("      Nothing more is read or written there until the tape is rewound, unloaded or opened again.");
}

int statusOf(const UnitStruct& unit, mtget& status) {
  const TapeHandle* handle = handleOf(unit);
  return handle == nullptr ? -1 : handle->status(status);
}

}  // namespace

// ---- the tape buffer --------------------------------------------------------------------------------------------

unsigned int bufferLengthFor(const char* stBuffer) {
  const long kilobytes = stBuffer == nullptr ? 0 : std::strtol(stBuffer, nullptr, 10);
  if (kilobytes <= 0) return kDefaultBuffer;
  return static_cast<unsigned>(std::min<long>(kilobytes, kLargestBuffer / 1024)) * 1024;
}

void initUNIX() {
  UnitStruct* units = getDevPtr();
  findDrives();
  units[0].numAdapters = 1;
  unInitUNIX(units);
  unsigned length = bufferLengthFor(std::getenv("ST_BUFFER"));
  while ((TapeBuffer = static_cast<char*>(std::calloc(length, 1))) == nullptr && length > kSmallestBuffer) length /= 2;
  units[0].ioBufLen = TapeBuffer == nullptr ? 0 : length;
  units[0].ioBuffer = TapeBuffer;
  for (int i = 0; i < kMaxUnits; ++i) units[i].devName[0] = '\0';
  StTimeout = 60;
}

void unInitUNIX(UnitStruct* aUnit) {
  std::free(TapeBuffer);
  TapeBuffer = nullptr;
  aUnit[0].ioBuffer = nullptr;
  aUnit[0].ioBufLen = 0;
}

// ---- opening and closing ----------------------------------------------------------------------------------------

namespace {

/// Whether the tape just opened as `unit` can be used as such; says in a box why not.
bool isFit(UnitStruct* aUnit, int uNum, bool writing) {
  UnitStruct& unit = aUnit[uNum];
  if (isOnline(unit) == 0) {
    if (!unit.hasAutoLoader && !unit.autoMode)
      xvt_dm_post_error("Drive \"%s\" is not ready.\nMake sure the tape is loaded and the unit is online.", unit.name);
    return false;
  }
  if (writing && isWriteProtected(unit) != 0) {
    xvt_dm_post_error("Tape in drive \"%s\" is write protected.\n", unit.name);
    return false;
  }
  if (unixSetVariable(aUnit, uNum) != 0) {
    xvt_dm_post_error("Error setting variable block size on drive \"%s\"", unit.name);
    return false;
  }
  return true;
}

void giveUp(UnitStruct& unit) {
  unit.id[0] = '\0';
  if (TapeHandle* handle = handleOf(unit)) {
    handle->close();
    handles().erase(unit.fd);
  }
  unit.fd = 0;
}

}  // namespace

int unixTapeOpen(UnitStruct* aUnit, const DListStruct& entry, int uNum, bool readOnly) {
  UnitStruct& unit = aUnit[uNum];
  StTimeout = 60;
  // Without O_NONBLOCK an empty drive would hold the program for minutes, and a protected one be refused unexplained.
  const bool writing = uNum != 0 && !readOnly;
  const int fd = tapeDriver().open(entry.device, (writing ? O_RDWR : O_RDONLY) | O_NONBLOCK);
  if (fd < 0) {
    if (errno == EROFS) xvt_dm_post_error("Tape in drive \"%s\" is write protected.\n", entry.name);
    return -1;
  }
  const std::string formerName = unit.name;
  unit.fd = fd;
  copyText(unit.name, entry.name);
  handles().erase(fd);
  if (!isFit(aUnit, uNum, writing)) {
    giveUp(unit);
    copyText(unit.name, formerName);
    return -1;
  }
  tapeDriver().setBlocking(fd);
  handleOf(unit)->settle();
  unit.minBlockSize = 1;
  unit.maxBlockSize = aUnit[0].ioBufLen;
  copyText(unit.devName, entry.device);
  copyText(unit.adapter, entry.adapter);
  copyText(unit.id, entry.id);
  unit.type = UT_TAPE;
  unit.state = 1;
  unit.blockNum = 1;
  unit.fileNum = 1;
  unit.eodMark = 0;
  unit.eofMark = 0;
  unit.lastWritten = LW_NOTHING;
  if (aUnit[0].overrideM4 == 0) unit.isM4 = static_cast<short>(isM4Drive(&unit));
  return 0;
}

int unixTapeClose(UnitStruct* aUnit, int uNum) {
  UnitStruct& unit = aUnit[uNum];
  TapeHandle* handle = handleOf(unit);
  if (handle == nullptr) return 0;
  const bool wrote = handle->wrote();
  const int result = handle->close();
  handles().erase(unit.fd);
  unit.fd = 0;
  unit.devName[0] = '\0';
  if (result >= 0 || !wrote) return 0;
  console_printf("  *** Error closing tape on drive \"%s\".", unit.name);
  return -1;
}

namespace {

/// A status bit of the unit's drive; 1 after two console lines when the drive does not say.
int statusBit(const UnitStruct& unit, long bit) {
  mtget status{};
  if (statusOf(unit, status) >= 0) return (status.mt_gstat & bit) != 0 ? 1 : 0;
  console_printf("  *** Error getting write-protect status on \"%s\".", unit.name);
  console_printf("      Defaulting write-protect to true.");
  return 1;
}

}  // namespace

int isOnline(const UnitStruct& unit) { return statusBit(unit, GMT_ONLINE(0xFFFFFFFFL)); }

int isWriteProtected(const UnitStruct& unit) { return statusBit(unit, GMT_WR_PROT(0xFFFFFFFFL)); }

int unixSetVariable(UnitStruct* aUnit, int uNum) {
  StCommand.mt_op = MTSETBLK;
  StCommand.mt_count = 0;
  if (doStCommand(&aUnit[uNum]) == 0) return 0;
  console_printf("  *** Error setting variable block mode on \"%s\".", aUnit[uNum].name);
  return -1;
}

int isM4Drive(const UnitStruct* unit) {
  for (const char* mark : {"M4", "M-4", "OPEN REEL", "9914", "9348"})
    if (std::strstr(unit->name, mark) != nullptr) return 1;
  return 0;
}

// ---- blocks -----------------------------------------------------------------------------------------------------

int unixTapeRead(UnitStruct* aUnit, int uNum, char* buffer) {
  UnitStruct& unit = aUnit[uNum];
  TapeHandle* handle = handleOf(unit);
  int bytes = 0;
  StTimeout = 120;
  const TapeAnswer answer = handle == nullptr ? TapeAnswer::FAILED : handle->read(buffer, unit.maxBlockSize, bytes);
  unit.eofMark = answer == TapeAnswer::MARK ? 1 : 0;
  unit.eodMark = answer == TapeAnswer::END_OF_DATA ? 1 : 0;
  switch (answer) {
    case TapeAnswer::BLOCK:
      ++unit.blockNum;
      return bytes;
    case TapeAnswer::MARK:
    case TapeAnswer::END_OF_DATA:
      return 0;
    case TapeAnswer::TOO_LONG:
    case TapeAnswer::FAILED:
      break;
  }
  console_printf("  *** Error reading tape on drive \"%s\".", unit.name);
  if (answer == TapeAnswer::TOO_LONG)
    console_printf("      The block is longer than the limit of %u bytes%s", unit.maxBlockSize,
                   limitAdvice(unit, unit.maxBlockSize));
  reportLoss(unit, handle);
  errno = answer == TapeAnswer::TOO_LONG ? ENOMEM : EIO;
  return -1;
}

bool unixGoesOn(const UnitStruct& unit, char* buffer) {
  TapeHandle* handle = handleOf(unit);
  StTimeout = 120;
  return handle != nullptr && handle->goesOn(buffer, unit.maxBlockSize);
}

bool unixPositionLost(const UnitStruct& unit) {
  const TapeHandle* handle = handleOf(unit);
  return handle != nullptr && handle->isLost();
}

bool unixStoppedByMark(const UnitStruct& unit) {
  const TapeHandle* handle = handleOf(unit);
  return handle != nullptr && handle->isStoppedByMark();
}

bool unixFailedAtMark(const UnitStruct& unit) {
  const TapeHandle* handle = handleOf(unit);
  return handle != nullptr && handle->failedAtMark();
}

int unixTapeWrite(UnitStruct* aUnit, int uNum, const char* buffer, int bytes) {
  UnitStruct& unit = aUnit[uNum];
  if (bytes < 0 || static_cast<unsigned>(bytes) > unit.maxBlockSize) {
    console_printf("  *** Error: block size too large to write on drive \"%s\".", unit.name);
    return -1;
  }
  TapeHandle* handle = handleOf(unit);
  StTimeout = 120;
  const ssize_t written = handle == nullptr ? -1 : handle->write(buffer, static_cast<std::size_t>(bytes));
  unit.eotMark = handle != nullptr && written < 0 && errno == ENOSPC ? 1 : 0;
  if (written > 0) unit.lastWritten = LW_BLOCK;  // a short one too
  if (written >= bytes) {
    ++unit.blockNum;
    return static_cast<int>(written);
  }
  console_printf("  *** Error writing to tape on drive \"%s\".", unit.name);
  reportLoss(unit, handle);
  return -1;
}

// ---- positioning ------------------------------------------------------------------------------------------------

namespace {

int command(UnitStruct* unit, short operation, int count) {
  StCommand.mt_op = operation;
  StCommand.mt_count = count;
  return doStCommand(unit);
}

}  // namespace

namespace {

/// The tape was moved: what the last read met is behind it.
void forgetMarks(UnitStruct& unit) { unit.eofMark = unit.eodMark = 0; }

}  // namespace

int unixSkipBlocks(UnitStruct* aUnit, int uNum, int count) {
  if (count == 0) return 0;
  UnitStruct& unit = aUnit[uNum];
  const int blocks = magnitudeOf(count);
  StTimeout = 180;
  const int result = command(&unit, count > 0 ? MTFSR : MTBSR, blocks);
  if (result != 0) console_printf("  *** Error skipping tape block%s.", plural(blocks));
  forgetMarks(unit);
  unit.blockNum = getCurrentBlock(unit);
  console_printf("%d block%s skipped %s.", blocks, plural(blocks), count > 0 ? "forward" : "backward");
  return result;
}

int unixSkipFiles(UnitStruct* aUnit, int uNum, int count) {
  if (count == 0) return 0;
  UnitStruct& unit = aUnit[uNum];
  const int files = magnitudeOf(count);
  StTimeout = 180;
  const int result = command(&unit, count > 0 ? MTFSF : MTBSF, files);
  if (result != 0) console_printf("  *** Error skipping file%s.", plural(files));
  forgetMarks(unit);
  unit.fileNum = getCurrentFile(unit);
  unit.blockNum = 1;
  console_printf("%d file%s skipped %s.", files, plural(files), count > 0 ? "forward" : "backward");
  return result;
}

int unixSkipEOD(UnitStruct* aUnit, int uNum) {
  UnitStruct& unit = aUnit[uNum];
  StTimeout = 180;
  const int result = command(&unit, MTEOM, 1);
  forgetMarks(unit);
  console_printf(result != 0 ? "  *** Error skipping to End Of Data." : "Skipped to End Of Data.");
  unit.fileNum = 0;
  unit.blockNum = 0;
  return result;
}

int unixWeof(UnitStruct* aUnit, int uNum, int count) {
  StTimeout = 90;
  const int result = command(&aUnit[uNum], MTWEOF, count);
  if (result == 0) aUnit[uNum].lastWritten = LW_MARK;
  return result;
}

int unixRewind(UnitStruct* aUnit, int uNum) {
  UnitStruct& unit = aUnit[uNum];
  StTimeout = 120;
  console_printf("Rewind \"%s\".", unit.name);
  const int result = command(&unit, MTREW, 1);
  if (result != 0) console_printf("  *** Error rewinding \"%s\".", unit.name);
  forgetMarks(unit);
  unit.blockNum = 1;
  unit.fileNum = 1;
  return result;
}

int unixUnload(UnitStruct* aUnit, int uNum) {
  UnitStruct& unit = aUnit[uNum];
  StTimeout = 120;
  console_printf("Unload \"%s\".", unit.name);
  const int result = command(&unit, MTOFFL, 1);
  if (result != 0) console_printf("  *** Error unloading \"%s\".", unit.name);
  const int closed = tlv_tape_close(aUnit, uNum);
  return result != 0 ? result : closed;
}

int getCurrentBlock(const UnitStruct& unit) {
  mtget status{};
  if (statusOf(unit, status) >= 0) return static_cast<int>(status.mt_blkno);
  console_printf("  *** Error getting block number status on \"%s\".", unit.name);
  return 0;
}

int getCurrentFile(const UnitStruct& unit) {
  mtget status{};
  if (statusOf(unit, status) >= 0) return static_cast<int>(status.mt_fileno);
  console_printf("  *** Error getting file number status on \"%s\".", unit.name);
  return 0;
}

bool isAwayFromBeginning(const UnitStruct& unit) {
  mtget status{};
  return statusOf(unit, status) >= 0 && GMT_BOT(status.mt_gstat) == 0;
}

// ---- operation requests -----------------------------------------------------------------------------------------

namespace {

/// The words of a failed operation.
struct FailureWords {
  int operation;
  const char* notCompleted;
  const char* endOfMedium;
  const char* unidentified;
};

constexpr FailureWords kFailures[] = {
    {MTFSF, "  *** Forward skip files request could not be completed on drive \"%s\".",
     "  *** End of medium encountered during forward skip files on drive \"%s\".",
     "  *** Unidentified error occurred during forward skip files on drive \"%s\"."},
    {MTBSF, "  *** Reverse skip files request could not be completed on drive \"%s\".",
     "  *** End of medium encountered during reverse skip files on drive \"%s\".",
     "  *** Unidentified error occurred during reverse skip files on drive \"%s\"."},
    {MTFSR, "  *** Forward skip blocks request could not be completed on drive \"%s\".",
     "  *** End of medium encountered during forward skip blocks on drive \"%s\".",
     "  *** Unidentified error occurred during forward skip blocks on drive \"%s\"."},
    {MTBSR, "  *** Reverse skip blocks request could not be completed on drive \"%s\".",
     "  *** End of medium encountered during reverse skip blocks on drive \"%s\".",
     "  *** Unidentified error occurred during reverse skip blocks on drive \"%s\"."},
    {MTWEOF, "  *** Write EOF could not be completed on drive \"%s\".",
     "  *** End of medium encountered during write EOF on drive \"%s\".",
     "  *** Unidentified error occurred during write EOF on drive \"%s\"."},
    {MTEOM, "  *** Skip to EOD request could not be completed on drive \"%s\".",
     "  *** End of medium encountered during skip to EOD on drive \"%s\".",
     "  *** Unidentified error occurred during skip to EOD on drive \"%s\"."},
};

/// Says a table line; the text is one of the table's own formats.
void sayOf(const char* format, const UnitStruct& unit) {
  std::string line(format);
  line.replace(line.find("%s"), 2, unit.name);
  console_out(line.c_str());
}

/// @param answer what the request returned, which is what the table goes by
void sayFailure(const UnitStruct& unit, int operation, int answer) {
  const auto* words = std::find_if(std::begin(kFailures), std::end(kFailures),
                                   [operation](const FailureWords& row) { return row.operation == operation; });
  if (words == std::end(kFailures)) return;
  if (answer == EIO) return sayOf(words->notCompleted, unit);
  if (answer == ENOSPC) return sayOf(words->endOfMedium, unit);
  if (answer == EACCES && operation == MTWEOF) {
    sayOf("  *** Write EOF failed. Tape on drive \"%s\" is write protected.", unit);
    StCounter = 0;
    return;
  }
  sayOf(words->unidentified, unit);
  console_printf("  *** Error number \"%d\". returned from drive.", answer);
}

}  // namespace

int doStCommand(UnitStruct* unit) {
  TapeHandle* handle = handleOf(*unit);
  const int answer = handle == nullptr ? -1 : handle->operate(StCommand);
  if (answer >= 0) return 0;
  sayFailure(*unit, StCommand.mt_op, answer);
  reportLoss(*unit, handle);
  return -1;
}

int unixInitLoader(const UnitStruct& /*unit*/, int /*uNum*/) { return 0; }

int unixLoadNext(const UnitStruct& /*unit*/, int /*uNum*/) { return 0; }
