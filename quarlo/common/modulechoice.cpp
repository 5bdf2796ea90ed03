#include "quarlo/common/modulechoice.h"

#include <malloc.h>

#include <algorithm>
#include <string>
#include <utility>

#include "libkyr/text.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/tlv_fcn.h"

const ModuleCalls kInputCalls = {allocateInput,    destroyInput,  selectInput,  &ProcessingStep::PostInputDialog,
                                 &itDoesInputParm, &itInputsDisk, &itInputsTape};
const ModuleCalls kOutputCalls = {allocateOutput,    destroyOutput,  selectOutput,  &ProcessingStep::PostOutputDialog,
                                  &itDoesOutputParm, &itOutputsDisk, &itOutputsTape};

namespace {

/// All bytes of a block. What it is made for only the module knows; how long it is, the allocator does.
std::string bytesOf(int* block) {
  return block != nullptr ? std::string(reinterpret_cast<const char*>(block), malloc_usable_size(block)) : "";
}

}  // namespace

void beginBlock(const ModuleCalls& calls, const char* dllName, int** block) {
  *calls.hasDialog = *calls.doesDisk = *calls.doesTape = 0;
  calls.allocate(dllName, block);
  calls.select(dllName, *block);
}

int countRows(const DllList* rows) {
  int count = 0;
  while (rows != nullptr && rows[count].name[0] != '\0') ++count;
  return count;
}

int rowNamed(const DllList* rows, std::string_view name) {
  const int count = countRows(rows);
  const auto* found =
      std::find_if(rows, rows + count, [&](const DllList& row) { return fieldText(row.menuName) == name; });
  return found != rows + count ? static_cast<int>(found - rows) : -1;
}

std::vector<const char*> namesOf(const DllList* rows, int count) {
  std::vector<const char*> names(static_cast<std::size_t>(count));
  std::transform(rows, rows + count, names.begin(), [](const DllList& row) { return row.menuName; });
  return names;
}

int refuseSetUp(const char* text) {
  xvt_dm_post_error("%s", text);
  console_out(text);
  return 0;
}

ModuleChoice::ModuleChoice(const ModuleCalls& calls, ModuleRows rows, int chosen, int* block)
    : calls_(calls), rows_(std::move(rows)), chosen_(chosen), block_(block) {
  takeFlags();
}

bool ModuleChoice::choose(int row) {
  release();
  chosen_ = row;
  beginBlock(calls_, module().name, &block_);
  takeFlags();
  return std::exchange(changed_, false);
}

bool ModuleChoice::does(int unitType) const {
  return block_ != nullptr && (unitType == UT_TAPE ? doesTape_ : unitType == UT_DISK ? doesDisk_ : 0) != 0;
}

void ModuleChoice::showFlags() const {
  *calls_.hasDialog = hasDialog_;
  *calls_.doesDisk = doesDisk_;
  *calls_.doesTape = doesTape_;
}

void ModuleChoice::postDialog(int* params) {
  const std::string before = bytesOf(block_);
  withModule(module().name, [&](ProcessingStep& step) { (step.*calls_.postDialog)(params); });
  changed_ = changed_ || bytesOf(block_) != before;
}

void ModuleChoice::release() {
  calls_.destroy(module().name, block_);
  std::free(std::exchange(block_, nullptr));
}

void ModuleChoice::takeFlags() {
  hasDialog_ = *calls_.hasDialog;
  doesDisk_ = *calls_.doesDisk;
  doesTape_ = *calls_.doesTape;
}
