#include "quarlo/tapelib/dialogs/prog_dlg.h"

#include <algorithm>
#include <chrono>

#include "libkyr/text.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "quarlo/tapelib/dialogs/pace.h"
#include "resources/ids.h"

namespace {

ProgressRecord* windowTags = nullptr;
ProgrStruct* theItems = nullptr;
WINDOW progressWindow = NULL_WIN;

using Clock = std::chrono::steady_clock;
Clock::time_point begun;
Pace pace;
int shownPercent = Pace::kUnknown;

constexpr XVT_COLOR kMeterColor = {95, 95, 138};

/// A job's words.
struct JobWords {
  int jobType;
  const char* title;
  const char* first;
  const char* second;
  const char* unit;  ///< of what its pace is told in; null for bytes
};

constexpr JobWords kJobWords[] = {
    {JOB_SCAN, "Reformat Progress", "Records processed:", "Tape files processed:", "traces"},
    {JOB_UNFORMATTED, "Unformatted Copy Progress", "Bytes copied:", "Tape blocks copied:", nullptr},
    {JOB_SEGY, "SEG Y Copy Progress", "Traces input:", "Traces output:", "traces"},
    {JOB_SEGD, "SEG D Copy Progress", "Files processed:", "Traces output:", "traces"},
    {JOB_VERIFY, "Verify Progress", "Bytes verified:", "Tape blocks verified:", nullptr},
    {JOB_MERGE, "Merge Progress", "Traces input:", "Tape files processed:", "traces"},
    {JOB_REPORT, "Report Progress", "Records processed:", "Tape files processed:", "records"},
    {JOB_TRACES_OUT, "Reformat Progress", "Traces output:", "Tape files processed:", "traces"},
};
constexpr JobWords kReformatWords = {-1, "Reformat Progress", "Records processed:", "Tape files processed:", "records"};

const JobWords& wordsOf(int jobType) {
  for (const JobWords& words : kJobWords)
    if (words.jobType == jobType) return words;
  return kReformatWords;
}

/// Image copy and verify count bytes, in a float; all others count things.
bool countsBytes(int jobType) { return jobType == JOB_UNFORMATTED || jobType == JOB_VERIFY; }

double firstCount(const ProgrStruct& items) {
  return countsBytes(items.jobType)
             ? static_cast<double>(*static_cast<const float*>(static_cast<const void*>(items.stat1)))
             : *items.stat1;
}

/// The jobs hold the number of the next block or file; trace counters stand as they are.
int secondCounter(const ProgrStruct& items) {
  const bool asItStands = items.jobType == JOB_SEGY || items.jobType == JOB_SEGD;
  return asItStands ? *items.stat2tape : *items.stat2tape - 1;
}

// ---- the pace -----------------------------------------------------------------------------------------------------

bool isFromDisk() { return theItems->inputType == UT_DISK; }

/// What the job has done. Files of a SEG D copy and records of a scan differ too much: their traces tell.
double amountDone() {
  const bool isOfTraces = theItems->jobType == JOB_SEGD || theItems->jobType == JOB_SCAN;
  return isOfTraces ? *theItems->stat2tape : firstCount(*theItems);
}

std::string paceText() {
  const char* unit = wordsOf(theItems->jobType).unit;
  const std::string amount = amountText(amountDone(), unit);
  if (pace.isWaiting()) return amount + ", waiting";
  const auto rate = pace.perSecond();
  return rate ? amount + " at " + rateText(*rate, unit) : amount;
}

std::string timeLeftText() {
  constexpr int kWhole = 100;
  if (*theItems->stat2disk >= kWhole) return "all input is read";
  const auto left = pace.secondsLeft();
  return left ? durationText(*left) : "not known yet";
}

/// The share stands behind the title, where a task bar shows it: from the first refresh on.
void showShare(WINDOW window) {
  const WINDOW bar = xvt_win_get_ctl(window, PROG_BAR);
  const int percent = std::clamp(*theItems->stat2disk, 0, 100);
  if (shownPercent == percent) return;
  shownPercent = percent;
  if (bar != NULL_WIN) xvt_ctl_set_meter(bar, percent);
  xvt_vobj_set_title(window, formatText("%s - %d %%", wordsOf(theItems->jobType).title, percent).c_str());
}

/// Beside the counters: what they mean for somebody who waits.
void showPace(WINDOW window) {
  using std::chrono::duration_cast, std::chrono::milliseconds;
  const auto elapsed = static_cast<long>(duration_cast<milliseconds>(Clock::now() - begun).count());
  pace.take({elapsed, amountDone(), *windowTags->steps, isFromDisk() ? *theItems->stat2disk : Pace::kUnknown});
  setControlText(window, PROG_PACE, paceText().c_str());
  setControlText(window, PROG_ELAPSED, durationText(elapsed / 1000).c_str());
  if (isFromDisk()) setControlText(window, PROG_LEFT, timeLeftText().c_str());
}

// ---- the dialog ---------------------------------------------------------------------------------------------------

void createProgress(WINDOW window) {
  windowTags = static_cast<ProgressRecord*>(xvt_vobj_get_data(window));
  theItems = windowTags->items;
  progressWindow = window;
  *windowTags->window = window;
  begun = Clock::now();
  pace = {};
  shownPercent = Pace::kUnknown;

  const char* title = wordsOf(theItems->jobType).title;
  xvt_vobj_set_title(window, title);
  setControlText(window, PROG_HEADING, title);
  showControls(window, {PROG_SECOND_LABEL, PROG_SECOND_VALUE}, !isFromDisk());
  showControls(window, {PROG_METER, PROG_METER_LABEL, PROG_METER_VALUE, PROG_LEFT_LABEL, PROG_LEFT, PROG_BAR},
               isFromDisk());
  doUpdate(window, theItems);
  showPace(window);
}

/// The job outlives the dialog; afterwards nothing of the job is looked at.
void forgetProgress(WINDOW window) {
  if (window != progressWindow) return;
  *windowTags->window = NULL_WIN;
  progressWindow = NULL_WIN;
  windowTags = nullptr;
  theItems = nullptr;
}

void endProgress(WINDOW window) {
  forgetProgress(window);
  xvt_vobj_destroy(window);
}

void stopJob(WINDOW /*window*/) {
  if (theItems != nullptr) *theItems->abortFlag = 1;
}

void refresh(WINDOW window) {
  if (theItems != nullptr) {
    doUpdate(window, theItems);
    showPace(window);
    if (isFromDisk()) showShare(window);
  }
  appMoved();
}

constexpr ControlAction kActions[] = {{PROG_STOP, stopJob}};

}  // namespace

void setMeter(WINDOW theDialog, int /*width*/) {
  const WINDOW meter = xvt_win_get_ctl(theDialog, PROG_METER);
  if (meter == NULL_WIN) return;
  RCT place;
  xvt_vobj_get_outer_rect(meter, &place);
  RCT size;
  xvt_vobj_get_client_rect(meter, &size);
  const RCT moved = {place.top, place.left, place.top + (size.bottom - size.top),
                     place.left + (size.right - size.left)};
  xvt_vobj_move(meter, &moved);
}

void doUpdate(WINDOW theDialog, const ProgrStruct* items) {
  const JobWords& words = wordsOf(items->jobType);
  setControlText(theDialog, PROG_FIRST_LABEL, words.first);
  setControlText(theDialog, PROG_FIRST_VALUE, formatText("%.0f", firstCount(*items)).c_str());
  if (items->inputType != UT_DISK) {
    setControlText(theDialog, PROG_SECOND_LABEL, words.second);
    setControlNumber(theDialog, PROG_SECOND_VALUE, secondCounter(*items));
    return;
  }
  const WINDOW label = xvt_win_get_ctl(theDialog, PROG_METER_LABEL);
  if (label != NULL_WIN) xvt_ctl_set_color(label, kMeterColor);
  setControlNumber(theDialog, PROG_METER_VALUE, *items->stat2disk);
  setMeter(theDialog, *items->stat2disk);
}

long ProgressDlg_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent,
                      {.create = createProgress,
                       .control = actionsOf(kActions),
                       .timer = refresh,
                       .close = stopJob,
                       .destroy = endProgress});
}
