/// Runs a test body inside an application of its own, in a child process: X, Xt and Motif keep state that no two runs
/// in one process should share.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/xvt/offered.h"
#include "xvt/probe.h"
#include "xvt/resource.h"
#include "xvt/xvt.h"

namespace core {

using Handler = std::function<long(WINDOW, EVENT&)>;

/// One event as a handler saw it: "create", "press 3", "loss 4" ...
inline std::string described(const EVENT& event) {
  static const char* const actions[] = {"press", "edited", "gain", "loss", "select", "double", "complete"};
  static const std::map<EVENT_TYPE, const char*> names{
      {E_CREATE, "create"}, {E_DESTROY, "destroy"}, {E_CLOSE, "close"},     {E_SIZE, "size"}, {E_UPDATE, "update"},
      {E_TIMER, "timer"},   {E_VSCROLL, "vscroll"}, {E_HSCROLL, "hscroll"}, {E_USER, "user"}, {E_FOCUS, "focus"}};
  if (event.type == E_CONTROL) return std::string(actions[event.ctl.what]) + " " + std::to_string(event.ctl.id);
  if (event.type == E_COMMAND) return "command " + std::to_string(event.cmd.tag);
  if (event.type == E_QUIT) return event.quit.query ? "may it quit" : "it quits";
  const auto name = names.find(event.type);
  return name != names.end() ? name->second : "?";
}

/// What handlers were told, in order, focus events left out.
inline std::vector<std::string>& seen() {
  static std::vector<std::string> events;
  return events;
}

inline std::map<WINDOW, Handler>& handlers() {
  static std::map<WINDOW, Handler> by_window;
  return by_window;
}
/// The handler of the window that is being created.
inline Handler& nextHandler() {
  static Handler next;
  return next;
}
inline Handler& taskHandler() {
  static Handler handler;
  return handler;
}

inline long dispatch(WINDOW window, EVENT* event) {
  if (event->type == E_CREATE) handlers()[window] = std::exchange(nextHandler(), nullptr);
  if (event->type != E_FOCUS && event->type != E_TIMER) seen().push_back(described(*event));
  const Handler handler = handlers()[window];
  return handler ? handler(window, *event) : 0;
}

inline WINDOW open(WIN_TYPE type, const DLG_RES& table, Handler handler = nullptr) {
  nextHandler() = std::move(handler);
  return xvt_dlg_create_table(type, &table, dispatch, nullptr);
}

inline WINDOW ctl(WINDOW window, int id) { return xvt_win_get_ctl(window, id); }

inline std::string text(WINDOW object) {
  char buffer[512];
  return xvt_vobj_get_title(object, buffer, sizeof buffer);
}

/// Presses keys that a window takes.
inline void keys(WINDOW window, std::initializer_list<const char*> pressed) {
  for (const char* key : pressed) EXPECT_EQ(xvt::probe::key(window, key), std::nullopt) << key;
}

/// Lets events run as a job does.
inline void pump(int milliseconds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (std::chrono::steady_clock::now() < end) {
    xvt_app_process_pending_events();
    usleep(500);
  }
}

inline std::function<void()>& body() {
  static std::function<void()> work;
  return work;
}

inline std::function<void()>& tick() {
  static std::function<void()> work;
  return work;
}

/// Calls `work` at every tick, also inside modal dialogs.
inline void onTick(std::function<void()> work) {
  tick() = std::move(work);
  xvt::probe::setTick([] {
    const auto now = tick();
    if (now) now();
  });
}

inline long taskMain(WINDOW window, EVENT* event) {
  if (event->type != E_FOCUS && event->type != E_TIMER) seen().push_back("task " + described(*event));
  if (taskHandler()) taskHandler()(window, *event);
  if (event->type != E_CREATE) return 0;
  body()();
  if (!xvt_app_is_ending()) xvt_app_destroy();
  return 0;
}

/// Runs `work` when the task window exists, then (in the child) `after` with the run's answer.
inline void run(
    const RESOURCES& resources, std::function<void()> work,
    std::function<void(int)> after = [](int status) { EXPECT_EQ(status, 0); }) {
  std::fflush(stdout);
  std::fflush(stderr);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    body() = std::move(work);
    xvt_res_use(&resources);
    offerTested();
    XVT_CONFIG config;
    config.menu_bar_ID = 1000;
    config.base_appl_name = "core-test";
    config.taskwin_title = "Core test";
    char name[] = "core-test";
    char* arguments[] = {name, nullptr};
    after(xvt_app_create(1, arguments, 0, taskMain, &config));
    std::fflush(stdout);
    std::exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

/// A test whose body runs inside an application with the resources `kResources` of its file.
#define TEST_INSIDE(suite, name)                       \
  static void inside##name();                          \
  TEST(suite, name) { run(kResources, inside##name); } \
  static void inside##name()

}  // namespace core
