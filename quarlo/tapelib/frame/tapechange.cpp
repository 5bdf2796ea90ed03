#include "quarlo/tapelib/frame/tapechange.h"

#include "quarlo/tapelib/dialogs/tapctrl2.h"
#include "quarlo/tapelib/dialogs/tapectrl.h"
#include "quarlo/tapelib/jobstate.h"

namespace {

void say(const TapeChangeWords& words, const char* line) {
  if (line != nullptr) words.tell(line);
}

int autoLoadInput(UnitStruct* units) {
  int ready = 0;
  PassPtr words{reinterpret_cast<int*>(units), &ready, nullptr, nullptr};  // the third word is the unit's number
  tlvAutoLoad(&words);
  return ready;
}

/// Asks the operator for a tape of a unit whose magazine is empty; opening by hand reports failures again meanwhile.
template <typename Ask>
int askBesideMagazine(UnitStruct* unit, const TapeChangeWords& words, Ask ask) {
  if (jobIsStopped()) return 0;
  unit->autoMode = false;
  say(words, words.magazineFinished);
  say(words, words.afterMagazine);
  const int more = ask();
  unit->autoMode = true;
  return more;
}

/// Unloads an open unit when its operator wants tapes unloaded at their end; outputs have that wish in unit 1.
void unloadIfSo(UnitStruct* units, int uNum) {
  if (units[uNum].state == 1 && units[uNum == 0 ? 0 : 1].unloadAtEot) tlv_unload(units, uNum);
}

int askInput(UnitStruct* units) {
  int more = 0;
  askForInputTape(units, &more);
  return more;
}

int askOutput(UnitStruct* units, int uNum) {
  int more = 0;
  askForOutputTape(units, uNum, &more);
  return more;
}

/// Stands the first output tapes before their last block again.
bool takeBack(UnitStruct* units, int last) {
  for (int uNum = 1; uNum <= last; ++uNum)
    if (tlv_skip_blocks(units, uNum, -1) != 0) return false;
  return true;
}

}  // namespace

int nextInputTape(UnitStruct* units, const TapeChangeWords& words) {
  if (!units->autoMode) {
    unloadIfSo(units, 0);
    return askInput(units);
  }
  say(words, words.finished);
  if (autoLoadInput(units) != 0) return 1;
  return askBesideMagazine(units, words, [units] { return askInput(units); });
}

int nextOutputTapes(UnitStruct* units, const TapeChangeWords& words) {
  // The options of all outputs stand in unit 1. tlvAutoLoad would move every drive at each call; here each drive in
  // turn moves on by one.
  UnitStruct& options = units[1];
  for (int uNum = 1; uNum <= units->nOutputs; ++uNum) {
    int more = 0;
    if (options.autoMode) {
      say(words, words.finished);
      more = tlvLoadNextTape(units, uNum);
      if (more == 0) more = askBesideMagazine(&options, words, [units, uNum] { return askOutput(units, uNum); });
    } else {
      unloadIfSo(units, uNum);
      more = askOutput(units, uNum);
    }
    if (more == 0) {
      for (int rest = uNum + 1; rest <= units->nOutputs; ++rest) unloadIfSo(units, rest);
      return 0;
    }
  }
  return 1;
}

/// All tapes hold the same: when one is full, what the others took of the block goes.
TapeWrite writeToOutputTapes(UnitStruct* units, std::span<const char> block) {
  const int bytes = static_cast<int>(block.size());
  if (units->nOutputs < 1) {
    tlv_tape_write(units, kAllOutputs, block.data(), bytes);  // says that there is none
    return TapeWrite::Failed;
  }
  for (int uNum = 1; uNum <= units->nOutputs; ++uNum) {
    units[uNum].eotMark = 0;
    if (tlv_tape_write(units, uNum, block.data(), bytes) >= bytes) continue;
    if (units[uNum].eotMark == 0) return TapeWrite::Failed;
    return takeBack(units, uNum - 1) ? TapeWrite::Full : TapeWrite::Failed;
  }
  return TapeWrite::Written;
}

bool completeOutputTapes(UnitStruct* units, int marks) {
  if (tlv_weof(units, kAllOutputs, marks) != 0) return false;
  forgetWritten(units);
  return true;
}

bool closeOutputTapes(UnitStruct* units, JobEnd end, int marks, void (*tell)(const char* line)) {
  bool whole = true;
  bool wrote = false;
  for (int uNum = 1; uNum <= units->nOutputs; ++uNum) {
    const UnitStruct& unit = units[uNum];
    const bool spared = end == JobEnd::CutShort && unit.lastWritten == LW_NOTHING;
    if (unit.state != 1 || spared || tlv_position_lost(units, uNum)) continue;
    const bool written = tlv_weof(units, uNum, unit.lastWritten == LW_MARK ? marks : 2) == 0;
    whole = whole && written;
    wrote = wrote || written;
  }
  if (whole && wrote) tell("Wrote double end-of-file.");
  forgetWritten(units);
  return whole;
}
