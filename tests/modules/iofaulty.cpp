// Modules with one fault each: which one, FAULT_... says.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "libkyr/source.h"
#include "plugins/kyrmodule.h"

#ifdef FAULT_CONSTRUCTOR_CRASHES
namespace {
const struct Crash {
  Crash() {
    // So that trials can be counted.
    const int trials = open("trials", O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600);
    dprintf(trials, "x");
    std::abort();
  }
} crash;
}  // namespace
#endif

#ifdef FAULT_CONSTRUCTOR_EXITS
namespace {
const struct Leave {
  Leave() { std::exit(0); }
} leave;
}  // namespace
#endif

#ifdef FAULT_CONSTRUCTOR_FORKS
namespace {
// Longer than a loader would wait for it. Nothing of the tests' own output is held open.
const struct Fork {
  Fork() {
    if (fork() != 0) return;
    for (int standard = 0; standard < 3; ++standard) close(standard);
    sleep(15);
    _exit(0);
  }
} forked;
}  // namespace
#endif

#ifdef FAULT_MISSING_SYMBOL
int nowhereToBeFound();
#endif

#ifndef FAULT_NO_IDENTIFIER
void GetTuDllIdentifier(char* theName, int* uniqueId) {
#ifdef FAULT_NAMING_THROWS
  throw std::runtime_error("no name today");
#endif
#ifdef FAULT_LONG_NAME
  std::memset(theName, 'x', 200);
#else
  std::strcpy(theName, "Faulty");
#endif
  *uniqueId = 78;
#ifdef FAULT_MISSING_SYMBOL
  *uniqueId = nowhereToBeFound();
#endif
}
#endif

#ifdef FAULT_BLOCK_SIZE
void AllocInputMemory(int* size) { *size = -1; }
void AllocOutputMemory(int* size) { *size = 2000000000; }
#endif

#ifdef FAULT_PHASES
int TInitialPhase(ProcessRecord* /*record*/, int* /*inputParams*/, int* /*outputParams*/) {
  throw std::runtime_error("no more of this");
}
int TFinalPhase(ProcessRecord* /*record*/) { throw 1; }

namespace {
class Nothing : public TraceSource {
  const GeneralSeisDataOrg& org() const override { return org_; }
  int fetch(int /*record*/, int /*trace*/, float* /*samples*/, TraceInfo* /*header*/) override { return kyrOk; }
  GeneralSeisDataOrg org_{};
};
}  // namespace
int TOpenSource(ProcessRecord* record, int* /*inputParams*/) {
  RegisterSource(record, 0, std::make_unique<Nothing>());
  throw 1;
}
#endif
