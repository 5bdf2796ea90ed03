#include "quarlo/tapelib/frame/jobframe.h"

#include <cstdio>
#include <exception>
#include <new>

#include "quarlo/tapelib/console.h"
#include "resources/ids.h"

namespace {

/// @param reason an exception's text; null when memory was wanting
void sayBroken(const char* reason) noexcept {
  try {
    if (reason == nullptr)
      console_out("  *** There is not enough memory for this job.");
    else
      console_printf("  *** Unexpected error: %s.", reason);
  } catch (...) {
    std::fputs("quarlo: a job ended without its last line\n", stderr);
  }
}

}  // namespace

bool runGuarded(const std::function<void()>& work) noexcept {
  try {
    work();
    return true;
  } catch (const std::bad_alloc&) {
    sayBroken(nullptr);
  } catch (const std::exception& error) {
    sayBroken(error.what());
  } catch (...) {
    sayBroken("unknown");
  }
  return false;
}

/// By way of the other: what fails behind it ends in the destructor, and no dialog stays up.
JobFrame::JobFrame(int jobType, int inputType, int* first, int* percent, int* items, long refreshMilliseconds)
    : JobFrame(Unopened{}, jobType, inputType, first, percent, items) {
  if (xvt_dlg_create_res(WD_MODELESS, DLG_PROGRESS, ProgressDlg_eh, &record_) == NULL_WIN) {
    xvt_dm_post_error("Error opening dialog");
    return;
  }
  opened_ = true;
  timer_ = xvt_timer_create(progress_, refreshMilliseconds);
}

JobFrame::~JobFrame() { close(); }

bool JobFrame::goOn() {
  ++steps_;
  xvt_app_process_pending_events();
  stopSeen_ = stopIsWanted();
  return !stopSeen_;
}

bool JobFrame::stopIsWanted() const { return abortFlag_ != 0 || xvt_app_is_ending(); }

void JobFrame::close() {
  if (timer_ != 0) {
    xvt_timer_destroy(timer_);
    timer_ = 0;
  }
  // The dialog may be gone already: its handle is then NULL_WIN.
  if (progress_ != NULL_WIN) {
    EVENT destroy;
    destroy.type = E_DESTROY;
    xvt_win_dispatch_event(progress_, &destroy);
    progress_ = NULL_WIN;
  }
}
