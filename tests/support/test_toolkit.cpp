#include "tests/support/test_toolkit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>

#include "resources/dialogs.h"
#include "resources/ids.h"
#include "xvt/base/report.h"
#include "xvt/boxes/texts.h"
#include "xvt/headless/headless.h"
#include "xvt/headless/item.h"
#include "xvt/headless/text.h"
#include "xvt/headless/window.h"
#include "xvt/probe.h"

using namespace xvt;

namespace {

TestToolkit* standing = nullptr;

/// Why a question was asked that belongs to a file box and not to the program.
constexpr const char* kOverwrite = "Overwrite this file?";

WINDOW part(WINDOW window, const char* name) { return probe::control(window, name); }

std::shared_ptr<BaseDialog> dialogOf(WINDOW window) { return Registry::instance().find<BaseDialog>(window); }

}  // namespace

void TestToolkit::needMemory(Scarce what) const {
  if (scarce == what) throw std::bad_alloc();
}

/// Alarms in a time that moves only when the test says so.
class TestToolkit::Events final : public EventSource {
 public:
  explicit Events(const TestToolkit& kit) : kit_(kit) {}
  Clock::time_point now() const override { return now_; }
  bool pending() override { return !alarms_.empty() && alarms_.begin()->first <= now_; }
  void serveOne() override {
    if (!pending()) return;
    const auto work = std::move(alarms_.begin()->second.second);
    alarms_.erase(alarms_.begin());
    work();
  }
  long alarm(long milliseconds, std::function<void()> work) override {
    kit_.needMemory(Scarce::timers);
    alarms_.emplace(now_ + std::chrono::milliseconds(milliseconds), std::pair{++numbers_, std::move(work)});
    return numbers_;
  }
  void cancelAlarm(long number) override {
    std::erase_if(alarms_, [number](const auto& entry) { return entry.second.first == number; });
  }
  void watch(int, std::function<void()>) override {}
  void unwatch() override {}

  void advance(long milliseconds) {
    now_ += std::chrono::milliseconds(milliseconds);
    while (pending()) serveOne();
  }
  bool empty() const { return alarms_.empty(); }

 private:
  const TestToolkit& kit_;
  Clock::time_point now_;
  std::multimap<Clock::time_point, std::pair<long, std::function<void()>>> alarms_;
  long numbers_ = 0;
};

/// What every line of a text field is measured with.
class TestToolkit::LineFont final : public MemoryFont {
 public:
  LineFont(const TestToolkit& kit, int points) : MemoryFont(points), kit_(kit) {}
  int width(std::string_view text) const override {
    kit_.needMemory(Scarce::lines);
    return MemoryFont::width(text);
  }

 private:
  const TestToolkit& kit_;
};

/// The runtime without a screen, with a test in the place of its event loops.
class TestToolkit::Runtime final : public Headless {
 public:
  Runtime(TestToolkit& kit, std::unique_ptr<Events> events)
      : Headless({MENU_BAR, DLG_ABOUT, "quarlo", "", "Kyr Quarlo"}, std::move(events)), kit_(kit) {}
  void bell() override { ++kit_.beeps; }
  std::shared_ptr<Font> createFont(bool, int points, bool) override { return std::make_shared<LineFont>(kit_, points); }
  void processPendingEvents() override {
    ++kit_.pumps;
    if (kit_.onPump) kit_.onPump(kit_.pumps);
    if (kit_.millisecondsPerPump > 0) kit_.advance(kit_.millisecondsPerPump);
  }
  std::shared_ptr<Window> openDialog(bool modal, const DLG_RES& table, EVENT_HANDLER handler, void* data) override {
    return kit_.mayOpen(table) ? Desk::openDialog(modal, table, handler, data) : nullptr;
  }

 protected:
  void waitFor(BaseDialog& dialog) override {
    if (!dialog.isDying()) kit_.answerModal(dialog.handle(), dialog.table());
  }

 private:
  TestToolkit& kit_;
};

TestToolkit::TestToolkit() {
  standing = this;
  setReporter([](const std::string& line) { standing->fail(line); });
  xvt_res_use(quarloResources());
  auto events = std::make_unique<Events>(*this);
  events_ = events.get();
  runtime_ = std::make_unique<Runtime>(*this, std::move(events));
  runtime_->begin([](WINDOW, EVENT*) -> long { return 0; });
}

TestToolkit::~TestToolkit() {
  endWindows();
  runtime_.reset();
  setReporter(nullptr);
  standing = nullptr;
  for (const std::string& line : failures) ADD_FAILURE() << line;
}

void TestToolkit::endWindows() {
  runtime_->end();
  runtime_->finish();
}

void TestToolkit::openTaskWindow(EVENT_HANDLER handler) {
  runtime_->task()->handler = handler;
  EVENT create;
  create.type = E_CREATE;
  runtime_->task()->tell(create);
}

void TestToolkit::advance(long milliseconds) { events_->advance(milliseconds); }

// ---- modal dialogs ------------------------------------------------------------------------------------------------

bool TestToolkit::mayOpen(const DLG_RES& table) {
  const std::string name = table.name;
  if (table.id == 0 && name.ends_with("-box")) {
    const bool bad =
        (name == "file-box" || name == "dir-box") && !fileAnswers_.empty() && fileAnswers_.front().status == FL_BAD;
    if (bad) fileAnswers_.pop_front();
    return !bad;
  }
  if (failing_[table.id] > 0) return failing_[table.id]-- == 0;
  opened.push_back(table.id);
  return true;
}

void TestToolkit::answerModal(WINDOW dialog, const DLG_RES& table) {
  const std::string name = "modal dialog " + std::to_string(table.id);
  auto& scripts = modals[table.id];
  if (table.id == 0) {
    answerBox(dialog, table.name);
  } else if (scripts.empty()) {
    fail(name + " was opened, but nobody answers it");
  } else {
    const ModalScript script = std::move(scripts.front());
    scripts.pop_front();
    script(dialog);
    if (xvt_vobj_is_valid(dialog) && !xvt_app_is_ending()) fail(name + " was left open");
  }
  if (xvt_vobj_is_valid(dialog)) close(dialog);
}

void TestToolkit::answerBox(WINDOW box, const std::string& name) {
  if (name == "file-box" || name == "dir-box") return answerFileBox(box);
  const std::string text = titleOf(part(box, "text"));
  if (name == "ask-box") return answerQuestion(box, text);
  (name == "error-box" ? errors : notes).push_back(text);
  noteRefusal("press ok of " + name, 0, probe::press(part(box, "ok")));
}

void TestToolkit::answerQuestion(WINDOW box, const std::string& question) {
  if (question.starts_with(kOverwrite)) return noteRefusal("overwrite", 0, probe::press(part(box, "first")));
  asks.push_back(question);
  if (askAnswers_.empty()) return fail("asked \"" + question + "\", but nobody answers it");
  const char* const buttons[] = {"first", "second", "third"};
  const char* button = buttons[askAnswers_.front() - RESP_DEFAULT];
  askAnswers_.pop_front();
  noteRefusal(std::string("answer with ") + button, 0, probe::press(part(box, button)));
}

void TestToolkit::answerFileBox(WINDOW box) {
  const WINDOW show = part(box, "show");
  const std::string type = show != NULL_WIN ? rowText(show, 0) : "";
  fileRequests.push_back(
      {titleOf(box), titleOf(part(box, "folder")), type.ends_with(")") ? type.substr(0, type.find(' ')) : ""});
  if (fileAnswers_.empty()) return fail("file box \"" + titleOf(box) + "\" was opened, but nobody answers it");
  const FileAnswer answer = fileAnswers_.front();
  fileAnswers_.pop_front();
  if (answer.status != FL_OK) return noteRefusal("cancel", 0, probe::press(part(box, "cancel")));
  noteRefusal("type a name", 0, probe::type(part(box, "name"), answer.path));
  noteRefusal("press ok", 0, probe::press(part(box, "ok")));
  // A folder's name only goes there; that it is meant itself takes a second press.
  if (xvt_vobj_is_valid(box) && titleOf(part(box, "name")).empty())
    noteRefusal("press ok", 0, probe::press(part(box, "ok")));
  if (answer.meanwhile) answer.meanwhile();
  if (xvt_vobj_is_valid(box)) fail("the file box did not take \"" + answer.path + "\": " + titleOf(part(box, "hint")));
}

// ---- what the user does -------------------------------------------------------------------------------------------

void TestToolkit::noteRefusal(const std::string& action, int id, const std::optional<std::string>& why) {
  if (why) fail("cannot " + action + (id != 0 ? " control " + std::to_string(id) : "") + ": " + *why);
}

void TestToolkit::typeInto(WINDOW window, int id, const std::string& typed) {
  noteRefusal("type into", id, probe::type(xvt_win_get_ctl(window, id), typed));
  if (const auto dialog = dialogOf(window)) dialog->settle();
}

void TestToolkit::expectTyped(WINDOW window, int id, std::initializer_list<std::pair<std::string, std::string>> rows) {
  for (const auto& [typing, shown] : rows)
    EXPECT_EQ(typed(window, id, typing), shown) << typing << " in control " << id;
}

void TestToolkit::select(WINDOW window, int id, const std::string& wanted) {
  const std::vector<std::string> all = rows(window, id);
  const auto found = std::find(all.begin(), all.end(), wanted);
  if (found == all.end()) return fail("no row \"" + wanted + "\" in control " + std::to_string(id));
  select(window, id, static_cast<int>(found - all.begin()));
}

// ---- what there is to see -----------------------------------------------------------------------------------------

XVT_COLOR TestToolkit::color(WINDOW window, int id) {
  return Registry::instance().find<MemoryItem>(xvt_win_get_ctl(window, id))->color();
}

std::vector<std::string> TestToolkit::rows(WINDOW window, int id) {
  std::vector<std::string> texts;
  const WINDOW list = xvt_win_get_ctl(window, id);
  for (int row = 0; row < xvt_list_count(list); ++row) texts.push_back(rowText(list, row));
  return texts;
}

std::vector<std::string> TestToolkit::selected(WINDOW window, int id) {
  std::vector<std::string> texts;
  const WINDOW list = xvt_win_get_ctl(window, id);
  for (int row = 0; row < xvt_list_count(list); ++row)
    if (xvt_list_is_selected(list, row)) texts.push_back(rowText(list, row));
  return texts;
}

std::string TestToolkit::title(WINDOW window) { return titleOf(window); }

COORD TestToolkit::scrollPosition(WINDOW window, SCROLL_TYPE bar) {
  return Registry::instance().find<MemoryDocument>(window)->bar(bar).position;
}

COORD TestToolkit::scrollLimit(WINDOW window, SCROLL_TYPE bar) {
  return Registry::instance().find<MemoryDocument>(window)->bar(bar).high;
}

WINDOW TestToolkit::focus(WINDOW dialog) {
  const auto on = dialogOf(dialog) ? dialogOf(dialog)->focused() : nullptr;
  return on ? on->handle() : NULL_WIN;
}

WINDOW TestToolkit::dialog(int resource) {
  WINDOW newest = NULL_WIN;
  for (const auto& window : runtime_->windows())
    if (const auto one = std::dynamic_pointer_cast<BaseDialog>(window); one && one->table().id == resource)
      newest = one->handle();
  return newest;
}

WINDOW TestToolkit::windowTitled(const std::string& wanted) {
  WINDOW newest = NULL_WIN;
  for (const auto& window : runtime_->windows())
    if (window->title() == wanted) newest = window->handle();
  return newest;
}

bool TestToolkit::hasTimers() { return !events_->empty(); }
bool TestToolkit::isBusy() { return runtime_->isBusy(); }
