#include "quarlo/tapelib/jobstate.h"

#include <utility>
#include <vector>

#include "quarlo/tapelib/console.h"
#include "xvt/xvt.h"

namespace {

RunningJob* innermost = nullptr;
int begun = 0;
std::vector<std::function<void()>> afterwards;

void doWhatWaited() {
  // A wish may start or stop things itself: each is taken off the list before it is carried out.
  while (innermost == nullptr && !afterwards.empty()) {
    const std::function<void()> next = std::move(afterwards.front());
    afterwards.erase(afterwards.begin());
    next();
  }
}

}  // namespace

RunningJob::RunningJob(int* abortFlag) : abortFlag_(abortFlag), outer_(innermost) {
  if (outer_ == nullptr) ++begun;
  innermost = this;
  // The job was stopped before this part of it began.
  if (abortFlag_ != nullptr && !afterwards.empty()) *abortFlag_ = 1;
}

RunningJob::~RunningJob() {
  innermost = outer_;
  doWhatWaited();
}

bool jobIsRunning() { return innermost != nullptr; }
int jobsBegun() { return begun; }

void requestStopOfJobs(std::function<void()> then) {
  for (RunningJob* job = innermost; job != nullptr; job = job->outer_)
    if (job->abortFlag_ != nullptr) *job->abortFlag_ = 1;
  afterwards.push_back(std::move(then));
  doWhatWaited();
}

bool jobIsStopped() {
  bool stopped = jobIsRunning() && xvt_app_is_ending();
  for (const RunningJob* job = innermost; job != nullptr; job = job->outer_)
    stopped = stopped || (job->abortFlag_ != nullptr && *job->abortFlag_ != 0);
  return stopped;
}

bool stopIsRequested() { return !afterwards.empty(); }

void tellUser(const char* text) {
  if (!jobIsRunning()) return xvt_dm_post_note("%s", text);
  xvt_scr_beep();
  console_out(text);
}

bool refuseDuringJob() {
  if (!jobIsRunning()) return false;
  tellUser(kJobIsRunning);
  return true;
}
