/// The player of a scripted run, private to the toolkit layer: script.cpp keeps its course, script_verbs.cpp does what
/// the statements say.
#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "xvt/script/script_echo.h"
#include "xvt/script/script_statement.h"
#include "xvt/xvt.h"

namespace xvt::script {

/// What became of one try to carry out a statement.
struct Outcome {
  enum Kind { done, notYet, failed };
  Kind kind = done;
  std::string reason;  ///< for notYet and failed
};

/// What answers the next file or directory box.
struct FileAnswer {
  const Statement* statement;       ///< that gave it
  std::optional<std::string> path;  ///< nothing: Cancel
};

/// Statements in progress: those of the script, or of an answer as long as its window is open.
struct Course {
  const std::vector<Statement>* statements;
  WINDOW window = NULL_WIN;                          ///< of an answer
  std::size_t next = 0;                              ///< the program counter
  std::size_t begun = static_cast<std::size_t>(-1);  ///< the statement that `since` belongs to
  std::chrono::steady_clock::time_point since{};
  T_LNUM scanned = 0;     ///< lines that the current statement has looked at already
  bool prompted = false;  ///< the current statement has asked at the terminal
};

/// What is done when a window comes up, the next time or each time.
struct WindowAnswer {
  const Statement* statement;  ///< its body is what is done
  const Course* giver;         ///< what the statement stands in: what an answer gives goes with it
  WINDOW last = NULL_WIN;      ///< the window that it was done for last
};

class Player {
 public:
  using Clock = std::chrono::steady_clock;

  /// @param speaker see XVT_SCRIPT
  Player(std::vector<Statement> statements, std::string speaker);

  /// Goes on by one statement at most. Statements run handlers, and a handler may be a whole job whose pumps tick
  /// again: the program counter therefore stands behind a statement before it acts.
  void tick();

  /// The exit status that the run deserves once the program has ended.
  int status();

  // ---- for the verbs
  [[nodiscard]] double secondsSinceBegin() const;
  void setPatience(double seconds) { patience_ = seconds; }
  void addAnswer(FileAnswer answer) { answers_.push_back(std::move(answer)); }
  void addWindowAnswer(const Statement& statement) { windowAnswers_.push_back({&statement, current_}); }
  /// Lets the answer that is being given begin anew. @return false when none is
  bool beginAgain();
  Echo& echo() { return echo_; }
  /// The line that somebody types at the terminal, asked for by `words`; nothing as long as it has not come.
  std::optional<std::string> lineFromTerminal(const std::string& words, bool* atEnd);
  /// Says that something failed; the script goes on, but has failed at its end.
  void report(const Statement& statement, const std::string& reason);
  /// Closes the task window as its close box does.
  Outcome quit();
  /// Puts a window's mark behind its last line.
  void mark(const std::string& window);
  /// Looks for a line since the window's mark; sets the mark behind it when found.
  Outcome findLine(const std::string& window, const std::string& glob);

 private:
  enum class State { running, failed, finished };

  void attempt();
  void afterEnd();
  void judge(Course& course, std::size_t at, const Outcome& outcome);
  /// @return true when a box was there to answer
  bool answerFileBox();
  /// Begins with the answer to a window that is open, if there is one.
  void answerWindow();
  Course& course();
  void forgetAnswersOf(const Course* giver);
  void say(const Statement& statement, const std::string& text, bool own = false);
  /// Ends the script and the program. What keeps input is named beside the reason.
  void fail(const Statement& statement, const std::string& reason);
  [[nodiscard]] const Statement& lastReached() const;
  [[nodiscard]] double limitOf(const Statement& statement) const;

  std::vector<Statement> statements_;
  std::string speaker_;
  std::vector<std::shared_ptr<Course>> courses_;  ///< the script, and above it answers that are being given
  Course* current_ = nullptr;                     ///< whose statement is being tried
  State state_ = State::running;
  bool faulty_ = false;  ///< something was reported
  std::optional<Clock::time_point> quitAt_;
  double patience_ = 2.0;
  std::deque<FileAnswer> answers_;
  std::deque<WindowAnswer> windowAnswers_;
  WINDOW answeredBox_ = NULL_WIN;
  std::map<std::string, T_LNUM> marks_;
  std::string typed_;  ///< at the terminal, not yet a line
  Echo echo_;
};

/// Tries to carry out a statement.
Outcome perform(Player& player, const Statement& statement);
/// The same for waits and expectations.
Outcome lookAt(Player& player, const Statement& statement);
/// Prints all open windows and their controls.
Outcome dumpWindows(Player& player, const Statement& statement);

}  // namespace xvt::script
