// Windows, dialogs, controls and events, on a real display.
#include <malloc.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "tests/xvt/core_app.h"

namespace {

using namespace core;
using namespace xvt;
using Events = std::vector<std::string>;

constexpr MENU_ITEM kMenuItems[] = {
    ui::menu("~File"),
    ui::command(1, "open", "~Open...", "Ctrl+O"),
    ui::checkItem(2, "console", "~Console"),
    ui::menuSeparator(),
    ui::command(3, "rewind", "Rewind", nullptr, false),
    ui::command(M_EDIT_COPY, "copy", "Copy", "Ctrl+C"),
    ui::command(M_EDIT_PASTE, "paste", "Paste", "Ctrl+V"),
    ui::command(M_EDIT_SELECT_ALL, "all", "Select all", "Ctrl+A"),
};
constexpr MENU_RES kMenus[] = {{1000, kMenuItems, std::size(kMenuItems)}};

constexpr DLG_ITEM kFormItems[] = {
    ui::grid(2),
    ui::label("~First"),
    ui::edit(1, "first", 10),
    ui::label("~Second"),
    ui::edit(2, "second", 10),
    ui::label("Value"),
    ui::value(3, "value", 12),
    ui::endOf(),
    ui::card("Marks"),
    ui::check(4, "check", "C~heck"),
    ui::radio(5, "one", "One"),
    ui::radio(6, "two", "Two"),
    ui::endOf(),
    ui::push(7, "hidden", "Hidden", IF_HIDDEN),
    ui::push(8, "off", "Off", IF_DISABLED),
    ui::edit(12, "fixed", 8, IF_READONLY),
    ui::meter(9, "meter", 20),
    ui::buttons(),
    ui::push(10, "ok", "~OK", IF_DEFAULT),
    ui::push(11, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};
constexpr DLG_RES kForm = {1, "form", "Form", kFormItems, std::size(kFormItems)};

constexpr DLG_ITEM kListItems[] = {
    ui::list(1, "single", 20, 5, IF_GROW), ui::multi(2, "several", 20, 5),
    ui::option(3, "option", 10),           ui::buttons(),
    ui::push(4, "ok", "OK", IF_DEFAULT),   ui::endOf(),
};
constexpr DLG_RES kLists = {2, "lists", "Lists", kListItems, std::size(kListItems)};

constexpr DLG_RES kDialogs[] = {kForm, kLists};
constexpr RESOURCES kResources = {kMenus, 1, kDialogs, 2};

// ---- the check floor ----------------------------------------------------------------------------------------------

TEST_INSIDE(Core, WhatIsWrongIsReportedOnceAndHarmless) {
  testing::internal::CaptureStderr();
  const WINDOW form = open(WD_MODELESS, kForm);
  const WINDOW edit = ctl(form, 1);
  EXPECT_EQ(ctl(form, 99), NULL_WIN);
  xvt_list_clear(edit);
  xvt_ctl_set_checked(form, true);
  xvt_vobj_set_title(edit, nullptr);
  EXPECT_EQ(xvt_dlg_create_res(WD_MODELESS, 77, dispatch, nullptr), NULL_WIN);
  xvt_vobj_destroy(form);
  xvt_vobj_destroy(form);
  for (int times = 0; times < 3; ++times) EXPECT_FALSE(xvt_vobj_is_enabled(edit));
  EXPECT_EQ(text(edit), "");
  EXPECT_EQ(xvt_win_get_ctl(form, 1), NULL_WIN);
  EXPECT_EQ(xvt_timer_create(form, 10), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "xvt: xvt_list_clear: not a list\n"
            "xvt: xvt_ctl_set_checked: not a control\n"
            "xvt: xvt_vobj_set_title: no text\n"
            "xvt: xvt_dlg_create_res: no dialog with number 77\n"
            "xvt: xvt_vobj_is_enabled: the handle is dead\n"
            "xvt: xvt_vobj_get_title: the handle is dead\n"
            "xvt: xvt_win_get_ctl: the handle is dead\n"
            "xvt: xvt_timer_create: the handle is dead\n");
}

TEST_INSIDE(Core, RowsOutOfRangeAreRefused) {
  testing::internal::CaptureStderr();
  const WINDOW list = ctl(open(WD_MODELESS, kLists), 1);
  EXPECT_TRUE(xvt_list_add(list, -1, "a"));
  EXPECT_FALSE(xvt_list_add(list, 2, "b"));
  EXPECT_FALSE(xvt_list_is_selected(list, -1));
  char buffer[8] = "x";
  EXPECT_STREQ(xvt_list_get_text(list, 1, buffer, sizeof buffer), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "xvt: xvt_list_add: no row 2\nxvt: xvt_list_is_selected: no row -1\n"
            "xvt: xvt_list_get_text: no row 1\n");
}

// ---- controls -----------------------------------------------------------------------------------------------------

TEST_INSIDE(Core, PressingTellsTheHandlerAndLeavesTheMarkToIt) {
  const WINDOW form = open(WD_MODELESS, kForm, [](WINDOW window, EVENT& event) {
    if (event.type == E_CONTROL && event.ctl.id == 5) {
      const WINDOW group[] = {ctl(window, 5), ctl(window, 6)};
      xvt_ctl_check_radio_button(group[0], group, 2);
    }
    return 0L;
  });
  xvt_ctl_set_checked(ctl(form, 6), true);
  pump(60);
  seen().clear();
  EXPECT_EQ(probe::press(ctl(form, 4)), std::nullopt);
  EXPECT_FALSE(xvt_ctl_is_checked(ctl(form, 4)));
  EXPECT_EQ(probe::press(ctl(form, 5)), std::nullopt);
  EXPECT_TRUE(xvt_ctl_is_checked(ctl(form, 5)));
  EXPECT_FALSE(xvt_ctl_is_checked(ctl(form, 6)));
  EXPECT_EQ(probe::press(ctl(form, 7)), "\"hidden\" is hidden");
  EXPECT_EQ(probe::press(ctl(form, 8)), "\"off\" is disabled");
  EXPECT_NE(probe::type(ctl(form, 12), "x"), std::nullopt);
  xvt_vobj_set_enabled(ctl(form, 8), true);
  EXPECT_EQ(probe::press(ctl(form, 8)), std::nullopt);
  EXPECT_EQ(seen(), (Events{"loss 1", "press 4", "press 5", "press 8"}));
  xvt_ctl_set_meter(ctl(form, 9), 140);
  EXPECT_EQ(xvt_ctl_get_meter(ctl(form, 9)), 100);
}

TEST_INSIDE(Core, AFieldLosesTheFocusOnceBeforeThePress) {
  const WINDOW form = open(WD_MODELESS, kForm, [](WINDOW window, EVENT& event) {
    if (event.type == E_CLOSE) xvt_vobj_destroy(window);
    return 0L;
  });
  pump(60);
  seen().clear();
  EXPECT_EQ(probe::type(ctl(form, 1), "12"), std::nullopt);
  EXPECT_EQ(probe::type(ctl(form, 2), "34"), std::nullopt);
  EXPECT_EQ(probe::press(ctl(form, 10)), std::nullopt);
  pump(60);
  EXPECT_EQ(probe::press(ctl(form, 10)), std::nullopt);
  pump(60);
  EXPECT_EQ(probe::type(ctl(form, 1), "5"), std::nullopt);
  EXPECT_EQ(probe::close(form), std::nullopt);
  pump(30);
  Events gains_left_out;
  for (const std::string& one : seen())
    if (one.rfind("gain", 0) != 0) gains_left_out.push_back(one);
  // The first field had the keyboard from the start.
  EXPECT_EQ(gains_left_out, (Events{"edited 1", "loss 1", "edited 2", "loss 2", "press 10", "press 10", "edited 1",
                                    "loss 1", "close", "destroy"}));
}

TEST_INSIDE(Core, ProgramTextsSendNoEventsAndAreMadeValid) {
  const WINDOW form = open(WD_MODELESS, kForm);
  pump(40);
  seen().clear();
  xvt_vobj_set_title(ctl(form, 1), "caf\xC3\xA9 \xFF!");
  xvt_vobj_set_title(form, "T\xFF");
  EXPECT_EQ(text(ctl(form, 1)), "caf\xC3\xA9 \xEF\xBF\xBD!");
  EXPECT_EQ(text(form), "T\xEF\xBF\xBD");
  const std::string path = "/a/very/long/way/" + std::string(200, 'x') + "/file.sgy";
  RCT before;
  xvt_vobj_get_outer_rect(form, &before);
  xvt_vobj_set_title(ctl(form, 3), path.c_str());
  pump(40);
  RCT after;
  xvt_vobj_get_outer_rect(form, &after);
  EXPECT_EQ(text(ctl(form, 3)), path);
  EXPECT_EQ(after.right - after.left, before.right - before.left);
  char small[6];
  EXPECT_STREQ(xvt_vobj_get_title(ctl(form, 1), small, sizeof small), "caf\xC3\xA9");
  EXPECT_STREQ(xvt_vobj_get_title(ctl(form, 1), small, 5), "caf");
  EXPECT_TRUE(seen().empty());
}

TEST_INSIDE(Core, ListsSelectOneOrSeveralRows) {
  const WINDOW lists = open(WD_MODELESS, kLists);
  for (int id = 1; id <= 3; ++id)
    for (const char* row : {"b", "c", "d"}) EXPECT_TRUE(xvt_list_add(ctl(lists, id), -1, row));
  EXPECT_TRUE(xvt_list_add(ctl(lists, 1), 0, "a"));
  xvt_list_set_selected(ctl(lists, 2), 0, true);
  xvt_list_set_selected(ctl(lists, 2), 2, true);
  SLIST selection = xvt_list_get_selection(ctl(lists, 2));
  ASSERT_EQ(xvt_slist_count(selection), 2);
  const SLIST_ELT second = xvt_slist_get_next(selection, xvt_slist_get_first(selection));
  EXPECT_STREQ(xvt_slist_get_text(selection, second), "d");
  EXPECT_EQ(xvt_slist_get_data(selection, second), 2);
  xvt_slist_destroy(selection);
  xvt_list_set_selected(ctl(lists, 1), 1, true);
  xvt_list_set_selected(ctl(lists, 1), 3, true);
  EXPECT_FALSE(xvt_list_is_selected(ctl(lists, 1), 1));
  EXPECT_EQ(xvt_list_get_selected(ctl(lists, 1)), 3);
  seen().clear();
  EXPECT_EQ(probe::select(ctl(lists, 2), 1, true), std::nullopt);
  EXPECT_TRUE(xvt_list_is_selected(ctl(lists, 2), 0));
  EXPECT_EQ(probe::select(ctl(lists, 2), 1, false), std::nullopt);
  EXPECT_FALSE(xvt_list_is_selected(ctl(lists, 2), 0));
  EXPECT_EQ(probe::doubleClick(ctl(lists, 1), 0), std::nullopt);
  EXPECT_EQ(probe::select(ctl(lists, 3), 2, false), std::nullopt);
  EXPECT_NE(probe::select(ctl(lists, 3), 3, false), std::nullopt);
  EXPECT_EQ(text(ctl(lists, 3)), "d");
  EXPECT_EQ(seen(), (Events{"select 2", "select 2", "select 1", "double 1", "select 3"}));
  xvt_list_clear(ctl(lists, 3));
  EXPECT_EQ(xvt_list_get_selected(ctl(lists, 3)), -1);
}

// A handler may show everything anew when a field is left: that must not undo the choice that made the user leave it.
TEST_INSIDE(Core, AFieldIsLeftBeforeARowIsChosen) {
  static constexpr DLG_ITEM items[] = {ui::edit(1, "field", 10), ui::option(2, "option", 10),
                                       ui::list(3, "list", 10, 4)};
  static constexpr DLG_RES key = {3, "key", "Key", items, std::size(items)};
  const auto refill = [](WINDOW window) {
    for (const int id : {2, 3}) {
      xvt_list_clear(ctl(window, id));
      for (const char* row : {"a", "b", "c"}) xvt_list_add(ctl(window, id), -1, row);
      xvt_list_set_selected(ctl(window, id), 0, true);
    }
  };
  const WINDOW dialog = open(WD_MODELESS, key, [refill](WINDOW window, EVENT& event) {
    if (event.type == E_CONTROL && event.ctl.id == 1 && event.ctl.what == CTL_FOCUS_LOSS) refill(window);
    return 0L;
  });
  refill(dialog);
  for (const int id : {2, 3}) {
    EXPECT_EQ(probe::type(ctl(dialog, 1), "5"), std::nullopt);
    EXPECT_EQ(probe::select(ctl(dialog, id), 2, false), std::nullopt);
    EXPECT_EQ(xvt_list_get_selected(ctl(dialog, id)), 2) << id;
  }
}

TEST_INSIDE(Core, AListCanBeMadeTaller) {
  const WINDOW lists = open(WD_MODELESS, kLists, [](WINDOW window, EVENT& event) {
    if (event.type == E_CREATE) xvt_list_grow(ctl(window, 2), 120);
    return 0L;
  });
  pump(40);
  RCT grown;
  RCT plain;
  xvt_vobj_get_outer_rect(ctl(lists, 1), &plain);
  xvt_vobj_get_outer_rect(ctl(lists, 2), &grown);
  EXPECT_EQ((grown.bottom - grown.top) - (plain.bottom - plain.top), 120);
  xvt_list_grow(ctl(lists, 2), 30);
  pump(40);
  RCT window;
  xvt_vobj_get_client_rect(lists, &window);
  xvt_vobj_get_outer_rect(ctl(lists, 4), &plain);
  EXPECT_LT(plain.bottom, window.bottom);
}

// ---- keys ---------------------------------------------------------------------------------------------------------

TEST_INSIDE(Core, TheKeyboardReachesEverything) {
  const WINDOW form = open(WD_MODELESS, kForm);
  pump(60);
  seen().clear();
  EXPECT_EQ(probe::key(form, "7"), std::nullopt);
  EXPECT_EQ(text(ctl(form, 1)), "7");
  keys(form, {"Tab", "8"});
  EXPECT_EQ(text(ctl(form, 2)), "8");
  keys(form, {"Tab", "space", "Alt+f", "9", "Return", "Alt+h", "Escape", "Ctrl+O"});
  EXPECT_NE(probe::key(form, "Hyper+x"), std::nullopt);
  Events clicks;
  for (const std::string& one : seen())
    if (one.rfind("gain", 0) != 0 && one.rfind("loss", 0) != 0) clicks.push_back(one);
  EXPECT_EQ(clicks, (Events{"edited 1", "edited 2", "press 4", "edited 1", "press 10", "press 4", "task command 1"}));
}

TEST_INSIDE(Core, StandardCommandsWorkOnTheFieldThatHadTheKeyboard) {
  const WINDOW form = open(WD_MODELESS, kForm);
  xvt_vobj_set_title(ctl(form, 1), "tape");
  xvt_vobj_set_focus(ctl(form, 1));
  pump(60);
  EXPECT_EQ(probe::menu(M_EDIT_SELECT_ALL), std::nullopt);
  EXPECT_EQ(probe::key(form, "Ctrl+C"), std::nullopt);
  xvt_vobj_set_focus(ctl(form, 2));
  pump(60);
  EXPECT_EQ(probe::menu(M_EDIT_PASTE), std::nullopt);
  pump(100);
  EXPECT_EQ(text(ctl(form, 2)), "tape");
}

TEST_INSIDE(Core, MenusAreCheckedAndEnabledByTheProgramOnly) {
  EXPECT_EQ(probe::menu(3), "it is disabled");
  xvt_menu_set_item_enabled(TASK_WIN, 3, true);
  seen().clear();
  EXPECT_EQ(probe::menu(probe::menuCommand("rewind")), std::nullopt);
  EXPECT_EQ(probe::menu(2), std::nullopt);
  EXPECT_FALSE(xvt_menu_is_item_checked(TASK_WIN, 2));
  xvt_menu_set_item_checked(TASK_WIN, 2, true);
  EXPECT_TRUE(xvt_menu_is_item_checked(TASK_WIN, 2));
  EXPECT_EQ(seen(), (Events{"task command 3", "task command 2"}));
}

// ---- modal dialogs, ends, jobs ------------------------------------------------------------------------------------

TEST_INSIDE(Core, ModalDialogsNestAndKeepInputFromTheRest) {
  const WINDOW below = open(WD_MODELESS, kLists);
  int step = 0;
  onTick([&] {
    const WINDOW modal = probe::window("form");
    if (modal == NULL_WIN) return;
    if (step == 0 && ++step) {
      EXPECT_EQ(probe::press(ctl(below, 4)), "\"lists\" is kept from input by \"form\"");
      EXPECT_NE(probe::menu(1), std::nullopt);
      EXPECT_EQ(probe::press(ctl(modal, 10)), std::nullopt);  // opens the second one; comes back when it is gone
      EXPECT_EQ(step, 2);
      EXPECT_EQ(probe::press(ctl(modal, 11)), std::nullopt);
    } else if (step == 1 && ++step) {
      EXPECT_NE(modal, below);
      EXPECT_EQ(probe::press(ctl(modal, 11)), std::nullopt);
    }
  });
  const Handler handler = [](WINDOW window, EVENT& event) {
    static bool nested = false;
    if (event.type != E_CONTROL) return 0L;
    if (event.ctl.id == 11) xvt_vobj_destroy(window);
    if (event.ctl.id == 10 && !std::exchange(nested, true)) {
      const WINDOW inner = open(WD_MODAL, kForm, handlers()[window]);
      EXPECT_FALSE(xvt_vobj_is_valid(inner));
      EXPECT_TRUE(xvt_vobj_is_valid(window));
    }
    return 0L;
  };
  const WINDOW modal = open(WD_MODAL, kForm, handler);
  EXPECT_EQ(step, 2);
  EXPECT_FALSE(xvt_vobj_is_valid(modal));
  onTick(nullptr);
  EXPECT_EQ(probe::press(ctl(below, 4)), std::nullopt);
}

TEST_INSIDE(Core, AWindowMayDieInItsOwnHandlerAndUnderANestedLoop) {
  const WINDOW form = open(WD_MODELESS, kForm, [](WINDOW window, EVENT& event) {
    if (event.type != E_CONTROL || event.ctl.what != CTL_PRESS) return 0L;
    const WINDOW edit = ctl(window, 1);
    xvt_vobj_destroy(window);
    EXPECT_FALSE(xvt_vobj_is_valid(window));
    EXPECT_FALSE(xvt_vobj_is_valid(edit));
    pump(50);  // the callback's own widget is still on the stack
    return 0L;
  });
  EXPECT_EQ(probe::press(ctl(form, 10)), std::nullopt);
  const WINDOW job = open(WD_MODELESS, kForm, [](WINDOW window, EVENT& event) {
    if (event.type == E_CONTROL && event.ctl.id == 10) {
      xvt_timer_create(window, 10);
      pump(100);
      EXPECT_FALSE(xvt_vobj_is_valid(window));
    }
    if (event.type == E_TIMER) {
      EXPECT_EQ(probe::close(window), std::nullopt);
    }
    if (event.type == E_CLOSE) xvt_vobj_destroy(window);
    return 0L;
  });
  seen().clear();
  EXPECT_EQ(probe::press(ctl(job, 10)), std::nullopt);
  EXPECT_EQ(seen().back(), "destroy");
  const WINDOW born_dead = open(WD_MODELESS, kForm, [](WINDOW window, EVENT& event) {
    if (event.type == E_CREATE) xvt_vobj_destroy(window);
    if (event.type == E_DESTROY) xvt_vobj_destroy(window);
    return 0L;
  });
  EXPECT_FALSE(xvt_vobj_is_valid(born_dead));
  EXPECT_EQ(open(WD_MODAL, kForm,
                 [](WINDOW window, EVENT&) {
                   xvt_vobj_destroy(window);
                   return 0L;
                 }) == NULL_WIN,
            false);
  pump(30);
  EXPECT_EQ(probe::openWindows(), (Events{"task"}));
}

TEST_INSIDE(Core, AModalDialogOutlivesItsParent) {
  const WINDOW parent = open(WD_MODELESS, kLists);
  int ticks = 0;
  onTick([&] {
    if (++ticks == 5) xvt_vobj_destroy(parent);
    if (ticks == 20) {
      EXPECT_EQ(probe::close(probe::window("form")), std::nullopt);
    }
  });
  open(WD_MODAL, kForm, [](WINDOW window, EVENT& event) {
    if (event.type == E_CLOSE) xvt_vobj_destroy(window);
    return 0L;
  });
  EXPECT_FALSE(xvt_vobj_is_valid(parent));
  onTick(nullptr);
}

TEST(Core, TheEndReturnsFromNestedLoopsAndTellsEveryWindow) {
  run(
      kResources,
      [] {
        open(WD_MODELESS, kLists);
        onTick([] {
          onTick([] {
            onTick(nullptr);
            xvt_app_destroy();
          });
          open(WD_MODAL, kForm);
        });
        seen().clear();
        open(WD_MODAL, kForm);
        EXPECT_TRUE(xvt_app_is_ending());
        std::erase_if(seen(), [](const std::string& one) { return one != "create" && one != "destroy"; });
        EXPECT_EQ(seen(), (Events{"create", "create", "destroy", "destroy"}));
      },
      [](int status) {
        EXPECT_EQ(status, 0);
        EXPECT_EQ(seen().back(), "task destroy");
        EXPECT_EQ(seen().end()[-2], "destroy");
      });
}

TEST_INSIDE(Core, AnExceptionInAHandlerEndsThere) {
  const WINDOW form = open(WD_MODELESS, kForm, [](WINDOW, EVENT& event) -> long {
    if (event.type == E_CONTROL && event.ctl.id == 10) throw std::runtime_error("as a test");
    return 0;
  });
  testing::internal::CaptureStderr();
  EXPECT_EQ(probe::press(ctl(form, 10)), std::nullopt);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "xvt: event handler: as a test\n");
  EXPECT_TRUE(xvt_vobj_is_valid(form));
}

TEST_INSIDE(Core, TimersFireWhileAJobPumpsAndDieWithTheirWindow) {
  int fired = 0;
  const WINDOW form = open(WD_MODELESS, kForm, [&](WINDOW, EVENT& event) {
    if (event.type == E_TIMER && ++fired == 3) xvt_timer_destroy(event.timer.id);
    return 0L;
  });
  EXPECT_NE(xvt_timer_create(form, 10), 0);
  pump(150);
  EXPECT_EQ(fired, 3);
  xvt_timer_create(form, 10);
  xvt_vobj_destroy(form);
  pump(60);
  EXPECT_EQ(fired, 3);
}

TEST_INSIDE(Core, ASignalAsksBeforeItEnds) {
  bool allow = false;
  taskHandler() = [&](WINDOW, EVENT& event) {
    if (event.type == E_QUIT && event.quit.query && allow) xvt_app_allow_quit();
    return 0L;
  };
  seen().clear();
  std::raise(SIGTERM);
  pump(40);
  EXPECT_FALSE(xvt_app_is_ending());
  allow = true;
  std::raise(SIGHUP);
  pump(40);
  EXPECT_TRUE(xvt_app_is_ending());
  EXPECT_EQ(seen(), (Events{"task may it quit", "task may it quit", "task it quits"}));
}

// ---- windows ------------------------------------------------------------------------------------------------------

TEST(Core, WindowsStandBesideEachOtherAndComeBackWhereTheyWere) {
  if (isHeadless()) GTEST_SKIP() << "there is no screen";
  run(kResources, [] {
    const WINDOW windows[] = {TASK_WIN, open(WD_MODELESS, kForm), open(WD_MODELESS, kLists)};
    pump(50);
    RCT place[3];
    for (int at = 0; at < 3; ++at) xvt_vobj_get_outer_rect(windows[at], &place[at]);
    for (int at = 0; at < 3; ++at)
      for (int other = 0; other < at; ++other)
        EXPECT_TRUE(place[at].left >= place[other].right || place[other].left >= place[at].right ||
                    place[at].top >= place[other].bottom || place[other].top >= place[at].bottom)
            << at << " covers " << other;
    const RCT moved{500, 900, 500 + place[1].bottom - place[1].top, 900 + place[1].right - place[1].left};
    xvt_vobj_move(windows[1], &moved);
    pump(50);
    xvt_vobj_destroy(windows[1]);
    const WINDOW again = open(WD_MODELESS, kForm);
    pump(50);
    RCT now;
    xvt_vobj_get_outer_rect(again, &now);
    EXPECT_NEAR(now.top, 500, 40);  // give or take a window manager's frame
    EXPECT_NEAR(now.left, 900, 10);
  });
}

TEST(Core, WithLargeFontsDocumentsAreAsLargeAsAskedAndTallDialogsScroll) {
  if (isHeadless()) GTEST_SKIP() << "there is no screen";
  const std::string settings = testing::TempDir() + "xvt-large-fonts";
  std::ofstream(settings) << "Xft.dpi: 150\n";
  setenv("XENVIRONMENT", settings.c_str(), 1);
  run(kResources, [] {
    std::vector<DLG_ITEM> items(40, ui::edit(0, nullptr, 10));
    items.insert(items.end(), {ui::buttons(), ui::push(1, "ok", "OK", IF_DEFAULT), ui::endOf()});
    const DLG_RES tall{3, "tall", "Tall", items.data(), items.size()};
    int lost = 0;
    const WINDOW dialog = open(WD_MODELESS, tall, [&](WINDOW, EVENT& event) {
      lost += event.type == E_FOCUS && !event.focus.active ? 1 : 0;
      return 0L;
    });
    pump(50);
    RCT inside, button, place;
    xvt_vobj_get_client_rect(dialog, &inside);
    xvt_vobj_get_outer_rect(ctl(dialog, 1), &button);
    EXPECT_LE(inside.bottom, 1000);
    EXPECT_LE(button.bottom, inside.bottom);
    const WIN_DEF definition[] = {{W_DOC, RCT{30, 10, 330, 510}, "Lines", 0, NULL_FNTID, 0}, {}};
    const WINDOW lines = xvt_win_create_def(definition, TASK_WIN, dispatch, nullptr);
    pump(50);
    xvt_vobj_get_outer_rect(lines, &place);
    EXPECT_EQ(place.right - place.left, 500);
    EXPECT_EQ(place.bottom - place.top, 300);
    EXPECT_EQ(lost, 0) << "the keyboard stays in the dialog";
    xvt_vobj_destroy(dialog);
  });
  unsetenv("XENVIRONMENT");
}

TEST_INSIDE(Core, ADocumentHoldsTextAndScrollBarsOfAnyLength) {
  const XVT_FNTID font = xvt_font_create("courier", 12, FS_PLAIN);
  EXPECT_EQ(xvt_font_get_text_width(font, "iiii", -1), xvt_font_get_text_width(font, "WWWWx", 4));
  WIN_DEF definition[3];
  definition[0] = {W_DOC, RCT{30, 10, 300, 500}, "Dump Window", 0, NULL_FNTID, WSF_SIZE | WSF_CLOSE | WSF_VSCROLL};
  definition[1] = {WC_TEXTEDIT, RCT{0, 0, 270, 480}, nullptr, 1, font, 0};
  seen().clear();
  nextHandler() = [](WINDOW window, EVENT& event) {
    RCT all;
    xvt_vobj_get_client_rect(window, &all);
    if (event.type == E_SIZE) {
      EXPECT_EQ(event.size.width, all.right);
      xvt_tx_move(xvt_tx_get(window, 1), &all);
    }
    xvt_tx_process_event(window, &event);
    return 0L;
  };
  const WINDOW window = xvt_win_create_def(definition, TASK_WIN, dispatch, nullptr);
  pump(50);
  EXPECT_EQ(seen(), (Events{"create", "size", "update"}));
  EXPECT_EQ(probe::window("dump-window"), window);
  const TXEDIT field = xvt_tx_get(window, 1);
  EXPECT_EQ(xvt_tx_get_window(field), window);
  for (const char* line : {"one", "two \xFF", "three"}) EXPECT_TRUE(xvt_tx_add_par(field, 99, line));
  EXPECT_TRUE(xvt_tx_add_par(field, 0, "zero"));
  EXPECT_EQ(xvt_tx_get_num_pars(field), 4);
  std::size_t length = 0;
  EXPECT_STREQ(xvt_tx_get_par(field, 2, &length), "two \xFF");
  EXPECT_EQ(length, 5u);
  EXPECT_EQ(probe::textLines(window, 2), (Events{"two \xFF", "three"}));
  for (const int high : {0, 15, 50'000'000, 2'000'000'000}) {
    xvt_sbar_set_range(window, VSCROLL, 0, high);
    xvt_sbar_set_proportion(window, VSCROLL, 270);
    xvt_sbar_set_pos(window, VSCROLL, high - 270);
    pump(10);
  }
  testing::internal::CaptureStderr();
  xvt_sbar_set_range(window, HSCROLL, 0, 5);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "xvt: xvt_sbar_set_range: the window has no such scroll bar\n");
  xvt_vobj_set_visible(window, false);
  EXPECT_EQ(probe::openWindows(), (Events{"task"}));
  xvt_vobj_set_visible(window, true);
  EXPECT_TRUE(xvt_vobj_is_visible(window));
  xvt_font_destroy(font);
  xvt_vobj_destroy(window);
  EXPECT_EQ(xvt_tx_get_num_pars(field), 0);
}

TEST(Core, AListShowsTheBackgroundItIsGivenWhileItIsEnabled) {
  if (isHeadless()) GTEST_SKIP() << "there is no screen";
  const std::string path = testing::TempDir() + "core-test-list-" + std::to_string(getpid()) + ".png";
  run(kResources, [&] {
    const WINDOW lists = open(WD_MODELESS, kLists);
    const auto picture = [&] {
      pump(50);
      EXPECT_EQ(probe::screenshot(lists, path), std::nullopt);
      std::ifstream file(path, std::ios::binary);
      return std::string{std::istreambuf_iterator<char>(file), {}};
    };
    xvt_vobj_set_enabled(ctl(lists, 1), false);
    const std::string disabled = picture();
    xvt_ctl_set_color(ctl(lists, 1), {0xFF, 0xAA, 0xAA});
    EXPECT_TRUE(picture() == disabled);
    xvt_vobj_set_enabled(ctl(lists, 1), true);
    const std::string red = picture();
    xvt_ctl_set_color(ctl(lists, 1), {0xFF, 0xFF, 0xFF});
    EXPECT_FALSE(picture() == red);
    xvt_ctl_set_color(ctl(lists, 1), {0xFF, 0xAA, 0xAA});
    EXPECT_TRUE(picture() == red);
  });
  std::remove(path.c_str());
}

TEST(Core, OpeningAndClosingADialogLeaksNothingOfOurs) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer counts in its own way";
#endif
  run(kResources, [] {
    const auto cycle = [](int times) {
      for (int time = 0; time < times; ++time) {
        const WINDOW form = open(WD_MODELESS, kForm);
        pump(3);
        xvt_vobj_destroy(form);
        handlers().clear();
        pump(3);
      }
      seen().clear();
      seen().shrink_to_fit();
    };
    cycle(20);
    const auto before = mallinfo2().uordblks;
    cycle(200);
    const auto after = mallinfo2().uordblks;
    const long each = static_cast<long>(after - before) / 200;
    RecordProperty("bytes_each", static_cast<int>(each));
    std::printf("a dialog opened and closed costs %ld bytes\n", each);
    EXPECT_LT(each, 4096);
  });
}

}  // namespace
