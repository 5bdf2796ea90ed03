/// The program's windows in memory, under the hands of a test: dialogs and jobs run on the runtime without a screen,
/// through the real checks, boxes and file boxes.
///
/// One TestToolkit stands in each test, with the program's resource tables and a task window. A modal dialog is
/// answered by what the test foresaw for it, at once and instead of its event loop; the clock that timers follow is the
/// test's own. What a test did not foresee (a question without an answer, a modal dialog left open, a press on a
/// disabled button) and every call that the checks refuse becomes a line of `failures`; the lines that are left when
/// the double goes fail the test.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "xvt/probe.h"
#include "xvt/resource.h"
#include "xvt/xvt.h"

using Lines = std::vector<std::string>;

class TestToolkit {
 public:
  using ModalScript = std::function<void(WINDOW dialog)>;

  /// What a file or directory box was asked.
  struct FileRequest {
    std::string title, directory, type;
  };

  TestToolkit();
  ~TestToolkit();
  TestToolkit(const TestToolkit&) = delete;
  TestToolkit& operator=(const TestToolkit&) = delete;

  // ---- what the test foresees
  /// Answers the next modal dialog of this resource number (one script a dialog, in order). The script leaves the
  /// dialog closed, or a failure is recorded.
  void onModal(int resource, ModalScript script) { modals[resource].push_back(std::move(script)); }
  /// The next dialog of this resource number cannot be created.
  void failNextDialog(int resource) { failing_[resource]++; }
  /// There is no memory for these any more.
  enum class Scarce { nothing, timers, lines };
  Scarce scarce = Scarce::nothing;
  /// The next file or directory box gets this path as its name, and a file that is there is overwritten. What happens
  /// `meanwhile` does so between the box's look at the file and the program's.
  void answerFile(const std::string& path, std::function<void()> meanwhile = nullptr) {
    fileAnswers_.push_back({FL_OK, path, std::move(meanwhile)});
  }
  void answerCancel() { fileAnswers_.push_back({FL_CANCEL, "", nullptr}); }
  void answerBadFile() { fileAnswers_.push_back({FL_BAD, "", nullptr}); }
  void answerAsk(ASK_RESPONSE answer) { askAnswers_.push_back(answer); }
  /// Called by each xvt_app_process_pending_events with the number of calls so far (from 1).
  std::function<void(long pumps)> onPump;
  /// Milliseconds that the false clock moves with each pump.
  long millisecondsPerPump = 0;
  /// Moves the false clock and fires the timers that come due.
  void advance(long milliseconds);
  /// Gives the task window its handler and sends that E_CREATE.
  void openTaskWindow(EVENT_HANDLER handler);
  /// Ends every window, as the end of the program does.
  void endWindows();

  // ---- what the user does
  void press(WINDOW window, int id) { noteRefusal("press", id, xvt::probe::press(xvt_win_get_ctl(window, id))); }
  /// Types into an edit field and leaves it.
  void typeInto(WINDOW window, int id, const std::string& text);
  /// The same; what the field shows then.
  std::string typed(WINDOW window, int id, const std::string& typing) {
    typeInto(window, id, typing);
    return text(window, id);
  }
  /// What is typed into a field, and what it makes of each.
  void expectTyped(WINDOW window, int id, std::initializer_list<std::pair<std::string, std::string>> rows);
  /// The keyboard comes to a control.
  void goTo(WINDOW window, int id) { xvt_vobj_set_focus(xvt_win_get_ctl(window, id)); }
  void select(WINDOW window, int id, int row) {
    noteRefusal("select in", id, xvt::probe::select(xvt_win_get_ctl(window, id), row, false));
  }
  void select(WINDOW window, int id, const std::string& rowText);
  void selectAlso(WINDOW window, int id, int row) {
    noteRefusal("select in", id, xvt::probe::select(xvt_win_get_ctl(window, id), row, true));
  }
  void doubleClick(WINDOW window, int id, int row) {
    noteRefusal("double-click in", id, xvt::probe::doubleClick(xvt_win_get_ctl(window, id), row));
  }
  void chooseMenu(int command) { noteRefusal("choose menu command", command, xvt::probe::menu(command)); }
  void close(WINDOW window) { noteRefusal("close", 0, xvt::probe::close(window)); }

  // ---- what there is to see
  std::string text(WINDOW window, int id) { return title(xvt_win_get_ctl(window, id)); }
  bool checked(WINDOW window, int id) { return xvt_ctl_is_checked(xvt_win_get_ctl(window, id)); }
  bool enabled(WINDOW window, int id) { return xvt_vobj_is_enabled(xvt_win_get_ctl(window, id)); }
  bool visible(WINDOW window, int id) { return xvt_vobj_is_visible(xvt_win_get_ctl(window, id)); }
  XVT_COLOR color(WINDOW window, int id);
  std::vector<std::string> rows(WINDOW window, int id);
  std::vector<std::string> selected(WINDOW window, int id);
  /// Lines of a window's text field.
  std::vector<std::string> lines(WINDOW window) { return xvt::probe::textLines(window, SIZE_MAX); }
  std::string title(WINDOW window);
  COORD scrollPosition(WINDOW window, SCROLL_TYPE bar);
  COORD scrollLimit(WINDOW window, SCROLL_TYPE bar);
  /// The control of a dialog that has the keyboard.
  WINDOW focus(WINDOW dialog);
  /// The newest open dialog of a resource number, or NULL_WIN.
  WINDOW dialog(int resource);
  /// The newest open window with this title, or NULL_WIN.
  WINDOW windowTitled(const std::string& title);
  bool hasTimers();
  bool isBusy();
  /// Resource numbers of all dialogs that were opened, in order.
  std::vector<int> opened;
  std::vector<std::string> errors, notes, asks, failures;
  std::vector<FileRequest> fileRequests;
  std::map<int, std::deque<ModalScript>> modals;
  long pumps = 0;
  int beeps = 0;

 private:
  class Runtime;
  class Events;
  class LineFont;
  struct FileAnswer {
    FL_STATUS status;
    std::string path;
    std::function<void()> meanwhile;
  };
  void fail(const std::string& line) { failures.push_back(line); }
  void needMemory(Scarce what) const;
  void noteRefusal(const std::string& action, int id, const std::optional<std::string>& why);
  bool mayOpen(const DLG_RES& table);
  void answerModal(WINDOW dialog, const DLG_RES& table);
  void answerBox(WINDOW box, const std::string& name);
  void answerFileBox(WINDOW box);
  void answerQuestion(WINDOW box, const std::string& question);

  std::map<int, int> failing_;
  std::deque<FileAnswer> fileAnswers_;
  std::deque<ASK_RESPONSE> askAnswers_;
  Events* events_ = nullptr;
  std::unique_ptr<Runtime> runtime_;
};
