/// The choice of a format module: the modules that a dialog offers, the one that is chosen, the block of its
/// parameters.
#pragma once

#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

#include "quarlo/common/tprcstep.h"

/// What tells the input side from the output side.
struct ModuleCalls {
  void (*allocate)(const char* dllName, int** block);
  void (*destroy)(const char* dllName, int* block);
  void (*select)(const char* dllName, int* block);
  int (ProcessingStep::*postDialog)(int* params);
  int* hasDialog;  ///< the flags that `select` fills
  int* doesDisk;
  int* doesTape;
};
extern const ModuleCalls kInputCalls;
extern const ModuleCalls kOutputCalls;

/// Begins a module's block with its defaults. The flags are 0 where the module could not be asked.
void beginBlock(const ModuleCalls& calls, const char* dllName, int** block);

/// Rows of findDlls, behind them one of zeros.
struct ModuleRowsFreer {
  void operator()(DllList* rows) const { std::free(rows); }
};
using ModuleRows = std::unique_ptr<DllList[], ModuleRowsFreer>;
int countRows(const DllList* rows);
/// The first row of this name, or -1.
int rowNamed(const DllList* rows, std::string_view name);
/// The names that the rows have in a list box, for as long as the rows live.
std::vector<const char*> namesOf(const DllList* rows, int count);
/// A dialog without the modules that it needs: says so in a box and on the console. @return 0
int refuseSetUp(const char* text);

class ModuleChoice {
 public:
  /// @param chosen a row of `rows` @param block its block, as beginBlock has just left it
  ModuleChoice(const ModuleCalls& calls, ModuleRows rows, int chosen, int* block);
  ~ModuleChoice() { release(); }
  ModuleChoice(const ModuleChoice&) = delete;
  ModuleChoice& operator=(const ModuleChoice&) = delete;

  /// Releases the block of the module chosen so far and begins one for that of `row`, with its defaults.
  /// @return whether the user had changed the block that is gone
  bool choose(int row);

  int row() const { return chosen_; }
  const DllList& module() const { return rows_[chosen_]; }
  /// Null when the module could not give one.
  int* block() const { return block_; }
  /// Whether the module works on units of this type (UNIT_TYPE).
  bool does(int unitType) const;
  /// Sets the flags of this side: they are the process's, and another dialog may have asked another module.
  void showFlags() const;

  /// Runs the module's parameter dialog. @param params its block, or the record that holds it
  void postDialog(int* params);

 private:
  void release();
  void takeFlags();

  const ModuleCalls& calls_;
  ModuleRows rows_;
  int chosen_;
  int* block_;
  int hasDialog_ = 0;
  int doesDisk_ = 0;
  int doesTape_ = 0;
  bool changed_ = false;
};
