/// The file open, file save and directory boxes.
///
/// Names are kept as the bytes that stand on the disk; what is shown of them is made valid. A row or a name that the
/// user took over unchanged stands for the true bytes. The process stays in its directory.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "xvt/base/fsys.h"
#include "xvt/base/report.h"
#include "xvt/base/utf8.h"
#include "xvt/boxes/texts.h"
#include "xvt/resource.h"
#include "xvt/xvt.h"

namespace {

enum FILE_BOX_CONTROLS : int { FB_FOLDER = 1, FB_UP, FB_FILES, FB_NAME, FB_SHOW, FB_HINT, FB_OK, FB_CANCEL, FB_NEW };

constexpr std::array kFileItems = {
    ui::row(),
    ui::label("~Folder:"),
    ui::edit(FB_FOLDER, "folder", 48, IF_GROW, "The folder shown below; type another and press Return to go there"),
    ui::push(FB_UP, "up", "~Up", 0, "Go to the folder above"),
    ui::endOf(),
    ui::list(FB_FILES, "files", 64, 14, IF_GROW, "Double-click enters a folder or chooses a file"),
    ui::row(),
    ui::label("~Name:"),
    ui::edit(FB_NAME, "name", 48, IF_GROW, "A name in this folder, or a path"),
    ui::label("~Show:"),
    ui::option(FB_SHOW, "show", 18, 0, "Which files the list shows"),
    ui::endOf(),
    ui::hint("", FB_HINT, "hint"),
    ui::buttons(),
    ui::push(FB_NEW, "new-folder", "Ne~w folder", 0, "Makes a folder of the name typed above"),
    ui::glue(),
    ui::push(FB_OK, "ok", "~Open", IF_DEFAULT),
    ui::push(FB_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

constexpr std::array kDirItems = {
    ui::row(),
    ui::label("~Folder:"),
    ui::edit(FB_FOLDER, "folder", 48, IF_GROW, "The folder shown below; type another and press Return to go there"),
    ui::push(FB_UP, "up", "~Up", 0, "Go to the folder above"),
    ui::endOf(),
    ui::list(FB_FILES, "files", 64, 14, IF_GROW, "Double-click enters a folder"),
    ui::row(),
    ui::label("~Name:"),
    ui::edit(FB_NAME, "name", 48, IF_GROW, "A folder in this folder, or a path; empty for the folder shown"),
    ui::endOf(),
    ui::hint("", FB_HINT, "hint"),
    ui::buttons(),
    ui::push(FB_NEW, "new-folder", "Ne~w folder", 0, "Makes a folder of the name typed above"),
    ui::glue(),
    ui::push(FB_OK, "ok", "~Choose", IF_DEFAULT),
    ui::push(FB_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_RES kFileTable = {0, "file-box", "File", kFileItems.data(), kFileItems.size()};
constexpr DLG_RES kDirTable = {0, "dir-box", "Folder", kDirItems.data(), kDirItems.size()};

constexpr const char* kPlaceHint =
    "Any name will do, also one that is there already; without a name it is the folder shown.";

enum class Purpose { open, save, place, directory };

/// Where the last box of this run was left.
std::string& lastDirectory() {
  static std::string directory;
  return directory;
}

std::string boundedText(const char* text, std::size_t size) { return {text, strnlen(text, size)}; }

/// Directory and last name of a path that has a slash in it.
std::pair<std::string, std::string> split(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

bool isPattern(const std::string& type) { return type.find_first_of("*?[") != std::string::npos; }

/// A text shown in place of bytes: unchanged, it stands for them.
class ShownBytes {
 public:
  void set(WINDOW control, const std::string& bytes) {
    bytes_ = bytes;
    shown_ = xvt::validUtf8(bytes);
    xvt_vobj_set_title(control, shown_.c_str());
  }
  [[nodiscard]] bool isChanged(WINDOW control) const { return xvt::titleOf(control) != shown_; }
  [[nodiscard]] std::string get(WINDOW control) const {
    const std::string now = xvt::titleOf(control);
    return now == shown_ ? bytes_ : now;
  }

 private:
  std::string bytes_, shown_;
};

/// One box while it is open.
class FileBox {
 public:
  FileBox(Purpose purpose, std::string type, std::string proposed, std::string title)
      : purpose_(purpose), type_(std::move(type)), proposed_(std::move(proposed)), title_(std::move(title)) {}

  /// Shows the box and waits until it is closed.
  FL_STATUS run(const std::string& startHere);
  [[nodiscard]] const std::string& chosen() const { return chosen_; }

 private:
  static long handler(WINDOW window, EVENT* event);
  void onEvent(EVENT* event);
  void onControl(int id, CTL_ACTION what);
  void create();
  void hint(const std::string& text) { xvt_vobj_set_title(control(FB_HINT), xvt::validUtf8(text).c_str()); }
  [[nodiscard]] WINDOW control(int id) const { return xvt_win_get_ctl(window_, id); }
  [[nodiscard]] std::string pattern() const;
  void addTypes();
  void fill();
  bool goTo(const std::string& path);
  bool goToTypedFolder();
  void goUp();
  void makeFolder();
  void takeRow();
  void openRow();
  void accept();
  void acceptPath(const std::string& path);
  void acceptDirectory(const std::string& path);
  std::string refusalToOpen(const std::string& path) const;
  std::string refusalToSave(const std::string& path) const;
  bool mayOverwrite(const std::string& path) const;
  void finish(const std::string& path);

  Purpose purpose_;
  std::string type_, proposed_, title_;
  WINDOW window_ = NULL_WIN;
  std::string directory_;
  std::vector<xvt::DirectoryEntry> rows_;  ///< as in the list; the first is the way up
  ShownBytes folderField_, nameField_;
  bool folderLeft_ = false;  ///< the Folder field was just followed; the button press that made it lose the keyboard
                             ///< (Return presses the default button) is not meant for the file
  std::string chosen_;
};

FL_STATUS FileBox::run(const std::string& startHere) {
  DIRECTORY startup{};
  xvt_fsys_get_dir_startup(&startup);
  for (const std::string& candidate : {startHere, lastDirectory(), std::string(startup.path), std::string("/")}) {
    if (candidate.empty() || !xvt::isDirectory(candidate)) continue;
    directory_ = xvt::truePath(candidate);
    break;
  }
  const DLG_RES* table = purpose_ == Purpose::directory ? &kDirTable : &kFileTable;
  if (xvt_dlg_create_table(WD_MODAL, table, &FileBox::handler, this) == NULL_WIN) return FL_BAD;
  return chosen_.empty() ? FL_CANCEL : FL_OK;
}

long FileBox::handler(WINDOW window, EVENT* event) {
  auto* box = static_cast<FileBox*>(xvt_vobj_get_data(window));
  box->window_ = window;
  box->onEvent(event);
  return 0;
}

void FileBox::onEvent(EVENT* event) {
  if (event->type == E_CREATE) create();
  if (event->type == E_CONTROL) onControl(event->ctl.id, event->ctl.what);
  if (event->type == E_CLOSE) xvt_vobj_destroy(window_);
}

void FileBox::onControl(int id, CTL_ACTION what) {
  if (id == FB_FOLDER && what == CTL_FOCUS_LOSS) folderLeft_ = goToTypedFolder();
  if (what == CTL_FOCUS_LOSS) return;
  const bool followsFolder = std::exchange(folderLeft_, false);
  if (id == FB_UP && what == CTL_PRESS) goUp();
  if (id == FB_NEW && what == CTL_PRESS) makeFolder();
  if (id == FB_FILES && what == CTL_SELECT) takeRow();
  if (id == FB_FILES && what == CTL_DOUBLE) openRow();
  if (id == FB_SHOW && what == CTL_SELECT) fill();
  if (id == FB_CANCEL && what == CTL_PRESS) xvt_vobj_destroy(window_);
  if (id == FB_OK && what == CTL_PRESS && !followsFolder && !goToTypedFolder()) accept();
}

void FileBox::create() {
  if (!title_.empty()) xvt_vobj_set_title(window_, xvt::validUtf8(title_).c_str());
  if (purpose_ == Purpose::save) xvt_vobj_set_title(control(FB_OK), "Save");
  if (purpose_ == Purpose::open) xvt_vobj_set_visible(control(FB_NEW), false);
  if (purpose_ == Purpose::place) xvt_vobj_set_title(control(FB_OK), "Choose");
  if (purpose_ != Purpose::directory) addTypes();
  nameField_.set(control(FB_NAME), purpose_ == Purpose::save ? proposed_ : "");
  folderField_.set(control(FB_FOLDER), directory_);
  fill();
  xvt_vobj_set_focus(control(FB_NAME));
  xvt_ctl_select_text(control(FB_NAME));
}

void FileBox::addTypes() {
  const WINDOW show = control(FB_SHOW);
  const std::string shown = xvt::validUtf8(type_);
  if (isPattern(type_) && type_ != "*") xvt_list_add(show, -1, ("Files " + shown).c_str());
  if (!isPattern(type_) && !type_.empty()) xvt_list_add(show, -1, (shown + " files (*." + shown + ")").c_str());
  xvt_list_add(show, -1, "All files");
  xvt_list_set_selected(show, 0, true);
}

/// The shell pattern of the choice beside "Show"; "All files" is the last one.
std::string FileBox::pattern() const {
  const WINDOW show = control(FB_SHOW);
  if (show == NULL_WIN || xvt_list_get_selected(show) == xvt_list_count(show) - 1) return "";
  return isPattern(type_) ? type_ : "*." + type_;
}

/// Lists the directory anew: the way up, the directories, the files.
void FileBox::fill() {
  std::vector<xvt::DirectoryEntry> entries;
  const bool read = xvt::readDirectory(directory_, &entries);
  hint(read ? (purpose_ == Purpose::place ? kPlaceHint : "")
            : std::string("This folder cannot be read: ") + std::strerror(errno));
  const std::string wanted = pattern();
  std::erase_if(
      entries,
      [&](const xvt::DirectoryEntry& entry) {
        return !entry.isDirectory && (purpose_ == Purpose::directory || !xvt::matchesPattern(entry.name, wanted));
      });
  std::stable_partition(entries.begin(), entries.end(), [](const auto& entry) { return entry.isDirectory; });
  rows_ = {{"..", true}};
  rows_.insert(rows_.end(), entries.begin(), entries.end());
  const WINDOW files = control(FB_FILES);
  xvt_list_clear(files);
  for (const xvt::DirectoryEntry& row : rows_)
    xvt_list_add(files, -1, (xvt::validUtf8(row.name) + (row.isDirectory ? "/" : "")).c_str());
}

/// Shows another directory. A directory that cannot be read is not entered; the hint says why.
bool FileBox::goTo(const std::string& path) {
  std::vector<xvt::DirectoryEntry> entries;
  const std::string there = xvt::truePath(path);
  if (there.empty() || !xvt::readDirectory(there, &entries)) {
    hint("Cannot enter " + split("/" + path).second + ": " + std::strerror(errno));
    return false;
  }
  directory_ = there;
  folderField_.set(control(FB_FOLDER), directory_);
  nameField_.set(control(FB_NAME), purpose_ == Purpose::save ? proposed_ : "");
  fill();
  return true;
}

/// Goes where the Folder field points, if it was changed. True when there was something to follow, also in vain.
bool FileBox::goToTypedFolder() {
  const WINDOW folder = control(FB_FOLDER);
  if (!folderField_.isChanged(folder)) return false;
  const std::string typed = xvt::titleOf(folder);
  if (typed.empty())
    folderField_.set(folder, directory_);
  else
    goTo(xvt::joinPath(directory_, typed));
  return true;
}

void FileBox::goUp() { goTo(xvt::joinPath(directory_, "..")); }

/// Makes a folder of the typed name and goes there. The next thing to type is a name, whatever came of it.
void FileBox::makeFolder() {
  xvt_vobj_set_focus(control(FB_NAME));
  const std::string name = nameField_.get(control(FB_NAME));
  if (name.empty()) return hint("Type the new folder's name.");
  const std::string path = xvt::joinPath(directory_, name);
  if (mkdir(path.c_str(), 0777) != 0) return hint("Cannot make " + name + ": " + std::strerror(errno));
  goTo(path);
}

/// A selected file becomes the name, a selected directory too where names are not to be lost by it.
void FileBox::takeRow() {
  const int row = xvt_list_get_selected(control(FB_FILES));
  if (row < 0 || static_cast<std::size_t>(row) >= rows_.size()) return;
  const xvt::DirectoryEntry& entry = rows_[static_cast<std::size_t>(row)];
  if (entry.isDirectory && purpose_ == Purpose::save) return;
  nameField_.set(control(FB_NAME), entry.name + (entry.isDirectory ? "/" : ""));
  hint("");
}

void FileBox::openRow() {
  const int row = xvt_list_get_selected(control(FB_FILES));
  if (row < 0 || static_cast<std::size_t>(row) >= rows_.size()) return;
  const xvt::DirectoryEntry entry = rows_[static_cast<std::size_t>(row)];
  if (entry.isDirectory)
    goTo(xvt::joinPath(directory_, entry.name));
  else
    accept();
}

void FileBox::accept() {
  const std::string name = nameField_.get(control(FB_NAME));
  if (purpose_ == Purpose::directory)
    acceptDirectory(name.empty() ? directory_ : xvt::joinPath(directory_, name));
  else if (name.empty() && purpose_ == Purpose::place)
    finish(xvt::joinPath(directory_, ""));
  else if (name.empty())
    hint("Type a name, or choose a file in the list.");
  else
    acceptPath(xvt::joinPath(directory_, name));
}

void FileBox::acceptDirectory(const std::string& path) {
  if (!xvt::isDirectory(path)) return hint("There is no such folder.");
  const std::string there = xvt::truePath(path);
  if (there.size() >= SZ_DIR) return hint("The path of this folder is too long.");
  finish(there);
}

/// Takes a path if it names what the box is for; a directory is entered instead.
void FileBox::acceptPath(const std::string& typed) {
  if (xvt::isDirectory(typed)) {
    goTo(typed);
    return;
  }
  auto [directory, name] = split(typed);
  if (purpose_ == Purpose::save && !type_.empty() && !isPattern(type_) && name.find('.') == std::string::npos)
    name += "." + type_;
  const std::string folder = xvt::truePath(directory);
  if (folder.empty()) return hint("There is no folder " + directory + ".");
  const std::string path = xvt::joinPath(folder, name);
  if (name.size() >= SZ_NAME || folder.size() >= SZ_DIR) return hint("This name is too long.");
  const std::string refusal = purpose_ == Purpose::open   ? refusalToOpen(path)
                              : purpose_ == Purpose::save ? refusalToSave(path)
                                                          : "";
  if (!refusal.empty()) return hint(refusal);
  if (purpose_ == Purpose::save && !mayOverwrite(path)) return;
  if (xvt_vobj_is_valid(window_)) finish(path);
}

std::string FileBox::refusalToOpen(const std::string& path) const {
  struct stat facts {};
  if (stat(path.c_str(), &facts) != 0)
    return errno == ENOENT ? "There is no file of this name."
                           : std::string("Cannot open this: ") + std::strerror(errno);
  if (!S_ISREG(facts.st_mode)) return "This is not an ordinary file.";
  if (access(path.c_str(), R_OK) != 0) return std::string("This file cannot be read: ") + std::strerror(errno);
  return "";
}

std::string FileBox::refusalToSave(const std::string& path) const {
  struct stat facts {};
  if (stat(path.c_str(), &facts) != 0) {
    if (errno != ENOENT) return std::string("Cannot save as this: ") + std::strerror(errno);
    if (access(split(path).first.c_str(), W_OK | X_OK) == 0) return "";
    return std::string("Files cannot be made in this folder: ") + std::strerror(errno);
  }
  if (S_ISDIR(facts.st_mode)) return "A folder has this name.";
  if (!S_ISREG(facts.st_mode)) return "This is not an ordinary file.";
  if (access(path.c_str(), W_OK) != 0) return std::string("This file cannot be written: ") + std::strerror(errno);
  return "";
}

bool FileBox::mayOverwrite(const std::string& path) const {
  if (access(path.c_str(), F_OK) != 0) return true;
  return xvt_dm_post_confirm("Overwrite", "Cancel", "Overwrite this file?\n%s", path.c_str()) == RESP_DEFAULT;
}

void FileBox::finish(const std::string& path) {
  chosen_ = path;
  lastDirectory() = purpose_ == Purpose::directory ? path : split(path).first;
  xvt_vobj_destroy(window_);
}

void copyInto(char* field, const std::string& text) { std::memcpy(field, text.c_str(), text.size() + 1); }

FL_STATUS postFileBox(Purpose purpose, FILE_SPEC* file, const char* title, const char* function) {
  if (file == nullptr) {
    xvt::report(function, "no file");
    return FL_BAD;
  }
  FileBox box(purpose, boundedText(file->type, SZ_TYPE), boundedText(file->name, SZ_NAME),
              title != nullptr ? title : "");
  const FL_STATUS status = box.run(boundedText(file->dir.path, SZ_DIR));
  if (status != FL_OK) return status;
  const auto [directory, name] = split(box.chosen());
  copyInto(file->dir.path, directory);
  copyInto(file->name, name);
  return FL_OK;
}

}  // namespace

FL_STATUS xvt_dm_post_file_open(FILE_SPEC* file, const char* title) {
  return postFileBox(Purpose::open, file, title, "xvt_dm_post_file_open");
}

FL_STATUS xvt_dm_post_file_save(FILE_SPEC* file, const char* title) {
  return postFileBox(Purpose::save, file, title, "xvt_dm_post_file_save");
}

FL_STATUS xvt_dm_post_file_place(FILE_SPEC* file, const char* title) {
  return postFileBox(Purpose::place, file, title, "xvt_dm_post_file_place");
}

FL_STATUS xvt_dm_post_dir_sel(DIRECTORY* directory, const char* title) {
  if (directory == nullptr) {
    xvt::report("xvt_dm_post_dir_sel", "no directory");
    return FL_BAD;
  }
  FileBox box(Purpose::directory, "", "", title != nullptr ? title : "");
  const FL_STATUS status = box.run(boundedText(directory->path, SZ_DIR));
  if (status == FL_OK) copyInto(directory->path, box.chosen());
  return status;
}
