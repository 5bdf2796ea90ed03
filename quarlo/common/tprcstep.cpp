#include "quarlo/common/tprcstep.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "libkyr/nullcheck.h"
#include "libkyr/source.h"
#include "libkyr/text.h"
#include "quarlo/common/modulefolder.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/modulestamp.h"
#include "quarlo/tapelib/modulecalls.h"
#include "quarlo/tapelib/tlv_fcn.h"

int itDoesInputParm = 0;
int itInputsDisk = 0;
int itInputsTape = 0;
int itDoesOutputParm = 0;
int itOutputsDisk = 0;
int itOutputsTape = 0;

namespace {

constexpr const char* kCannotLoad = "Error opening shared object : %s ";
constexpr const char* kIdentifierEntry = "GetTuDllIdentifier";
constexpr const char* kStamp = "kyrModuleStamp";

/// Every entry that a module may have, and its stamp.
constexpr const char* kEntryNames[] = {kIdentifierEntry,      "AllocInputMemory",
                                       "DestroyInputMemory",  "GetInputDefaultParameters",
                                       "PostInputDialog",     "AllocOutputMemory",
                                       "DestroyOutputMemory", "GetOutputDefaultParameters",
                                       "PostOutputDialog",    "TInitialPhase",
                                       "TMainPhase",          "TFinalPhase",
                                       "TOpenSource",         kStamp};

/// Room that a module finds for its display name: more than it may use.
constexpr std::size_t kNameRoom = 4096;

void reportOnConsole(const char* dllName, const std::string& reason) {
  console_printf(kCannotLoad, dllName);
  console_printf("  ** %s", reason.c_str());
}

void reportInBox(const char* dllName, const std::string& reason) {
  reportOnConsole(dllName, reason);
  xvt_dm_post_error(kCannotLoad, dllName);
}

/// A block of the size that a module asked for, or null after a report.
int* parameterBlock(const char* dllName, int size, const char* what) {
  if (size < 0 || size > kLargestParameterBlock) {
    console_printf("  *** Format module %s asks for a parameter block of %d bytes.", dllName, size);
    xvt_dm_post_error("Format module %s asks for a parameter block of %d bytes.", dllName, size);
    return nullptr;
  }
  // A module without parameters has a block too: a null pointer stands for a failure.
  void* block = std::calloc(1, static_cast<std::size_t>(std::max(size, 1)));
  NullCheck(block, what);
  return static_cast<int*>(block);
}

/// What a stamp forbids; empty for nothing.
std::string stampFault(const KyrModuleStamp& stamp) {
  const bool isC = stamp.records == 0;
  if (isC || (stamp.interface == kKyrStamp.interface && stamp.records == kKyrStamp.records)) return "";
  return formatText("it was built for headers %d-%08x, and this program has %d-%08x: build it anew with them",
                    stamp.interface, stamp.records, kKyrStamp.interface, kKyrStamp.records);
}

using Names = std::vector<std::string>;

/// Whether the module can be loaded and names itself; says so when not.
bool isUsable(const std::string& name) {
  ProcessingStep step(name.c_str());
  DllList row{};
  if (step.loadFailed != 0) {
    reportOnConsole(name.c_str(), step.whyNot());
    return false;
  }
  if (step.GetTuDllIdentifier(row.menuName, &row.uniqueId) != 0) {
    if (!step.hasEntry(kStamp))
      console_printf("  ** Format module %s does not tell what headers it was built with.", name.c_str());
    return true;
  }
  if (step.hasEntry(kIdentifierEntry))
    console_printf("  ** Format module %s does not name itself. It is not used.", name.c_str());
  else
    console_printf("  ** Format module %s has no entry \"%s\". It is not used.", name.c_str(), kIdentifierEntry);
  return false;
}

/// What a record has before a module sees it: the console, and the program's units.
void prepare(ProcessRecord* params) {
  setConsole(params);
  SetDevUnit(params, getDevPtr());
}

struct Freer {
  void operator()(void* memory) const { std::free(memory); }
};
using Rows = std::unique_ptr<DllList[], Freer>;

/// Fills the rows. @return how many; 0 after a report when a module cannot be loaded any more
int fillRows(const Names& names, DllList* rows) {
  int count = 0;
  for (const std::string& name : names) {
    ProcessingStep step(name.c_str());
    if (step.loadFailed != 0) {
      reportInBox(name.c_str(), step.whyNot());
      return 0;
    }
    DllList& row = rows[count];
    if (step.GetTuDllIdentifier(row.menuName, &row.uniqueId) == 0) continue;
    copyText(row.name, name);
    ++count;
  }
  return count;
}

}  // namespace

ProcessingStep::ProcessingStep(const char* name) {
  std::string file = name;
  if (file.ends_with('\n')) file.pop_back();
  copyText(DLLFileName.type, "DLL");
  DLLFileName.dir = moduleHome();
  if (!copyText(DLLFileName.name, formatText("%s/%s", DLLDirectory, file.c_str())))
    reason_ = "its name is too long";
  else
    reason_ = accessFault(pathOf(DLLFileName));
  if (reason_.empty()) aConnectionID.reset(KyrLoadDLL(&DLLFileName, &reason_, kEntryNames), KyrUnloadDLL);
  if (const auto* stamp = static_cast<const KyrModuleStamp*>(find(kStamp)); stamp != nullptr)
    reason_ = stampFault(*stamp);
  if (!reason_.empty()) aConnectionID.reset();
  loadFailed = aConnectionID == nullptr ? 1 : 0;
}

void* ProcessingStep::find(const char* entry) {
  // A name that was not part of the trial is not looked up: that may be what a damaged module dies of.
  if (std::ranges::find(kEntryNames, std::string_view(entry)) == std::end(kEntryNames)) return nullptr;
  copyText(aSymbol, entry);
  return KyrFindSymbol(aSymbol, aConnectionID.get());
}

template <typename Work>
int ProcessingStep::guarded(Work work) const {
  try {
    return work();
  } catch (const std::exception& problem) {
    console_printf("  *** Format module %s failed in %s: %s", DLLFileName.name, aSymbol, problem.what());
  } catch (...) {
    console_printf("  *** Format module %s failed in %s.", DLLFileName.name, aSymbol);
  }
  return -1;
}

template <typename... Arguments>
int ProcessingStep::call(const char* entry, Arguments... arguments) {
  const auto function = reinterpret_cast<void (*)(Arguments...)>(find(entry));
  if (function == nullptr) return -1;
  return guarded([&] {
    function(arguments...);
    return 0;
  });
}

template <typename... Arguments>
int ProcessingStep::phase(const char* entry, ProcessRecord* params, Arguments... arguments) {
  const auto function = reinterpret_cast<int (*)(ProcessRecord*, Arguments...)>(find(entry));
  if (function == nullptr) {
    console_printf("  *** Format module %s has no entry \"%s\".", DLLFileName.name, entry);
    return -1;
  }
  const int result = guarded([&] { return function(params, arguments...); });
  // Whatever came of it: the code of a source that is there must stay.
  HoldSources(params, aConnectionID);
  if (result != 0) kyrProgressEnd();
  return result;
}

int ProcessingStep::GetTuDllIdentifier(char* theName, int* uniqueId) {
  std::vector<char> room(kNameRoom, '\0');
  const int result = call(kIdentifierEntry, room.data(), uniqueId);
  room.back() = '\0';
  copyText(theName, sizeof DllList::menuName, room.data());
  return result == 0 ? 1 : 0;
}

int ProcessingStep::AllocInputMemory(int* size) {
  *size = 0;
  return call("AllocInputMemory", size);
}

int ProcessingStep::DestroyInputMemory(int* params) { return call("DestroyInputMemory", params); }

int ProcessingStep::GetInputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape) {
  return call("GetInputDefaultParameters", params, paramDlg, disk, tape);
}

int ProcessingStep::PostInputDialog(int* params) { return call("PostInputDialog", params); }

int ProcessingStep::AllocOutputMemory(int* size) {
  *size = 0;
  return call("AllocOutputMemory", size);
}

int ProcessingStep::DestroyOutputMemory(int* params) { return call("DestroyOutputMemory", params); }

int ProcessingStep::GetOutputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape) {
  return call("GetOutputDefaultParameters", params, paramDlg, disk, tape);
}

int ProcessingStep::PostOutputDialog(int* params) { return call("PostOutputDialog", params); }

int ProcessingStep::InitialPhase(ProcessRecord* params, int* inputParams, int* outputParams) {
  prepare(params);
  return phase("TInitialPhase", params, inputParams, outputParams);
}

int ProcessingStep::MainPhase(ProcessRecord* params) { return phase("TMainPhase", params); }

int ProcessingStep::FinalPhase(ProcessRecord* params) {
  const int result = phase("TFinalPhase", params);
  kyrProgressEnd();
  return result;
}

int ProcessingStep::OpenSource(ProcessRecord* params, int* inputParams) {
  prepare(params);
  const int result = phase("TOpenSource", params, inputParams);
  if (result != 0) DropSources(params, aConnectionID);
  return result;
}

int findDlls(DllList** theList) {
  *theList = nullptr;
  Names names = findModuleFiles();
  std::erase_if(names, [](const std::string& name) { return !isUsable(name); });
  if (names.empty()) return 0;
  Rows rows(static_cast<DllList*>(std::calloc(names.size() + 1, sizeof(DllList))));
  if (!NullCheck(rows.get(), "theList")) return 0;
  const int count = fillRows(names, rows.get());
  if (count == 0) return 0;
  *theList = rows.release();
  return count;
}

bool withModule(const char* dllName, const std::function<void(ProcessingStep& step)>& work) {
  ProcessingStep step(dllName);
  if (step.loadFailed != 0)
    reportInBox(dllName, step.whyNot());
  else
    work(step);
  return step.loadFailed == 0;
}

void allocateInput(const char* dllName, int** inputFmt) {
  *inputFmt = nullptr;
  withModule(dllName, [&](ProcessingStep& step) {
    int size = 0;
    step.AllocInputMemory(&size);
    *inputFmt = parameterBlock(dllName, size, "inputFmt");
  });
}

void destroyInput(const char* dllName, int* inputFmt) {
  if (inputFmt == nullptr) return;
  withModule(dllName, [&](ProcessingStep& step) { step.DestroyInputMemory(inputFmt); });
}

void selectInput(const char* dllName, int* inputFmt) {
  if (inputFmt == nullptr) return;
  withModule(dllName, [&](ProcessingStep& step) {
    itDoesInputParm = itInputsDisk = itInputsTape = 0;
    step.GetInputDefaultParameters(inputFmt, &itDoesInputParm, &itInputsDisk, &itInputsTape);
  });
}

void allocateOutput(const char* dllName, int** outputFmt) {
  *outputFmt = nullptr;
  withModule(dllName, [&](ProcessingStep& step) {
    int size = 0;
    step.AllocOutputMemory(&size);
    *outputFmt = parameterBlock(dllName, size, "outputFmt");
  });
}

void destroyOutput(const char* dllName, int* outputFmt) {
  if (outputFmt == nullptr) return;
  withModule(dllName, [&](ProcessingStep& step) { step.DestroyOutputMemory(outputFmt); });
}

void selectOutput(const char* dllName, int* outputFmt) {
  if (outputFmt == nullptr) return;
  withModule(dllName, [&](ProcessingStep& step) {
    itDoesOutputParm = itOutputsDisk = itOutputsTape = 0;
    step.GetOutputDefaultParameters(outputFmt, &itDoesOutputParm, &itOutputsDisk, &itOutputsTape);
  });
}

int openSource(const char* dllName, ProcessRecord* procRecord, int* inputFmt) {
  int result = -1;
  withModule(dllName, [&](ProcessingStep& step) { result = step.OpenSource(procRecord, inputFmt); });
  return result;
}
