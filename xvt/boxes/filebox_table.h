/// What the file box and the directory box are made of.
#pragma once

#include <array>

#include "xvt/resource.h"

namespace xvt::filebox {

enum CONTROLS : int {
  FB_FOLDER = 1,
  FB_UP,
  FB_FILES,
  FB_NAME,
  FB_SHOW,
  FB_HINT,
  FB_OK,
  FB_CANCEL,
  FB_NEW,
  FB_PLACES,
  FB_HIDDEN,
  FB_BY_NAME,
  FB_BY_SIZE,
  FB_BY_DATE
};

constexpr std::array kTop = {
    ui::row(),
    ui::label("~Folder:"),
    ui::edit(FB_FOLDER, "folder", 48, IF_GROW | IF_COMPLETE,
             "The folder shown below; type another and press Return to go there. Tab completes"),
    ui::withKeys("Alt+Up BackSpace", ui::push(FB_UP, "up", "~Up", 0, "Go to the folder above (Alt+Up)")),
    ui::endOf(),
    ui::row(),
    ui::label("~Go to:"),
    ui::option(FB_PLACES, "places", 24, IF_GROW, "The home folder, and those where files were chosen in this run"),
    ui::withKeys("Ctrl+H", ui::check(FB_HIDDEN, "hidden", "~Hidden files", 0, "Names that begin with a dot (Ctrl+H)")),
    ui::endOf(),
};

constexpr const char* kHeadHelp = "Sorts the list by this column; once more: the other way round";
constexpr DLG_ITEM kByName = ui::head(FB_BY_NAME, "by-name", "Name", 20, IF_GROW, kHeadHelp);
constexpr DLG_ITEM kByDate = ui::head(FB_BY_DATE, "by-date", "Date", 19, 0, kHeadHelp);
constexpr unsigned kListFlags = IF_GROW | IF_COLUMNS | IF_ENTER;

constexpr std::array kFileList = {
    ui::row(),
    kByName,
    ui::head(FB_BY_SIZE, "by-size", "Size", 14, IF_RIGHT, kHeadHelp),
    kByDate,
    ui::endOf(),
    ui::list(FB_FILES, "files", 64, 14, kListFlags, "Double-click enters a folder or chooses a file"),
    ui::row(),
    ui::label("~Name:"),
    ui::edit(FB_NAME, "name", 48, IF_GROW | IF_COMPLETE, "A name in this folder, or a path. Tab completes"),
    ui::label("~Show:"),
    ui::option(FB_SHOW, "show", 18, 0, "Which files the list shows"),
    ui::endOf(),
};

constexpr std::array kFolderList = {
    ui::row(),
    kByName,
    kByDate,
    ui::endOf(),
    ui::list(FB_FILES, "files", 64, 14, kListFlags, "Double-click enters a folder"),
    ui::row(),
    ui::label("~Name:"),
    ui::edit(FB_NAME, "name", 48, IF_GROW | IF_COMPLETE,
             "A folder in this folder, or a path; empty for the folder shown. Tab completes"),
    ui::endOf(),
};

/// The lower edge; `ok` is the word on the default button.
constexpr std::array<DLG_ITEM, 7> foot(const char* ok) {
  return {
      ui::hint("", FB_HINT, "hint"),
      ui::buttons(),
      ui::push(FB_NEW, "new-folder", "Ne~w folder", 0, "Makes a folder of the name typed above"),
      ui::glue(),
      ui::push(FB_OK, "ok", ok, IF_DEFAULT),
      ui::push(FB_CANCEL, "cancel", "Cancel", IF_CANCEL),
      ui::endOf(),
  };
}

constexpr auto kFileItems = ui::joined(kTop, kFileList, foot("~Open"));
constexpr auto kDirItems = ui::joined(kTop, kFolderList, foot("~Choose"));

constexpr DLG_RES kFileTable = {0, "file-box", "File", kFileItems.data(), kFileItems.size()};
constexpr DLG_RES kDirTable = {0, "dir-box", "Folder", kDirItems.data(), kDirItems.size()};

}  // namespace xvt::filebox
