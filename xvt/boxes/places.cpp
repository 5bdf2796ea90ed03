#include "xvt/boxes/places.h"

#include <algorithm>
#include <cstdlib>

#include "xvt/base/fsys.h"
#include "xvt/boxes/listing.h"
#include "xvt/xvt.h"

namespace xvt {

namespace {

constexpr std::size_t kMostRecent = 10;
constexpr std::size_t kLongest = 44;  ///< characters of a path that are shown

std::vector<std::string>& recent() {
  static std::vector<std::string> folders;
  return folders;
}

std::string homeFolder() {
  const char* home = std::getenv("HOME");
  return home != nullptr ? truePath(home) : "";
}

/// The end of a long path says more than its beginning.
std::string shownPath(const std::string& path) {
  std::string shown = shownName(path);
  if (shown.size() <= kLongest) return shown;
  const std::size_t slash = shown.find('/', shown.size() - kLongest);
  return "\xE2\x80\xA6" + shown.substr(slash != std::string::npos ? slash : shown.rfind('/'));
}

void add(std::vector<Place>* places, const std::string& shown, const std::string& path) {
  const auto same = [&](const Place& place) { return place.path == path; };
  if (isDirectory(path) && std::none_of(places->begin(), places->end(), same)) places->push_back({shown, path});
}

}  // namespace

const std::vector<std::string>& recentFolders() { return recent(); }

void rememberFolder(const std::string& path) {
  std::erase(recent(), path);
  recent().insert(recent().begin(), path);
  if (recent().size() > kMostRecent) recent().pop_back();
}

std::vector<Place> places() {
  std::vector<Place> found;
  DIRECTORY startup{};
  xvt_fsys_get_dir_startup(&startup);
  add(&found, "Home", homeFolder());
  add(&found, "Start folder", startup.path);
  for (const std::string& path : recent()) add(&found, shownPath(path), path);
  return found;
}

}  // namespace xvt
