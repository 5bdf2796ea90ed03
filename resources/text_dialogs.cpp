// What belongs to the windows that show text.
#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr DLG_ITEM kFind[] = {
    ui::row(),
    ui::label("~Find:"),
    ui::edit(FIND_TEXT, "text", 36, IF_GROW),
    ui::endOf(),
    ui::check(FIND_CASE, "case", "~Match capital and small letters"),
    ui::hint("", FIND_HINT, "hint"),
    ui::buttons(),
    ui::push(FIND_NEXT, "next", "~Next", IF_DEFAULT, "F3 or Ctrl+G does the same, also in the text"),
    ui::push(FIND_PREVIOUS, "previous", "~Previous", 0, "Shift+F3 or Ctrl+Shift+G does the same, also in the text"),
    ui::glue(),
    ui::push(FIND_CLOSE, "close", "~Close", IF_ESCAPE),
    ui::endOf(),
};

constexpr DLG_RES kDialogs[] = {dialogOf(DLG_FIND, "find", "Find", kFind)};

}  // namespace

constinit const std::span<const DLG_RES> kTextDialogs = kDialogs;
