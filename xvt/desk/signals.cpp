#include "xvt/desk/signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "xvt/desk/events.h"

namespace xvt {

namespace {

constexpr std::array<int, 3> kSignals{SIGTERM, SIGINT, SIGHUP};

/// A signal handler may do little more than write a byte; the event loop reads it.
int pipe_ends[2] = {-1, -1};

void noted(int) { EndSignals::wake(); }

void handle(int signal, void (*handler)(int)) {
  struct sigaction old {};
  // A signal that the program was started to ignore (nohup) stays ignored.
  if (sigaction(signal, nullptr, &old) == 0 && old.sa_handler == SIG_IGN) return;
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigaction(signal, &action, nullptr);
}

}  // namespace

EndSignals::EndSignals(EventSource& events, std::function<void()> asked) : events_(events), asked_(std::move(asked)) {
  if (pipe2(pipe_ends, O_CLOEXEC | O_NONBLOCK) != 0) return;
  events_.watch(pipe_ends[0], [this] { arrived(); });
  for (const int signal : kSignals) handle(signal, noted);
}

EndSignals::~EndSignals() {
  if (pipe_ends[0] < 0) return;
  for (const int signal : kSignals) handle(signal, SIG_DFL);
  events_.unwatch();
  for (int& end : pipe_ends) {
    close(end);
    end = -1;
  }
}

void EndSignals::wake() {
  const int error = errno;
  const char byte = 0;
  [[maybe_unused]] const ssize_t written = write(pipe_ends[1], &byte, 1);
  errno = error;
}

void EndSignals::arrived() {
  std::array<char, 16> bytes{};
  while (read(pipe_ends[0], bytes.data(), bytes.size()) > 0) continue;
  asked_();
}

}  // namespace xvt
