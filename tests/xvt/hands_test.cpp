// What hands do while something is under way: a paste that nobody answers, a list that is down.
#include <X11/Xatom.h>
#include <X11/keysym.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "tests/xvt/core_app.h"
#include "xvt/drop.h"
#include "xvt/motif/dialog.h"

namespace {

using namespace core;
using namespace xvt;

constexpr DLG_ITEM kItems[] = {
    ui::edit(1, "first", 10),
    ui::edit(2, "second", 10),
    ui::option(3, "option", 10),
    ui::list(4, "list", 10, 4),
    ui::push(5, "ok", "~OK", IF_DEFAULT),
    ui::push(6, "cancel", "Cancel", IF_CANCEL),
};
constexpr DLG_ITEM kStopItems[] = {ui::value(1, "count", 10), ui::push(2, "stop", "~Stop", IF_CANCEL)};
constexpr DLG_RES kStop = {2, "stop", "Stop", kStopItems, std::size(kStopItems)};
constexpr DLG_ITEM kPlainItems[] = {ui::push(5, "ok", "~OK", IF_DEFAULT)};
constexpr DLG_RES kPlain = {3, "plain", "Plain", kPlainItems, std::size(kPlainItems)};
constexpr DLG_RES kTable = {1, "hands", "Hands", kItems, std::size(kItems)};
constexpr RESOURCES kResources = {nullptr, 0, &kTable, 1};

Widget widgetOf(WINDOW control) { return Registry::instance().find<Item>(control)->widget(); }

/// Real hands, with the pointer somewhere; the program goes on meanwhile.
void hands(int x, int y, const std::string& what, int milliseconds = 400) {
  const std::string line = "xdotool mousemove " + std::to_string(x) + " " + std::to_string(y) + " " + what + " &";
  EXPECT_EQ(std::system(line.c_str()), 0);
  pump(milliseconds);
}

/// The place on the screen so far inside of a control.
std::pair<Position, Position> placeIn(WINDOW control, Position inside = 12) {
  std::pair<Position, Position> place;
  XtTranslateCoords(widgetOf(control), inside, inside, &place.first, &place.second);
  return place;
}

void click(WINDOW control, unsigned button) {
  const auto [x, y] = placeIn(control);
  hands(x, y, "click " + std::to_string(button));
}

TEST_INSIDE(Hands, ReturnInAFieldPressesTheButtonThatTakesIt) {
  static constexpr DLG_ITEM items[] = {ui::edit(1, "count", 10), ui::push(2, "skip", "Skip", IF_ENTER),
                                       ui::edit(3, "plain", 10), ui::push(4, "go", "Go", IF_DEFAULT)};
  static constexpr DLG_RES table = {2, "enter", "Enter", items, std::size(items)};
  const WINDOW window = open(WD_MODELESS, table);
  for (const int field : {1, 3}) {
    seen().clear();
    xvt_vobj_set_focus(ctl(window, field));
    pump(30);
    EXPECT_EQ(probe::key(window, "Return"), std::nullopt);
    EXPECT_EQ(std::ranges::count(seen(), field == 1 ? "press 2" : "press 4"), 1);
    EXPECT_EQ(std::ranges::count(seen(), field == 1 ? "press 4" : "press 2"), 0);
  }
}

// The intrinsics wait for an answer in the name of the widget that asked.
TEST_INSIDE(Hands, AFieldMayGoWhileItsPasteIsUnderWay) {
  static Display* other = XOpenDisplay(nullptr);  // stays, to be silent to the end
  const ::Window silent = XCreateSimpleWindow(other, DefaultRootWindow(other), 0, 0, 1, 1, 0, 0, 0);
  XtAppSetSelectionTimeout(app().context(), 150);
  for (const char* way : {"Ctrl+V", "Shift+Insert", "button"}) {
    for (const char* selection : {"PRIMARY", "CLIPBOARD"})
      XSetSelectionOwner(other, XInternAtom(other, selection, False), silent, CurrentTime);
    XSync(other, False);
    const WINDOW window = open(WD_MODELESS, kTable);
    pump(30);
    if (std::string(way) == "button")
      click(ctl(window, 2), Button2);
    else
      EXPECT_EQ(probe::key(window, way), std::nullopt);
    pump(20);
    xvt_vobj_destroy(window);
    pump(400);
  }
  pump(50);
  EXPECT_EQ(probe::key(open(WD_MODELESS, kTable), "Ctrl+V"), std::nullopt);  // and the whole program may
}

TEST_INSIDE(Hands, WhatAFieldCopiedOutlivesItAndIsPastedInPlaceOfASelection) {
  WINDOW window = open(WD_MODELESS, kTable);
  pump(30);
  EXPECT_EQ(probe::type(ctl(window, 1), "na\xC3\xAFve"), std::nullopt);
  keys(window, {"Ctrl+A", "Ctrl+C"});
  xvt_vobj_destroy(window);
  pump(30);
  window = open(WD_MODELESS, kTable);
  pump(30);
  EXPECT_EQ(probe::type(ctl(window, 2), "old"), std::nullopt);
  EXPECT_EQ(probe::key(window, "Ctrl+A"), std::nullopt);
  click(ctl(window, 1), Button2);
  pump(50);
  EXPECT_EQ(text(ctl(window, 1)), "old");
  EXPECT_EQ(probe::key(window, "Ctrl+V"), std::nullopt);
  pump(50);
  EXPECT_EQ(text(ctl(window, 1)), "oldna\xC3\xAFve");
  keys(window, {"Ctrl+A", "Ctrl+V"});
  pump(50);
  EXPECT_EQ(text(ctl(window, 1)), "na\xC3\xAFve");
  // What the program writes has a menu.
  const WINDOW values = open(WD_MODELESS, kStop);
  xvt_vobj_set_title(ctl(values, 1), "/data/x");
  pump(50);
  click(ctl(values, 1), Button3);
  Position x = 0, y = 0;
  XtTranslateCoords(widgetOf(ctl(values, 1)), 12, 12, &x, &y);
  hands(x + 15, y + 12, "click 1");
  xvt_vobj_destroy(values);
  keys(window, {"Ctrl+A", "Ctrl+V"});
  pump(50);
  EXPECT_EQ(text(ctl(window, 1)), "/data/x");
}

/// Another program that drags files over this one's windows.
class Source {
 public:
  explicit Source(std::string list) : list_(std::move(list)) {
    XSetSelectionOwner(display_, atom("XdndSelection"), window_, CurrentTime);
  }
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;
  /// Lets the files go over a control. @return what the dialog said to that: "no", or "yes" and whether it took them
  std::string dropOn(WINDOW control) {
    const auto [x, y] = placeIn(control, 2);
    for (Widget at = widgetOf(control); target_ == 0; at = XtParent(at))
      if (isAware(XtWindow(at))) target_ = XtWindow(at);
    send("XdndEnter", {5L << 24, static_cast<long>(atom("text/plain")), static_cast<long>(atom("text/uri-list"))});
    send("XdndPosition", {0, x << 16 | y, CurrentTime, static_cast<long>(atom("XdndActionCopy"))});
    const long welcome = answer("XdndStatus") & 1;
    send(welcome != 0 ? "XdndDrop" : "XdndLeave", {0, CurrentTime});
    if (welcome == 0) return "no";
    return answer("XdndFinished") == 1 ? "yes, taken" : "yes";
  }

 private:
  static Display* connection() {
    static Display* other = XOpenDisplay(nullptr);
    return other;
  }
  Atom atom(const char* name) { return XInternAtom(display_, name, False); }
  bool isAware(::Window window) {
    int count = 0;
    const std::unique_ptr<Atom, int (*)(void*)> all(XListProperties(display_, window, &count), XFree);
    return std::count(all.get(), all.get() + count, atom("XdndAware")) > 0;
  }
  void send(const char* message, const std::vector<long>& data) {
    XEvent event{};
    event.xclient = {ClientMessage, 0, True, display_, target_, atom(message), 32, {}};
    event.xclient.data.l[0] = static_cast<long>(window_);
    std::ranges::copy(data, event.xclient.data.l + 1);
    XSendEvent(display_, target_, False, NoEventMask, &event);
    XFlush(display_);
  }
  /// The flags of an answer; -1 when none comes.
  long answer(const char* message) {
    for (int tries = 0; tries < 200; ++tries) {
      pump(5);
      XEvent event;
      while (XPending(display_) > 0) {
        XNextEvent(display_, &event);
        if (event.type == SelectionRequest) handOver(event.xselectionrequest);
        if (event.type == ClientMessage && event.xclient.message_type == atom(message)) return event.xclient.data.l[1];
      }
    }
    return -1;
  }
  void handOver(const XSelectionRequestEvent& request) {
    XChangeProperty(display_, request.requestor, request.property, request.target, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(list_.data()), static_cast<int>(list_.size()));
    XEvent done{};
    done.xselection = {
        SelectionNotify,  0,           True, display_, request.requestor, request.selection, request.target,
        request.property, request.time};
    XSendEvent(display_, request.requestor, False, NoEventMask, &done);
    XFlush(display_);
  }

  std::string list_;
  Display* display_ = connection();
  ::Window window_ = XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, 1, 1, 0, 0, 0);
  ::Window target_ = 0;
};

TEST_INSIDE(Hands, DroppedFilesPressTheButtonsThatTakeThem) {
  static constexpr DLG_ITEM items[] = {ui::push(1, "one", "One", IF_FILE), ui::push(2, "two", "Two", IF_FILE),
                                       ui::push(3, "other", "Other"), ui::push(4, "many", "Many", IF_FILES)};
  static constexpr DLG_RES table = {2, "files", "Files", items, std::size(items)};
  static std::string taken;
  const WINDOW window = open(WD_MODELESS, table, [](WINDOW, EVENT& event) {
    if (event.type == E_CONTROL)
      while (const char* path = xvt_drop_take_path()) taken += std::to_string(event.ctl.id) + path;
    return 0L;
  });
  pump(50);
  const auto drop = [&](const char* list, int on) {
    const std::string answer = Source(list).dropOn(ctl(window, on));
    pump(50);
    return answer + " " + std::exchange(taken, "");
  };
  EXPECT_EQ(drop("file:///a%20b\r\n", 2), "yes, taken 2/a b");
  EXPECT_EQ(drop("#x\r\nfile:///a\r\nhttp://x/y\r\nfile://elsewhere/z\r\nfile://localhost/b", 2), "yes, taken 1/a2/b");
  EXPECT_EQ(drop("file:/a\nfile:/b\nfile:/c\nfile:/d", 1), "yes, taken 1/a2/b4/c4/d");
  EXPECT_EQ(drop("file:///%00\r\nfile:///%4\r\nnothing", 1), "yes ");
  for (const int button : {1, 2, 4}) xvt_vobj_set_enabled(ctl(window, button), false);
  EXPECT_EQ(drop("file:///a", 1), "no ");
  xvt_vobj_set_enabled(ctl(window, 4), true);
  EXPECT_EQ(drop("file:///a", 1), "yes, taken 4/a");
  open(WD_MODELESS, kTable);
  xvt_vobj_set_enabled(window, false);
  EXPECT_EQ(drop("file:///a", 4), "no ");
  EXPECT_EQ(xvt_drop_take_path(), nullptr);
}

// The keys of a list that is down were its own until its dialog had gone, and beyond.
TEST_INSIDE(Hands, AnOptionListGoesWithWhatItStandsOn) {
  const WINDOW other = open(WD_MODELESS, kTable);
  std::vector<std::function<void(WINDOW)>> ends{
      [](WINDOW window) { xvt_vobj_destroy(window); },
      [](WINDOW window) { xvt_vobj_set_visible(window, false); },
      [](WINDOW window) { xvt_vobj_set_enabled(window, false); },
      [](WINDOW window) { xvt_vobj_set_enabled(ctl(window, 3), false); },
      [](WINDOW window) { xvt_vobj_set_visible(ctl(window, 3), false); },
      [](WINDOW window) { xvt_list_clear(ctl(window, 3)); },
      [](WINDOW) { open(WD_MODELESS, kTable); },
      [](WINDOW window) { click(ctl(window, 1), Button1); },
  };
  for (const auto& end : ends) {
    const WINDOW window = open(WD_MODELESS, kTable);
    for (const char* row : {"a", "b", "c"}) xvt_list_add(ctl(window, 3), -1, row);
    pump(30);
    xvt_vobj_set_focus(ctl(window, 3));
    EXPECT_EQ(probe::key(window, "Return"), std::nullopt);
    pump(30);
    EXPECT_NE(app().choosing(), nullptr);
    end(window);
    EXPECT_EQ(app().choosing(), nullptr);
    pump(30);
    EXPECT_EQ(probe::key(other, "Down"), std::nullopt);
    xvt_vobj_destroy(window);
    pump(10);
  }
}

/// Opens a window, types keys while it is up, and tells what it was told, its last event left out.
std::vector<std::string> typed(WIN_TYPE type, const DLG_RES& table, const std::vector<const char*>& keys) {
  std::size_t at = 0;
  seen().clear();
  onTick([&] {
    const WINDOW window = probe::window(table.name);
    if (window == NULL_WIN) return;
    if (at == keys.size()) return xvt_vobj_destroy(window);
    EXPECT_EQ(probe::key(window, keys[at++]), std::nullopt);
  });
  open(type, table, [](WINDOW window, EVENT& event) {
    if (event.type == E_CREATE)
      for (const char* row : {"a", "b"}) xvt_list_add(ctl(window, 4), -1, row);
    if (event.type == E_CREATE) xvt_vobj_set_focus(ctl(window, 4));
    return 0L;
  });
  while (probe::window(table.name) != NULL_WIN) pump(5);
  onTick(nullptr);
  std::erase_if(seen(), [](const std::string& one) { return one == "create" || one == "destroy"; });
  return seen();
}

TEST_INSIDE(Hands, KeysMeanAButtonOnlyWhereTheyMay) {
  using Events = std::vector<std::string>;
  testing::internal::CaptureStderr();  // the lists that are not there
  EXPECT_EQ(typed(WD_MODELESS, kStop, {"Return", "space", "Escape"}), Events{});
  EXPECT_EQ(typed(WD_MODELESS, kStop, {"Tab", "space"}), Events{"press 2"});
  EXPECT_EQ(typed(WD_MODELESS, kStop, {"Tab", "Tab", "Tab", "space"}), Events{"press 2"});  // the only stop
  EXPECT_EQ(typed(WD_MODELESS, kStop, {"Alt+s"}), Events{"press 2"});
  EXPECT_EQ(typed(WD_MODELESS, kTable, {"Escape"}), Events{});
  EXPECT_EQ(typed(WD_MODAL, kTable, {"Escape"}), Events{"press 6"});
  EXPECT_EQ(typed(WD_MODAL, kPlain, {"Escape"}), Events{"close"});
  EXPECT_EQ(typed(WD_MODAL, kTable, {"Down"}), Events{"select 4"});
  testing::internal::GetCapturedStderr();
  const std::vector<std::pair<std::vector<const char*>, ASK_RESPONSE>> answers{
      {{"Return", "space", "Escape"}, RESP_2}, {{"Return", "Tab", "Return"}, RESP_DEFAULT}};
  for (const auto& [keys, answer] : answers) {
    std::size_t at = 0;
    onTick([&, pressed = keys] {
      const WINDOW box = probe::window("ask-box");
      if (box == NULL_WIN || at == pressed.size()) return;
      EXPECT_EQ(probe::key(box, pressed[at++]), std::nullopt);
    });
    EXPECT_EQ(xvt_dm_post_confirm("Overwrite", "Cancel", "Overwrite?"), answer);
    EXPECT_EQ(at, keys.size());
    onTick(nullptr);
  }
}

TEST_INSIDE(Hands, KeysActOnlyWhereTheyWerePressed) {
  const auto start = [](WINDOW window, EVENT& event) {
    if (event.type != E_CONTROL || event.ctl.what != CTL_PRESS) return 0L;
    xvt_vobj_set_enabled(ctl(window, 5), false);
    open(WD_MODELESS, kPlain);
    return 0L;
  };
  const WINDOW window = open(WD_MODELESS, kTable, start);
  pump(30);
  hands(9999, 9999, "keydown alt keydown o sleep 1 keyup o keyup alt", 1500);
  EXPECT_EQ(std::ranges::count(seen(), "press 5"), 1);  // held, it does not press the next window's button
  EXPECT_EQ(probe::key(window, "space"), std::nullopt);
  EXPECT_EQ(std::ranges::count(seen(), "press 6"), 0);  // nor the control after the one that was disabled
  xvt_vobj_set_enabled(ctl(window, 5), true);
  xvt_vobj_set_focus(ctl(window, 5));
  xvt_vobj_set_visible(ctl(window, 5), false);
  EXPECT_EQ(probe::key(window, "space"), std::nullopt);
  EXPECT_EQ(std::ranges::count(seen(), "press 5"), 1);  // nor one that nobody sees
  EXPECT_EQ(std::ranges::count(seen(), "press 6"), 0);
  xvt_list_add(ctl(window, 3), -1, "row");
  xvt_vobj_set_focus(ctl(window, 3));
  hands(9999, 9999, "key space sleep 0.3 key Escape sleep 0.3 key space", 1200);
  EXPECT_NE(app().choosing(), nullptr);  // without a window manager the keyboard comes back from a list
}

TEST_INSIDE(Hands, WhereRoomIsShortNoHintIsCutAndNoLinesCoverTheirOpener) {
  const WINDOW window = open(WD_MODELESS, kTable);
  const RCT right{0, 300, 1000, 1600}, all{0, 0, 1000, 1600};
  xvt_vobj_move(window, &right);
  const std::string words(60, 'w');
  const DLG_ITEM hint[] = {ui::hint(words.c_str(), 1, "hint"), ui::label("Kind:"),
                           ui::radio(2, "kind", "One", IF_DISABLED), ui::status(3, "status", "Ready")};
  const DLG_RES table = {4, "hint", "Hint", hint, std::size(hint)};
  const WINDOW dialog = open(WD_MODELESS, table);
  const Widget shell = Registry::instance().find<Dialog>(dialog)->shell();
  EXPECT_FALSE(XtIsSensitive(XtNameToWidget(shell, "*label"))) << "as its choice";
  Boolean isStop = True;
  XtVaGetValues(XtNameToWidget(shell, "*VertScrollBar"), XmNtraversalOn, &isStop, nullptr);
  EXPECT_FALSE(isStop) << "where nobody sees the keyboard";
  RCT place;
  xvt_vobj_get_outer_rect(ctl(dialog, 1), &place);
  EXPECT_GE(place.right - place.left, app().look().textSize(Face::plain, words).width);
  RCT before;
  xvt_vobj_get_outer_rect(ctl(dialog, 3), &before);
  xvt_vobj_set_title(ctl(dialog, 3), (words + " " + words).c_str());
  pump(50);
  xvt_vobj_get_outer_rect(ctl(dialog, 3), &place);
  EXPECT_GE(place.bottom - place.top, before.bottom - before.top + app().look().lineHeight(Face::plain));
  xvt_vobj_destroy(dialog);
  xvt_vobj_move(window, &all);
  const WIN_DEF definition[] = {{W_DOC, RCT{30, 10, 330, 510}, "Lines", 0, NULL_FNTID, 0}, {}};
  xvt_win_create_def(definition, TASK_WIN, dispatch, nullptr);
  pump(50);
  EXPECT_EQ(std::system("xwininfo -root -children | grep -A9 '\"Hands\"' | grep -q '\"Lines\"'"), 0);  // from the top
}

TEST_INSIDE(Hands, ALongListIsFilledAtOnce) {
  const WINDOW window = open(WD_MODELESS, kTable);
  pump(30);
  for (int row = 0; row < 500; ++row) xvt_list_add(ctl(window, 4), -1, "row");
  const auto dialog = Registry::instance().find<Dialog>(window);
  dialog->refresh();
  XSync(XtDisplay(dialog->shell()), False);
  EXPECT_LT(XEventsQueued(XtDisplay(dialog->shell()), QueuedAlready), 100);
  EXPECT_EQ(probe::select(ctl(window, 4), 499, false), std::nullopt);
  EXPECT_TRUE(xvt_list_is_selected(ctl(window, 4), 499));
}

TEST_INSIDE(Hands, AListWithColumnsTakesClicksAndItsReturn) {
  static constexpr DLG_ITEM items[] = {ui::row(),
                                       ui::head(1, "name", "Name", 20, IF_GROW),
                                       ui::head(2, "size", "Size", 8, IF_RIGHT),
                                       ui::endOf(),
                                       ui::list(4, "rows", 30, 3, IF_GROW | IF_COLUMNS | IF_ENTER),
                                       ui::push(5, "ok", "OK", IF_DEFAULT)};
  static constexpr DLG_RES table = {2, "columns", "Columns", items, std::size(items)};
  const WINDOW window = open(WD_MODELESS, table);
  for (const char* row : {"alpha\t1", "beta\t2", "gamma"}) xvt_list_add(ctl(window, 4), -1, row);
  pump(100);
  RCT head{}, list{};
  xvt_vobj_get_outer_rect(ctl(window, 2), &head);
  xvt_vobj_get_outer_rect(ctl(window, 4), &list);
  EXPECT_EQ(head.bottom, list.top);
  EXPECT_EQ(head.right, list.right);
  const auto told = [&](const auto& hand) {
    seen().clear();
    hand();
    return seen();
  };
  using Events = std::vector<std::string>;
  EXPECT_EQ(told([&] { click(ctl(window, 1), Button1); }), Events{"press 1"});
  EXPECT_EQ(told([&] { click(ctl(window, 4), Button1); }), Events{"select 4"});
  EXPECT_EQ(told([&] { hands(9999, 9999, "sleep 0.3 key b Down"); }), (Events{"select 4", "select 4"}));
  EXPECT_TRUE(xvt_list_is_selected(ctl(window, 4), 2));
  EXPECT_EQ(told([&] { EXPECT_EQ(probe::key(window, "Return"), std::nullopt); }), (Events{"select 4", "double 4"}));
  const auto place = placeIn(ctl(window, 4));
  EXPECT_EQ(told([&] { hands(place.first, place.second, "click --repeat 3 --delay 60 1", 700); }),
            (Events{"select 4", "select 4", "double 4", "select 4"}));
  xvt_list_clear(ctl(window, 4));
  EXPECT_EQ(told([&] { click(ctl(window, 4), Button1); }), Events{});
}

// A field refuses what was typed into it when it is left: its note must not take the click that left it.
TEST_INSIDE(Hands, AClickIsNotSwallowedAndOneNoteIsUpAtATime) {
  using Events = std::vector<std::string>;
  std::size_t notes = 0;
  RCT box{};
  const WINDOW window = open(WD_MODELESS, kTable, [](WINDOW, EVENT& event) {
    if (event.type == E_CONTROL && event.ctl.what == CTL_FOCUS_LOSS) xvt_dm_post_note("Not a number.");
    return 0L;
  });
  const RCT corner{400, 700, 720, 1200};
  xvt_vobj_move(window, &corner);
  onTick([&] {
    const WINDOW note = probe::window("note-box");
    if (note == NULL_WIN) return;
    const auto windows = probe::openWindows();
    notes =
        std::max<std::size_t>(notes, static_cast<std::size_t>(std::count(windows.begin(), windows.end(), "note-box")));
    xvt_vobj_get_outer_rect(note, &box);
    EXPECT_EQ(probe::press(probe::control(note, "ok")), std::nullopt);
  });
  for (const int target : {2, 4, 5}) {
    xvt_list_add(ctl(window, 4), -1, "row");
    EXPECT_EQ(probe::type(ctl(window, 1), "x"), std::nullopt);
    pump(150);
    seen().clear();
    click(ctl(window, target), Button1);
    pump(50);
    const std::map<int, Events> expected{
        {5, {"loss 1", "press 5"}}, {2, {"loss 1", "gain 2"}}, {4, {"loss 1", "select 4"}}};
    EXPECT_EQ(seen(), expected.at(target));
  }
  onTick(nullptr);
  EXPECT_EQ(notes, 1u);
  RCT place{};
  xvt_vobj_get_outer_rect(window, &place);
  EXPECT_TRUE(box.left > place.left && box.right < place.right && box.top > place.top) << box.left << " " << box.top;
}

}  // namespace
