#include "xvt/boxes/filechoice.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "xvt/base/fsys.h"

namespace xvt {

namespace {

std::string because(const char* what) { return std::string(what) + ": " + std::strerror(errno); }

std::string refusalToOpen(const std::string& path) {
  struct stat facts {};
  if (stat(path.c_str(), &facts) != 0) {
    if (errno != ENOENT) return because("Cannot open this");
    return lstat(path.c_str(), &facts) == 0 ? "This link leads nowhere." : "There is no file of this name.";
  }
  if (!S_ISREG(facts.st_mode)) return "This is not an ordinary file.";
  return access(path.c_str(), R_OK) == 0 ? "" : because("This file cannot be read");
}

std::string refusalToSave(const std::string& path) {
  struct stat facts {};
  if (stat(path.c_str(), &facts) != 0) {
    if (errno != ENOENT) return because("Cannot save as this");
    return access(splitPath(path).first.c_str(), W_OK | X_OK) == 0 ? ""
                                                                   : because("Files cannot be made in this folder");
  }
  if (S_ISDIR(facts.st_mode)) return "A folder has this name.";
  if (!S_ISREG(facts.st_mode)) return "This is not an ordinary file.";
  return access(path.c_str(), W_OK) == 0 ? "" : because("This file cannot be written");
}

}  // namespace

std::pair<std::string, std::string> splitPath(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

std::string refusalOf(Purpose purpose, const std::string& path) {
  if (purpose == Purpose::open) return refusalToOpen(path);
  return purpose == Purpose::save ? refusalToSave(path) : "";
}

std::string makeFolder(const std::string& path) {
  if (mkdir(path.c_str(), 0777) == 0) return "";
  if (errno == EEXIST) return isDirectory(path) ? "There is such a folder already." : "A file has this name.";
  return because("Cannot make this folder");
}

}  // namespace xvt
