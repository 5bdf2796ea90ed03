/// Inside of the text view: what painting (textview.cpp), the user's hands (textview_input.cpp) and the selection
/// protocol (textview_transfer.cpp) share.
#pragma once

#include <chrono>
#include <vector>

#include "xvt/desk/textstore.h"
#include "xvt/motif/guard.h"
#include "xvt/motif/textview/textview.h"
#include "xvt/motif/textview/textview_metrics.h"

namespace xvt {

/// A colour of the default colormap, given back at the end.
class ViewColor {
 public:
  ViewColor(Display* display, const char* name);
  ~ViewColor();
  ViewColor(const ViewColor&) = delete;
  ViewColor& operator=(const ViewColor&) = delete;
  const XftColor* xft() const { return &color_; }
  Pixel pixel() const { return color_.pixel; }

 private:
  Display* display_;
  XftColor color_{};
  bool owned_ = false;
};

/// A timer that fires once.
class ViewTimer {
 public:
  explicit ViewTimer(std::function<void()> work) : work_(std::move(work)) {}
  ~ViewTimer() { stop(); }
  ViewTimer(const ViewTimer&) = delete;
  ViewTimer& operator=(const ViewTimer&) = delete;
  /// Does nothing when it is running already.
  void start(Widget widget, unsigned long milliseconds);
  void stop();

 private:
  static void fired(XtPointer self, XtIntervalId*);
  std::function<void()> work_;
  XtIntervalId id_ = 0;
};

class TextViewImpl {
 public:
  TextViewImpl(Widget parent, const char* name, const TextViewStyle& style);
  ~TextViewImpl();
  TextViewImpl(const TextViewImpl&) = delete;
  TextViewImpl& operator=(const TextViewImpl&) = delete;

  /// The view of a widget; null when the view has gone.
  static TextViewImpl* of(Widget widget);
  /// All that live.
  static std::vector<TextViewImpl*>& all();

  // ---- geometry
  void setFont(XftFont* font, int leading);
  /// Takes note of the widget's size.
  void resized();
  int viewWidth() const { return std::max(0, width_ - 2 * marginX()); }
  int viewHeight() const { return std::max(0, height_ - 2 * marginY()); }
  long viewLines() const { return viewHeight() / lineHeight_; }
  int marginX() const { return lineHeight_ / 2; }
  int marginY() const { return lineHeight_ / 3; }
  long lineCount() const { return static_cast<long>(store.count()); }
  /// Moves the origin, clamped. True when it moved.
  bool moveOrigin(long line, long offset);

  // ---- painting (textview.cpp)
  /// Something visible changed: paint it when the time has come.
  void changed();
  void paintIfDue();
  void paintPending() {
    if (dirty_) paintNow();
  }
  void paintNow();
  void exposed();
  /// Xt has destroyed the widget, or is about to.
  void widgetGone();

  // ---- the user's hands (textview_input.cpp)
  void handle(XEvent* event);
  void focusChanged(bool focused);
  void select(TextRange range);
  void selectAll();
  void clearSelection();
  TextRange selection() const;
  /// Keeps the selection where it was when a line is inserted before line `index`.
  void lineInserted(std::size_t index);

  // ---- the selection protocol (textview_transfer.cpp)
  /// Makes this widget the owner of PRIMARY, or no longer, as the selection wants it.
  void offerPrimary(Time time);
  bool copyToClipboard(Time time);
  Time lastTime() const { return XtLastTimestampProcessed(display_); }
  void lost();

  Widget widget = nullptr;
  TextStore store;
  TextViewScrolled scrolled;
  std::function<void(XButtonEvent&)> menu;
  int lineHeight_ = 1;
  int widest = 0;
  long originLine = 0;
  long offset = 0;
  const TextMetrics& metrics() const { return metrics_; }

 private:
  void createWidget(Widget parent, const char* name);
  void destroyBuffer();
  void ensureBuffer();
  void copyToWindow();
  void paintFocusRing();
  void paintLine(std::size_t number, int top, TextRange selected);
  void paintSelectionOf(std::size_t number, int top, TextRange selected);

  void press(const XButtonEvent& event);
  void wheel(const XButtonEvent& event);
  void drag(int x, int y);
  void release(XButtonEvent& event);
  void key(XKeyEvent& event);
  bool scrollKey(KeySym symbol, unsigned state);
  bool selectKey(KeySym symbol, unsigned state);
  TextPosition placeFor(KeySym symbol, unsigned state) const;
  void autoscroll();
  void userScroll(long line, long pixels);
  void show(TextPosition place);
  std::pair<long, long> originFor(TextPosition place) const;
  void pressForMenu(const XButtonEvent& event);
  void extendTo(TextPosition place, TextUnit unit);
  void startAt(TextPosition place, TextUnit unit);
  TextPosition placeAt(int x, int y) const;
  TextPosition placeUp(long lines) const;
  int clicks(const XButtonEvent& event);

  Display* display_;
  TextMetrics metrics_;
  ViewColor background_, foreground_, selectionBackground_, selectionForeground_, focusRing_;

  int width_ = 1;
  int height_ = 1;
  bool focused_ = false;

  Pixmap buffer_ = 0;
  int bufferWidth_ = 0;
  int bufferHeight_ = 0;
  XftDraw* draw_ = nullptr;
  GC gc_ = nullptr;
  bool dirty_ = true;
  std::chrono::steady_clock::time_point painted_;
  ViewTimer paintTimer_;

  TextRange anchor_;    ///< what the first click took in
  TextPosition point_;  ///< where the selection was dragged or extended to
  TextUnit unit_ = TextUnit::character;
  bool dragging_ = false;
  int dragX_ = 0;
  int dragY_ = 0;
  ViewTimer dragTimer_;
  XButtonEvent lastPress_{};
  int clicks_ = 0;

  bool ownsPrimary_ = false;
};

}  // namespace xvt
