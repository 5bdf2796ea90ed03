#include "libkyr/sharedobject.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <map>
#include <optional>
#include <span>
#include <tuple>
#include <vector>

#include "libkyr/elfcheck.h"
#include "libkyr/files.h"

namespace {

constexpr int kLoadFlags = RTLD_NOW | RTLD_LOCAL;
constexpr std::chrono::seconds kPatience{10};

using Symbols = std::span<const char* const>;

/// What tells a file from the one that was there before.
using Identity = std::tuple<dev_t, ino_t, off_t, time_t, long>;

Identity identityOf(const struct stat& status) {
  return {status.st_dev, status.st_ino, status.st_size, status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
}

/// What speaks against the file by its headers; empty for nothing.
std::string headerFault(const std::string& path) {
  const FileHandle file = openFile(path.c_str(), "rb", 0);
  if (!file) return std::strerror(errno);
  const auto size = fileSize(file.get());
  if (!size) return "no file";
  std::vector<unsigned char> head(kElfHeadSize);
  const std::size_t read = std::fread(head.data(), 1, head.size(), file.get());
  if (std::ferror(file.get()) != 0) return std::strerror(errno);
  return elfFault(std::span(head).first(read), *size);
}

const char* lastLoaderError() {
  const char* text = dlerror();
  return text != nullptr ? text : "unknown error";
}

/// Loads, searches and unloads. @return "+", or why not
const char* trialIn(const char* path, Symbols symbols) {
  void* object = dlopen(path, kLoadFlags);
  if (object == nullptr) return lastLoaderError();
  for (const char* symbol : symbols) static_cast<void>(dlsym(object, symbol));
  dlclose(object);
  return "+";
}

/// The child's life: nothing of the parent's is open in it, and whatever it dies of leaves no core. In a process group
/// of its own it can be ended together with what the object starts.
[[noreturn]] void tryInChild(const char* path, Symbols symbols, int verdict) {
  constexpr int kEpt = 3;
  const struct rlimit none {};
  setrlimit(RLIMIT_CORE, &none);
  setpgid(0, 0);
  for (int number = 1; number < NSIG; ++number) std::signal(number, SIG_DFL);
  const int nowhere = open("/dev/null", O_RDWR);
  for (int standard = 0; standard < kEpt; ++standard) dup2(nowhere, standard);
  dup2(verdict, kEpt);
  close_range(kEpt + 1, ~0U, 0);
  const pid_t self = getpid();
  const char* text = trialIn(path, symbols);
  // A constructor may have forked: its copy of this process comes here too and has no say.
  const bool told = getpid() == self && write(kEpt, text, std::strlen(text)) > 0;
  _exit(told ? 0 : 1);
}

/// Waits for the child's end, but does not reap it: until then its number, and its group's, is nobody else's.
/// @return false when it takes too long
bool endsInTime(pid_t child) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  for (;;) {
    siginfo_t info{};
    const int result = waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT);
    if (result == 0 ? info.si_pid == child : errno != EINTR) return true;
    if (std::chrono::steady_clock::now() >= end) return false;
    poll(nullptr, 0, 1);
  }
}

/// @return whether the child ended as it meant to (true too when somebody else has reaped it)
bool endsWell(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// What the child has written at once. Processes that the object started may hold the pipe open: its end tells nothing.
std::string wordsIn(int pipe) {
  std::array<char, 8192> words{};
  const ssize_t count = read(pipe, words.data(), words.size());
  return {words.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
}

/// Sees the child to its end. @return its judgement
std::string judgementOf(pid_t child, int pipe) {
  const bool ended = endsInTime(child);
  if (!ended) kill(child, SIGKILL);
  kill(-child, SIGKILL);
  const bool sound = endsWell(child);
  if (!ended) return "does not come back from being loaded";
  const std::string words = wordsIn(pipe);
  if (!sound || words.empty()) return "crashes while it is loaded";
  return words == "+" ? "" : words;
}

/// Loads and searches the file in a child process.
/// @return why it cannot be loaded, empty when it can; nothing, with errno, when no trial could be made
std::optional<std::string> trialFault(const std::string& path, Symbols symbols) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return std::nullopt;
  const pid_t child = fork();
  if (child == 0) tryInChild(path.c_str(), symbols, ends[1]);
  const int reason = errno;
  close(ends[1]);
  std::optional<std::string> fault;
  if (child > 0) fault = judgementOf(child, ends[0]);
  close(ends[0]);
  errno = reason;
  return fault;
}

/// Names one trial: a path, and what was looked up.
std::string trialName(const std::string& path, Symbols symbols) {
  std::string name = path;
  for (const char* symbol : symbols) name.append(1, '\0').append(symbol);
  return name;
}

/// What came of a file's trial.
struct Verdict {
  Identity identity;
  std::string fault;
};

std::string faultOf(const std::string& path, Symbols symbols) {
  static std::map<std::string, Verdict> verdicts;
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::strerror(errno);
  // Merely opening a pipe or a device may wait for ever.
  if (!S_ISREG(status.st_mode)) return "no regular file";
  const std::string name = trialName(path, symbols);
  const auto known = verdicts.find(name);
  if (known != verdicts.end() && known->second.identity == identityOf(status)) return known->second.fault;
  if (std::string fault = headerFault(path); !fault.empty()) return fault;
  const std::optional<std::string> fault = trialFault(path, symbols);
  if (!fault) return std::strerror(errno);
  verdicts.insert_or_assign(name, Verdict{identityOf(status), *fault});
  return *fault;
}

}  // namespace

void* loadSharedObject(const std::string& path, std::string* why, std::span<const char* const> symbols) {
  // With a slash in it the loader takes a name for the path that it is.
  const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
  std::string fault = faultOf(file, symbols);
  void* object = fault.empty() ? dlopen(file.c_str(), kLoadFlags) : nullptr;
  if (object == nullptr && fault.empty()) fault = lastLoaderError();
  if (why != nullptr) *why = fault;
  return object;
}

void* findSymbol(void* handle, const char* name) {
  return handle != nullptr && name != nullptr ? dlsym(handle, name) : nullptr;
}

void unloadSharedObject(void* handle) {
  if (handle != nullptr) dlclose(handle);
}
