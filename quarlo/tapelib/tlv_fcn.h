/// The unit record and the unit operations: the one way in which jobs and dialogs touch tapes.
///
/// A unit is a tape drive or a disk file. All units live in one array (getDevPtr): 0 is the input, 1 to `nOutputs` the
/// open outputs; ALL_OUTPUTS as a unit number means every open output in order. Operations answer 0 or a byte count for
/// success, -1 or nonzero for failure, and have then already said on the console (or in a box) what went wrong.
/// No operation reaches a drive through a closed unit: it says so and fails.
#pragma once

#include <cstddef>
#include <cstdio>

#include "xvt/xvt.h"

constexpr int kMaxUnits = 35;
constexpr int kAllOutputs = -1;

/// Values of UnitStruct::type.
enum UNIT_TYPE : int { UT_NONE = 0, UT_DISK = 1, UT_TAPE = 2 };

/// What was written last to a tape since it was opened, or since forgetWritten.
enum LAST_WRITTEN : int { LW_NOTHING = 0, LW_BLOCK, LW_MARK };

/// A medium changer. Declared for drives that have one under program control; none is driven on this system.
struct AutoLoader {
  int id;
  unsigned short changerElement;
  unsigned short driveElement;
  unsigned short slotElement;
  int driveAddress;
  int tapeCount;
  int* tapeSlots;
};

/// One tape drive as found on the system.
struct DListStruct {
  char name[256];    ///< vendor and model
  char adapter[8];   ///< SCSI host number as decimal text
  char id[8];        ///< SCSI target id as decimal text
  char string[256];  ///< the line shown in drive lists
  char device[256];  ///< "/dev/nst%d"
  AutoLoader* autoLoader;
};

/// One input or output. Fields marked (unit 0) are meaningful in element 0 only and shared by all units.
struct UnitStruct {
  char name[256];                       ///< drive or file name, "" when closed
  char devName[256];                    ///< device path of an open tape, "" when closed
  unsigned char numAdapters;            ///< (unit 0)
  char adapter[8];                      ///< SCSI host number of the open tape
  char id[8];                           ///< SCSI target id of the open tape, "" after close or a failed open
  char* ioBuffer;                       ///< the shared tape buffer (unit 0)
  unsigned int ioBufLen;                ///< its size in bytes, the block limit of the whole run (unit 0)
  DListStruct theDriveList[kMaxUnits];  ///< the drives found (unit 0)
  SLIST theOutputList;                  ///< chosen output drives; data: index into theDriveList (unit 0)
  AutoLoader* autoLoader;               ///< null on this system
  int theListItem;                      ///< index of this unit's drive in theDriveList; -1: none
  bool unloadAtEot;                     ///< unload at the end of a tape; keeps `name` at close
  bool autoMode;                        ///< a stacker loads the next tape by itself
  bool hasAutoLoader;                   ///< the changer is under program control; stays false on this system
  bool inputAbort;                      ///< stop on an input read error, without retries
  bool inputNoRewind;                   ///< leave the input tape where it stands at the end of a job
  bool outputNoRewind;                  ///< leave the output tapes where they stand
  bool useMultipleOut;                  ///< several output drives (unit 0)
  int nOutputs;                         ///< open output units (unit 0)
  int state;                            ///< 0 closed, 1 open
  short isM4;                           ///< the drive belongs to the family that needs the 64000-byte read limit
  short overrideM4;                     ///< isM4 is the user's, not the model test's (unit 0)
  FILE_SPEC fs;                         ///< a disk unit's file
  std::FILE* fp;                        ///< a disk unit's open stream, owned by the unit
  int fd;                               ///< an open tape's descriptor, 0 when closed
  int type;                             ///< UNIT_TYPE
  int blockNum;                         ///< block within the tape file, 1 after open or rewind
  int fileNum;                          ///< tape file, 1 after open or rewind
  int eofMark;                          ///< the last read met a filemark
  int eodMark;                          ///< end of data met
  int eotMark;                          ///< the last write met the end of the tape: what was refused fits on the next
  int timeout;                          ///< minutes to wait for the next tape in automatic mode
  unsigned int minBlockSize;            ///< 1 for an open tape, 0 closed
  unsigned int maxBlockSize;            ///< largest block read or written, 0 closed
  int lastWritten;                      ///< LAST_WRITTEN on the open tape
};

/// Most bytes that a drive of the M4 family is asked for by jobs that ask for less than the tape buffer.
constexpr unsigned kM4ReadLimit = 64000;

/// Most bytes that tlv_tape_read asks the unit's drive for when its caller asks for `bytes`.
unsigned readLimit(const UnitStruct& unit, int bytes);

/// The end of a line about a block longer than `limit` bytes: what helps, where something does.
inline const char* limitAdvice(const UnitStruct& unit, unsigned limit) {
  return unit.isM4 != 0 && limit == kM4ReadLimit ? ", which holds for drives of this family."
                                                 : "; ST_BUFFER (in KiB) raises it.";
}

// Dialogs edit the four option flags through one 4-byte word that begins at inputAbort.
static_assert(offsetof(UnitStruct, inputNoRewind) == offsetof(UnitStruct, inputAbort) + 1);
static_assert(offsetof(UnitStruct, outputNoRewind) == offsetof(UnitStruct, inputAbort) + 2);
static_assert(offsetof(UnitStruct, useMultipleOut) == offsetof(UnitStruct, inputAbort) + 3);

/// What a progress dialog is told by its job (prog_dlg.h). The job owns it for as long as it runs.
struct ProgrStruct {
  int jobType;     ///< JOB_TYPE
  int inputType;   ///< UNIT_TYPE of the input
  int* stat1;      ///< first counter; for image copy and verify the address of a float holding bytes
  int* stat2disk;  ///< percentage of a disk input
  int* stat2tape;  ///< tape-input counter: blocks, files or traces
  int* abortFlag;  ///< set to 1 by the stop button
};

/// Words handed to tlvAutoLoad and to the dialogs that ask for the next tape.
struct PassPtr {
  int* ptr1;
  int* ptr2;
  int* ptr3;
  int* ptr4;
};

/// A limited range, shared by the job dialogs.
struct RangeStruct {
  short itHasRange;
  double rangeStart;
  double rangeEnd;
};

/// The unit array.
UnitStruct* getDevPtr();

/// Clears the units, finds the drives, sizes the tape buffer from ST_BUFFER.
void initIO(UnitStruct* ioUnit);
/// Closes what is still open and frees the tape buffer.
void unInitIO(UnitStruct* ioUnit);

/// Opens unit 0 or one output on the drive at its theListItem, or (ALL_OUTPUTS) all drives of theOutputList as units 1,
/// 2 ... Failures give a box, unless the unit is in automatic mode; the outcome stands in `state` and `nOutputs`.
/// @param readOnly a single unit that is read only, though it is not the input: its tape may be write-protected
void tlv_tape_open(UnitStruct* aUnit, int uNum, bool readOnly = false);
/// Closes without rewinding. `name` stays when unloadAtEot is set (single units only).
/// @return 0, or -1 after a console line when the driver reported an error at the last moment (its final filemark)
int tlv_tape_close(UnitStruct* aUnit, int uNum);
int tlv_tape_ready(UnitStruct* aUnit, int uNum);
/// Reads one block of at most maxBlockSize bytes; `buffer` holds ioBufLen bytes.
/// @param bytes only decides whether the limit of the M4 family applies
/// @return bytes, 0 at a filemark (eofMark) or at the end of data (eodMark), -1 on error (errno ENOMEM: the block is
///         longer than maxBlockSize): the tape then stands so that the next read meets the same block and a skip of one
///         passes exactly it
int tlv_tape_read(UnitStruct* aUnit, int uNum, char* buffer, int bytes);
/// Writes one block to one unit or to every output. @return bytes written, -1 on error
int tlv_tape_write(UnitStruct* aUnit, int uNum, const char* buffer, int bytes);
int tlv_weof(UnitStruct* aUnit, int uNum, int count);
int tlv_skip_blocks(UnitStruct* aUnit, int uNum, int count);
int tlv_skip_files(UnitStruct* aUnit, int uNum, int count);
int tlv_skip_eod(UnitStruct* aUnit, int uNum);
int tlv_rewind(UnitStruct* aUnit, int uNum);
int tlv_unload(UnitStruct* aUnit, int uNum);

/// What stands on the output tapes is complete: nothing of what is written from now on is.
void forgetWritten(UnitStruct* aUnit);
/// Whether an open tape stands elsewhere than at its beginning: by the unit's numbers, or because the driver says so (a
/// tape keeps its place while it is closed, and the numbers count from 0 after spacing).
bool tlv_away_from_beginning(const UnitStruct* aUnit, int uNum);
/// Whether an open tape lost its position (drive reset, cartridge pulled or exchanged): it reads and writes nothing
/// more until it is rewound, unloaded or opened again.
bool tlv_position_lost(const UnitStruct* aUnit, int uNum);
/// Whether a filemark stopped the skip of blocks forward that just failed: the tape stands behind the mark. False of a
/// drive that cannot say its position.
bool tlv_stopped_by_mark(const UnitStruct* aUnit, int uNum);
/// Whether the read that just failed met a filemark, which the tape stands before. False of a drive that cannot say its
/// position.
bool tlv_failed_at_mark(const UnitStruct* aUnit, int uNum);
/// Whether a block, readable or not, follows on an open tape, here or behind one mark. Says nothing, whatever it meets,
/// and leaves the tape and the unit as they were. `buffer` holds ioBufLen bytes.
bool tlv_goes_on(const UnitStruct* aUnit, int uNum, char* buffer);

/// Brings the next tape of a sequence. ptr1: the unit array; ptr2: receives 1 when a tape is ready, else 0; ptr3: the
/// unit number itself (0 the input, 1 or more: every output is changed by this one call).
void tlvAutoLoad(PassPtr* thePtr);
/// The step of tlvAutoLoad for one unit: unload, wait, open. @return 1 when the next tape is ready, else 0
int tlvLoadNextTape(UnitStruct* aUnit, int uNum);
int tlvInitLoader(UnitStruct* aUnit, int uNum);
/// Not available on this system: says so in a box and answers -1.
int countTapeFiles();

/// Tells the task window (and through it the tape dialogs) that the units changed; `xdEvent` becomes a user event.
void appUpdate(EVENT* xdEvent);

/// The code of the user event that appMoved sends; appUpdate's is 0.
constexpr long kUnitsMoved = 1;
/// Tells the task window that a job has moved the tapes on, and nothing else of the units has changed.
void appMoved();
/// Checks control `check` in the radio group of the controls `start` to `end`.
void xdCheckRadioButton(WINDOW xdWindow, int check, int start, int end);
/// Size in bytes of the file, 0 when there is none.
double GetAFileSize(const FILE_SPEC& fs);
