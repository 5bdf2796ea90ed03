/// The session asks the program to end.
#pragma once

#include <functional>

namespace xvt {

class EventSource;

/// While it lives, SIGTERM, SIGINT and SIGHUP call `asked` from the event loop.
class EndSignals {
 public:
  EndSignals(EventSource& events, std::function<void()> asked);
  ~EndSignals();
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;
  /// Makes a waiting event loop return, as a signal does.
  static void wake();

 private:
  void arrived();

  EventSource& events_;
  std::function<void()> asked_;
};

}  // namespace xvt
