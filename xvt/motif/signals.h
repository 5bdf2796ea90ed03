/// The session asks the program to end.
#pragma once

#include <Xm/Xm.h>

#include <functional>

namespace xvt {

/// While it lives, SIGTERM, SIGINT and SIGHUP call `asked` from the event loop.
class EndSignals {
 public:
  EndSignals(XtAppContext context, std::function<void()> asked);
  ~EndSignals();
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;
  /// Makes a waiting event loop return, as a signal does.
  static void wake();

 private:
  static void arrived(XtPointer self, int* source, XtInputId*);

  std::function<void()> asked_;
  XtInputId input_ = 0;
};

}  // namespace xvt
