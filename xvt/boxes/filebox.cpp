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
#include "xvt/base/naturalorder.h"
#include "xvt/base/report.h"
#include "xvt/base/utf8.h"
#include "xvt/boxes/filebox_table.h"
#include "xvt/boxes/filechoice.h"
#include "xvt/boxes/listing.h"
#include "xvt/boxes/places.h"
#include "xvt/boxes/texts.h"
#include "xvt/xvt.h"

namespace {

using namespace xvt;
using namespace xvt::filebox;

constexpr const char* kPlaceHint =
    "Any name will do, also one that is there already; without a name it is the folder shown.";
constexpr std::array<std::pair<int, SortBy>, 3> kHeads = {
    {{FB_BY_NAME, SortBy::name}, {FB_BY_SIZE, SortBy::size}, {FB_BY_DATE, SortBy::date}}};

/// What the user has chosen of the list's looks, kept for the run.
struct Looks {
  ListOrder order;
  bool hidden = false;
};

Looks& looks() {
  static Looks chosen;
  return chosen;
}

std::string boundedText(const char* text, std::size_t size) { return {text, strnlen(text, size)}; }

/// Endings in capitals come from other systems.
bool suits(const std::string& name, const std::string& pattern) {
  return matchesPattern(folded(name), folded(pattern));
}

bool isPattern(const std::string& type) { return type.find_first_of("*?[") != std::string::npos; }

/// The name of a folder in a sentence.
std::string lastName(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  const std::string name = splitPath("/" + path).second;
  return shownName(name.empty() ? path : name);
}

/// A text shown in place of bytes: unchanged, it stands for them.
class ShownBytes {
 public:
  void set(WINDOW control, const std::string& bytes) {
    bytes_ = bytes;
    shown_ = shownName(bytes);
    xvt_vobj_set_title(control, shown_.c_str());
  }
  [[nodiscard]] bool isChanged(WINDOW control) const { return titleOf(control) != shown_; }
  [[nodiscard]] std::string get(WINDOW control) const {
    const std::string now = titleOf(control);
    return now == shown_ ? bytes_ : now;
  }
  /// The path that the text means, seen from a folder: what was typed is taken as such only if there is nothing that
  /// has the very name.
  [[nodiscard]] std::string path(WINDOW control, const std::string& directory) const {
    const std::string text = get(control);
    std::string literal = joinPath(directory, text);
    struct stat facts {};
    if (!isChanged(control) || lstat(literal.c_str(), &facts) == 0) return literal;
    return joinPath(directory, pathFrom(text));
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
  void onPress(int id);
  void create();
  void hint(const std::string& text) { xvt_vobj_set_title(control(FB_HINT), shownName(text).c_str()); }
  [[nodiscard]] WINDOW control(int id) const { return xvt_win_get_ctl(window_, id); }
  [[nodiscard]] std::string pattern() const;
  [[nodiscard]] bool isSeen(const DirectoryEntry& entry, const std::string& pattern) const;
  void addTypes();
  void read();
  void show();
  void showHeads();
  void showPlace();
  void selectRow(const std::string& name);
  [[nodiscard]] const DirectoryEntry* selectedRow() const;
  bool goTo(const std::string& path);
  bool goToTypedFolder();
  void goUp();
  void goToPlace();
  void startName();
  void makeFolder();
  void complete(int id);
  [[nodiscard]] Entries candidates(int id, const std::string& folder) const;
  void takeRow();
  void openRow();
  void accept();
  void acceptPath(const std::string& path);
  void acceptDirectory(const std::string& path);
  bool mayOverwrite(const std::string& path) const;
  void finish(const std::string& path);

  Purpose purpose_;
  std::string type_, proposed_, title_;
  WINDOW window_ = NULL_WIN;
  std::string directory_;
  Entries entries_;  ///< all that is in the directory
  Entries rows_;     ///< as in the list; the first is the way up
  std::vector<Place> places_;
  ShownBytes folderField_, nameField_;
  bool folderLeft_ = false;  ///< the Folder field was just followed; the button press that made it lose the keyboard
                             ///< (Return presses the default button) is not meant for the file
  std::string chosen_;
};

FL_STATUS FileBox::run(const std::string& startHere) {
  DIRECTORY startup{};
  xvt_fsys_get_dir_startup(&startup);
  const std::string last = recentFolders().empty() ? "" : recentFolders().front();
  for (const std::string& candidate : {startHere, last, std::string(startup.path), std::string("/")}) {
    if (candidate.empty() || !isDirectory(candidate)) continue;
    directory_ = truePath(candidate);
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
  if (what == CTL_COMPLETE) complete(id);
  if (id == FB_FOLDER && what == CTL_FOCUS_LOSS) folderLeft_ = goToTypedFolder();
  if (what == CTL_FOCUS_LOSS) return;
  const bool followsFolder = std::exchange(folderLeft_, false);
  if (id == FB_FILES && what == CTL_SELECT) takeRow();
  if (id == FB_FILES && what == CTL_DOUBLE) openRow();
  if (id == FB_SHOW && what == CTL_SELECT) show();
  if (id == FB_PLACES && what == CTL_SELECT) goToPlace();
  if (what != CTL_PRESS) return;
  if (id == FB_OK && !followsFolder && !goToTypedFolder()) accept();
  if (id != FB_OK) onPress(id);
}

void FileBox::onPress(int id) {
  if (id == FB_UP) goUp();
  if (id == FB_NEW) makeFolder();
  if (id == FB_CANCEL) xvt_vobj_destroy(window_);
  if (id == FB_HIDDEN) looks().hidden = !looks().hidden;
  for (const auto& [head, by] : kHeads)
    if (id == head) looks().order.press(by);
  if (id >= FB_HIDDEN) show();
}

void FileBox::create() {
  if (!title_.empty()) xvt_vobj_set_title(window_, validUtf8(title_).c_str());
  if (purpose_ == Purpose::save) xvt_vobj_set_title(control(FB_OK), "Save");
  if (purpose_ == Purpose::open) xvt_vobj_set_visible(control(FB_NEW), false);
  if (purpose_ == Purpose::place) xvt_vobj_set_title(control(FB_OK), "Choose");
  if (purpose_ != Purpose::directory) addTypes();
  places_ = places();
  for (const Place& place : places_) xvt_list_add(control(FB_PLACES), -1, place.shown.c_str());
  startName();
  folderField_.set(control(FB_FOLDER), directory_);
  read();
  show();
  showPlace();
  xvt_vobj_set_focus(control(FB_NAME));
  // What is typed takes the place of the name, and leaves the extension.
  const std::size_t stem = proposed_.rfind('.');
  const bool part = purpose_ == Purpose::save && stem != std::string::npos && stem > 0;
  xvt_ctl_select_text(control(FB_NAME),
                      part ? static_cast<int>(utf8Characters(shownName(proposed_.substr(0, stem)))) : -1);
}

void FileBox::addTypes() {
  const WINDOW field = control(FB_SHOW);
  const std::string shown = validUtf8(type_);
  if (isPattern(type_) && type_ != "*") xvt_list_add(field, -1, ("Files " + shown).c_str());
  if (!isPattern(type_) && !type_.empty()) xvt_list_add(field, -1, (shown + " files (*." + shown + ")").c_str());
  xvt_list_add(field, -1, "All files");
  xvt_list_set_selected(field, 0, true);
}

// ---- the list -----------------------------------------------------------------------------------------------------

/// The shell pattern of the choice beside "Show"; "All files" is the last one.
std::string FileBox::pattern() const {
  const WINDOW field = control(FB_SHOW);
  if (field == NULL_WIN || xvt_list_get_selected(field) == xvt_list_count(field) - 1) return "";
  return isPattern(type_) ? type_ : "*." + type_;
}

bool FileBox::isSeen(const DirectoryEntry& entry, const std::string& pattern) const {
  if (entry.name.starts_with('.') && !looks().hidden) return false;
  return entry.isDirectory || (purpose_ != Purpose::directory && suits(entry.name, pattern));
}

void FileBox::read() {
  const bool done = readDirectory(directory_, &entries_, Reading::all);
  hint(done ? (purpose_ == Purpose::place ? kPlaceHint : "")
            : std::string("This folder cannot be read: ") + std::strerror(errno));
}

/// Lists what has been read, as it is wanted now: the way up, the directories, the files.
void FileBox::show() {
  const DirectoryEntry* selected = selectedRow();
  const std::string name = selected != nullptr ? selected->name : "";
  const std::string wanted = pattern();
  rows_.clear();
  std::copy_if(entries_.begin(), entries_.end(), std::back_inserter(rows_),
               [&](const DirectoryEntry& entry) { return isSeen(entry, wanted); });
  sortEntries(&rows_, looks().order);
  rows_.insert(rows_.begin(), {"..", true});
  const WINDOW files = control(FB_FILES);
  xvt_list_clear(files);
  for (const DirectoryEntry& row : rows_) xvt_list_add(files, -1, rowOf(row, purpose_ != Purpose::directory).c_str());
  selectRow(name);
  showHeads();
}

void FileBox::showHeads() {
  xvt_ctl_set_checked(control(FB_HIDDEN), looks().hidden);
  for (const auto& [head, by] : kHeads)
    if (const WINDOW button = control(head); button != NULL_WIN)
      xvt_vobj_set_title(button, looks().order.headOf(by).c_str());
}

/// The folder shown in the list of places, if it stands there.
void FileBox::showPlace() {
  const auto found =
      std::find_if(places_.begin(), places_.end(), [this](const Place& place) { return place.path == directory_; });
  const WINDOW field = control(FB_PLACES);
  if (found == places_.end()) return xvt_list_clear_selection(field);
  xvt_list_set_selected(field, static_cast<int>(found - places_.begin()), true);
}

void FileBox::selectRow(const std::string& name) {
  const auto found =
      std::find_if(rows_.begin(), rows_.end(), [&](const DirectoryEntry& entry) { return entry.name == name; });
  if (found != rows_.end()) xvt_list_set_selected(control(FB_FILES), static_cast<int>(found - rows_.begin()), true);
}

const DirectoryEntry* FileBox::selectedRow() const {
  const auto row = static_cast<std::size_t>(xvt_list_get_selected(control(FB_FILES)));
  return row < rows_.size() ? &rows_[row] : nullptr;
}

// ---- going about --------------------------------------------------------------------------------------------------

/// Shows another directory. A directory that cannot be read is not entered; the hint says why.
bool FileBox::goTo(const std::string& path) {
  Entries entries;
  const std::string there = truePath(path);
  if (there.empty() || !readDirectory(there, &entries, Reading::all)) {
    hint("Cannot enter " + lastName(path) + ": " + std::strerror(errno));
    return false;
  }
  const std::string before = std::exchange(directory_, there);
  entries_ = std::move(entries);
  folderField_.set(control(FB_FOLDER), directory_);
  hint(purpose_ == Purpose::place ? kPlaceHint : "");
  if (purpose_ != Purpose::save) startName();
  xvt_list_clear_selection(control(FB_FILES));
  show();
  showPlace();
  // Whoever goes up sees where he was.
  if (splitPath(before).first == directory_) selectRow(splitPath(before).second);
  return true;
}

/// Goes where the Folder field points, if it was changed. True when there was something to follow, also in vain.
bool FileBox::goToTypedFolder() {
  const WINDOW folder = control(FB_FOLDER);
  if (!folderField_.isChanged(folder)) return false;
  const std::string path = folderField_.path(folder, directory_);
  if (path == joinPath(directory_, "")) {
    folderField_.set(folder, directory_);
  } else if (const auto [parent, name] = splitPath(path); !isDirectory(path) && access(path.c_str(), F_OK) == 0) {
    if (goTo(parent)) nameField_.set(control(FB_NAME), name);
  } else {
    goTo(path);
  }
  return true;
}

void FileBox::goUp() { goTo(joinPath(directory_, "..")); }

void FileBox::goToPlace() {
  const auto row = static_cast<std::size_t>(xvt_list_get_selected(control(FB_PLACES)));
  if (row < places_.size() && !goTo(places_[row].path)) showPlace();
}

void FileBox::startName() { nameField_.set(control(FB_NAME), purpose_ == Purpose::save ? proposed_ : ""); }

/// Makes a folder of the typed name and goes there. The next thing to type is a name, whatever came of it.
void FileBox::makeFolder() {
  const WINDOW field = control(FB_NAME);
  xvt_vobj_set_focus(field);
  if (titleOf(field).empty() || (purpose_ == Purpose::save && !nameField_.isChanged(field)))
    return hint("Type the new folder's name in place of the file's, and press New folder again.");
  const std::string path = nameField_.path(field, directory_);
  if (const std::string why = xvt::makeFolder(path); !why.empty()) return hint(why);
  if (goTo(path)) startName();
}

/// What may stand behind a path that is being typed.
Entries FileBox::candidates(int id, const std::string& folder) const {
  Entries found;
  if (folder.empty())
    found = entries_;
  else
    readDirectory(joinPath(directory_, folder), &found, Reading::all);
  const std::string wanted = pattern();
  std::erase_if(found, [&](const DirectoryEntry& entry) {
    return !entry.isDirectory && (id == FB_FOLDER || purpose_ == Purpose::directory || !suits(entry.name, wanted));
  });
  return found;
}

/// Completes what stands in a field, as far as there is but one way to go on.
void FileBox::complete(int id) {
  ShownBytes& shown = id == FB_FOLDER ? folderField_ : nameField_;
  const WINDOW field = control(id);
  const std::string typed = titleOf(field);
  if (typed == "~") return xvt_vobj_set_title(field, "~/");
  const std::size_t name = typed.rfind('/') + 1;
  if (name == typed.size()) return;
  const std::string folder = typed.substr(0, name);
  const Entries names = candidates(id, folder);
  const Completion found = completionOf(names, typed.substr(name));
  // A name that is to be new goes with none.
  if (found.count == 0) return hint(purpose_ == Purpose::open ? "No name here begins like this." : "");
  const bool one = found.count == 1;
  hint(one ? "" : std::to_string(found.count) + " names begin like this.");
  if (folder.empty() && id == FB_NAME) selectRow(found.first->name);
  if (one && id == FB_NAME)
    shown.set(field, folder + found.first->name + (found.first->isDirectory ? "/" : ""));
  else
    xvt_vobj_set_title(field, (folder + found.text + (one ? "/" : "")).c_str());
}

/// A selected file becomes the name, a selected directory too where names are not to be lost by it.
void FileBox::takeRow() {
  const DirectoryEntry* entry = selectedRow();
  if (entry == nullptr || (entry->isDirectory && purpose_ == Purpose::save)) return;
  nameField_.set(control(FB_NAME), entry->name + (entry->isDirectory ? "/" : ""));
  hint("");
}

void FileBox::openRow() {
  const DirectoryEntry* entry = selectedRow();
  if (entry == nullptr) return;
  if (entry->isDirectory)
    goTo(joinPath(directory_, entry->name));
  else
    accept();
}

// ---- choosing -----------------------------------------------------------------------------------------------------

void FileBox::accept() {
  const WINDOW field = control(FB_NAME);
  const bool empty = titleOf(field).empty();
  const std::string path = empty ? directory_ : nameField_.path(field, directory_);
  if (purpose_ == Purpose::directory)
    acceptDirectory(path);
  else if (empty && purpose_ == Purpose::place)
    finish(joinPath(directory_, ""));
  else if (empty)
    hint("Type a name, or choose a file in the list.");
  else
    acceptPath(path);
}

void FileBox::acceptDirectory(const std::string& path) {
  if (!isDirectory(path)) return hint("There is no such folder.");
  const std::string there = truePath(path);
  if (there.size() >= SZ_DIR) return hint("The path of this folder is too long.");
  finish(there);
}

/// Takes a path if it names what the box is for; a directory is entered instead.
void FileBox::acceptPath(const std::string& typed) {
  if (isDirectory(typed)) {
    if (goTo(typed)) startName();
    return;
  }
  auto [directory, name] = splitPath(typed);
  if (purpose_ == Purpose::save && !type_.empty() && !isPattern(type_) && name.find('.') == std::string::npos)
    name += "." + type_;
  const std::string folder = truePath(directory);
  if (folder.empty()) return hint("There is no folder " + directory + ".");
  const std::string path = joinPath(folder, name);
  if (name.size() >= SZ_NAME || folder.size() >= SZ_DIR) return hint("This name is too long.");
  if (const std::string refusal = refusalOf(purpose_, path); !refusal.empty()) return hint(refusal);
  if (purpose_ == Purpose::save && !mayOverwrite(path)) return;
  if (xvt_vobj_is_valid(window_)) finish(path);
}

bool FileBox::mayOverwrite(const std::string& path) const {
  if (access(path.c_str(), F_OK) != 0) return true;
  return xvt_dm_post_confirm("Overwrite", "Cancel", "Overwrite this file?\n%s", shownName(path).c_str()) ==
         RESP_DEFAULT;
}

void FileBox::finish(const std::string& path) {
  chosen_ = path;
  rememberFolder(purpose_ == Purpose::directory ? path : splitPath(path).first);
  xvt_vobj_destroy(window_);
}

void copyInto(char* field, const std::string& text) { std::memcpy(field, text.c_str(), text.size() + 1); }

FL_STATUS postFileBox(Purpose purpose, FILE_SPEC* file, const char* title, const char* function) {
  if (file == nullptr) {
    report(function, "no file");
    return FL_BAD;
  }
  FileBox box(purpose, boundedText(file->type, SZ_TYPE), boundedText(file->name, SZ_NAME),
              title != nullptr ? title : "");
  const FL_STATUS status = box.run(boundedText(file->dir.path, SZ_DIR));
  if (status != FL_OK) return status;
  const auto [directory, name] = splitPath(box.chosen());
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
    report("xvt_dm_post_dir_sel", "no directory");
    return FL_BAD;
  }
  FileBox box(Purpose::directory, "", "", title != nullptr ? title : "");
  const FL_STATUS status = box.run(boundedText(directory->path, SZ_DIR));
  if (status == FL_OK) copyInto(directory->path, box.chosen());
  return status;
}
