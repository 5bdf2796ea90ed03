// The menu bar. The companion programs' display names come from the build; without them the items stay, and say so
// when they are chosen.
#include "resources/dialogs.h"
#include "resources/ids.h"

#ifndef QUARLO_COMPANION_1_NAME
#define QUARLO_COMPANION_1_NAME ""
#endif
#ifndef QUARLO_COMPANION_2_NAME
#define QUARLO_COMPANION_2_NAME ""
#endif
#ifndef QUARLO_COMPANION_3_NAME
#define QUARLO_COMPANION_3_NAME ""
#endif
#ifndef QUARLO_COMPANION_4_NAME
#define QUARLO_COMPANION_4_NAME ""
#endif

namespace {

constexpr const char* nameOr(const char* name, const char* otherwise) { return *name != '\0' ? name : otherwise; }

constexpr MENU_ITEM kMainMenu[] = {
    ui::menu("~File"),
    ui::command(CMD_MAIN_WINDOW, "main-window", "~Main window", "Ctrl+M"),
    ui::checkItem(CMD_CONSOLE, "console", "~Console", "Ctrl+L"),
    ui::menuSeparator(),
    ui::command(CMD_QUIT, "quit", "~Quit", "Ctrl+Q"),

    ui::menu("~Edit"),
    ui::command(M_EDIT_CUT, "cut", "Cu~t", "Ctrl+X", false),
    ui::command(M_EDIT_COPY, "copy", "~Copy", "Ctrl+C", false),
    ui::command(M_EDIT_PASTE, "paste", "~Paste", "Ctrl+V", false),
    ui::menuSeparator(),
    ui::command(M_EDIT_SELECT_ALL, "select-all", "Select ~all", "Ctrl+A", false),
    ui::menuSeparator(),
    ui::command(CMD_TEXT_FIND, "find", "~Find…", "Ctrl+F"),
    ui::command(CMD_TEXT_FIND_NEXT, "find-next", "Find ~next", "F3 Ctrl+G"),
    ui::command(CMD_TEXT_FIND_PREVIOUS, "find-previous", "Find pre~vious", "Shift+F3 Ctrl+Shift+G"),
    ui::command(CMD_TEXT_ERROR, "first-error", "First ~error of the last job", "Ctrl+E"),
    ui::command(CMD_TEXT_SAVE, "save-text", "~Save the text as…", "Ctrl+S"),
    ui::menuSeparator(),
    ui::command(CMD_TEXT_LARGER, "larger", "~Larger text", "Ctrl+plus Ctrl+equal Ctrl+Shift+equal Ctrl+KP_Add"),
    ui::command(CMD_TEXT_SMALLER, "smaller", "S~maller text", "Ctrl+minus Ctrl+KP_Subtract"),
    ui::command(CMD_TEXT_USUAL_SIZE, "usual-size", "~Usual size", "Ctrl+0"),
    ui::menuSeparator(),
    ui::command(CMD_TEXT_CLOSE, "close-text", "~Close the text's window", "Ctrl+W"),

    ui::menu("~Tape"),
    ui::command(CMD_TAPE_CONTROL, "tape-control", "Tape ~control…", "Ctrl+T"),
    ui::menuSeparator(),
    ui::command(CMD_REWIND, "rewind", "~Rewind", nullptr, false),
    ui::command(CMD_UNLOAD, "unload", "~Unload", nullptr, false),
    ui::menuSeparator(),
    ui::command(CMD_SKIP_RECORDS, "skip-records", "Skip ~blocks…", nullptr, false),
    ui::command(CMD_SKIP_FILES, "skip-files", "Skip ~files…", nullptr, false),
    ui::command(CMD_SKIP_EOD, "skip-to-end-of-data", "Skip to ~end of data", nullptr, false),
    ui::menuSeparator(),
    ui::command(CMD_WRITE_EOF, "write-filemark", "~Write filemark", nullptr, false),
    ui::command(CMD_COUNT_FILEMARKS, "count-filemarks", "Count file~marks", nullptr, false),

    ui::menu("~Programs"),
    ui::command(CMD_COMPANION_1, "companion-1", nameOr(QUARLO_COMPANION_1_NAME, "Companion program ~1"), nullptr,
                false),
    ui::command(CMD_COMPANION_2, "companion-2", nameOr(QUARLO_COMPANION_2_NAME, "Companion program ~2"), nullptr,
                false),
    ui::command(CMD_COMPANION_3, "companion-3", nameOr(QUARLO_COMPANION_3_NAME, "Companion program ~3"), nullptr,
                false),
    ui::command(CMD_COMPANION_4, "companion-4", nameOr(QUARLO_COMPANION_4_NAME, "Companion program ~4"), nullptr,
                false),

    ui::menu("~Help"),
    ui::command(M_HELP, "help", "~Help on this window or line", "F1"),
    ui::command(CMD_HELP_BACK, "help-back", "~Back to the last page", "Alt+Left", false),
    ui::command(CMD_HELP_CONTENTS, "help-contents", "~Contents"),
    ui::command(CMD_HELP_SHORTCUTS, "help-shortcuts", "~Keys and shortcuts"),
    ui::command(CMD_HELP_MESSAGES, "help-messages", "~Messages explained"),
    ui::menuSeparator(),
    ui::command(CMD_ABOUT, "about", "~About Quarlo"),
};

constexpr MENU_RES kMenus[] = {{MENU_BAR, kMainMenu, sizeof kMainMenu / sizeof kMainMenu[0]}};

}  // namespace

constinit const std::span<const MENU_RES> kQuarloMenus = kMenus;
