#include "xvt/base/fsys.h"

#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "xvt/base/report.h"
#include "xvt/xvt.h"

namespace xvt {

namespace {

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};

DirectoryEntry entryOf(DIR* directory, const dirent& entry, Reading reading) {
  DirectoryEntry found{entry.d_name, entry.d_type == DT_DIR, false, 0, 0};
  const bool known = entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN;
  if (known && reading == Reading::names) return found;
  struct stat facts {};
  if (fstatat(dirfd(directory), entry.d_name, &facts, 0) != 0) {
    found.leadsNowhere = fstatat(dirfd(directory), entry.d_name, &facts, AT_SYMLINK_NOFOLLOW) == 0;
    if (!found.leadsNowhere) return found;
  }
  found.isDirectory = S_ISDIR(facts.st_mode);
  found.size = facts.st_size;
  found.changed = facts.st_mtim.tv_sec;
  return found;
}

bool isWanted(const char* name, Reading reading) {
  if (reading == Reading::names) return name[0] != '.';
  return std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0;
}

}  // namespace

bool readDirectory(const std::string& path, std::vector<DirectoryEntry>* entries, Reading reading) {
  entries->clear();
  const std::unique_ptr<DIR, CloseDirectory> directory(opendir(path.c_str()));
  if (!directory) return false;
  errno = 0;
  while (const dirent* entry = readdir(directory.get())) {
    if (isWanted(entry->d_name, reading)) entries->push_back(entryOf(directory.get(), *entry, reading));
    errno = 0;
  }
  if (errno != 0) return false;
  std::sort(entries->begin(), entries->end(), [](const auto& a, const auto& b) { return a.name < b.name; });
  return true;
}

bool matchesPattern(const std::string& name, const std::string& pattern) {
  return pattern.empty() || fnmatch(pattern.c_str(), name.c_str(), 0) == 0;
}

std::string joinPath(const std::string& directory, std::string_view path) {
  if (path == "~" || path.starts_with("~/")) {
    const char* home = std::getenv("HOME");
    if (home != nullptr) return home + std::string(path.substr(1));
  }
  if (path.starts_with('/') || directory.empty()) return std::string(path);
  return directory + (directory.ends_with('/') ? "" : "/") + std::string(path);
}

std::string truePath(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr), &std::free);
  return resolved ? resolved.get() : "";
}

bool isDirectory(const std::string& path) {
  struct stat facts {};
  return stat(path.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

}  // namespace xvt

namespace {

std::string currentDirectory() { return xvt::truePath("."); }

/// Taken before main() runs, so that a program which changes its directory first thing still finds the way back.
const std::string& startupDirectory() {
  static const std::string directory = currentDirectory();
  return directory;
}
[[maybe_unused]] const std::string& rememberedAtStart = startupDirectory();

bool fill(DIRECTORY* directory, const std::string& path) {
  if (path.empty() || path.size() >= sizeof directory->path) return false;
  std::memcpy(directory->path, path.c_str(), path.size() + 1);
  return true;
}

/// A directory held open: the way back stays good when it is renamed, and needs no right to read it.
class HeldDirectory {
 public:
  HeldDirectory() : fd_(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {}
  HeldDirectory(HeldDirectory&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  HeldDirectory(const HeldDirectory&) = delete;
  HeldDirectory& operator=(const HeldDirectory&) = delete;
  HeldDirectory& operator=(HeldDirectory&&) = delete;
  ~HeldDirectory() {
    if (fd_ >= 0) close(fd_);
  }
  [[nodiscard]] bool isHeld() const { return fd_ >= 0; }
  [[nodiscard]] bool goThere() const { return fchdir(fd_) == 0; }

 private:
  int fd_;
};

std::vector<HeldDirectory>& savedDirectories() {
  static std::vector<HeldDirectory> saved;
  return saved;
}

bool given(const void* pointer, const char* function, const char* reason) {
  if (pointer == nullptr) xvt::report(function, reason);
  return pointer != nullptr;
}

}  // namespace

bool xvt_fsys_get_dir(DIRECTORY* directory) {
  return given(directory, "xvt_fsys_get_dir", "no directory") && fill(directory, currentDirectory());
}

bool xvt_fsys_set_dir(const DIRECTORY* directory) {
  if (!given(directory, "xvt_fsys_set_dir", "no directory")) return false;
  const std::string path(directory->path, strnlen(directory->path, sizeof directory->path));
  return chdir(path.c_str()) == 0;
}

bool xvt_fsys_save_dir() {
  HeldDirectory here;
  if (!here.isHeld()) return false;
  savedDirectories().push_back(std::move(here));
  return true;
}

bool xvt_fsys_restore_dir() {
  if (savedDirectories().empty()) {
    xvt::report("xvt_fsys_restore_dir", "no directory was saved");
    return false;
  }
  const bool done = savedDirectories().back().goThere();
  savedDirectories().pop_back();
  return done;
}

bool xvt_fsys_set_dir_startup() { return chdir(startupDirectory().c_str()) == 0; }

bool xvt_fsys_get_dir_startup(DIRECTORY* directory) {
  return given(directory, "xvt_fsys_get_dir_startup", "no directory") && fill(directory, startupDirectory());
}

bool xvt_fsys_convert_str_to_dir(const char* path, DIRECTORY* directory) {
  if (!given(path, "xvt_fsys_convert_str_to_dir", "no path")) return false;
  if (!given(directory, "xvt_fsys_convert_str_to_dir", "no directory")) return false;
  return xvt::isDirectory(path) && fill(directory, xvt::truePath(path));
}

SLIST xvt_fsys_list_files(const char* pattern, bool directories) {
  SLIST names = xvt_slist_create();
  if (names == nullptr) return nullptr;
  const std::string wanted = pattern != nullptr ? pattern : "";
  std::vector<xvt::DirectoryEntry> entries;
  if (directories) xvt_slist_add(names, nullptr, "..", 0);
  if (!xvt::readDirectory(".", &entries)) return names;
  for (const xvt::DirectoryEntry& entry : entries)
    if (entry.isDirectory == directories && xvt::matchesPattern(entry.name, wanted))
      xvt_slist_add(names, nullptr, entry.name.c_str(), 0);
  return names;
}

long long xvt_fsys_get_file_size(const char* name) {
  if (!given(name, "xvt_fsys_get_file_size", "no name")) return -1;
  struct stat facts {};
  if (stat(name, &facts) != 0 || S_ISDIR(facts.st_mode)) return -1;
  return facts.st_size;
}
