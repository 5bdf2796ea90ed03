#include "libkyr/sidework.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include "libkyr/files.h"

namespace {

/// A thread that is made meanwhile leaves all signals to the others.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace

SideWork::~SideWork() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
    changed_.notify_all();
  }
  thread_.join();
}

void SideWork::start(std::function<void()> task) {
  wait();
  if (!thread_.joinable() && !makeThread()) {
    task();
    return;
  }
  {
    const std::lock_guard lock(mutex_);
    task_ = std::move(task);
  }
  changed_.notify_all();
}

void SideWork::wait() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return !task_; });
}

bool SideWork::makeThread() try {
  const SignalsBlocked blocked;
  thread_ = std::thread(&SideWork::work, this);
  return true;
} catch (const std::system_error&) {
  return false;
}

void SideWork::work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return task_ || ends_; });
    if (!task_) return;
    lock.unlock();
    task_();  // nobody touches it before it is done
    lock.lock();
    task_ = nullptr;
    changed_.notify_all();
  }
}

void ReadAhead::start(int descriptor, std::uint64_t place, std::span<char> memory) {
  const int own = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
  error_ = own < 0 ? errno : 0;
  isUnderWay_ = true;
  side_.start([this, own, place, memory] {
    got_ = own < 0 ? std::nullopt : readAt(own, memory.data(), memory.size(), place);
    if (own < 0) return;
    if (!got_) error_ = errno;
    close(own);
  });
}

std::optional<std::size_t> ReadAhead::finish() {
  side_.wait();
  isUnderWay_ = false;
  errno = error_;
  return got_;
}
