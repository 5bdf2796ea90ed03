#include "quarlo/tapelib/dialogs/prog_dlg.h"

#include "libkyr/text.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "resources/ids.h"

namespace {

ProgressRecord* windowTags = nullptr;
ProgrStruct* theItems = nullptr;
WINDOW progressWindow = NULL_WIN;

constexpr XVT_COLOR kMeterColor = {95, 95, 138};

/// A job's words. An entry without a second label's text counts tape files.
struct JobWords {
  int jobType;
  const char* title;
  const char* first;
  const char* second;
};

constexpr JobWords kJobWords[] = {
    {JOB_UNFORMATTED, "Unformatted Copy Progress", "Bytes copied:", "Tape blocks copied:"},
    {JOB_SEGY, "SEG Y Copy Progress", "Traces input:", "Traces output:"},
    {JOB_SEGD, "SEG D Copy Progress", "Files processed:", "Traces output:"},
    {JOB_VERIFY, "Verify Progress", "Bytes verified:", "Tape blocks verified:"},
    {JOB_MERGE, "Merge Progress", "Traces input:", "Tape files processed:"},
    {JOB_REPORT, "Report Progress", "Records processed:", "Tape files processed:"},
    {JOB_TRACES_OUT, "Reformat Progress", "Traces output:", "Tape files processed:"},
};
constexpr JobWords kReformatWords = {0, "Reformat Progress", "Records processed:", "Tape files processed:"};

const JobWords& wordsOf(int jobType) {
  for (const JobWords& words : kJobWords)
    if (words.jobType == jobType) return words;
  return kReformatWords;
}

/// Image copy and verify count bytes, in a float; all others count things.
bool countsBytes(int jobType) { return jobType == JOB_UNFORMATTED || jobType == JOB_VERIFY; }

std::string firstCounter(const ProgrStruct& items) {
  if (!countsBytes(items.jobType)) return formatText("%d", *items.stat1);
  const float bytes = *static_cast<const float*>(static_cast<const void*>(items.stat1));
  return formatText("%.0f", static_cast<double>(bytes));
}

/// The jobs hold the number of the next block or file; trace counters stand as they are.
int secondCounter(const ProgrStruct& items) {
  const bool asItStands = items.jobType == JOB_SEGY || items.jobType == JOB_SEGD;
  return asItStands ? *items.stat2tape : *items.stat2tape - 1;
}

void createProgress(WINDOW window) {
  windowTags = static_cast<ProgressRecord*>(xvt_vobj_get_data(window));
  theItems = windowTags->items;
  progressWindow = window;
  *windowTags->window = window;

  const char* title = wordsOf(theItems->jobType).title;
  xvt_vobj_set_title(window, title);
  setControlText(window, PROG_HEADING, title);
  const bool fromDisk = theItems->inputType == UT_DISK;
  showControls(window, {PROG_SECOND_LABEL, PROG_SECOND_VALUE}, !fromDisk);
  showControls(window, {PROG_METER, PROG_METER_LABEL, PROG_METER_VALUE}, fromDisk);
  doUpdate(window, theItems);
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
  if (theItems != nullptr) doUpdate(window, theItems);
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
  setControlText(theDialog, PROG_FIRST_VALUE, firstCounter(*items).c_str());
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
