#include "quarlo/common/unitdialog.h"

#include <string_view>
#include <utility>

#include "quarlo/common/held.h"
#include "quarlo/common/windows.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/tsel_dlg.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/frame/loglines.h"
#include "quarlo/tapelib/unitopen.h"

namespace {

const char* wordFor(int result) { return result == JOB_NOT_BEGUN ? "Idle" : result == JOB_OK ? "Complete" : "Failed"; }

}  // namespace

void UnitDialog::show(WINDOW dialog, COPY_STATE state) const {
  if (!xvt_vobj_is_valid(dialog)) return;
  parts_.showState(dialog, state);
  remark(dialog, word_);
}

void UnitDialog::showUnits(WINDOW dialog) const { show(dialog, parts_.ready() ? COPY_READY : COPY_NOT_READY); }

long UnitDialog::events(WINDOW dialog, const EVENT& event, DialogEvents does) {
  does.user = [this](WINDOW told) { follow(told); };
  does.close = [this](WINDOW closed) { close(closed); };
  const long answer = dialogEvents(dialog, event, does);
  if (event.type == E_DESTROY) releaseUnits();
  return answer;
}

bool UnitDialog::admits(WINDOW dialog, const EVENT& event) const {
  if (event.type != E_CONTROL || event.ctl.what != CTL_PRESS) return false;
  if (!isPress(event, parts_.closeButton)) return !refuses(dialog);
  close(dialog);
  return false;
}

void UnitDialog::open(WINDOW dialog) {
  word_ = "Idle";
  show(dialog, COPY_NOT_READY);
}

void UnitDialog::showChange(WINDOW dialog) {
  word_ = parts_.ready() ? "Ready" : "Idle";
  showUnits(dialog);
  tellUnitsChanged();
}

void UnitDialog::follow(WINDOW dialog) {
  if (running_) return;
  if (!parts_.ready() && word_ == std::string_view("Ready")) word_ = "Idle";
  showUnits(dialog);
}

void UnitDialog::remark(WINDOW dialog, const char* text) const { setControlText(dialog, parts_.status, text); }

bool UnitDialog::takes(WINDOW dialog, DriveAnswer answer) const {
  if (answer == DriveAnswer::None) remark(dialog, kNoDriveChosen);
  return tookDrive(answer);
}

void UnitDialog::chooseInputTape(WINDOW dialog, UnitStruct* units) {
  if (!takes(dialog, chooseInputDrive(units))) return;
  closeUnit(units, 0);
  openChosenDrive(units, 0);
  showChange(dialog);
}

bool UnitDialog::refuses(WINDOW dialog) const {
  if (!refuseDuringJob()) return false;
  remark(dialog, kJobIsRunning);
  return true;
}

void UnitDialog::start(WINDOW dialog, const std::function<int(const int& stopped)>& job) {
  if (!parts_.ready()) return showChange(dialog);
  int stopped = 0;
  run(dialog, &stopped, [&] { return job(stopped); });
}

void UnitDialog::run(WINDOW dialog, int* stopFlag, const std::function<int()>& job, int (*endUnits)()) {
  const RunningJob place(stopFlag);  // what waits for the job's end comes behind all else of it
  int result = JOB_FAILED;
  {
    const Held held(&running_);
    word_ = "Running";
    const bool through = runGuarded([&] {
      show(dialog, COPY_RUNNING);
      result = job();
    });
    if (!through) runGuarded(logFailed);
    int atEnd = JOB_FAILED;
    runGuarded([&] { atEnd = endUnits != nullptr ? endUnits() : parts_.endUnits(); });
    if (atEnd != 0 && result == JOB_OK) result = JOB_FAILED;
  }
  word_ = wordFor(result);
  runGuarded([&] {
    showUnits(dialog);
    tellUnitsChanged();
  });
}

void UnitDialog::releaseUnits() const {
  if (parts_.closeUnits == nullptr || jobIsRunning()) return;
  parts_.closeUnits();
  tellUnitsChanged();
}

void UnitDialog::close(WINDOW dialog) const { destroyBehindJob(dialog, running_); }
