/// Access to open tapes through the driver seam. The unit operations (tlv_fcn.h) are the way in for jobs and dialogs;
/// this file is theirs.
#pragma once

#include "quarlo/tapelib/driver/driver.h"
#include "quarlo/tapelib/tlv_fcn.h"

extern mtop StCommand;    ///< the operation that doStCommand sends
extern int StCounter;     ///< retries; cleared on a write-protect failure, never counted
extern char* TapeBuffer;  ///< the shared tape buffer
extern int StTimeout;     ///< seconds allowed for the current operation; not enforced

void initUNIX();
void unInitUNIX(UnitStruct* aUnit);
/// The tape buffer's size in bytes that a value of ST_BUFFER (KiB, null when unset) asks for, before memory is asked.
/// Not a number above 0: 32 KiB; above 1 GiB: 1 GiB.
unsigned int bufferLengthFor(const char* stBuffer);

int unixTapeOpen(UnitStruct* aUnit, const DListStruct& entry, int uNum, bool readOnly = false);
/// Closes the descriptor and empties devName; no other field changes. @return 0, or -1 when what was written last could
/// not be finished (a console line says so)
int unixTapeClose(UnitStruct* aUnit, int uNum);
int isOnline(const UnitStruct& unit);
int isWriteProtected(const UnitStruct& unit);
int unixSetVariable(UnitStruct* aUnit, int uNum);
int isM4Drive(const UnitStruct* unit);

int unixTapeRead(UnitStruct* aUnit, int uNum, char* buffer);
int unixTapeWrite(UnitStruct* aUnit, int uNum, const char* buffer, int bytes);
/// As tlv_goes_on, tlv_position_lost, tlv_stopped_by_mark and tlv_failed_at_mark; false of a closed unit.
bool unixGoesOn(const UnitStruct& unit, char* buffer);
bool unixPositionLost(const UnitStruct& unit);
bool unixStoppedByMark(const UnitStruct& unit);
bool unixFailedAtMark(const UnitStruct& unit);
int unixSkipBlocks(UnitStruct* aUnit, int uNum, int count);
int unixSkipFiles(UnitStruct* aUnit, int uNum, int count);
int unixSkipEOD(UnitStruct* aUnit, int uNum);
int unixWeof(UnitStruct* aUnit, int uNum, int count);
int unixRewind(UnitStruct* aUnit, int uNum);
int unixUnload(UnitStruct* aUnit, int uNum);

/// Sends StCommand to the unit. @return 0, or -1 after the console lines that belong to the operation
int doStCommand(UnitStruct* unit);
int getCurrentBlock(const UnitStruct& unit);
int getCurrentFile(const UnitStruct& unit);
/// Whether the driver says that the tape is not at its beginning; false where it says nothing.
bool isAwayFromBeginning(const UnitStruct& unit);

int unixInitLoader(const UnitStruct& unit, int uNum);
int unixLoadNext(const UnitStruct& unit, int uNum);
