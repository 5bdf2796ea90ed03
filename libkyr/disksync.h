/// Files that have to be on the disk, and not only in the system's memory, before a job says that they are.
#pragma once

#include <cstddef>
#include <cstdio>
#include <deque>
#include <functional>
#include <set>
#include <string>
#include <vector>

class DiskSync {
 public:
  /// What could not be brought to the disk.
  struct Failure {
    std::string path;
    bool isDirectory;
    int reason;  ///< errno
  };
  using Failed = std::function<void(const Failure& failure)>;

  DiskSync() = default;
  ~DiskSync();
  DiskSync(const DiskSync&) = delete;
  DiskSync& operator=(const DiskSync&) = delete;

  /// Starts what has been written to a file on its way to the disk. The stream, flushed before, may be closed then.
  void add(std::FILE* stream, const std::string& path) { add(fileno(stream), path); }
  void add(int descriptor, const std::string& path);
  /// Waits for all files, then for the entries of their directories. Pipes and devices count as there.
  /// @return false when something failed
  bool wait(const Failed& failed);

 private:
  struct File {
    int descriptor;
    std::string path;
  };

  void waitForOldest();
  void note(bool done, const std::string& path, bool isDirectory = false);

  std::deque<File> files_;  // on their way
  std::set<std::string> directories_;
  std::vector<Failure> failures_;
};
