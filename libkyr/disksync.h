/// Files that have to be on the disk, and not only in the system's memory, before a job says that they are.
#pragma once

#include <cstddef>
#include <cstdio>
#include <deque>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

class DiskSync {
 public:
  /// Takes what could not be brought to the disk: a file or a directory, and errno.
  using Failed = std::function<void(const std::string& path, int reason)>;

  DiskSync() = default;
  ~DiskSync();
  DiskSync(const DiskSync&) = delete;
  DiskSync& operator=(const DiskSync&) = delete;

  /// Starts what has been written to a file on its way to the disk. The stream, flushed before, may be closed then.
  void add(std::FILE* stream, const std::string& path);
  /// Waits for all files, then for the entries of their directories. Pipes and devices count as there.
  /// @return false when something failed
  bool wait(const Failed& failed);

 private:
  struct File {
    int descriptor;
    std::string path;
  };

  void waitForOldest();
  void note(bool done, const std::string& path);

  std::deque<File> files;  // on their way
  std::set<std::string> directories;
  std::vector<std::pair<std::string, int>> failures;
};
