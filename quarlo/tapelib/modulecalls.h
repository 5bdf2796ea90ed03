/// What a format module written in C calls in the running program: console, events, progress, and the units that the
/// user chose.
/// Modules in C++ have these and every header of libkyr and of the device layer. This header is C and C++.
#pragma once

// The C library's headers and nothing of the language's newer ones: it is read by C compilers.

struct ProcessRecord;

#ifdef __cplusplus
extern "C" {
#endif

/// Unit numbers.
enum { KYR_INPUT = 0, KYR_OUTPUT = 1 };

/// Writes one line (without its newline) to the job's console. By custom errors begin with "  *** ", warnings with
/// "  ** ".
void kyrSay(struct ProcessRecord* job, const char* line);

/// Lets the program's windows live; called once for every block or trace. @return 0 when the job has to end
int kyrGoOn(void);

/// Shows how far the run is; the first call of a run opens the progress dialog, whose stop button kyrGoOn sees from
/// then on. The program closes it when the run has ended.
/// @param traces traces (blocks, bytes: what the module counts) put out so far
/// @param part of a disk input the percentage that was read, of a tape the tape files
/// @return 0; -1 when the dialog could not be opened (its box was shown)
int kyrProgress(struct ProcessRecord* job, int traces, int part);
/// Closes the progress dialog, if there is one: for a module that goes on without.
void kyrProgressEnd(void);

/// @return 1 when the unit is a tape, 0 when it is a disk file, -1 when the user chose neither
int kyrIsTape(const struct ProcessRecord* job, int unit);

/// The path of a disk unit's file. @return 0; -1, with an empty path, when it has none or `size` bytes cannot hold it
int kyrPath(const struct ProcessRecord* job, int unit, char* path, int size);

/// Opens a unit: a disk file for reading (KYR_INPUT) or writing, an old file of that name being emptied. Tapes and what
/// is open already are left as they are. The program closes both. @return 0; -1 after a console line
int kyrOpen(struct ProcessRecord* job, int unit);

/// The largest block that a tape can be asked for, in bytes.
int kyrBlockLimit(const struct ProcessRecord* job);

/// What kyrRead and kyrWrite answer beside a count of bytes.
enum {
  KYR_END = 0,  ///< the end of the file, of the data on the tape, or of the tape itself (kyrNextTape asks for another)
  KYR_FAILED = -1,  ///< said on the console
  KYR_MARK = -2     ///< a filemark of a tape: what follows is read by the next call
};

/// Reads from the open input: the tape's next block, or the file's next bytes, as many as there are up to `bytes`.
/// @return bytes, or one of the answers above. A block that is longer than `bytes` is a failure.
int kyrRead(struct ProcessRecord* job, void* buffer, int bytes);

/// Writes to the open output: one block to every output tape, or bytes to the file.
/// @return `bytes`; KYR_END when a tape is full, and none has the block: after kyrNextTape it is written again;
/// KYR_FAILED
int kyrWrite(struct ProcessRecord* job, const void* buffer, int bytes);

/// Writes filemarks to every output tape; a disk file has none. The two at the end of the job are the program's.
/// @return 0; -1 after a console line
int kyrMark(struct ProcessRecord* job, int count);

/// Puts the next tape in the place of the input's, or of all outputs' after their closing marks: by the autoloader,
/// else the user is asked. @return 1 when it is there; 0 when there is none, for a disk file, or when the job has to
/// end; -1 after a console line
int kyrNextTape(struct ProcessRecord* job, int unit);

/// Goes back to the beginning of the input's tape, of all output tapes, or of a disk file. @return 0; -1 after a
/// console line
int kyrRewind(struct ProcessRecord* job, int unit);

#ifdef __cplusplus
}
#endif
