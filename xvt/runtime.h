/// What the check floor asks of the runtime floor. Arguments have been checked: references are to living objects,
/// indices are in range, texts are there and valid UTF-8.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "xvt/registry.h"
#include "xvt/resource.h"
#include "xvt/xvt.h"

namespace xvt {

class Control;
class Font;
class TextField;

/// What windows and controls have in common.
class VisibleObject : public Object {
 public:
  virtual void setTitle(const std::string& title) = 0;
  virtual std::string title() const = 0;
  virtual void setEnabled(bool enabled) = 0;
  virtual bool isEnabled() const = 0;
  virtual void setVisible(bool visible) = 0;
  virtual bool isVisible() const = 0;
  virtual void raise() = 0;
  virtual void takeFocus() = 0;
  virtual RCT clientRect() const = 0;
  virtual RCT outerRect() const = 0;
  virtual void move(const RCT& rectangle) = 0;

  void* data = nullptr;
};

/// The task window, a document window, a dialog.
class Window : public VisibleObject {
 public:
  /// What scripts call the window.
  virtual std::string name() const = 0;
  /// Hides the window, tells its handler, and lets its handle and those of all that is in it die.
  virtual void destroy() = 0;
  virtual std::shared_ptr<Control> control(int id) const = 0;
  virtual std::shared_ptr<TextField> textField(int id) const = 0;
  /// Brings its text fields up to date on the screen.
  virtual void paintText() {}
  virtual bool hasScrollBar(SCROLL_TYPE bar) const = 0;
  virtual void setScrollRange(SCROLL_TYPE bar, COORD low, COORD high) = 0;
  virtual void setScrollProportion(SCROLL_TYPE bar, COORD proportion) = 0;
  virtual void setScrollPosition(SCROLL_TYPE bar, COORD position) = 0;

  EVENT_HANDLER handler = nullptr;
};

/// A control of a dialog. Operations that a kind has no use for do nothing.
class Control : public VisibleObject {
 public:
  virtual ITEM_KIND kind() const = 0;
  virtual void setChecked(bool) {}
  virtual bool isChecked() const { return false; }
  virtual void setColor(XVT_COLOR) {}
  virtual void setMeter(int) {}
  virtual int meter() const { return 0; }
  /// The first `characters` of an edit field, all for -1.
  virtual void selectText(int) {}

  virtual void clearRows() {}
  /// `index` from 0 to the count.
  virtual void addRow(int, const std::string&) {}
  virtual int rowCount() const { return 0; }
  virtual std::string rowText(int) const { return {}; }
  virtual bool isRowSelected(int) const { return false; }
  virtual void setRowSelected(int, bool) {}
  virtual void clearRowSelection() {}
  virtual void grow(COORD) {}
};

/// The text field of a document window.
class TextField : public Object {
 public:
  virtual std::shared_ptr<Window> window() const = 0;
  virtual void setScrollCallback(TX_SCROLL_CALLBACK callback) = 0;
  virtual void insert(long where, const char* line) = 0;
  virtual void clear() = 0;
  virtual long count() const = 0;
  virtual std::string_view paragraph(long number) const = 0;
  virtual void scroll(long lines, int pixels) = 0;
  virtual long originLine() const = 0;
  virtual int originOffset() const = 0;
  /// `end` is not below `begin`; both are in the line, and the line is there.
  virtual void select(long line, std::size_t begin, std::size_t end) = 0;
  virtual long selection(std::size_t* begin, std::size_t* end) const = 0;
  virtual void setFont(const std::shared_ptr<Font>& font) = 0;
  virtual int widest() const = 0;
  virtual void move(const RCT& rectangle) = 0;
  virtual RCT viewRect() const = 0;
};

/// A font of the program's choice.
class Font : public Object {
 public:
  virtual int leading() const = 0;
  virtual int ascent() const = 0;
  virtual int descent() const = 0;
  virtual int width(std::string_view text) const = 0;
};

namespace runtime {

int run(int argc, char** argv, EVENT_HANDLER handler, const XVT_CONFIG& config);
bool isRunning();
/// False when the connection to the display has been lost: the application is ending, and nothing may be drawn or
/// asked.
bool hasDisplay();
void end();
bool isEnding();
void allowQuit();
void processPendingEvents();
void setBusy(bool busy);
void bell();

/// Null when the window could not be made.
std::shared_ptr<Window> createDocument(const WIN_DEF* definition, EVENT_HANDLER handler, void* data);
/// For a modal dialog returns when it has been destroyed.
std::shared_ptr<Window> createDialog(bool modal, const DLG_RES& table, EVENT_HANDLER handler, void* data);
/// Calls the window's handler; nothing that it throws comes out.
long deliver(const std::shared_ptr<Window>& window, EVENT& event);

/// False when there is no such item.
bool setItemChecked(int command, bool checked);
bool setItemEnabled(int command, bool enabled);
bool isItemChecked(int command);
bool isItemEnabled(int command);

/// 0 on failure.
long createTimer(const std::shared_ptr<Window>& window, long milliseconds);
bool destroyTimer(long timer);

/// Null when the runtime is not up or the font cannot be opened.
std::shared_ptr<Font> createFont(bool monospaced, int points, bool bold);

}  // namespace runtime

/// The tables handed over by xvt_res_use.
const RESOURCES& resources();
const DLG_RES* findDialog(int resource);
const MENU_RES* findMenu(int resource);

}  // namespace xvt
