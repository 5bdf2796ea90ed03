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
    ui::command(CMD_ABOUT, "about", "~About Quarlo"),
};

constexpr MENU_RES kMenus[] = {{MENU_BAR, kMainMenu, sizeof kMainMenu / sizeof kMainMenu[0]}};

}  // namespace

constinit const std::span<const MENU_RES> kQuarloMenus = kMenus;
