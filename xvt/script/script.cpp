#include "xvt/script/script.h"

#include <fnmatch.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <utility>

#include "xvt/boxes/texts.h"
#include "xvt/probe.h"
#include "xvt/script/script_parse.h"
#include "xvt/script/script_player.h"

namespace xvt::script {

namespace {

constexpr double SECONDS_TO_END = 60;  ///< a job in the middle of a slow tape operation still ends in this time

double secondsFrom(Player::Clock::time_point begin) {
  return std::chrono::duration<double>(Player::Clock::now() - begin).count();
}

bool isWait(Verb verb) { return verb >= Verb::waitWindow && verb <= Verb::waitLine; }

bool isExpectation(Verb verb) { return verb >= Verb::expectText && verb <= Verb::expectFile; }

}  // namespace

Player::Player(std::string path, std::vector<Statement> statements)
    : path_(std::move(path)), statements_(std::move(statements)) {}

void Player::tick() {
  if (state_ != State::running || xvt_app_is_ending() || !xvt_vobj_is_valid(TASK_WIN)) return;
  // The statement that opened an answered box goes on first: the box's own loop is not left yet.
  if (answerFileBox() || answerWindow()) return;
  if (next_ < statements_.size())
    attempt();
  else
    afterEnd();
}

void Player::attempt() {
  const std::size_t at = next_++;
  if (begun_ != at) {
    begun_ = at;
    since_ = Clock::now();
    scanned_ = 0;
  }
  judge(at, perform(*this, statements_[at]));
}

/// What a try leads to. When statements behind this one ran inside it, it cannot be tried again.
void Player::judge(std::size_t at, const Outcome& outcome) {
  if (outcome.kind == Outcome::done || state_ != State::running || xvt_app_is_ending()) return;
  const Statement& statement = statements_[at];
  if (statement.optional) return;
  const bool error = probe::window("error-box") != NULL_WIN && !names(statement, "error-box");
  const bool disturbed = error && (isWait(statement.verb) || isExpectation(statement.verb));
  const bool patient = secondsFrom(since_) < limitOf(statement);
  if (outcome.kind == Outcome::notYet && next_ == at + 1 && begun_ == at && patient && !disturbed) {
    next_ = at;
    return;
  }
  fail(statement.line, outcome.reason);
}

double Player::limitOf(const Statement& statement) const {
  if (isWait(statement.verb)) return statement.number(statement.arguments.size() - 1);
  return statement.verb == Verb::sleep ? statement.number(0) + 1 : patience_;
}

double Player::secondsSinceBegin() const { return secondsFrom(since_); }

void Player::afterEnd() {
  if (!statements_.empty() && statements_.back().verb == Verb::stay) {
    state_ = State::finished;
    probe::setTick(nullptr);
    return;
  }
  const int line = statements_.empty() ? 1 : statements_.back().line;
  if (quitAt_) {
    if (secondsFrom(*quitAt_) > SECONDS_TO_END) fail(line, "the program did not end");
  } else if (probe::window("error-box") != NULL_WIN) {
    fail(line, "the script ends with an error");
  } else {
    quitAt_ = Clock::now();
    if (const probe::Refusal why = probe::endSession()) fail(line, "the program cannot be ended: " + *why);
  }
}

Outcome Player::quit() {
  const auto before = std::exchange(quitAt_, Clock::now());
  const probe::Refusal why = probe::close(TASK_WIN);
  if (!why) return {};
  quitAt_ = before;
  return {Outcome::notYet, *why};
}

void Player::say(int line, const std::string& text) const {
  std::fflush(stdout);
  std::fprintf(stderr, "script %s:%d: %s\n", path_.c_str(), line, text.c_str());
}

void Player::fail(int line, const std::string& reason) {
  if (std::exchange(state_, State::failed) == State::failed) return;
  say(line, reason + inputKeeper());
  const char* shot = std::getenv("QUARLO_SCRIPT_SHOT");
  if (shot != nullptr && *shot != '\0')
    if (const probe::Refusal why = probe::screenshot(NULL_WIN, scriptPath(shot))) say(line, "no screenshot: " + *why);
  probe::setTick(nullptr);
  xvt_app_destroy();
}

int Player::status() {
  if (state_ == State::failed) return 1;
  if (state_ == State::finished || quitAt_ || next_ >= statements_.size()) return 0;
  say(statements_[next_].line, "the program ended before this statement");
  return 1;
}

/// Gives the answer that stands first to a file or directory box that has just opened.
bool Player::answerFileBox() {
  if (answers_.empty()) return false;
  WINDOW box = probe::window("file-box");
  if (box == NULL_WIN) box = probe::window("dir-box");
  if (box == NULL_WIN || box == answeredBox_) return false;
  answeredBox_ = box;
  const FileAnswer answer = std::move(answers_.front());
  answers_.pop_front();
  probe::Refusal why;
  if (answer.path) why = probe::type(probe::control(box, "name"), *answer.path);
  if (!why) why = probe::press(probe::control(box, answer.path ? "ok" : "cancel"));
  const auto isOpen = [&] { return state_ == State::running && xvt_vobj_is_valid(box) && !xvt_app_is_ending(); };
  // A folder's name only goes there; that it is meant itself takes a second press.
  if (!why && answer.path && isOpen() && shownText(probe::control(box, "name")).empty())
    why = probe::press(probe::control(box, "ok"));
  if (!isOpen()) return true;
  const WINDOW hint = probe::control(box, "hint");
  const std::string words = why ? *why : hint != NULL_WIN ? shownText(hint) : "";
  if (!words.empty())
    fail(answer.line, "the file box did not take \"" + answer.path.value_or("Cancel") + "\": " + words);
  return true;
}

/// Presses what was to be pressed in the first window in line that is open.
bool Player::answerWindow() {
  const auto found = std::find_if(windowAnswers_.begin(), windowAnswers_.end(), [](const WindowAnswer& answer) {
    const WINDOW window = probe::window(answer.window);
    return window != NULL_WIN && xvt_vobj_is_visible(window);
  });
  if (found == windowAnswers_.end()) return false;
  const WindowAnswer answer = std::move(*found);
  windowAnswers_.erase(found);
  const probe::Refusal why = probe::press(probe::control(probe::window(answer.window), answer.control));
  if (why) fail(answer.line, "answer " + answer.window + "." + answer.control + ": " + *why);
  return true;
}

void Player::mark(const std::string& window) {
  const TXEDIT text = probe::textField(probe::window(window));
  marks_[window] = text != NULL_TXEDIT ? xvt_tx_get_num_pars(text) : 0;
}

Outcome Player::findLine(const std::string& window, const std::string& glob) {
  const WINDOW handle = probe::window(window);
  const TXEDIT text = handle != NULL_WIN ? probe::textField(handle) : NULL_TXEDIT;
  if (text == NULL_TXEDIT) return {Outcome::notYet, "there is no window \"" + window + "\" with lines"};
  const T_LNUM count = xvt_tx_get_num_pars(text);
  T_LNUM& mark = marks_[window];
  if (count < mark || count < scanned_) mark = scanned_ = 0;  // it was cleared
  for (scanned_ = std::max(scanned_, mark); scanned_ < count; ++scanned_) {
    if (fnmatch(glob.c_str(), xvt_tx_get_par(text, scanned_, nullptr), 0) != 0) continue;
    mark = scanned_ + 1;
    return {};
  }
  return {Outcome::notYet, "no line like \"" + glob + "\" came to " + window};
}

namespace {

std::unique_ptr<Player>& player() {
  static std::unique_ptr<Player> armed;
  return armed;
}

bool readAll(const char* path, std::string* text) {
  std::ifstream file(path, std::ios::binary);
  text->assign(std::istreambuf_iterator<char>(file), {});
  return file.is_open() && !file.bad();
}

}  // namespace

}  // namespace xvt::script

bool xvt_script_load(const char* path) {
  using namespace xvt::script;
  std::string text;
  if (path == nullptr || !readAll(path, &text)) {
    std::fprintf(stderr, "script %s: cannot be read\n", path != nullptr ? path : "(none)");
    return false;
  }
  ParseError error;
  std::optional<std::vector<Statement>> statements = parse(text, &error);
  if (!statements) {
    std::fprintf(stderr, "script %s:%d: %s\n", path, error.line, error.reason.c_str());
    return false;
  }
  player() = std::make_unique<Player>(path, std::move(*statements));
  xvt::probe::setTick([] { player()->tick(); });
  xvt::probe::setVerdict([] { return player()->status(); });
  return true;
}
