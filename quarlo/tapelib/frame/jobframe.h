/// What every job stands in: its progress dialog with a timer, its place among the running jobs, the poll between two
/// steps. A job's function builds a JobFrame, works while `goOn()` says so, and leaves through its own last lines.
#pragma once

#include <functional>

#include "quarlo/tapelib/dialogs/prog_dlg.h"
#include "quarlo/tapelib/jobstate.h"
#include "quarlo/tapelib/tlv_fcn.h"

/// Answers of the jobs.
enum JOB_RESULT : int { JOB_OK = 0, JOB_FAILED = 1, JOB_NO_DIALOG = -1, JOB_NOT_BEGUN = -2 };

/// Does a part of a job that may want more memory than there is, or meet what nobody thought of: an exception becomes a
/// console line, so that the job goes on to its ordinary end (marks, counts, last lines, units).
/// @return false after that line
bool runGuarded(const std::function<void()>& work) noexcept;

class JobFrame {
 public:
  /// Opens the progress dialog and starts its refresh timer. The counters live with the job, longer than the frame.
  /// @param percent counter of a disk input, @param items counter of a tape input (see ProgrStruct)
  JobFrame(int jobType, int inputType, int* first, int* percent, int* items,
           long refreshMilliseconds = kProgressPeriod);
  ~JobFrame();
  JobFrame(const JobFrame&) = delete;
  JobFrame& operator=(const JobFrame&) = delete;

  /// False when the progress dialog could not be opened; its box has been shown.
  bool isOpen() const { return opened_; }

  /// Lets events run. False when the user (or the end of the program) wants the job to stop.
  bool goOn();

  /// True of a stop that goOn() did not see: it came while the job waited for its next tape, and ended that wait.
  bool stopIsNews() const { return !stopSeen_ && stopIsWanted(); }

  /// Ends the timer and the progress dialog; the destructor does what is left.
  void close();

 private:
  struct Unopened {};
  JobFrame(Unopened, int jobType, int inputType, int* first, int* percent, int* items)
      : counters_{jobType, inputType, first, percent, items, &abortFlag_}, running_(&abortFlag_) {}
  bool stopIsWanted() const;

  int abortFlag_ = 0;
  ProgrStruct counters_;
  WINDOW progress_ = NULL_WIN;  // kept by the dialog itself
  long steps_ = 0;
  ProgressRecord record_{&counters_, &progress_, &steps_};
  long timer_ = 0;
  bool opened_ = false;
  bool stopSeen_ = false;
  RunningJob running_;
};
