#include "xvt/script/script.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <memory>
#include <utility>

#include "xvt/boxes/texts.h"
#include "xvt/probe.h"
#include "xvt/script/script_parse.h"
#include "xvt/script/script_targets.h"

namespace xvt::script {

namespace {

constexpr double kSecondsToEnd = 60;  ///< a job in the middle of a slow tape operation still ends in this time

double secondsFrom(Player::Clock::time_point begin) {
  return std::chrono::duration<double>(Player::Clock::now() - begin).count();
}

bool isWait(Verb verb) { return verb >= Verb::waitWindow && verb <= Verb::waitLine; }

/// Whether a statement only prepares what is to come: no window has to catch up behind it.
bool isPreparation(Verb verb) {
  return (verb >= Verb::answer && verb <= Verb::answerCancel && verb != Verb::again) || verb == Verb::patience ||
         verb == Verb::follow || verb == Verb::watch;
}

bool isExpectation(Verb verb) { return verb >= Verb::expectText && verb <= Verb::expectTerminal; }

}  // namespace

Player::Player(std::vector<Statement> statements, std::string speaker)
    : statements_(std::move(statements)), speaker_(std::move(speaker)) {
  courses_.push_back(std::make_shared<Course>(Course{&statements_}));
}

void Player::tick() {
  const bool ending = xvt_app_is_ending();
  if (ending && std::exchange(courses_.back()->prompted, false)) std::puts("");
  // What somebody is typing at the terminal is not disturbed.
  if (!courses_.back()->prompted) echo_.update(ending);
  if (state_ != State::running || ending || !xvt_vobj_is_valid(TASK_WIN)) return;
  // The statement that opened an answered box goes on first: the box's own loop is not left yet.
  if (answerFileBox()) return;
  const auto isThrough = [this] { return course().next >= course().statements->size(); };
  while (!isThrough() && isPreparation((*course().statements)[course().next].verb)) attempt();
  answerWindow();
  if (isThrough())
    afterEnd();
  else
    attempt();
}

/// What goes on next: an answer ends with its window.
Course& Player::course() {
  const auto isOver = [](const Course& answer) {
    return answer.next >= answer.statements->size() || !isShown(answer.window);
  };
  while (courses_.size() > 1 && isOver(*courses_.back())) {
    forgetAnswersOf(courses_.back().get());
    courses_.pop_back();
  }
  return *courses_.back();
}

void Player::forgetAnswersOf(const Course* giver) {
  std::erase_if(
      windowAnswers_, [giver](const WindowAnswer& answer) { return answer.giver == giver; });
}

void Player::attempt() {
  const std::shared_ptr<Course> course = courses_.back();  // it may end while its statement is carried out
  const std::size_t at = course->next++;
  if (course->begun != at) {
    course->begun = at;
    course->since = Clock::now();
    course->scanned = 0;
    course->prompted = false;
  }
  current_ = course.get();
  judge(*course, at, perform(*this, (*course->statements)[at]));
}

/// What a try leads to. When statements behind this one ran inside it, it cannot be tried again.
void Player::judge(Course& course, std::size_t at, const Outcome& outcome) {
  if (outcome.kind == Outcome::done || state_ != State::running || xvt_app_is_ending()) return;
  const Statement& statement = (*course.statements)[at];
  if (statement.optional) return;
  const bool error = probe::window("error-box") != NULL_WIN && !names(statement, "error-box");
  const bool disturbed = error && (isWait(statement.verb) || isExpectation(statement.verb));
  const bool patient = secondsFrom(course.since) < limitOf(statement);
  if (outcome.kind == Outcome::notYet && course.next == at + 1 && course.begun == at && patient && !disturbed) {
    course.next = at;
    return;
  }
  fail(statement, outcome.reason);
}

double Player::limitOf(const Statement& statement) const {
  if (isWait(statement.verb)) return statement.number(statement.arguments.size() - 1);
  if (statement.verb == Verb::prompt) return std::numeric_limits<double>::infinity();
  return statement.verb == Verb::sleep ? statement.number(0) + 1 : patience_;
}

double Player::secondsSinceBegin() const { return secondsFrom(current_->since); }

const Statement& Player::lastReached() const {
  static const Statement none{std::make_shared<const std::string>(), 1, Verb::quit, {}, false, "", {}};
  if (statements_.empty()) return none;
  return statements_[std::min(courses_.front()->next, statements_.size() - 1)];
}

void Player::afterEnd() {
  if (!statements_.empty() && statements_.back().verb == Verb::stay) {
    state_ = State::finished;
    probe::setTick(nullptr);
    return;
  }
  if (quitAt_) {
    if (secondsFrom(*quitAt_) > kSecondsToEnd) fail(lastReached(), "the program did not end");
  } else if (probe::window("error-box") != NULL_WIN) {
    fail(lastReached(), "the script ends with an error");
  } else {
    quitAt_ = Clock::now();
    if (const probe::Refusal why = probe::endSession()) fail(lastReached(), "the program cannot be ended: " + *why);
  }
}

Outcome Player::quit() {
  echo_.update(true);  // the windows that are followed go with the program
  const auto before = std::exchange(quitAt_, Clock::now());
  const probe::Refusal why = probe::close(TASK_WIN);
  if (!why) return {};
  quitAt_ = before;
  return {Outcome::notYet, *why};
}

/// @param own whether the text is the script's own, which needs no place where somebody speaks for the script
void Player::say(const Statement& statement, const std::string& text, bool own) {
  echo_.update(true);
  const std::string begin = speaker_.empty() ? "script " : speaker_ + ": ";
  const std::string place = *statement.file + ":" + std::to_string(statement.line) + ": ";
  std::fprintf(stderr, "%s%s%s\n", begin.c_str(), own && !speaker_.empty() ? "" : place.c_str(), text.c_str());
}

void Player::fail(const Statement& statement, const std::string& reason) {
  if (std::exchange(state_, State::failed) == State::failed) return;
  const bool own = statement.verb == Verb::giveUp || !statement.otherwise.empty();
  say(statement, !own ? reason + inputKeeper() : statement.otherwise.empty() ? reason : statement.otherwise, own);
  const char* shot = std::getenv("QUARLO_SCRIPT_SHOT");
  if (shot != nullptr && *shot != '\0')
    if (const probe::Refusal why = probe::screenshot(NULL_WIN, scriptPath(shot)))
      say(statement, "no screenshot: " + *why);
  // As the session ends it: a job that has not begun yet does not begin.
  if (probe::endSession()) xvt_app_destroy();
}

void Player::report(const Statement& statement, const std::string& reason) {
  faulty_ = true;
  say(statement, reason, true);
}

int Player::status() {
  if (state_ == State::failed) return 1;
  const bool through = state_ == State::finished || quitAt_ || courses_.front()->next >= statements_.size();
  if (!through && !speaker_.empty()) say(lastReached(), "stopped before its end", true);
  if (!through && speaker_.empty()) say(lastReached(), "the program ended before this statement");
  return through && !faulty_ ? 0 : 1;
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
    fail(*answer.statement, "the file box did not take \"" + answer.path.value_or("Cancel") + "\": " + words);
  return true;
}

void Player::answerWindow() {
  const auto windowOf = [](const WindowAnswer& answer) {
    const Statement& statement = *answer.statement;
    const WINDOW window = probe::window(statement.text(0));
    if (window == NULL_WIN || window == answer.last || !isShown(window)) return NULL_WIN;
    return !statement.has(1) || isLike(statement.text(1), textOf(window)) ? window : NULL_WIN;
  };
  const auto isGiven = [this](WINDOW window) {
    return std::any_of(courses_.begin(), courses_.end(), [&](const auto& each) { return each->window == window; });
  };
  const auto isMeant = [&](Verb verb, const WindowAnswer& answer) {
    const WINDOW window = answer.statement->verb == verb ? windowOf(answer) : NULL_WIN;
    return window != NULL_WIN && !isGiven(window);
  };
  // Those for one time first, in their order; of those for every time the one that was given last.
  auto found = std::find_if(windowAnswers_.begin(), windowAnswers_.end(),
                            [&](const WindowAnswer& answer) { return isMeant(Verb::answer, answer); });
  if (found == windowAnswers_.end()) {
    const auto last = std::find_if(windowAnswers_.rbegin(), windowAnswers_.rend(),
                                   [&](const WindowAnswer& answer) { return isMeant(Verb::answerAlways, answer); });
    if (last == windowAnswers_.rend()) return;
    found = std::prev(last.base());
  }
  found->last = windowOf(*found);
  courses_.push_back(std::make_shared<Course>(Course{&found->statement->body, found->last}));
  if (found->statement->verb == Verb::answer) windowAnswers_.erase(found);
}

std::optional<std::string> Player::lineFromTerminal(const std::string& words, bool* atEnd) {
  if (!std::exchange(current_->prompted, true)) {
    echo_.update(true);
    std::printf("%s ", words.c_str());
    std::fflush(stdout);
  }
  pollfd input{STDIN_FILENO, POLLIN, 0};
  if (poll(&input, 1, 0) <= 0) return std::nullopt;
  std::array<char, 256> bytes{};
  const ssize_t count = read(STDIN_FILENO, bytes.data(), bytes.size());
  *atEnd = count <= 0;
  if (count > 0) typed_.append(bytes.data(), static_cast<std::size_t>(count));
  const std::size_t end = typed_.find('\n');
  if (end == std::string::npos && !*atEnd) return std::nullopt;
  const std::string line = typed_.substr(0, end);
  typed_.erase(0, end == std::string::npos ? end : end + 1);
  return line;
}

bool Player::beginAgain() {
  if (current_->window == NULL_WIN) return false;
  forgetAnswersOf(current_);
  current_->next = 0;
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
  T_LNUM& scanned = current_->scanned;
  if (count < mark || count < scanned) mark = scanned = 0;  // it was cleared
  for (scanned = std::max(scanned, mark); scanned < count; ++scanned) {
    if (!isLike(glob, xvt_tx_get_par(text, scanned, nullptr))) continue;
    mark = scanned + 1;
    return {};
  }
  return {Outcome::notYet, "no line like \"" + glob + "\" came to " + window};
}

namespace {

std::unique_ptr<Player>& player() {
  static std::unique_ptr<Player> armed;
  return armed;
}

bool refuse(const XVT_SCRIPT& script, const std::string& text) {
  std::fprintf(stderr, "%s%s\n", script.speaker.empty() ? "" : (script.speaker + ": ").c_str(), text.c_str());
  return false;
}

bool refuse(const XVT_SCRIPT& script, const ParseError& error) {
  const std::string line = error.line > 0 ? ":" + std::to_string(error.line) : "";
  return refuse(script, (script.speaker.empty() ? "script " : "") + error.file + line + ": " + error.reason);
}

}  // namespace

}  // namespace xvt::script

bool xvt_script_load(const XVT_SCRIPT& script) {
  using namespace xvt::script;
  ParseError error;
  const std::optional<Source> source = readSource(script.path, script.folders, &error);
  if (!source) return refuse(script, error);
  std::string reason;
  const std::optional<Values> values = takeValues(*source, script.values, &reason);
  if (!values) return refuse(script, (script.speaker.empty() ? "script " + script.path + ": " : "") + reason);
  std::optional<std::vector<Statement>> statements = parse(*source, *values, &error);
  if (!statements) return refuse(script, error);
  player() = std::make_unique<Player>(std::move(*statements), script.speaker);
  xvt::probe::setTick([] { player()->tick(); });
  xvt::probe::setVerdict([] { return player()->status(); });
  return true;
}
