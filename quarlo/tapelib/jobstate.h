/// Which jobs are running, and what has to wait for their end.
///
/// A job runs inside the event that started it and lets other events run meanwhile. So anything may be asked for in the
/// middle of a job; what would pull units, buffers or windows from under it is refused or put off with the help of
/// this.
#pragma once

#include <functional>

/// A job in progress. The first local of the action that starts a job, so that all else of the job (its closing of
/// units, its last words in its dialog) is over when the last RunningJob ends and what was put off happens.
class RunningJob {
 public:
  /// @param abortFlag the job's flag, which its stop button sets too; must live as long as this object; null for an
  ///        action around jobs with flags of their own. A job begun while a stop is wished for finds its flag set.
  explicit RunningJob(int* abortFlag);
  ~RunningJob();
  RunningJob(const RunningJob&) = delete;
  RunningJob& operator=(const RunningJob&) = delete;

 private:
  int* abortFlag_;
  RunningJob* outer_;
  friend void requestStopOfJobs(std::function<void()> then);
  friend bool jobIsStopped();
};

bool jobIsRunning();

/// How many jobs have been begun in this run, those within others not counted.
int jobsBegun();

/// Stops every running job as its stop button does and does `then` when the last of them has ended; at once when none
/// is running. Several wishes are carried out in the order in which they came.
void requestStopOfJobs(std::function<void()> then);

/// Whether a running job was told to stop, by its button or by such a wish, or the program ends: what it waits for is
/// waited for no longer, and nothing is asked.
bool jobIsStopped();

/// Whether something waits for the end of the jobs already.
bool stopIsRequested();

/// Tells the user something of this program's own: in a note box, or while a job is running with a beep and a console
/// line, so that a box which nobody answers does not hold the job up.
void tellUser(const char* text);

constexpr const char* kJobIsRunning = "A job is running. Stop it or wait for its end first.";

/// For what must not happen to the units in the middle of a job (spacing, unloading, another drive, another job): says
/// so as tellUser does and answers true while a job is running.
bool refuseDuringJob();
