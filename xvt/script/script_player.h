/// The player of a scripted run, private to the toolkit layer: script.cpp keeps its course, script_verbs.cpp does what
/// the statements say.
#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "xvt/script/script_parse.h"
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
  int line;                         ///< of the statement that gave it
  std::optional<std::string> path;  ///< nothing: Cancel
};

/// What is pressed in the next window of a name.
struct WindowAnswer {
  int line;  ///< of the statement that gave it
  std::string window, control;
};

class Player {
 public:
  using Clock = std::chrono::steady_clock;

  Player(std::string path, std::vector<Statement> statements);

  /// Goes on by one statement at most. Statements run handlers, and a handler may be a whole job whose pumps tick
  /// again: the program counter therefore stands behind a statement before it acts.
  void tick();

  /// The exit status that the run deserves once the program has ended.
  int status();

  // ---- for the verbs
  [[nodiscard]] double secondsSinceBegin() const;
  void setPatience(double seconds) { patience_ = seconds; }
  void addAnswer(FileAnswer answer) { answers_.push_back(std::move(answer)); }
  void addWindowAnswer(WindowAnswer answer) { windowAnswers_.push_back(std::move(answer)); }
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
  void judge(std::size_t at, const Outcome& outcome);
  /// @return true when a box was there to answer
  bool answerFileBox();
  bool answerWindow();
  void say(int line, const std::string& text) const;
  /// Ends the script and the program. What keeps input is named beside the reason.
  void fail(int line, const std::string& reason);
  [[nodiscard]] double limitOf(const Statement& statement) const;

  std::string path_;
  std::vector<Statement> statements_;
  std::size_t next_ = 0;                              ///< the program counter
  std::size_t begun_ = static_cast<std::size_t>(-1);  ///< the statement that `since_` belongs to
  Clock::time_point since_;
  State state_ = State::running;
  std::optional<Clock::time_point> quitAt_;
  double patience_ = 2.0;
  std::deque<FileAnswer> answers_;
  std::deque<WindowAnswer> windowAnswers_;
  WINDOW answeredBox_ = NULL_WIN;
  std::map<std::string, T_LNUM> marks_;
  T_LNUM scanned_ = 0;  ///< lines that the current statement has looked at already
};

/// Tries to carry out a statement.
Outcome perform(Player& player, const Statement& statement);

/// Whether one of a statement's arguments names this window or a control of it.
bool names(const Statement& statement, const std::string& window);

/// What a control shows, as one text: its label or contents, the selected rows of a list, a meter's number.
std::string shownText(WINDOW control);

/// The dialog or box that keeps input from all others, as a failure names it, behind "; "; empty when there is none.
std::string inputKeeper();

/// A path of the script or of the environment: relative ones begin where the program was started.
std::string scriptPath(const std::string& path);

}  // namespace xvt::script
