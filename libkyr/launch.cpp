#include "libkyr/launch.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wordexp.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

// The words of a command as an argument vector.
class Words {
 public:
  explicit Words(const char* command) : good_(wordexp(command, &words_, WRDE_NOCMD) == 0) {}
  ~Words() {
    if (good_) wordfree(&words_);
  }
  Words(const Words&) = delete;
  Words& operator=(const Words&) = delete;

  bool empty() const { return !good_ || words_.we_wordc == 0; }
  char** argv() const { return words_.we_wordv; }

 private:
  wordexp_t words_{};
  bool good_;
};

class Pipe {
 public:
  Pipe() : good_(pipe2(ends_.data(), O_CLOEXEC) == 0) {}
  ~Pipe() {
    closeEnd(0);
    closeEnd(1);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  bool good() const { return good_; }
  int readEnd() const { return ends_[0]; }
  int writeEnd() const { return ends_[1]; }
  void closeWriteEnd() { closeEnd(1); }

 private:
  void closeEnd(std::size_t end) {
    if (ends_[end] >= 0) close(ends_[end]);
    ends_[end] = -1;
  }

  std::array<int, 2> ends_{-1, -1};
  bool good_;
};

// Where a program with this bare name would lie beside the running one; empty when the name is a path already.
std::string besideThisProgram(const std::string& name) {
  if (name.find('/') != std::string::npos) return {};
  std::error_code error;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::string() : (self.parent_path() / name).string();
}

// No descriptor above the three standard ones reaches the program, whoever opened it.
void closeAllOnExec() {
  if (close_range(3, ~0U, CLOSE_RANGE_CLOEXEC) == 0) return;
  const int limit = static_cast<int>(sysconf(_SC_OPEN_MAX));
  for (int fd = 3; fd < limit; ++fd) fcntl(fd, F_SETFD, FD_CLOEXEC);
}

void resetSignals() {
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  for (const int number : {SIGCHLD, SIGPIPE, SIGXFSZ, SIGHUP, SIGINT, SIGTERM}) std::signal(number, SIG_DFL);
}

// Runs in the grandchild: becomes the program, or sends errno through the pipe.
[[noreturn]] void becomeProgram(char** argv, const std::string& fallback, int report) {
  resetSignals();
  const int null = open("/dev/null", O_RDWR);
  if (null >= 0) dup2(null, STDIN_FILENO);
  closeAllOnExec();
  execvp(argv[0], argv);
  int error = errno;
  if (error == ENOENT && !fallback.empty()) {
    execv(fallback.c_str(), argv);
    error = errno;
  }
  // When even this write fails, the reader sees a program that started: nothing better can be said.
  [[maybe_unused]] const ssize_t sent = write(report, &error, sizeof error);
  _exit(127);
}

// The child leaves at once, so that the program is the init process's to reap.
[[noreturn]] void detach(char** argv, const std::string& fallback, int report) {
  setsid();
  const pid_t program = fork();
  if (program == 0) becomeProgram(argv, fallback, report);
  if (program < 0) {
    const int error = errno;
    [[maybe_unused]] const ssize_t sent = write(report, &error, sizeof error);
  }
  _exit(0);
}

// What came through the pipe: 0 when it was closed by a successful exec, else the errno.
int readReport(int fd) {
  int error = 0;
  ssize_t got = 0;
  do {
    got = read(fd, &error, sizeof error);
  } while (got < 0 && errno == EINTR);
  return got == static_cast<ssize_t>(sizeof error) ? error : 0;
}

// With SIGCHLD ignored or reaped elsewhere there is nothing to wait for: ECHILD ends the loop too.
void reap(pid_t child) {
  while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
  }
}

}  // namespace

bool wxExecuteHack(const char* command) {
  if (command == nullptr) {
    errno = EINVAL;
    return false;
  }
  const Words words(command);
  if (words.empty()) {
    errno = EINVAL;
    return false;
  }
  const std::string fallback = besideThisProgram(words.argv()[0]);
  Pipe report;
  if (!report.good()) return false;
  const pid_t child = fork();
  if (child < 0) return false;
  if (child == 0) detach(words.argv(), fallback, report.writeEnd());
  report.closeWriteEnd();
  const int error = readReport(report.readEnd());
  reap(child);
  errno = error;
  return error == 0;
}
