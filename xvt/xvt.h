/// The toolkit layer's public face: windows, dialogs, controls, events, boxes, fonts, text views, files.
///
/// Everything above this folder is written against this header alone and never sees Motif or X.
///
/// Handles (WINDOW, TXEDIT, XVT_FNTID) are opaque numbers looked up in a registry. A call with a handle that is
/// dead, of the wrong kind, with an index out of range or with a text that is missing is reported once on standard
/// error as "xvt: FUNCTION: reason" and answers something harmless (false, 0, an empty text); it never crashes.
///
/// Texts are UTF-8. A text that is not valid UTF-8 (a name from a disk, bytes from a tape) is made valid before it
/// is shown: each offending byte becomes U+FFFD. Formats are printf formats; a caller's own text goes through "%s".
///
/// One thread only. Handlers may destroy any window, also their own, at any time: a destroyed window is hidden and
/// its handle dead at once, but its storage goes when no handler is running any more.
#pragma once

#include <cstddef>

#if defined(__GNUC__)
#define XVT_PRINTF(position, first) __attribute__((format(printf, position, first)))
#else
#define XVT_PRINTF(position, first)
#endif

// ---- handles and plain types ------------------------------------------------------------------------------------

using WINDOW = long;     ///< a window, a dialog or a control
using TXEDIT = long;     ///< a text field inside a document window
using XVT_FNTID = long;  ///< a font
using COORD = int;       ///< pixels; wide enough for the height of a text of millions of lines

constexpr WINDOW NULL_WIN = 0;
constexpr WINDOW TASK_WIN = 1;  ///< the task window, alive from its E_CREATE to the end of the application
constexpr TXEDIT NULL_TXEDIT = 0;
constexpr XVT_FNTID NULL_FNTID = 0;

/// A point in pixels.
struct PNT {
  COORD v = 0;
  COORD h = 0;
};

/// A rectangle in pixels; bottom and right are exclusive.
struct RCT {
  COORD top = 0;
  COORD left = 0;
  COORD bottom = 0;
  COORD right = 0;
};

struct XVT_COLOR {
  unsigned char red = 0;
  unsigned char green = 0;
  unsigned char blue = 0;
};

// ---- events -----------------------------------------------------------------------------------------------------

enum EVENT_TYPE : int {
  E_NONE = 0,
  E_CREATE,   ///< the window exists, its controls too; it is not yet shown
  E_DESTROY,  ///< the last event of a window; also a request: dispatching it to a console or dump window ends it
  E_CLOSE,    ///< the window manager's close box (or a request to behave as if it had been used)
  E_COMMAND,  ///< a menu command: `cmd`; to a window with text, one of the commands of such windows
  E_CONTROL,  ///< a control was used: `ctl`
  E_SIZE,     ///< the client area has a new size: `size`
  E_UPDATE,   ///< a document window's text wants painting
  E_HSCROLL,  ///< a window's horizontal scroll bar: `scroll`
  E_VSCROLL,  ///< a window's vertical scroll bar: `scroll`
  E_TIMER,    ///< a timer of this window fired: `timer`
  E_FOCUS,    ///< the window gained or lost the keyboard: `focus`
  E_USER,     ///< sent by the program itself: `user`
  E_QUIT,     ///< to the task window: the session asks whether it may end (`quit.query`) or says that it ends
  E_HELP      ///< to the task window: the user wants help on a window: `help`
};

/// What happened to a control.
enum CTL_ACTION : int {
  CTL_PRESS = 0,   ///< a button, check box or radio button was pressed; the zero value, so that a bare control event
                   ///< made by the program is a press
  CTL_EDITED,      ///< an edit field's text changed under the user's hands
  CTL_FOCUS_GAIN,  ///< an edit field got the keyboard
  CTL_FOCUS_LOSS,  ///< an edit field lost the keyboard; the moment to parse it. Also sent to the field that has the
                   ///< focus before a button press, a menu command or a close of the same window is delivered.
  CTL_SELECT,      ///< a list's or option list's selection changed
  CTL_DOUBLE,      ///< a list row was double-clicked (after its CTL_SELECT)
  CTL_COMPLETE     ///< Tab in an edit field that is completed: the handler sets a longer text, or Tab goes on
};

/// What was done to a scroll bar.
enum SCROLL_CONTROL : int {
  SC_NONE = 0,
  SC_LINE_UP,
  SC_LINE_DOWN,
  SC_PAGE_UP,
  SC_PAGE_DOWN,
  SC_THUMB,      ///< the thumb was let go at `position`
  SC_THUMBTRACK  ///< the thumb is being dragged, now at `position`
};

enum SCROLL_TYPE : int { HSCROLL, VSCROLL };

/// One event. Only the member that belongs to `type` means anything; the others hold zeros.
struct EVENT {
  EVENT_TYPE type = E_NONE;
  struct {
    int tag = 0;  ///< the command number
  } cmd;
  struct {
    int id = 0;  ///< the control's number in its dialog
    CTL_ACTION what = CTL_PRESS;
  } ctl;
  struct {
    COORD width = 0;
    COORD height = 0;
  } size;
  struct {
    SCROLL_CONTROL what = SC_NONE;
    COORD position = 0;
  } scroll;
  struct {
    long id = 0;
  } timer;
  struct {
    bool active = false;
  } focus;
  struct {
    long id = 0;                ///< the small code that says what is meant
    const void* ptr = nullptr;  ///< what comes with it; valid during the dispatch only
  } user;
  struct {
    bool query = false;
  } quit;
  struct {
    WINDOW window = NULL_WIN;  ///< NULL_WIN for help on nothing in particular
  } help;
};

/// A window's event handler. The answer is handed back by xvt_win_dispatch_event and otherwise not looked at.
using EVENT_HANDLER = long (*)(WINDOW window, EVENT* event);

// ---- application ------------------------------------------------------------------------------------------------

struct XVT_CONFIG {
  short menu_bar_ID = 0;
  short about_box_ID = 0;
  const char* base_appl_name = nullptr;
  const char* appl_name = nullptr;
  const char* taskwin_title = nullptr;
};

/// Starts the toolkit, creates the task window with the configuration's menu bar, sends it E_CREATE and runs the
/// event loop until xvt_app_destroy. Returns the exit status the run deserves: 0, or nonzero when no display could be
/// opened (after a line on standard error) or a scripted run failed.
/// @param flags reserved, 0
int xvt_app_create(int argc, char** argv, unsigned long flags, EVENT_HANDLER handler, const XVT_CONFIG* config);

/// Ends the application: nested modal loops return, every window gets its E_DESTROY, xvt_app_create returns.
void xvt_app_destroy();

/// Answers an E_QUIT query with yes.
void xvt_app_allow_quit();

/// Lets everything that is waiting run (timers, repaints, input, scripts) and returns at once. Made to be called once
/// for every block of a job: a clock is asked first and the display only every few milliseconds.
void xvt_app_process_pending_events();

/// True from xvt_app_destroy on: a job that sees it ends through its ordinary end.
bool xvt_app_is_ending();

/// Shows the busy cursor over every window of the application, or takes it away. Calls nest.
void xvt_app_set_busy(bool busy);

/// Rings the bell.
void xvt_scr_beep();

// ---- windows and dialogs ----------------------------------------------------------------------------------------

enum WIN_TYPE : int {
  W_NONE = 0,   ///< ends a WIN_DEF array
  W_DOC,        ///< a document window
  WC_TEXTEDIT,  ///< a text field in it
  WD_MODAL,     ///< a dialog that keeps input from all other windows until it is closed
  WD_MODELESS   ///< a dialog beside the others
};

/// Style bits of a document window.
enum WIN_FLAGS : unsigned {
  WSF_SIZE = 1,        ///< can be resized
  WSF_CLOSE = 2,       ///< has a close box
  WSF_HSCROLL = 4,     ///< horizontal scroll bar
  WSF_VSCROLL = 8,     ///< vertical scroll bar
  WSF_INVISIBLE = 16,  ///< starts hidden
  WSF_UPPER_LEFT = 32  ///< keeps to the upper left of a small screen: dialogs stand below it, other windows beside it
};

/// One entry of a window definition: first the window, then what is in it, then an entry of type W_NONE.
struct WIN_DEF {
  WIN_TYPE type = W_NONE;
  /// For the window: its wished place, in pixels of an ordinary screen, scaled like the fonts; its size, as large as
  /// its lines need, is not scaled. For a field: in the client area.
  RCT rct;
  const char* title = nullptr;  ///< the window's title
  int id = 0;                   ///< the text field's number
  XVT_FNTID font = NULL_FNTID;  ///< the text field's font
  unsigned flags = 0;           ///< WIN_FLAGS of the window
};

/// Creates a document window. Its handler gets E_CREATE before the call returns.
/// @param data kept for xvt_vobj_get_data
/// @return the window, or NULL_WIN
WINDOW xvt_win_create_def(const WIN_DEF* definition, WINDOW parent, EVENT_HANDLER handler, void* data);

/// Creates a dialog from the resource table with number `resource` (xvt/resource.h). Its handler gets E_CREATE before
/// it is shown. WD_MODELESS returns at once; WD_MODAL returns when the dialog has been destroyed.
/// @return the dialog (for WD_MODAL the handle it had), or NULL_WIN when it could not be created
WINDOW xvt_dlg_create_res(WIN_TYPE type, int resource, EVENT_HANDLER handler, void* data);

/// The control with number `id` of a dialog or window, or NULL_WIN (without a report) when there is none.
WINDOW xvt_win_get_ctl(WINDOW window, int id);

/// Delivers an event to a window's handler now. A bare E_CLOSE or E_DESTROY sent so is an ordinary event: what it
/// leads to is the handler's business. Returns the handler's answer, 0 for a dead window (without a report).
long xvt_win_dispatch_event(WINDOW window, EVENT* event);

/// Destroys a window or dialog: hides it, sends it E_DESTROY (unless it is being destroyed already), ends its modal
/// loop. Destroying what is dead already does nothing.
void xvt_vobj_destroy(WINDOW window);

bool xvt_vobj_is_valid(WINDOW window);
void* xvt_vobj_get_data(WINDOW window);
void xvt_vobj_set_data(WINDOW window, void* data);

/// Title of a window; text of a label, button, edit field or status line.
void xvt_vobj_set_title(WINDOW window, const char* title);

/// Copies the title or text into `buffer`, cut to fit and always terminated. Returns `buffer`.
char* xvt_vobj_get_title(WINDOW window, char* buffer, std::size_t size);

void xvt_vobj_set_enabled(WINDOW window, bool enabled);
bool xvt_vobj_is_enabled(WINDOW window);
void xvt_vobj_set_visible(WINDOW window, bool visible);
bool xvt_vobj_is_visible(WINDOW window);
void xvt_vobj_raise(WINDOW window);

/// Copies the name by which scripts call a window into `buffer`, cut to fit and always terminated. Returns `buffer`.
char* xvt_vobj_get_name(WINDOW window, char* buffer, std::size_t size);

/// Gives the keyboard to a window, or to a control of a dialog.
void xvt_vobj_set_focus(WINDOW window);

/// The client area: top and left are 0.
void xvt_vobj_get_client_rect(WINDOW window, RCT* rectangle);

/// A control's place in its dialog; a window's place on the screen.
void xvt_vobj_get_outer_rect(WINDOW window, RCT* rectangle);
void xvt_vobj_move(WINDOW window, const RCT* rectangle);

// ---- controls ---------------------------------------------------------------------------------------------------

/// Check boxes and radio buttons. Pressing one never changes its mark by itself: the handler decides and sets it.
void xvt_ctl_set_checked(WINDOW control, bool checked);
bool xvt_ctl_is_checked(WINDOW control);

/// Checks `control` and unchecks the other `count` controls of `group`.
void xvt_ctl_check_radio_button(WINDOW control, const WINDOW* group, int count);

/// The colour of a meter's bar, a label's text, a list's background.
void xvt_ctl_set_color(WINDOW control, XVT_COLOR color);

/// Meter: 0 to 100.
void xvt_ctl_set_meter(WINDOW control, int percent);
int xvt_ctl_get_meter(WINDOW control);

/// Selects the text of an edit field: its first `characters`, all of it for -1.
void xvt_ctl_select_text(WINDOW control, int characters = -1);

// Lists (one or several rows selected) and option lists. Rows count from 0.
void xvt_list_clear(WINDOW list);
/// Adds a row before row `index`, or at the end for -1.
bool xvt_list_add(WINDOW list, int index, const char* text);
int xvt_list_count(WINDOW list);
char* xvt_list_get_text(WINDOW list, int index, char* buffer, std::size_t size);
bool xvt_list_is_selected(WINDOW list, int index);
/// Selects or unselects one row; in a list for one row the others are unselected. Sends no event.
void xvt_list_set_selected(WINDOW list, int index, bool selected);
void xvt_list_clear_selection(WINDOW list);
/// The first selected row, or -1.
int xvt_list_get_selected(WINDOW list);
/// Makes a list `pixels` taller than its table says (not below one row).
void xvt_list_grow(WINDOW list, COORD pixels);

// ---- menus ------------------------------------------------------------------------------------------------------

void xvt_menu_set_item_checked(WINDOW window, int command, bool checked);
bool xvt_menu_is_item_checked(WINDOW window, int command);
void xvt_menu_set_item_enabled(WINDOW window, int command, bool enabled);
bool xvt_menu_is_item_enabled(WINDOW window, int command);

/// Menu items that the toolkit itself carries out on whatever has the focus.
enum STANDARD_COMMANDS : int {
  M_EDIT_CUT = 32026,
  M_EDIT_COPY = 32027,
  M_EDIT_PASTE = 32028,
  M_EDIT_SELECT_ALL = 32029,
  M_HELP = 32030,        ///< sends E_HELP about the window in use
  M_TEXT_FIRST = 32040,  ///< from here to M_TEXT_LAST: commands that the window with text that is in use gets as
                         ///< E_COMMAND; the text's popup menu shows them too
  M_TEXT_LAST = 32059
};

// ---- timers -----------------------------------------------------------------------------------------------------

/// Sends E_TIMER to `window` every `milliseconds` until destroyed; dies with its window. Returns its id, 0 on failure.
long xvt_timer_create(WINDOW window, long milliseconds);
void xvt_timer_destroy(long timer);

// ---- message and file boxes -------------------------------------------------------------------------------------

/// Modal boxes; they return when the user has answered.
void xvt_dm_post_error(const char* format, ...) XVT_PRINTF(1, 2);
void xvt_dm_post_note(const char* format, ...) XVT_PRINTF(1, 2);

/// The control of a message box ("error-box", "note-box", "ask-box") that holds its whole text.
enum BOX_CONTROL : int { BOX_TEXT = 1 };

enum ASK_RESPONSE : int { RESP_DEFAULT = 1, RESP_2 = 2, RESP_3 = 3 };

/// Asks with two or three buttons; `third` may be null. Closing the box is the last button.
ASK_RESPONSE xvt_dm_post_ask(const char* first, const char* second, const char* third, const char* format, ...)
    XVT_PRINTF(4, 5);

/// The same with two buttons, for what cannot be taken back: none of them is the default, so that Return does nothing
/// before one was gone to.
ASK_RESPONSE xvt_dm_post_confirm(const char* first, const char* second, const char* format, ...) XVT_PRINTF(3, 4);

constexpr std::size_t SZ_DIR = 4096;
constexpr std::size_t SZ_NAME = 256;
constexpr std::size_t SZ_TYPE = 32;

/// A directory, as an absolute path; empty for none.
struct DIRECTORY {
  char path[SZ_DIR];
};

/// A file: where it is, its extension ("tpf", without the dot; a pattern for the file boxes) and its name.
struct FILE_SPEC {
  DIRECTORY dir;
  char type[SZ_TYPE];
  char name[SZ_NAME];
};

enum FL_STATUS : int {
  FL_BAD,     ///< the box could not be shown
  FL_CANCEL,  ///< the user thought better of it
  FL_OK       ///< `file` holds the choice
};

/// Asks for a file that exists. `file->dir` (if not empty) is where the box starts, else where the last one ended, else
/// the start-up directory; `file->type` (if not empty) is the extension shown first, beside "all files".
FL_STATUS xvt_dm_post_file_open(FILE_SPEC* file, const char* title);

/// Asks for a file to write. As above; a name typed without an extension gets `file->type`; overwriting is asked for.
FL_STATUS xvt_dm_post_file_save(FILE_SPEC* file, const char* title);
/// Asks for a place: a folder, by any name in it, free or taken, or by itself, with an empty name then.
FL_STATUS xvt_dm_post_file_place(FILE_SPEC* file, const char* title);

/// Asks for a directory.
FL_STATUS xvt_dm_post_dir_sel(DIRECTORY* directory, const char* title);

// ---- string lists -----------------------------------------------------------------------------------------------

struct xvt_string_list;
struct xvt_string_list_element;
using SLIST = xvt_string_list*;
using SLIST_ELT = xvt_string_list_element*;

SLIST xvt_slist_create();
void xvt_slist_destroy(SLIST list);
/// Adds before `where`, or at the end for null. The text is copied. False when memory is short.
bool xvt_slist_add(SLIST list, SLIST_ELT where, const char* text, long data);
int xvt_slist_count(SLIST list);
SLIST_ELT xvt_slist_get_first(SLIST list);
SLIST_ELT xvt_slist_get_next(SLIST list, SLIST_ELT element);
const char* xvt_slist_get_text(SLIST list, SLIST_ELT element);
long xvt_slist_get_data(SLIST list, SLIST_ELT element);

/// The selected rows of a list, top down; each element's data is its row. The caller destroys it.
SLIST xvt_list_get_selection(WINDOW list);

// ---- directories and files --------------------------------------------------------------------------------------

bool xvt_fsys_get_dir(DIRECTORY* directory);
bool xvt_fsys_set_dir(const DIRECTORY* directory);
/// Remembers the working directory on a stack; xvt_fsys_restore_dir goes back to it.
bool xvt_fsys_save_dir();
bool xvt_fsys_restore_dir();
/// Goes to the directory that the program was started from.
bool xvt_fsys_set_dir_startup();
bool xvt_fsys_get_dir_startup(DIRECTORY* directory);
/// False when the text does not fit or names no directory.
bool xvt_fsys_convert_str_to_dir(const char* path, DIRECTORY* directory);

/// Names of the files in the working directory that match the shell pattern, sorted by byte value (the order of
/// `LC_ALL=C ls`), names beginning with a dot left out. With `directories`, the directories instead (".." first).
/// The caller destroys the list.
SLIST xvt_fsys_list_files(const char* pattern, bool directories);

/// Size in bytes of a file in the working directory (or at a path), -1 when there is none.
long long xvt_fsys_get_file_size(const char* name);

// ---- fonts and scroll bars --------------------------------------------------------------------------------------

enum FONT_STYLE : int { FS_PLAIN = 0, FS_BOLD = 1 };

/// A font by family ("courier" is the monospaced one, anything else the proportional one) and size in points.
XVT_FNTID xvt_font_create(const char* family, int size, FONT_STYLE style);
void xvt_font_destroy(XVT_FNTID font);
/// Pixels; leading is the extra space between lines.
void xvt_font_get_metrics(XVT_FNTID font, int* leading, int* ascent, int* descent);
/// Width in pixels of the first `length` bytes of a text, of all of it for -1.
COORD xvt_font_get_text_width(XVT_FNTID font, const char* text, int length);

void xvt_sbar_set_range(WINDOW window, SCROLL_TYPE bar, COORD low, COORD high);
void xvt_sbar_set_proportion(WINDOW window, SCROLL_TYPE bar, COORD proportion);
void xvt_sbar_set_pos(WINDOW window, SCROLL_TYPE bar, COORD position);

// ---- text fields ------------------------------------------------------------------------------------------------
// A text field holds paragraphs of one line each, never wrapped and never trimmed. It offers the user selection with
// mouse and keys, copying, the wheel and the usual keys; when it scrolls by itself it tells the scroll callback.

using T_PNUM = int;   ///< a paragraph's number, from 0
using T_LNUM = long;  ///< a line's number, from 0
using T_CPOS = int;   ///< a horizontal offset in pixels

/// Told when the field scrolled or changed by itself: its first visible line, its number of lines, the horizontal
/// offset.
using TX_SCROLL_CALLBACK = void (*)(TXEDIT text, T_LNUM originLine, T_LNUM lines, T_CPOS originOffset);

/// The text field with number `id` of a window, or NULL_TXEDIT.
TXEDIT xvt_tx_get(WINDOW window, int id);
/// The window that a text field belongs to, or NULL_WIN.
WINDOW xvt_tx_get_window(TXEDIT text);
void xvt_tx_set_scroll_callback(TXEDIT text, TX_SCROLL_CALLBACK callback);
/// Inserts one paragraph before paragraph number `where`; a number below 0 or not below the count appends.
bool xvt_tx_add_par(TXEDIT text, T_PNUM where, const char* line);
void xvt_tx_clear(TXEDIT text);
T_LNUM xvt_tx_get_num_pars(TXEDIT text);
/// The bytes of one paragraph as they were added, without a newline; "" out of range. Valid until the next change.
const char* xvt_tx_get_par(TXEDIT text, T_LNUM number, std::size_t* length);
/// Scrolls by whole lines (positive: towards the end) or by pixels; clamped; no callback.
void xvt_tx_scroll_vert(TXEDIT text, T_LNUM lines);
void xvt_tx_scroll_hor(TXEDIT text, COORD pixels);
/// First visible line and horizontal offset.
T_LNUM xvt_tx_get_origin(TXEDIT text, T_CPOS* offset);
/// Selects the bytes of one line from `begin` up to, not including, `end`, and brings them into view; no callback.
void xvt_tx_select(TXEDIT text, T_LNUM line, std::size_t begin, std::size_t end);
/// The line where the selection begins, or where the user clicked last, and the bytes of that line which are selected.
T_LNUM xvt_tx_get_selection(TXEDIT text, std::size_t* begin, std::size_t* end);
/// Draws the text in another font from now on; the first visible line stays.
void xvt_tx_set_font(TXEDIT text, XVT_FNTID font);
/// Width in pixels of the widest line since the field was last empty.
COORD xvt_tx_get_text_width(TXEDIT text);
/// Places the field in its window's client area.
void xvt_tx_move(TXEDIT text, const RCT* rectangle);
void xvt_tx_get_view_rect(TXEDIT text, RCT* rectangle);
/// The text field's own part in an event of its window (focus, painting); called at the end of the handler.
void xvt_tx_process_event(WINDOW window, EVENT* event);
