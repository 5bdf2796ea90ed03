#include "quarlo/common/modulefolder.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/homefolder.h"

char DLLDirectory[4] = "lib";

namespace {

namespace fs = std::filesystem;

DIRECTORY homeOfModules{};

// ---- finding ----------------------------------------------------------------------------------------------------

void goToStartUp() {
  xvt_fsys_set_dir_startup();
  const char* home = std::getenv("KYRHOME");
  DIRECTORY directory{};
  if (home != nullptr && xvt_fsys_convert_str_to_dir(home, &directory)) xvt_fsys_set_dir(&directory);
}

/// The names of files, or of directories, that a module could have below `home` ("": the start-up directory). The
/// working directory is the start-up directory then.
std::vector<std::string> listedBelow(const std::string& home, bool directories) {
  std::vector<std::string> names;
  DIRECTORY directory{};
  goToStartUp();
  if (!xvt_fsys_convert_str_to_dir(joinPath(home, DLLDirectory).c_str(), &directory) || !xvt_fsys_set_dir(&directory))
    return names;
  SLIST files = xvt_fsys_list_files("io*.so", directories);
  goToStartUp();
  if (files == nullptr) return names;
  for (SLIST_ELT file = xvt_slist_get_first(files); file != nullptr; file = xvt_slist_get_next(files, file))
    names.emplace_back(xvt_slist_get_text(files, file));
  xvt_slist_destroy(files);
  std::erase(names, "..");
  return names;
}

/// With the directories behind the files: they are no modules, and the user is told so.
std::vector<std::string> withDirectories(std::vector<std::string> files, const std::string& home) {
  for (std::string& directory : listedBelow(home, true)) files.push_back(std::move(directory));
  return files;
}

// ---- who can write ----------------------------------------------------------------------------------------------

/// Whether a group is its only member's own, as many systems give one to every user.
bool isGroupOfOne(gid_t group, uid_t user) {
  const struct passwd* owner = getpwuid(user);
  if (owner == nullptr || owner->pw_gid != group) return false;
  const std::string name = owner->pw_name;
  if (const struct group* entry = getgrgid(group); entry != nullptr)
    for (char** member = entry->gr_mem; *member != nullptr; ++member)
      if (name != *member) return false;
  bool alone = true;
  setpwent();
  while (const struct passwd* other = getpwent()) alone = alone && (other->pw_gid != group || other->pw_uid == user);
  endpwent();
  return alone;
}

bool mayOwnModules(uid_t owner) {
  struct stat program {};
  return owner == getuid() || owner == 0 || (stat("/proc/self/exe", &program) == 0 && owner == program.st_uid);
}

/// As accessFault, for a file or directory alone.
std::string faultOf(const fs::path& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return "";
  if (!mayOwnModules(status.st_uid))
    return formatText("%s belongs to neither you nor root nor the owner of the program", path.c_str());
  const bool byAll = (status.st_mode & S_IWOTH) != 0;
  const bool byGroup = (status.st_mode & S_IWGRP) != 0 && !isGroupOfOne(status.st_gid, status.st_uid);
  if (!byAll && !byGroup) return "";
  const char* whose = byAll && byGroup ? "go" : byAll ? "o" : "g";
  return formatText("%s can be written by others: chmod %s-w '%s'", path.c_str(), whose, path.c_str());
}

}  // namespace

std::vector<std::string> findModuleFiles() {
  homeOfModules = {};
  std::vector<std::string> names = listedBelow("", false);
  if (!names.empty()) return withDirectories(std::move(names), "");
  // Where it is built, "lib" stands beside the program; installed, the program stands in bin, and they in the
  // system's folder of libraries.
  const fs::path program = programFolder();
  for (const fs::path& home : {program, (program / QUARLO_LIBDIR "/quarlo").lexically_normal()}) {
    DIRECTORY directory{};
    if (program.empty() || !xvt_fsys_convert_str_to_dir(home.c_str(), &directory)) continue;
    names = listedBelow(home, false);
    if (names.empty()) continue;
    homeOfModules = directory;
    console_printf("Format modules are taken from %s.", (home / DLLDirectory).c_str());
    return withDirectories(std::move(names), home);
  }
  return withDirectories({}, "");
}

const DIRECTORY& moduleHome() { return homeOfModules; }

std::string accessFault(const std::string& path) {
  std::error_code unknown;
  const fs::path file = fs::canonical(path, unknown);
  if (unknown) return "";
  // A link leads from one directory to another: both have a say.
  for (const fs::path& part : {fs::absolute(path).parent_path(), file.parent_path(), file})
    if (std::string fault = faultOf(part); !fault.empty()) return fault;
  return "";
}
