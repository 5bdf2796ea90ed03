/// The text view of consoles and dump windows: an XmDrawingArea that shows lines, never wraps and never trims them.
///
/// Appending is O(1) and touches no pixel: changes are only noted, and painted at most every 33 ms, the visible lines
/// alone, into a pixmap that is then copied to the window. Bytes are kept as they are given; for showing, an offending
/// byte becomes U+FFFD, a control byte a middle dot, and a tab reaches to the next multiple of eight columns.
#pragma once

#include <X11/Xft/Xft.h>
#include <Xm/Xm.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace xvt {

class TextViewImpl;

/// How a text view looks. Colours are X colour names or "#rrggbb".
struct TextViewStyle {
  XftFont* font = nullptr;  ///< the view keeps a reference of its own
  int leading = 0;          ///< pixels between lines, beside the font's ascent and descent
  const char* background = "#ffffff";
  const char* foreground = "#1f2933";
  const char* selectionBackground = "#cfe0f3";
  const char* selectionForeground = "#1f2933";
  const char* focusRing = "#1f2933";
};

/// Told after the view scrolled or was changed by the user's hands: first visible line, number of lines, horizontal
/// offset in pixels. Not told of what the program itself did.
using TextViewScrolled = std::function<void(long originLine, long lines, int offset)>;

/// Goes before its display is closed. Lines count from 0; a line number that is out of range is met with the nearest
/// harmless answer.
class TextView {
 public:
  /// Creates the widget, unmanaged and of no particular size, as a child of `parent`.
  TextView(Widget parent, const char* name, const TextViewStyle& style);
  /// Destroys the widget, if Xt has not done so already with its parent.
  ~TextView();
  TextView(const TextView&) = delete;
  TextView& operator=(const TextView&) = delete;

  /// The drawing area: manage it, give it the keyboard (XmProcessTraversal). Null once Xt has destroyed it.
  Widget widget() const;
  void setFont(XftFont* font, int leading);
  /// Place and size in the parent, border included in neither; at least one pixel each way.
  void setGeometry(int x, int y, int width, int height);

  /// Inserts one line before line `index`; an index below 0 or not below the count appends.
  void insert(long index, std::string_view text);
  void clear();
  long count() const;
  /// The bytes of a line, followed by a NUL that is not counted; valid until the next insert or clear.
  std::string_view line(long index) const;

  /// The part of the widget that shows text, inside the margins: what lines and scroll bars are measured against.
  int viewWidth() const;
  int viewHeight() const;
  /// Whole lines that fit into viewHeight().
  long viewLines() const;
  int lineHeight() const;
  int textWidth(std::string_view text) const;
  /// Width in pixels of the widest line ever inserted since the last clear.
  int widestLine() const;

  /// First visible line and horizontal offset in pixels.
  long originLine() const;
  int offset() const;
  /// Clamped so that no empty space shows behind the last line or the widest one; without a callback.
  void scrollTo(long line, int offset);
  void scrollLines(long lines) { scrollTo(originLine() + lines, offset()); }
  void scrollPixels(int pixels) { scrollTo(originLine(), offset() + pixels); }
  void setScrolledCallback(TextViewScrolled callback);
  /// Told when the right mouse button, pressed in the view, is let go.
  void setMenuCallback(std::function<void(XButtonEvent&)> callback);

  /// Selects bytes of one line that is there and brings them into view, without a callback.
  void select(long line, std::size_t begin, std::size_t end);
  /// The line where the selection begins or the user clicked last, and its bytes that are selected.
  long selection(std::size_t* begin, std::size_t* end) const;
  void selectAll();
  void clearSelection();
  bool hasSelection() const;
  /// The selected bytes, lines joined by newlines.
  std::string selectedText() const;
  /// Makes the selection the clipboard's content; false when nothing is selected. PRIMARY follows every selection.
  bool copy();

  /// Paints what has changed if the last painting is 33 ms ago, else leaves it to the timer. To be called when a batch
  /// of changes is complete (the end of a handler), so that a single line is on screen at once.
  void paintIfDue();
  /// Paints now, however recent the last painting is.
  void paintNow();
  /// Paints every view that has changes waiting: before the program blocks in a device call, and before a screenshot.
  static void paintAllPending();

 private:
  std::unique_ptr<TextViewImpl> impl_;
};

}  // namespace xvt
