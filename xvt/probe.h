/// Looking at and driving the real windows from inside the program, by the names that the resource tables give.
/// The script player stands on it; it knows no dialog of the program. Implemented by the runtime floor.
///
/// Every action goes the way a user's would: it is refused when the control is disabled, hidden or kept from input by
/// a modal dialog, it moves the focus first (so that the field left sends CTL_FOCUS_LOSS), and then it activates the
/// real widget.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "xvt/xvt.h"

namespace xvt::probe {

/// Why an action was refused or is impossible; nothing when it was carried out.
using Refusal = std::optional<std::string>;

/// Called by every pump (main loop, modal loops, xvt_app_process_pending_events) when the display has been served; at
/// most every few milliseconds. Null takes it away. The tick may run handlers; pumps inside them tick again.
void setTick(void (*tick)());
/// Asked when the application has ended by its ordinary way: the answer is what xvt_app_create answers. Null takes it
/// away: 0.
void setVerdict(int (*verdict)());

/// The open window with this name: a dialog's resource name (the newest of that name), "task" for the task window, or a
/// document window's title in lower case with "-" for blanks ("console", "tape-dump-window"). NULL_WIN if not open.
WINDOW window(const std::string& name);
/// The modal window that keeps all others from input, or NULL_WIN.
WINDOW inputKeeper();
/// The name by which window() finds a window.
std::string nameOf(WINDOW window);
/// Names of all windows that are open and visible, newest last.
std::vector<std::string> openWindows();
/// The control with this symbolic name in a window, or NULL_WIN.
WINDOW control(WINDOW window, const std::string& name);
/// Symbolic names of a window's controls, in table order.
std::vector<std::string> controls(WINDOW window);
/// What a control is (ITEM_KIND of xvt/resource.h); -1 for anything that is no control.
int kind(WINDOW control);
/// The text field of a document window, or NULL_TXEDIT.
TXEDIT textField(WINDOW window);
/// The command number of the menu item with this symbolic name, 0 if there is none.
int menuCommand(const std::string& name);

/// Push button, check box, radio button.
[[nodiscard]] Refusal press(WINDOW control);
/// Replaces an edit field's text as if typed.
[[nodiscard]] Refusal type(WINDOW edit, const std::string& text);
/// Selects row `row` of a list or option list, beside what is selected already when `add`.
[[nodiscard]] Refusal select(WINDOW list, int row, bool add);
[[nodiscard]] Refusal doubleClick(WINDOW list, int row);
[[nodiscard]] Refusal menu(int command);
/// Uses the window manager's close box.
[[nodiscard]] Refusal close(WINDOW window);
/// Ends the program as the session does: dialogs that are open do not hinder it, and nothing is asked.
[[nodiscard]] Refusal endSession();
/// Presses a key with the keyboard focus where it is: "Tab", "Return", "Escape", "Alt+o", "Ctrl+Q", "Page_Down".
[[nodiscard]] Refusal key(WINDOW window, const std::string& keys);
/// Lines of a document window's text field.
std::vector<std::string> textLines(WINDOW window, std::size_t last);
/// Writes what is on the screen where this window stands (all of the screen for NULL_WIN) as a PNG file, the window
/// raised and painted before.
[[nodiscard]] Refusal screenshot(WINDOW window, const std::string& path);

}  // namespace xvt::probe
