/// Work beside the owner's: a thread for one task at a time, and the file read ahead in it.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <thread>

class SideWork {
 public:
  SideWork() = default;
  /// Waits for the task under way.
  ~SideWork();
  SideWork(const SideWork&) = delete;
  SideWork& operator=(const SideWork&) = delete;

  /// Starts a task, which does not throw, once the one before is done. It sees nothing of signals. Where no thread is
  /// to be had it is done before start returns.
  void start(std::function<void()> task);
  /// Waits until the task is done.
  void wait();

 private:
  bool makeThread();
  void work();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::function<void()> task_;  // empty: none under way
  bool ends_ = false;
  std::thread thread_;
};

/// Reads the next stretch of a file while its owner works on the one before.
class ReadAhead {
 public:
  /// Starts to read a stretch into memory that stays where it is until finish(), or until this object goes. The
  /// descriptor may be closed meanwhile.
  void start(int descriptor, std::uint64_t place, std::span<char> memory);
  bool isUnderWay() const { return isUnderWay_; }
  /// Waits for the stretch. @return bytes, fewer than asked for at the end of the file; nothing, with errno, after an
  /// error
  std::optional<std::size_t> finish();

 private:
  bool isUnderWay_ = false;
  std::optional<std::size_t> got_;
  int error_ = 0;
  SideWork side_;  // the last: its task writes the others
};
