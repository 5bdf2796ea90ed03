/// What a format module is made of: the one header that its author includes, in C or in C++.
///
/// A module is a shared object "io*.so" in the directory "lib" of the suite's home (KYRHOME). The program finds it
/// there, asks it what it is, shows it in its format lists and runs it. It exports the entry points below, as many of
/// them as it can serve; GetTuDllIdentifier it must have. Everything else in it is best hidden (-fvisibility=hidden):
/// an exported name that the program has too would be taken from the program.
///
/// The program loads the module anew for every call but the three phases of a run, which share one loading, and keeps
/// it while a source that it opened is open. What a module wants to keep between two calls lies in its parameter block;
/// its variables may or may not survive. Loading has no effect that can be seen: a file that is new is loaded once for
/// a trial in a process of its own.
///
/// All calls come from one thread. An entry must not throw; if it does, the program says so and takes it for a failure.
/// Guide and example: docs/format-modules.md.
#pragma once

#ifdef __cplusplus
#include "libkyr/process.h"
#define KYR_MODULE_ENTRY extern "C" __attribute__((visibility("default")))
#else
#define KYR_MODULE_ENTRY __attribute__((visibility("default")))

struct UnitStruct;
struct KyrDatasets;

/// One run. Modules in C read its first two members and hand its address to the calls of modulecalls.h.
struct ProcessRecord {
  long dialogWindow;       ///< the dialog that runs the job; 0 for none
  int diskFileOutputType;  ///< the uniqueId of the output format that the user chose
  void (*consoleLine)(const char*);
  struct UnitStruct* deviceUnit;  ///< the units: the input, then the outputs
  struct KyrDatasets* datasets;
};
typedef struct ProcessRecord ProcessRecord;
#endif

#include "quarlo/tapelib/frame/formatblocks.h"
#include "quarlo/tapelib/frame/modulestamp.h"
#include "quarlo/tapelib/modulecalls.h"

/// Room for a display name, its terminating zero included.
enum { KYR_NAME_SIZE = 32 };

/// The names of those of them that the program offers as output formats (formatblocks.h), the first module of each
/// name.
#define KYR_NAME_SEGY "SEG Y"
#define KYR_NAME_DATASET "Kyr"

// ---- what it is -------------------------------------------------------------------------------------------------

/// What it was built with, for the program, which takes no module in C++ of other headers than its own. The author has
/// nothing to do for it.
#ifdef __cplusplus
extern "C" {
__attribute__((weak, visibility("default"))) extern const KyrModuleStamp kyrModuleStamp;
const KyrModuleStamp kyrModuleStamp = kKyrStamp;
}
#else
__attribute__((weak, visibility("default"))) const struct KyrModuleStamp kyrModuleStamp = {KYR_INTERFACE, 0};
#endif

/// The module's display name, at most 31 bytes and a zero, and its identifier, which no other module should have.
KYR_MODULE_ENTRY void GetTuDllIdentifier(char* theName, int* uniqueId);

// ---- its parameters ---------------------------------------------------------------------------------------------
// The input block and the output block are each one piece of memory, zero-filled, aligned for any type and owned by the
// program, of the size that the module asks for (0 to 16 MiB). What is in them is the module's own. Without the Alloc
// entry a block has no usable byte.

/// Stores the size of the input (output) block in bytes.
KYR_MODULE_ENTRY void AllocInputMemory(int* size);
KYR_MODULE_ENTRY void AllocOutputMemory(int* size);

/// Fills in the block's defaults and says, each as 1 or 0: whether the module has a parameter dialog, whether it works
/// on disk files, whether it works on tapes.
KYR_MODULE_ENTRY void GetInputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape);
KYR_MODULE_ENTRY void GetOutputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape);

/// What PostInputDialog of the module with the identifier 0 is given, and what its PostOutputDialog. The records hold
/// only during the call, and so do the other module's pointers in them.
typedef struct KyrSegyInputRecord {
  int* inputParams;  ///< its input block
  int outputId;      ///< the uniqueId of the output format
} KyrSegyInputRecord;
typedef struct KyrSegyOutputRecord {
  int inputId;        ///< the uniqueId of the input format
  int* outputParams;  ///< its output block
  int* inputParams;   ///< the input module's block
} KyrSegyOutputRecord;

/// Shows the parameter dialog on the block and returns when the user is done.
///
/// The module with the identifier 0 gets the address of a record in place of its block: KyrSegyInputRecord and
/// KyrSegyOutputRecord.
KYR_MODULE_ENTRY void PostInputDialog(int* params);
KYR_MODULE_ENTRY void PostOutputDialog(int* params);

/// Releases what the module hung on its block; the block itself is the program's.
KYR_MODULE_ENTRY void DestroyInputMemory(int* params);
KYR_MODULE_ENTRY void DestroyOutputMemory(int* params);

// ---- a run ------------------------------------------------------------------------------------------------------
// The module chosen for the input is run; it writes the output in the format of record->diskFileOutputType, whose
// parameters are in outputParams. With KYR_CHECK_RUN it reads all of the input, writes nothing and tells on the console
// what a run would make. The three phases come in this order. A phase answers 0 for success; anything else ends the run
// as failed, without the phases that are left: who fails cleans up first, and has said why on the console.

/// Opens input and output. The blocks stay where they are until the run's end.
KYR_MODULE_ENTRY int TInitialPhase(ProcessRecord* record, int* inputParams, int* outputParams);
/// Does the work; calls kyrGoOn once for every block or trace.
KYR_MODULE_ENTRY int TMainPhase(ProcessRecord* record);
/// Closes what is open; the last chance to say that something did not reach the disk.
KYR_MODULE_ENTRY int TFinalPhase(ProcessRecord* record);

// ---- its input as a source of traces ------------------------------------------------------------------------------

/// Opens the input and gives the record a source of its traces (RegisterSource of libkyr/source.h, for input 0; C++):
/// the program's reports, tests, index and merge read it as they read a dataset. The block stays where it is until the
/// source is closed; the module stays loaded as long. A module whose input the library reads by itself, from the path,
/// gives no source. @return 0; anything else after a line on the console: what was given is taken back then
KYR_MODULE_ENTRY int TOpenSource(ProcessRecord* record, int* inputParams);
