/// Files by what they are: the several inputs of a job, and what is never written to.
#pragma once

#include <sys/types.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "xvt/xvt.h"

/// Files that exist, known by what they are and not by their names.
class FileSet {
 public:
  void add(const std::string& path);
  bool holds(const std::string& path) const;

 private:
  std::set<std::pair<dev_t, ino_t>> nodes_;
};

/// The working directory of before comes back with the end of this.
class DirectoryVisit {
 public:
  explicit DirectoryVisit(const DIRECTORY& directory) : saved_(xvt_fsys_save_dir()) {
    there_ = saved_ && directory.path[0] != '\0' && xvt_fsys_set_dir(&directory);
  }
  ~DirectoryVisit() {
    if (saved_) xvt_fsys_restore_dir();
  }
  DirectoryVisit(const DirectoryVisit&) = delete;
  DirectoryVisit& operator=(const DirectoryVisit&) = delete;
  /// Whether the directory is the working directory now; one without a name never becomes it.
  bool isThere() const { return there_; }

 private:
  bool saved_;
  bool there_ = false;
};

/// What stands in a directory under names that match a pattern, in listing order. Links count as what they lead to.
struct DirectoryFiles {
  std::vector<std::string> names;   ///< regular files; also what is not to be seen, for opening it says why
  std::vector<std::string> others;  ///< directories, pipes, devices

  /// A line for each of the others.
  void nameOthers(void (*tell)(const char* line)) const;
};
/// @param pattern of the shell
DirectoryFiles listFiles(const DIRECTORY& directory, const char* pattern);
