/// What a format module written in C calls in the running program: console, events, and the units that the user chose.
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

/// @return 1 when the unit is a tape, 0 when it is a disk file, -1 when the user chose neither
int kyrIsTape(const struct ProcessRecord* job, int unit);

/// The path of a disk unit's file. @return 0; -1, with an empty path, when it has none or `size` bytes cannot hold it
int kyrPath(const struct ProcessRecord* job, int unit, char* path, int size);

/// Opens a unit: a disk file for reading (KYR_INPUT) or writing, an old file of that name being emptied. Tapes and what
/// is open already are left as they are. The program closes both. @return 0; -1 after a console line
int kyrOpen(struct ProcessRecord* job, int unit);

/// The largest block that a tape can be asked for, in bytes.
int kyrBlockLimit(const struct ProcessRecord* job);

/// Reads from the open input: the tape's next block, or the file's next bytes, as many as there are up to `bytes`.
/// @return bytes; 0 at a filemark or at an end; -1 after a console line. A block that is longer than `bytes` is an
/// error.
int kyrRead(struct ProcessRecord* job, void* buffer, int bytes);

/// Writes to the open output: one block to every output tape, or bytes to the file. @return `bytes`; -1 after a console
/// line
int kyrWrite(struct ProcessRecord* job, const void* buffer, int bytes);

#ifdef __cplusplus
}
#endif
