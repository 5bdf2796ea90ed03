/// Format modules: shared objects "io*.so" in the directory "lib" that read or write one data format each. What a
/// module is and does: docs/format-modules.md; what its author includes: plugins/kyrmodule.h.
///
/// A module is loaded anew for every operation. One that cannot be loaded, lacks an entry or answers nonsense is
/// reported and passed over; an exception that leaves a module is reported and counts as a failure.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "libkyr/process.h"
#include "quarlo/tapelib/dll_fcn.h"
#include "xvt/xvt.h"

// What a module said of itself when it was last asked for its defaults (selectInput, selectOutput): 1 or 0.
extern int itDoesInputParm;   ///< it has a dialog for its input parameters
extern int itInputsDisk;      ///< it reads disk files
extern int itInputsTape;      ///< it reads tapes
extern int itDoesOutputParm;  ///< it has a dialog for its output parameters
extern int itOutputsDisk;     ///< it writes disk files
extern int itOutputsTape;     ///< it writes tapes

/// One loaded module. Each operation calls the module's entry point of the same name (those of a run and of sources
/// with a leading "T"). The module stays loaded until the step and all sources that it opened are gone.
class ProcessingStep {
 public:
  /// Loads lib/`name` from the modules' home (modulefolder.h: the working directory, unless the modules found last lie
  /// beside the program); one newline at the name's end is left out. The outcome stands in `loadFailed`.
  explicit ProcessingStep(const char* name);
  ProcessingStep(const ProcessingStep&) = delete;
  ProcessingStep& operator=(const ProcessingStep&) = delete;

  /// @param theName receives the module's display name, cut to the 32 bytes of DllList::menuName
  /// @return 1, or 0 when the module has no such entry or an exception left it (hasEntry tells which)
  int GetTuDllIdentifier(char* theName, int* uniqueId);

  // 0, or -1 when the module has no such entry. `size` is 0 then; it is as the module answers: check it.
  int AllocInputMemory(int* size);
  int DestroyInputMemory(int* params);
  int GetInputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape);
  int PostInputDialog(int* params);
  int AllocOutputMemory(int* size);
  int DestroyOutputMemory(int* params);
  int GetOutputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape);
  int PostOutputDialog(int* params);

  // The phases of a run: the module's result, 0 for success; -1, said on the console, when it has no such entry.

  /// Gives the record the console and the program's units before the module sees it.
  int InitialPhase(ProcessRecord* params, int* inputParams, int* outputParams);
  int MainPhase(ProcessRecord* params);
  int FinalPhase(ProcessRecord* params);

  /// Lets the module open the input as a source of traces (libkyr/source.h), to be had by NewInputFile. Prepares the
  /// record and answers as the phases do; after a failure nothing is open. The block stays where it is until the source
  /// is closed.
  int OpenSource(ProcessRecord* params, int* inputParams);

  /// True when the module has an entry point of this name, one of those that modules may have.
  bool hasEntry(const char* entry) { return find(entry) != nullptr; }

  /// Why the module could not be loaded.
  const std::string& whyNot() const { return reason_; }

  int loadFailed = 0;  ///< 1 when the module could not be loaded

 private:
  template <typename... Arguments>
  int call(const char* entry, Arguments... arguments);
  template <typename... Arguments>
  int phase(const char* entry, ProcessRecord* params, Arguments... arguments);
  template <typename Work>
  int guarded(Work work) const;
  void* find(const char* entry);

  FILE_SPEC DLLFileName{};
  std::shared_ptr<void> aConnectionID;  ///< also held by the sources that the module opened
  char aSymbol[128] = {};
  std::string reason_;
};

/// Finds the usable modules: those in their home (findModuleFiles) which can be loaded and name themselves, in the
/// order of their file names. What is passed over is said on the console. The working directory is then the start-up
/// directory.
/// @param theList receives the rows, one of zeros behind them (std::free takes them back); null when there are none
/// @return the number of rows
int findDlls(DllList** theList);

// Each of these loads the module for one operation. A module that cannot be loaded gives a box and a console line.

/// Works with the module while it is loaded. @return whether it could be loaded
bool withModule(const char* dllName, const std::function<void(ProcessingStep& step)>& work);

/// Gives a zero-filled parameter block of the size that the module asks for (std::free takes it back). A size that is
/// negative or larger than largestParameterBlock is reported. @param inputFmt receives the block, null after a failure
void allocateInput(const char* dllName, int** inputFmt);
/// Lets the module release what it hung on its block; without a block nothing is done, as in the three below.
void destroyInput(const char* dllName, int* inputFmt);
/// Lets the module fill in its defaults and say what it can do (the flags above; 0 what it does not say).
void selectInput(const char* dllName, int* inputFmt);
void allocateOutput(const char* dllName, int** outputFmt);
void destroyOutput(const char* dllName, int* outputFmt);
void selectOutput(const char* dllName, int* outputFmt);
/// Lets the module open its input, as ProcessingStep::OpenSource does. @return 0, or what it failed with
int openSource(const char* dllName, ProcessRecord* procRecord, int* inputFmt);

/// Bytes beyond which a parameter block is no honest wish.
constexpr int kLargestParameterBlock = 1 << 24;
