#include "xvt/script/script_echo.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "xvt/boxes/texts.h"
#include "xvt/probe.h"
#include "xvt/resource.h"
#include "xvt/script/script_targets.h"

namespace xvt::script {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
constexpr milliseconds kUpdateEvery{50};
constexpr milliseconds kRedrawEvery{200};
constexpr seconds kFirstPause{1};  // between two lines; each is twice as long as the one before it
constexpr seconds kLongestPause{60};
constexpr int kBarColumns = 20;

bool isTerminal() { return isatty(STDOUT_FILENO) != 0; }

int terminalColumns() {
  winsize size{};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::string bar(int percent) {
  const int full = std::clamp(percent, 0, 100) * kBarColumns / 100;
  return "[" + std::string(static_cast<std::size_t>(full), '#') +
         std::string(static_cast<std::size_t>(kBarColumns - full), '.') + "]";
}

/// What a window's values show, in one line.
std::string summaryOf(WINDOW window) {
  std::string text;
  for (const std::string& name : probe::controls(window)) {
    const WINDOW control = probe::control(window, name);
    if (probe::kind(control) != IK_VALUE || !xvt_vobj_is_visible(control)) continue;
    text += text.empty() ? "" : text.back() == ':' ? " " : "  ";
    text += shownText(control);
  }
  return text;
}

}  // namespace

void Echo::follow(const std::string& window) { followed_.emplace(window, 0); }

void Echo::update(bool last) {
  const auto now = Clock::now();
  if (!last && now - updated_ < kUpdateEvery) return;
  updated_ = now;
  for (auto& [window, printed] : followed_) printLines(window, &printed);
  if (!watched_.empty()) printWatched();
  if (last) clear();
}

void Echo::printLines(const std::string& window, T_LNUM* printed) {
  const WINDOW handle = probe::window(window);
  const TXEDIT text = handle != NULL_WIN ? probe::textField(handle) : NULL_TXEDIT;
  if (text == NULL_TXEDIT) return;
  const T_LNUM count = xvt_tx_get_num_pars(text);
  *printed = std::min(*printed, count);
  if (*printed == count) return;
  clear();
  for (; *printed < count; ++*printed) {
    std::string line = xvt_tx_get_par(text, *printed, nullptr);
    line.erase(line.find_last_not_of(' ') + 1);
    std::printf("%s\n", line.c_str());
  }
  std::fflush(stdout);
}

void Echo::printWatched() {
  const WINDOW window = probe::window(watched_);
  if (window == NULL_WIN || !isShown(window)) {
    seen_ = NULL_WIN;
    return clear();
  }
  const auto now = Clock::now();
  if (window != seen_) {
    seen_ = window;
    pause_ = kFirstPause;
    toldAt_ = now;
  }
  if (now - toldAt_ < (isTerminal() ? milliseconds(kRedrawEvery) : milliseconds(pause_))) return;
  toldAt_ = now;
  pause_ = std::min(pause_ * 2, kLongestPause);
  std::string text = summaryOf(window);
  const WINDOW percent = percent_.empty() ? NULL_WIN : probe::control(window, percent_);
  if (isTerminal() && percent != NULL_WIN && xvt_vobj_is_visible(percent))
    text = bar(static_cast<int>(std::strtol(shownText(percent).c_str(), nullptr, 10))) + " " + text;
  if (!isTerminal()) {
    std::printf("%s\n", text.c_str());
  } else if (text != shown_) {
    clear();
    shown_ = text;
    std::printf("%s", text.substr(0, static_cast<std::size_t>(terminalColumns() - 1)).c_str());
  }
  std::fflush(stdout);
}

void Echo::clear() {
  if (shown_.empty()) return;
  shown_.clear();
  std::printf("\r\033[K");
  std::fflush(stdout);
}

}  // namespace xvt::script
