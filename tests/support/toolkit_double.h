/// The toolkit without a display: every xvt_* call that needs one answered from records in memory, so that dialogs and
/// jobs can be tested by linking `test_support` instead of `xvt`.
///
/// One ToolkitDouble stands in each test. It starts empty; dialogs take their controls from the tables given with
/// xvt_res_use, and those without a table get a control of any kind for each number that is asked for. Handlers are
/// called straight from the helpers below. What a test did not foresee (a question without an answer, a modal dialog
/// left open, a press on a disabled button) becomes a line of `failures`; the lines that are left when the
/// double goes fail the test.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "xvt/resource.h"
#include "xvt/xvt.h"

class ToolkitDouble {
 public:
  using ModalScript = std::function<void(WINDOW dialog)>;

  struct Object;
  struct Timer {
    WINDOW window;
    long period;
    long due;
  };
  /// What a file or directory box was asked.
  struct FileRequest {
    std::string title, directory, type;
  };

  ToolkitDouble();
  ~ToolkitDouble();
  ToolkitDouble(const ToolkitDouble&) = delete;
  ToolkitDouble& operator=(const ToolkitDouble&) = delete;

  /// The double of the running test; calls made outside any test go to one that nobody looks at.
  static ToolkitDouble& current();

  // ---- what the test foresees
  /// Answers the next modal dialog of this resource number (one script a dialog, in order). The script leaves the
  /// dialog closed, or a failure is recorded.
  void onModal(int resource, ModalScript script);
  /// The next dialog of this resource number cannot be created.
  void failNextDialog(int resource) { failing[resource]++; }
  /// The call of this name finds no memory.
  std::string noMemoryIn;
  void allocateIn(const char* call) const {
    if (noMemoryIn == call) throw std::bad_alloc();
  }
  void answerFile(const std::string& path) { fileAnswers.push_back({FL_OK, path}); }
  void answerCancel() { fileAnswers.push_back({FL_CANCEL, ""}); }
  void answerBadFile() { fileAnswers.push_back({FL_BAD, ""}); }
  void answerAsk(ASK_RESPONSE answer) { askAnswers.push_back(answer); }
  /// Called by each xvt_app_process_pending_events with the number of calls so far (from 1).
  std::function<void(long pumps)> onPump;
  /// Milliseconds that the false clock moves with each pump.
  long millisecondsPerPump = 0;
  /// Moves the false clock and fires the timers that come due.
  void advance(long milliseconds);
  /// What xvt_app_create does between the task window's E_CREATE and the end.
  std::function<void()> onMainLoop;
  /// Opens the task window and sends it E_CREATE, for tests without xvt_app_create.
  void openTaskWindow(EVENT_HANDLER handler);

  // ---- what the user does
  void press(WINDOW window, int id);
  /// Types into an edit field and leaves it.
  void typeInto(WINDOW window, int id, const std::string& text);
  void select(WINDOW window, int id, int row);
  void select(WINDOW window, int id, const std::string& rowText);
  void selectAlso(WINDOW window, int id, int row);
  void doubleClick(WINDOW window, int id, int row);
  void chooseMenu(int command);
  void close(WINDOW window);

  // ---- what there is to see
  std::string text(WINDOW window, int id);
  bool checked(WINDOW window, int id);
  bool enabled(WINDOW window, int id);
  bool visible(WINDOW window, int id);
  std::vector<std::string> rows(WINDOW window, int id);
  std::vector<std::string> selected(WINDOW window, int id);
  /// Lines of a window's text field.
  std::vector<std::string> lines(WINDOW window);
  std::string title(WINDOW window);
  /// The newest open dialog of a resource number, or NULL_WIN.
  WINDOW dialog(int resource);
  /// The newest open window with this title, or NULL_WIN.
  WINDOW windowTitled(const std::string& title);
  /// Resource numbers of all dialogs that were opened, in order.
  std::vector<int> opened;
  std::vector<std::string> errors, notes, asks, failures, reports;
  std::vector<FileRequest> fileRequests;
  long pumps = 0;
  int beeps = 0;
  int busy = 0;

  // ---- the records themselves
  struct Row {
    std::string text;
    bool selected = false;
  };
  struct Object {
    WIN_TYPE type = W_NONE;
    int kind = ANY_KIND;  ///< ITEM_KIND of a control
    int id = 0;           ///< control or resource number
    std::string name, title;
    WINDOW owner = NULL_WIN;
    EVENT_HANDLER handler = nullptr;
    void* data = nullptr;
    const DLG_RES* table = nullptr;
    bool shown = true, usable = true, marked = false, dying = false;
    int meter = 0;
    XVT_COLOR color;
    RCT place;
    std::map<int, WINDOW> controls;
    std::vector<Row> rows;
    std::vector<std::string> lines;
    T_LNUM origin = 0;
    T_CPOS offset = 0;
    TX_SCROLL_CALLBACK scrolled = nullptr;
    COORD sbarPosition[2] = {0, 0}, sbarLimit[2] = {0, 0};
  };
  struct MenuState {
    bool marked = false, usable = true;
  };
  struct FileAnswer {
    FL_STATUS status;
    std::string path;
  };
  static constexpr int ANY_KIND = -1;  ///< a control made on demand: it takes every call

  std::map<WINDOW, Object> objects;
  std::map<long, Timer> timers;
  std::map<int, MenuState> menus;
  std::map<int, std::deque<ModalScript>> modals;
  std::map<int, int> failing;
  std::deque<FileAnswer> fileAnswers;
  std::deque<ASK_RESPONSE> askAnswers;
  const RESOURCES* resources = nullptr;
  WINDOW focus = NULL_WIN;
  long nextHandle = 100;
  long now = 0;
  bool ending = false;
  bool quitAllowed = false;

  Object* find(WINDOW handle);
  WINDOW add(Object object);
  WINDOW control(WINDOW window, int id);
  /// The control if a user could reach it now, else null after a line of `failures`.
  Object* usable(WINDOW window, int id, const char* action);
  long send(WINDOW window, EVENT event);
  void sendControl(WINDOW control, CTL_ACTION what);
  void fail(const std::string& line) { failures.push_back(line); }

 private:
  ToolkitDouble* previous_;
};
