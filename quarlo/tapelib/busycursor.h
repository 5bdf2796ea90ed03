/// The busy cursor for as long as something takes.
#pragma once

#include <cerrno>

#include "xvt/xvt.h"

/// Shows the busy cursor for as long as it lives; errno stays as the work left it.
class BusyCursor {
 public:
  BusyCursor() { xvt_app_set_busy(true); }
  ~BusyCursor() {
    const int reason = errno;  // of the operation, for its caller
    xvt_app_set_busy(false);
    errno = reason;
  }
  BusyCursor(const BusyCursor&) = delete;
  BusyCursor& operator=(const BusyCursor&) = delete;
};
