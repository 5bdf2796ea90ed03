#include "quarlo/tapelib/frame/inputfiles.h"

#include <sys/stat.h>

#include <memory>
#include <optional>

#include "libkyr/text.h"

namespace {

std::optional<std::pair<dev_t, ino_t>> nodeOf(const std::string& path) {
  struct stat facts {};
  if (stat(path.c_str(), &facts) != 0) return std::nullopt;
  return std::pair(facts.st_dev, facts.st_ino);
}

}  // namespace

void FileSet::add(const std::string& path) {
  if (const auto node = nodeOf(path)) nodes_.insert(*node);
}

bool FileSet::holds(const std::string& path) const {
  const auto node = nodeOf(path);
  return node && nodes_.contains(*node);
}

void DirectoryFiles::nameOthers(void (*tell)(const char* line)) const {
  for (const std::string& name : others)
    tell(formatText("  ** %s is no regular file and is not copied.", name.c_str()).c_str());
}

DirectoryFiles listFiles(const DIRECTORY& directory, const char* pattern) {
  DirectoryFiles found;
  const DirectoryVisit visit(directory);
  if (!visit.isThere()) return found;
  for (const bool directories : {false, true}) {
    const std::unique_ptr<xvt_string_list, decltype(&xvt_slist_destroy)> list(xvt_fsys_list_files(pattern, directories),
                                                                              xvt_slist_destroy);
    for (SLIST_ELT element = list ? xvt_slist_get_first(list.get()) : nullptr; element != nullptr;
         element = xvt_slist_get_next(list.get(), element)) {
      const std::string name = xvt_slist_get_text(list.get(), element);
      struct stat facts {};
      const bool isOther = stat(name.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode);
      if (name != "..") (isOther ? found.others : found.names).push_back(name);
    }
  }
  return found;
}
