/// The scroll bars of document windows, set by the program and shown a little later.
#pragma once

#include <Xm/Xm.h>

#include "xvt/xvt.h"

namespace xvt {

class ShellWindow;

/// One scroll bar. The program sets range, proportion and position line by line while a job writes: the widget follows
/// when events are next waited for.
class ScrollBar {
 public:
  ScrollBar(ShellWindow& window, Widget parent, SCROLL_TYPE type);
  ScrollBar(const ScrollBar&) = delete;
  ScrollBar& operator=(const ScrollBar&) = delete;

  Widget widget() const { return widget_; }
  void setRange(COORD low, COORD high);
  void setProportion(COORD proportion);
  void setPosition(COORD position);
  /// Brings the widget up to date.
  void refresh();

 private:
  void listen();
  void used(SCROLL_CONTROL what, int value);

  ShellWindow& window_;
  SCROLL_TYPE type_;
  Widget widget_;
  COORD low_ = 0;
  COORD high_ = 0;
  COORD proportion_ = 0;
  COORD position_ = 0;
  bool stale_ = true;
  bool dragging_ = false;
};

}  // namespace xvt
