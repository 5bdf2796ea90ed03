#include "quarlo/tapelib/tlv_fcn.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>
#include <vector>

#include "libkyr/files.h"
#include "quarlo/tapelib/autoload.h"
#include "quarlo/tapelib/busycursor.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/jobstate.h"
#include "quarlo/tapelib/unix_fcn.h"

namespace {

UnitStruct theUnit[kMaxUnits];

/// Requests from here on ask drives of the M4 family for more than M4_READ_LIMIT, too.
constexpr int kM4Request = 65530;

std::chrono::milliseconds minuteLength = std::chrono::minutes(1);

/// Whether the unit can be asked to do something; a console line when not.
bool isTapeOpen(const UnitStruct* units, int uNum, const char* operation) {
  const bool exists = uNum >= 0 && uNum < kMaxUnits;
  if (exists && units[uNum].state != 0 && units[uNum].fd != 0) return true;
  if (exists && units[uNum].name[0] != '\0')
    console_printf("  *** Error: drive \"%s\" is not open: %s refused.", units[uNum].name, operation);
  else
    console_printf("  *** Error: drive is not open: %s refused.", operation);
  return false;
}

int lastOutput(const UnitStruct* units) { return std::clamp(units[0].nOutputs, 0, kMaxUnits - 1); }

/// Runs an operation on one open unit, or on every output up to the first that answers nonzero.
template <class Operation>
int onUnits(UnitStruct* units, int uNum, const char* name, Operation operation) {
  const BusyCursor busy;
  const auto one = [&](int unit) { return isTapeOpen(units, unit, name) ? operation(unit) : -1; };
  if (uNum != kAllOutputs) return one(uNum);
  int result = 0;
  for (int unit = 1; unit <= lastOutput(units) && result == 0; ++unit) result = one(unit);
  return result;
}

/// The drive list's entry at `index`, or null.
const DListStruct* listedDrive(const UnitStruct* units, long index) {
  return index >= 0 && index < kMaxUnits && units[0].theDriveList[index].device[0] != '\0'
             ? &units[0].theDriveList[index]
             : nullptr;
}

/// Opens a listed drive as a unit, closing the tape that the unit still has open.
bool openListed(UnitStruct* units, long index, int uNum, bool readOnly = false) {
  const DListStruct* entry = listedDrive(units, index);
  if (entry == nullptr) return false;
  if (units[uNum].fd != 0) tlv_tape_close(units, uNum);
  const DListStruct copy = *entry;
  return unixTapeOpen(units, copy, uNum, readOnly) == 0;
}

void postOpenError(const UnitStruct* units, long index) {
  const DListStruct* entry = listedDrive(units, index);
  xvt_dm_post_error("Error opening drive \"%s\".", entry == nullptr ? "" : entry->name);
}

void openOutputs(UnitStruct* units) {
  int slot = 1;
  SLIST list = units[0].theOutputList;
  SLIST_ELT element = list == nullptr ? nullptr : xvt_slist_get_first(list);
  for (; element != nullptr && slot < kMaxUnits; element = xvt_slist_get_next(list, element)) {
    const long index = xvt_slist_get_data(list, element);
    if (openListed(units, index, slot)) {
      units[slot++].theListItem = static_cast<int>(index);
    } else {
      postOpenError(units, index);
      units[slot].theListItem = -1;
    }
  }
  units[0].nOutputs = slot - 1;
}

int closeTape(UnitStruct* units, int uNum, bool keepName) {
  UnitStruct& unit = units[uNum];
  const int result = unixTapeClose(units, uNum);
  if (!keepName) unit.name[0] = '\0';
  unit.id[0] = '\0';
  unit.state = 0;
  unit.minBlockSize = unit.maxBlockSize = 0;
  unit.blockNum = unit.fileNum = 0;
  unit.eofMark = unit.eodMark = 0;
  return result;
}

int writeOne(UnitStruct* units, int uNum, const char* buffer, int bytes) {
  if (!isTapeOpen(units, uNum, "write")) return -1;
  const UnitStruct& unit = units[uNum];
  if (bytes >= 0 && static_cast<unsigned>(bytes) <= unit.maxBlockSize) return unixTapeWrite(units, uNum, buffer, bytes);
  console_printf("  *** Error: block size (%d) is too large to write to output tape.", bytes);
  console_printf("             %u bytes is the current block size limit on drive \"%s\".", unit.maxBlockSize,
                 unit.name);
  return -1;
}

int markOne(UnitStruct* units, int uNum, int count) {
  const int result = unixWeof(units, uNum, count);
  if (result != 0)
    console_printf("  *** Error writing %sfilemark to drive \"%s\".", count > 1 ? "double " : "", units[uNum].name);
  return result;
}

/// What is to be written has nowhere to go.
int noOutput() {
  console_out("  *** Error: no output drive is open.");
  return -1;
}

/// Lets events run meanwhile. @return false when the job was stopped
bool waitMinutes(int minutes) {
  using Clock = std::chrono::steady_clock;  // a clock that is set while waiting must not prolong the wait
  constexpr auto kStep = std::chrono::milliseconds(50);
  const auto end = Clock::now() + std::clamp(minutes, 0, 60) * minuteLength;
  while (Clock::now() < end && !jobIsStopped()) {
    std::this_thread::sleep_for(std::min<Clock::duration>(end - Clock::now(), kStep));
    xvt_app_process_pending_events();
  }
  return !jobIsStopped();
}

/// Changes the tape of one unit. An empty drive raises no box, whatever the unit's own mode.
bool changeTape(UnitStruct* units, int uNum) {
  UnitStruct& unit = units[uNum];
  // The dialogs set the wait of all outputs in the first of them.
  const int minutes = uNum == 0 ? unit.timeout : std::max(unit.timeout, units[1].timeout);
  const bool mode = unit.autoMode;
  unit.autoMode = true;
  if (unit.fd != 0) tlv_unload(units, uNum);
  if (unit.hasAutoLoader || waitMinutes(minutes)) tlv_tape_open(units, uNum);
  unit.autoMode = mode;
  return unit.state != 0;
}

}  // namespace

UnitStruct* getDevPtr() { return theUnit; }

void initIO(UnitStruct* ioUnit) {
  ioUnit[0].name[0] = '\0';
  ioUnit[1].name[0] = '\0';
  ioUnit[0].blockNum = 0;
  ioUnit[0].fileNum = 0;
  ioUnit[0].state = 0;
  ioUnit[1].state = 0;
  setDriveNews(console_out);
  initUNIX();
}

void unInitIO(UnitStruct* ioUnit) {
  for (int i = 0; i < kMaxUnits; ++i) {
    UnitStruct& unit = ioUnit[i];
    if (unit.fd != 0) tlv_tape_close(ioUnit, i);
    closeDiskUnit(&unit);
    unit.state = 0;
  }
  unInitUNIX(ioUnit);
}

void tlv_tape_open(UnitStruct* aUnit, int uNum, bool readOnly) {
  const BusyCursor busy;
  if (uNum == kAllOutputs) return openOutputs(aUnit);
  if (uNum < 0 || uNum >= kMaxUnits) return;
  const int index = aUnit[uNum].theListItem;
  if (!openListed(aUnit, index, uNum, readOnly) && !aUnit[uNum].autoMode) postOpenError(aUnit, index);
}

int tlv_tape_close(UnitStruct* aUnit, int uNum) {
  if (uNum != kAllOutputs) return uNum >= 0 && uNum < kMaxUnits ? closeTape(aUnit, uNum, aUnit[uNum].unloadAtEot) : -1;
  int result = 0;
  // Also a unit that was opened by itself, outside of the row of outputs.
  for (int unit = 1; unit < kMaxUnits; ++unit)
    if ((unit <= lastOutput(aUnit) || aUnit[unit].fd != 0) && closeTape(aUnit, unit, false) != 0) result = -1;
  aUnit[0].nOutputs = 0;
  return result;
}

int tlv_tape_ready(UnitStruct* /*aUnit*/, int /*uNum*/) { return 1; }

unsigned readLimit(const UnitStruct& unit, int bytes) {
  return unit.isM4 != 0 && bytes < kM4Request ? std::min(unit.maxBlockSize, kM4ReadLimit) : unit.maxBlockSize;
}

int tlv_tape_read(UnitStruct* aUnit, int uNum, char* buffer, int bytes) {
  const BusyCursor busy;
  if (!isTapeOpen(aUnit, uNum, "read")) {
    if (uNum >= 0 && uNum < kMaxUnits) aUnit[uNum].eofMark = 0;
    return -1;
  }
  UnitStruct& unit = aUnit[uNum];
  const unsigned limit = unit.maxBlockSize;
  unit.maxBlockSize = readLimit(unit, bytes);
  const int count = unixTapeRead(aUnit, uNum, buffer);
  unit.maxBlockSize = limit;
  return count;
}

int tlv_tape_write(UnitStruct* aUnit, int uNum, const char* buffer, int bytes) {
  const BusyCursor busy;
  if (uNum != kAllOutputs) return writeOne(aUnit, uNum, buffer, bytes);
  if (lastOutput(aUnit) == 0) return noOutput();
  int result = -1;
  for (int unit = 1; unit <= lastOutput(aUnit); ++unit) {
    result = writeOne(aUnit, unit, buffer, bytes);
    if (result < 1) return -1;
  }
  return result;
}

int tlv_weof(UnitStruct* aUnit, int uNum, int count) {
  if (uNum == kAllOutputs && lastOutput(aUnit) == 0) return noOutput();
  return onUnits(aUnit, uNum, "write filemark", [&](int unit) { return markOne(aUnit, unit, count); });
}

int tlv_skip_blocks(UnitStruct* aUnit, int uNum, int count) {
  return onUnits(
      aUnit, uNum, "skip blocks", [&](int unit) { return unixSkipBlocks(aUnit, unit, count); });
}

int tlv_skip_files(UnitStruct* aUnit, int uNum, int count) {
  return onUnits(
      aUnit, uNum, "skip files", [&](int unit) { return unixSkipFiles(aUnit, unit, count); });
}

int tlv_skip_eod(UnitStruct* aUnit, int uNum) {
  return onUnits(
      aUnit, uNum, "skip to end of data", [&](int unit) { return unixSkipEOD(aUnit, unit); });
}

int tlv_rewind(UnitStruct* aUnit, int uNum) {
  return onUnits(
      aUnit, uNum, "rewind", [&](int unit) { return unixRewind(aUnit, unit); });
}

int tlv_unload(UnitStruct* aUnit, int uNum) {
  return onUnits(
      aUnit, uNum, "unload", [&](int unit) { return unixUnload(aUnit, unit); });
}

void forgetWritten(UnitStruct* aUnit) {
  for (int unit = 1; unit <= lastOutput(aUnit); ++unit) aUnit[unit].lastWritten = LW_NOTHING;
}

bool tlv_away_from_beginning(const UnitStruct* aUnit, int uNum) {
  const UnitStruct& unit = aUnit[uNum];
  return unit.blockNum != 1 || unit.fileNum != 1 || isAwayFromBeginning(unit);
}

bool tlv_position_lost(const UnitStruct* aUnit, int uNum) { return unixPositionLost(aUnit[uNum]); }

bool tlv_stopped_by_mark(const UnitStruct* aUnit, int uNum) { return unixStoppedByMark(aUnit[uNum]); }

bool tlv_failed_at_mark(const UnitStruct* aUnit, int uNum) { return unixFailedAtMark(aUnit[uNum]); }

bool tlv_goes_on(const UnitStruct* aUnit, int uNum, char* buffer) {
  const BusyCursor busy;
  return unixGoesOn(aUnit[uNum], buffer);
}

void setAutoLoadMinute(std::chrono::milliseconds length) { minuteLength = length; }

void tlvAutoLoad(PassPtr* thePtr) {
  auto* units = reinterpret_cast<UnitStruct*>(thePtr->ptr1);
  const bool input = reinterpret_cast<std::intptr_t>(thePtr->ptr3) < 1;
  bool ready = !input || changeTape(units, 0);
  for (int unit = 1; !input && ready && unit <= lastOutput(units); ++unit) ready = changeTape(units, unit);
  *thePtr->ptr2 = ready ? 1 : 0;
}

int tlvLoadNextTape(UnitStruct* aUnit, int uNum) { return changeTape(aUnit, uNum) ? 1 : 0; }

int tlvInitLoader(UnitStruct* aUnit, int uNum) { return uNum == kAllOutputs && aUnit[0].nOutputs == 0 ? 1 : 0; }

int countTapeFiles() {
  xvt_dm_post_error("Error: this feature has not been implemented on Linux.");
  return -1;
}

void appUpdate(EVENT* xdEvent) {
  xdEvent->type = E_USER;
  xvt_win_dispatch_event(TASK_WIN, xdEvent);
}

void appMoved() {
  EVENT moved;
  moved.type = E_USER;
  moved.user.id = kUnitsMoved;
  xvt_win_dispatch_event(TASK_WIN, &moved);
}

void xdCheckRadioButton(WINDOW xdWindow, int check, int start, int end) {
  std::vector<WINDOW> group;
  for (int id = start; id <= end; ++id)
    if (const WINDOW control = xvt_win_get_ctl(xdWindow, id); control != NULL_WIN) group.push_back(control);
  xvt_ctl_check_radio_button(xvt_win_get_ctl(xdWindow, check), group.data(), static_cast<int>(group.size()));
}

double GetAFileSize(const FILE_SPEC& fs) { return static_cast<double>(fileSize(pathOf(fs).c_str()).value_or(0)); }
