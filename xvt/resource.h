/// What a menu bar and a dialog are made of: plain tables, written with the small builders below.
///
/// No table holds a pixel: a dialog is a stack of rows, grids and cards whose cells take the size that their contents,
/// the font and the window give them, so it grows with both. Sizes are characters and text lines.
///
/// A label's mnemonic is the character behind a "~". The order of the items is the order of the Tab key.
/// `name` is what a script (docs/scripts.md) calls the item; it is unique in its table.
#pragma once

#include <array>
#include <cstddef>

#include "xvt/xvt.h"

enum ITEM_KIND : int {
  // containers: everything up to the matching endOf() belongs to them
  IK_GRID,     ///< `columns` columns, filled row by row; cells of a column are equally wide
  IK_ROW,      ///< side by side
  IK_COLUMN,   ///< on top of each other
  IK_CARD,     ///< a framed group with its label as heading above; contents on top of each other
  IK_BUTTONS,  ///< the row of buttons at the foot of a dialog, equally wide; IK_GLUE pushes what follows to the right
  IK_STACK,    ///< several items in one place, of which the program shows one at a time
  IK_END,      ///< ends a container
  // items
  IK_LABEL,    ///< fixed text; in a grid the name of the field beside it
  IK_HEADING,  ///< fixed text, bold and larger
  IK_VALUE,    ///< text that the program writes, at least `columns` characters wide
  IK_HINT,     ///< a quieter line of explanation
  IK_STATUS,   ///< the status line along the dialog's lower edge
  IK_EDIT,     ///< an edit field, `columns` characters wide
  IK_CHECK,    ///< a check box
  IK_RADIO,    ///< a radio button
  IK_PUSH,     ///< a push button
  IK_HEAD,     ///< a push button that heads a column of the list behind it, which is as wide; one row of them
  IK_LIST,     ///< a list of which one row can be selected; `columns` by `lines`
  IK_MULTI,    ///< a list of which several rows can be selected
  IK_OPTION,   ///< an option list (a pop-up of choices)
  IK_METER,    ///< a bar from 0 to 100: with IF_BOLD one to look at, else a fine line
  IK_SEPARATOR,
  IK_GLUE  ///< room that grows
};

enum ITEM_FLAGS : unsigned {
  IF_NONE = 0,
  IF_DEFAULT = 1,    ///< the button that Return presses, drawn as the primary one
  IF_CANCEL = 2,     ///< the button that Escape presses in a modal dialog
  IF_HIDDEN = 4,     ///< not shown at first (its room is kept)
  IF_DISABLED = 8,   ///< not enabled at first
  IF_GROW = 16,      ///< takes the room that is left in its row; a list also takes the height that is left
  IF_RIGHT = 32,     ///< text set to the right
  IF_READONLY = 64,  ///< an edit field that cannot be typed into
  IF_BOLD = 128,
  IF_MONO = 256,       ///< monospaced (lists with columns)
  IF_ENTER = 512,      ///< a button behind an edit field: Return in that field presses it, and not the default button;
                       ///< a list: Return means its selected row, as a double click does
  IF_COLUMNS = 1024,   ///< a list with cells in its rows, parted by tabs, one below each of the heads before it; made
                       ///< for a great many rows. Scripts know a row by its first cell
  IF_COMPLETE = 2048,  ///< an edit field whose text the program completes when the Tab key asks for it
  IF_ESCAPE = 4096,    ///< the button that Escape presses in any dialog: one that starts nothing and loses nothing
  IF_FILE = 8192,      ///< a button that a file dropped on the dialog presses (xvt/drop.h)
  IF_FILES = 16384     ///< the same of any number of files, which press it one after another
};

/// One line of a dialog's table.
struct DLG_ITEM {
  ITEM_KIND kind;
  int id;             ///< control number; 0 for what the program never touches
  const char* name;   ///< for scripts; null for what scripts never touch
  const char* label;  ///< text, mnemonic behind "~"; null for none
  int columns;        ///< width in characters, or a grid's number of columns; 0 for natural
  int lines;          ///< height in text lines; 0 for natural
  int span;           ///< grid cells taken side by side
  unsigned flags;     ///< ITEM_FLAGS
  const char* help;   ///< one line shown while the pointer rests on the item; null for none
  /// Keys that press the item wherever the keyboard is in its dialog, parted by blanks: "Alt+Up BackSpace". Those
  /// without Ctrl or Alt stay with an edit field.
  const char* keys = nullptr;
};

/// A dialog. A label with the id of a field is not a control of its own but belongs to the field, as does a label
/// without id that stands right before the field, or before a radio button, and has a mnemonic or a colon: they are
/// grey while the field is disabled.
///
/// The tag: format modules from before they tell what headers they were built with have items of another size. Their
/// calls have names without it, which nobody has, so that the loader refuses them.
struct [[gnu::abi_tag("stamped")]] DLG_RES {
  int id;             ///< resource number
  const char* name;   ///< for scripts, unique among all dialogs
  const char* title;  ///< window title
  const DLG_ITEM* items;
  std::size_t count;
};

constexpr bool isField(ITEM_KIND kind) { return kind == IK_EDIT || (kind >= IK_LIST && kind <= IK_OPTION); }

constexpr bool belongsToField(const DLG_RES& table, const DLG_ITEM& label) {
  if (label.kind != IK_LABEL || label.id == 0) return false;
  for (std::size_t at = 0; at < table.count; ++at)
    if (table.items[at].id == label.id && isField(table.items[at].kind)) return true;
  return false;
}

enum MENU_KIND : int { MK_MENU, MK_COMMAND, MK_CHECK, MK_SEPARATOR };

/// One line of a menu bar's table: a menu, followed by its items.
struct MENU_ITEM {
  MENU_KIND kind;
  int command;
  const char* name;
  const char* label;
  const char* shortcut;  ///< such as "Ctrl+Q"; null for none
  bool enabled;
  const char* help;
};

struct MENU_RES {
  int id;
  const MENU_ITEM* items;
  std::size_t count;
};

/// Everything that the program's windows are made from.
struct RESOURCES {
  const MENU_RES* menus;
  std::size_t menu_count;
  const DLG_RES* dialogs;
  std::size_t dialog_count;
  /// The program's icon: its colour as 0xAARRGGBB at a place in a square of side 1, from the upper left; null for none.
  unsigned (*icon)(double across, double down) = nullptr;
};

/// Hands the tables to the toolkit. Called once, before xvt_app_create; the tables live as long as the program.
void xvt_res_use(const RESOURCES* resources);

/// As xvt_dlg_create_res, for a table that the toolkit itself or a caller holds. The table must outlive the dialog.
WINDOW xvt_dlg_create_table(WIN_TYPE type, const DLG_RES* table, EVENT_HANDLER handler, void* data);

/// Builders, so that a table reads as what it is.
namespace ui {

constexpr DLG_ITEM grid(int columns, unsigned flags = 0) {
  return {IK_GRID, 0, nullptr, nullptr, columns, 0, 1, flags, nullptr};
}
constexpr DLG_ITEM row(unsigned flags = 0) { return {IK_ROW, 0, nullptr, nullptr, 0, 0, 1, flags, nullptr}; }
constexpr DLG_ITEM column(unsigned flags = 0) { return {IK_COLUMN, 0, nullptr, nullptr, 0, 0, 1, flags, nullptr}; }
constexpr DLG_ITEM card(const char* label, unsigned flags = 0) {
  return {IK_CARD, 0, nullptr, label, 0, 0, 1, flags, nullptr};
}
constexpr DLG_ITEM buttons() { return {IK_BUTTONS, 0, nullptr, nullptr, 0, 0, 1, 0, nullptr}; }
constexpr DLG_ITEM stack(unsigned flags = 0) { return {IK_STACK, 0, nullptr, nullptr, 0, 0, 1, flags, nullptr}; }
constexpr DLG_ITEM endOf() { return {IK_END, 0, nullptr, nullptr, 0, 0, 1, 0, nullptr}; }

constexpr DLG_ITEM label(const char* text, int id = 0, const char* name = nullptr, unsigned flags = 0) {
  return {IK_LABEL, id, name, text, 0, 0, 1, flags, nullptr};
}
constexpr DLG_ITEM heading(const char* text, int id = 0, const char* name = nullptr) {
  return {IK_HEADING, id, name, text, 0, 0, 1, 0, nullptr};
}
constexpr DLG_ITEM value(int id, const char* name, int columns, const char* text = "", unsigned flags = 0) {
  return {IK_VALUE, id, name, text, columns, 0, 1, flags, nullptr};
}
constexpr DLG_ITEM hint(const char* text, int id = 0, const char* name = nullptr, unsigned flags = 0) {
  return {IK_HINT, id, name, text, 0, 0, 1, flags, nullptr};
}
constexpr DLG_ITEM status(int id, const char* name, const char* text = "") {
  return {IK_STATUS, id, name, text, 0, 0, 1, 0, nullptr};
}
constexpr DLG_ITEM edit(int id, const char* name, int columns, unsigned flags = 0, const char* help = nullptr) {
  return {IK_EDIT, id, name, nullptr, columns, 0, 1, flags, help};
}
constexpr DLG_ITEM check(int id, const char* name, const char* text, unsigned flags = 0, const char* help = nullptr) {
  return {IK_CHECK, id, name, text, 0, 0, 1, flags, help};
}
constexpr DLG_ITEM radio(int id, const char* name, const char* text, unsigned flags = 0, const char* help = nullptr) {
  return {IK_RADIO, id, name, text, 0, 0, 1, flags, help};
}
constexpr DLG_ITEM push(int id, const char* name, const char* text, unsigned flags = 0, const char* help = nullptr) {
  return {IK_PUSH, id, name, text, 0, 0, 1, flags, help};
}
constexpr DLG_ITEM head(int id, const char* name, const char* text, int columns, unsigned flags = 0,
                        const char* help = nullptr) {
  return {IK_HEAD, id, name, text, columns, 0, 1, flags, help};
}
constexpr DLG_ITEM list(int id, const char* name, int columns, int lines, unsigned flags = 0,
                        const char* help = nullptr) {
  return {IK_LIST, id, name, nullptr, columns, lines, 1, flags, help};
}
constexpr DLG_ITEM multi(int id, const char* name, int columns, int lines, unsigned flags = 0,
                         const char* help = nullptr) {
  return {IK_MULTI, id, name, nullptr, columns, lines, 1, flags, help};
}
constexpr DLG_ITEM option(int id, const char* name, int columns, unsigned flags = 0, const char* help = nullptr) {
  return {IK_OPTION, id, name, nullptr, columns, 0, 1, flags, help};
}
constexpr DLG_ITEM meter(int id, const char* name, int columns, unsigned flags = 0) {
  return {IK_METER, id, name, nullptr, columns, 0, 1, flags, nullptr};
}
constexpr DLG_ITEM separator() { return {IK_SEPARATOR, 0, nullptr, nullptr, 0, 0, 1, 0, nullptr}; }
constexpr DLG_ITEM glue() { return {IK_GLUE, 0, nullptr, nullptr, 0, 0, 1, 0, nullptr}; }

/// The same item over several columns of its grid.
constexpr DLG_ITEM span(int cells, DLG_ITEM item) {
  item.span = cells;
  return item;
}

/// The same item, pressed by keys as well.
constexpr DLG_ITEM withKeys(const char* keys, DLG_ITEM item) {
  item.keys = keys;
  return item;
}

constexpr MENU_ITEM menu(const char* text) { return {MK_MENU, 0, nullptr, text, nullptr, true, nullptr}; }
constexpr MENU_ITEM command(int number, const char* name, const char* text, const char* shortcut = nullptr,
                            bool enabled = true) {
  return {MK_COMMAND, number, name, text, shortcut, enabled, nullptr};
}
constexpr MENU_ITEM checkItem(int number, const char* name, const char* text, const char* shortcut = nullptr) {
  return {MK_CHECK, number, name, text, shortcut, true, nullptr};
}
constexpr MENU_ITEM menuSeparator() { return {MK_SEPARATOR, 0, nullptr, nullptr, nullptr, true, nullptr}; }

/// The items of several parts, one behind another.
template <std::size_t... Sizes>
constexpr auto joined(const std::array<DLG_ITEM, Sizes>&... parts) {
  std::array<DLG_ITEM, (Sizes + ...)> all{};
  std::size_t at = 0;
  const auto append = [&](const auto& part) {
    for (const DLG_ITEM& item : part) all[at++] = item;
  };
  (append(parts), ...);
  return all;
}

}  // namespace ui
