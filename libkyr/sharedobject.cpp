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
#include <memory>
#include <optional>
#include <span>
#include <tuple>
#include <vector>

#include "libkyr/elfcheck.h"
#include "libkyr/files.h"

namespace {

constexpr int loadFlags = RTLD_NOW | RTLD_LOCAL;
constexpr std::chrono::seconds patience{10};

/// What tells a file from the one that was there before.
using Identity = std::tuple<dev_t, ino_t, off_t, time_t, long>;

std::optional<Identity> identityOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return Identity{status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

/// What speaks against the file by its headers; empty for nothing.
std::string headerFault(const std::string& path) {
  const FileHandle file = openFile(path.c_str(), "rb", 0);
  if (!file) return std::strerror(errno);
  const auto size = fileSize(file.get());
  if (!size) return "no file";
  std::vector<unsigned char> head(elfHeadSize);
  const std::size_t read = std::fread(head.data(), 1, head.size(), file.get());
  if (std::ferror(file.get()) != 0) return std::strerror(errno);
  return elfFault(std::span(head).first(read), *size);
}

const char* lastLoaderError() {
  const char* text = dlerror();
  return text != nullptr ? text : "unknown error";
}

/// The child's life: nothing of the parent's is open in it, and whatever it dies of leaves no core.
[[noreturn]] void tryInChild(const char* path, int verdict) {
  constexpr int kept = 3;
  const struct rlimit none {};
  setrlimit(RLIMIT_CORE, &none);
  for (int number = 1; number < NSIG; ++number) std::signal(number, SIG_DFL);
  const int nowhere = open("/dev/null", O_RDWR);
  for (int standard = 0; standard < kept; ++standard) dup2(nowhere, standard);
  dup2(verdict, kept);
  close_range(kept + 1, ~0U, 0);
  void* object = dlopen(path, loadFlags);
  const char* text = object != nullptr ? "+" : lastLoaderError();
  if (object != nullptr) dlclose(object);
  const bool told = write(kept, text, std::strlen(text)) > 0;
  _exit(told ? 0 : 1);
}

/// All that the child says until it ends; nothing when it takes too long.
std::optional<std::string> wordsOf(int pipe) {
  const auto end = std::chrono::steady_clock::now() + patience;
  std::string words;
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    if (left.count() <= 0) return std::nullopt;
    pollfd ready{pipe, POLLIN, 0};
    if (poll(&ready, 1, static_cast<int>(left.count())) < 1) continue;
    std::array<char, 1024> part{};
    const ssize_t count = read(pipe, part.data(), part.size());
    if (count == 0) return words;
    if (count > 0)
      words.append(part.data(), static_cast<std::size_t>(count));
    else if (errno != EINTR)
      return words;
  }
}

void reap(pid_t child) {
  while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
  }
}

/// Loads the file in a child process. @return why it cannot be loaded; empty when it can
std::string trialFault(const std::string& path) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return std::strerror(errno);
  const pid_t child = fork();
  if (child == 0) tryInChild(path.c_str(), ends[1]);
  const int reason = errno;
  close(ends[1]);
  if (child < 0) {
    close(ends[0]);
    return std::strerror(reason);
  }
  const auto words = wordsOf(ends[0]);
  close(ends[0]);
  if (!words) kill(child, SIGKILL);
  reap(child);
  if (!words) return "does not come back from being loaded";
  if (words->empty()) return "crashes while it is loaded";
  return *words == "+" ? "" : *words;
}

std::string faultOf(const std::string& path) {
  static std::map<std::string, Identity> passed;
  const auto identity = identityOf(path);
  if (!identity) return std::strerror(errno);
  const auto known = passed.find(path);
  if (known != passed.end() && known->second == *identity) return "";
  std::string fault = headerFault(path);
  if (fault.empty()) fault = trialFault(path);
  if (fault.empty()) passed.insert_or_assign(path, *identity);
  return fault;
}

}  // namespace

void* loadSharedObject(const std::string& path, std::string* why) {
  // With a slash in it the loader takes a name for the path that it is.
  const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
  std::string fault = faultOf(file);
  void* object = fault.empty() ? dlopen(file.c_str(), loadFlags) : nullptr;
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
