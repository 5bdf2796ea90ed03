#include "xvt/motif/signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "xvt/motif/guard.h"

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

EndSignals::EndSignals(XtAppContext context, std::function<void()> asked) : asked_(std::move(asked)) {
  if (pipe2(pipe_ends, O_CLOEXEC | O_NONBLOCK) != 0) return;
  input_ = XtAppAddInput(context, pipe_ends[0],
                         reinterpret_cast<XtPointer>(XtInputReadMask),  // NOLINT: Xt wants a number as a pointer
                         arrived, this);
  for (const int signal : kSignals) handle(signal, noted);
}

EndSignals::~EndSignals() {
  if (input_ == 0) return;
  for (const int signal : kSignals) handle(signal, SIG_DFL);
  XtRemoveInput(input_);
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

void EndSignals::arrived(XtPointer self, int* source, XtInputId*) {
  std::array<char, 16> bytes{};
  while (read(*source, bytes.data(), bytes.size()) > 0) continue;
  guarded("signal", static_cast<EndSignals*>(self)->asked_);
}

}  // namespace xvt
