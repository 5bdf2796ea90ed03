// The text view as its user meets it: on a real display, by events, and through a second client's eyes.
#include <gtest/gtest.h>  // before X11, which has a macro None

#include "xvt/motif/textview/textview.h"

#include <X11/Xatom.h>
#include <X11/keysym.h>
#include <Xm/BulletinB.h>
#include <Xm/TextF.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "xvt/desk/textstore.h"

namespace {

using xvt::TextPosition;
using xvt::TextStore;
using xvt::TextUnit;
using xvt::TextView;

// ---- the store --------------------------------------------------------------------------------------------------

TEST(TextStore, FindsWordsLinesAndNeighbours) {
  TextStore store;
  store.insert(0, "read  /dev/nst0: \xC3\xA6r\xFF");
  store.insert(1, "");
  store.insert(2, "end");
  const auto word = [&](std::size_t byte) { return xvt::textOf(store, xvt::unitAt(store, {0, byte}, TextUnit::word)); };
  for (const auto& [byte, found] : {std::pair(0U, "read"), {5U, "  "}, {9U, "/dev/nst0"}, {15U, ":"}})
    EXPECT_EQ(word(byte), found);
  EXPECT_EQ(word(99), "\xC3\xA6r\xFF");
  EXPECT_EQ(xvt::textOf(store, xvt::unitAt(store, {1, 0}, TextUnit::line)), "\n");
  EXPECT_EQ(xvt::textOf(store, xvt::unitAt(store, {2, 1}, TextUnit::line)), "end");
  EXPECT_EQ(xvt::textOf(store, {{0, 16}, {2, 1}}), " \xC3\xA6r\xFF\n\ne");
  // Forward and back over everything, a character at a time, meets the same places.
  std::vector<TextPosition> places{{0, 0}};
  for (;;) {
    const TextPosition next = xvt::placeBehind(store, places.back(), TextUnit::character);
    if (next == places.back()) break;
    places.push_back(next);
  }
  EXPECT_EQ(places.back(), (TextPosition{2, 3}));
  EXPECT_EQ(places.size(), 26U);
  for (std::size_t at = places.size() - 1; at > 0; --at)
    EXPECT_EQ(xvt::placeBefore(store, places[at], TextUnit::character), places[at - 1]);
}

// ---- on the display ---------------------------------------------------------------------------------------------

/// One application for all tests: Xt keeps too much for good to have one for each.
struct Application {
  Application() {
    XtSetLanguageProc(nullptr, nullptr, nullptr);
    XtToolkitInitialize();
    context = XtCreateApplicationContext();
    display = open();
    other = open();
    if (display == nullptr || other == nullptr) return;
    font = XftFontOpenName(display, DefaultScreen(display), "DejaVu Sans Mono-10");
    fonts = table();
    shell =
        XtVaAppCreateShell("test", "Test", applicationShellWidgetClass, display, XmNwidth, 700, XmNheight, 300,
                           XmNlabelRenderTable, fonts, XmNbuttonRenderTable, fonts, XmNtextRenderTable, fonts, nullptr);
    board = XtVaCreateManagedWidget("board", xmBulletinBoardWidgetClass, shell, XmNresizePolicy, XmRESIZE_NONE,
                                    XmNmarginWidth, 0, XmNmarginHeight, 0, nullptr);
    field = XtVaCreateManagedWidget("field", xmTextFieldWidgetClass, board, XmNy, 220, nullptr);
    XtRealizeWidget(shell);
    asker = XtVaAppCreateShell("asker", "Test", overrideShellWidgetClass, other, XmNwidth, 10, XmNheight, 10,
                               XmNmappedWhenManaged, False, nullptr);
    XtRealizeWidget(asker);
  }
  /// The shell's own default tables are never freed.
  XmRenderTable table() {
    static char name[] = "DejaVu Sans Mono";
    static char tag[] = "";
    Arg arguments[] = {
        {XmNfontName, reinterpret_cast<XtArgVal>(name)}, {XmNfontType, XmFONT_IS_XFT}, {XmNfontSize, 10}};
    Widget made = XtVaAppCreateShell("fonts", "Test", overrideShellWidgetClass, display, nullptr);
    XmRendition rendition = XmRenditionCreate(made, tag, arguments, 3);
    XmRenderTable result = XmRenderTableAddRenditions(nullptr, &rendition, 1, XmMERGE_NEW);
    XmRenditionFree(rendition);
    XtDestroyWidget(made);
    return result;
  }
  Display* open() {
    int none = 0;
    static char program[] = "test";
    char* arguments[] = {program, nullptr};
    return XtOpenDisplay(context, nullptr, program, "Test", nullptr, 0, &none, arguments);
  }

  XtAppContext context = nullptr;
  Display* display = nullptr;
  Display* other = nullptr;  ///< another client
  XftFont* font = nullptr;
  XmRenderTable fonts = nullptr;
  Widget shell = nullptr, board = nullptr, field = nullptr, asker = nullptr;
};

Application& application() {
  static Application one;
  return one;
}

class TextViewTest : public testing::Test {
 protected:
  void SetUp() override {
    if (std::getenv("DISPLAY") == nullptr) GTEST_SKIP() << "no display";
    ASSERT_NE(app.display, nullptr);
    ASSERT_NE(app.font, nullptr);
    xvt::TextViewStyle style;
    style.font = app.font;
    view = std::make_unique<TextView>(app.board, "view", style);
    XtManageChild(view->widget());
    view->setGeometry(0, 0, 700, 200);
    view->setScrolledCallback([this](long line, long, int offset) {
      told++;
      toldLine = line;
      toldOffset = offset;
    });
    pump(50);
  }
  void TearDown() override {
    view.reset();
    if (app.display != nullptr) pump(0);
  }

  void pump(int milliseconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    do {
      XSync(app.display, False);
      XSync(app.other, False);
      while (const XtInputMask pending = XtAppPending(app.context)) XtAppProcessEvent(app.context, pending);
    } while (std::chrono::steady_clock::now() < end);
  }

  void fill(int lines) {
    for (int number = 0; number < lines; ++number) view->insert(-1, "line " + std::to_string(number));
  }

  /// Selections change hands only forward in time.
  Time serverTime() {
    const Window window = XtWindow(app.shell);
    XSelectInput(app.display, window, PropertyChangeMask | StructureNotifyMask | FocusChangeMask | KeyPressMask);
    XChangeProperty(app.display, window, XA_CUT_BUFFER0, XA_STRING, 8, PropModeReplace, nullptr, 0);
    XEvent event;
    XWindowEvent(app.display, window, PropertyChangeMask, &event);
    XtDispatchEvent(&event);
    return event.xproperty.time;
  }

  void act(XEvent& event) {
    event.xany.display = app.display;
    event.xany.window = XtWindow(view->widget());
    static char name[] = "XvtTextInput";
    XtCallActionProc(view->widget(), name, &event, nullptr, 0);
  }
  void mouse(int type, unsigned button, int x, int y, unsigned state = 0) {
    XEvent event{};
    event.type = type;
    event.xbutton.button = button;
    event.xbutton.x = x;
    event.xbutton.y = y;
    event.xbutton.state = state;
    event.xbutton.time = serverTime();
    act(event);
  }
  void drag(int x, int y) {
    XEvent event{};
    event.type = MotionNotify;
    event.xmotion.x = x;
    event.xmotion.y = y;
    act(event);
  }
  void key(KeySym symbol, unsigned state = 0) {
    XEvent event{};
    event.type = KeyPress;
    event.xkey.keycode = XKeysymToKeycode(app.display, symbol);
    event.xkey.state = state;
    event.xkey.time = serverTime();
    act(event);
  }
  void click(int x, int y, int count = 1, unsigned state = 0) {
    pump(XtGetMultiClickTime(app.display) + 10);
    for (int press = 0; press < count; ++press) {
      mouse(ButtonPress, Button1, x, y, state);
      mouse(ButtonRelease, Button1, x, y, state);
    }
  }
  /// Pixels of a column's left edge and of a visible row's middle.
  int atColumn(int column) const { return view->lineHeight() / 2 + column * view->textWidth("m"); }
  int atRow(int row) const { return view->lineHeight() / 3 + row * view->lineHeight() + view->lineHeight() / 2; }

  /// A selection as another client gets it; nothing when it is refused.
  std::optional<std::string> fetch(const char* selection, const char* target) {
    struct Answer {
      bool arrived = false;
      std::optional<std::string> value;
    } answer;
    XtGetSelectionValue(
        app.asker, XInternAtom(app.other, selection, False), XInternAtom(app.other, target, False),
        [](Widget, XtPointer data, Atom*, Atom* type, XtPointer value, unsigned long* length, int* format) {
          auto* result = static_cast<Answer*>(data);
          result->arrived = true;
          if (value != nullptr && *type != None && *type != XT_CONVERT_FAIL)
            result->value.emplace(static_cast<const char*>(value),
                                  *length * (*format == 32 ? sizeof(long) : static_cast<std::size_t>(*format / 8)));
          XtFree(static_cast<char*>(value));
        },
        &answer, CurrentTime);
    for (int turn = 0; turn < 2000 && !answer.arrived; ++turn) pump(5);
    EXPECT_TRUE(answer.arrived);
    return answer.value;
  }

  /// Pixels of a rectangle of the view's window that are not white.
  int inked(int x, int y, int width, int height) {
    XImage* image = XGetImage(app.display, XtWindow(view->widget()), x, y, static_cast<unsigned>(width),
                              static_cast<unsigned>(height), AllPlanes, ZPixmap);
    int count = 0;
    for (int row = 0; row < height; ++row)
      for (int column = 0; column < width; ++column) count += (XGetPixel(image, column, row) & 0xFFFFFF) != 0xFFFFFF;
    XDestroyImage(image);
    return count;
  }

  Application& app = application();
  std::unique_ptr<TextView> view;
  int told = 0;
  long toldLine = -1;
  int toldOffset = -1;
};

TEST_F(TextViewTest, ScrollsWithinTheTextAndTellsOnlyOfTheUsersHands) {
  fill(1000);
  view->insert(-1, std::string(300, 'w'));
  const long last = view->count() - view->viewLines();
  const int right = view->textWidth(std::string(300, 'w')) - view->viewWidth();
  EXPECT_GT(view->viewLines(), 5);
  view->scrollTo(5000, 99999);
  EXPECT_EQ(view->originLine(), last);
  EXPECT_EQ(view->offset(), right);
  view->scrollLines(-3);
  view->scrollPixels(-99999);
  EXPECT_EQ(view->originLine(), last - 3);
  EXPECT_EQ(view->offset(), 0);
  EXPECT_EQ(told, 0);

  struct Case {
    KeySym symbol;
    unsigned state;
    long line;
    int offset;
  };
  const long page = view->viewLines() - 1;
  const int step = view->textWidth("--");
  for (const Case& c : {Case{XK_Home, ControlMask, 0, 0}, Case{XK_Down, 0, 1, 0}, Case{XK_Page_Down, 0, 1 + page, 0},
                        Case{XK_Page_Up, 0, 1, 0}, Case{XK_Up, 0, 0, 0}, Case{XK_Right, 0, 0, step},
                        Case{XK_Right, 0, 0, 2 * step}, Case{XK_Left, 0, 0, step}, Case{XK_End, 0, 0, right},
                        Case{XK_Home, 0, 0, 0}, Case{XK_End, ControlMask, last, 0}}) {
    told = 0;
    key(c.symbol, c.state);
    EXPECT_EQ(told, 1) << c.symbol;
    EXPECT_EQ(toldLine, c.line) << c.symbol;
    EXPECT_EQ(toldOffset, c.offset) << c.symbol;
    EXPECT_EQ(view->originLine(), c.line) << c.symbol;
  }
  told = 0;
  key(XK_Down);
  EXPECT_EQ(told, 0) << "nothing moved";
  mouse(ButtonPress, Button4, 50, 50);
  EXPECT_EQ(toldLine, last - 3);
  mouse(ButtonPress, 7, 50, 50);
  EXPECT_GT(toldOffset, 0);
}

TEST_F(TextViewTest, GrowingAndShrinkingKeepsTheOriginInTheText) {
  fill(40);
  view->scrollTo(1000, 0);
  const long before = view->originLine();
  view->setGeometry(0, 0, 700, 100);
  EXPECT_EQ(view->originLine(), before);
  view->setGeometry(0, 0, 700, 290);
  EXPECT_EQ(view->originLine(), 40 - view->viewLines());
  view->setGeometry(0, 0, 1, 1);
  EXPECT_EQ(view->viewLines(), 0);
  key(XK_Page_Down);
  view->setGeometry(0, 0, -5, 70000);
  view->paintNow();
}

TEST_F(TextViewTest, ALineIsOnScreenWithoutAnEventLoop) {
  pump(50);
  const int row = view->lineHeight();
  ASSERT_EQ(inked(8, 4, 300, row), 0);
  view->insert(-1, "seen");
  view->paintIfDue();
  EXPECT_GT(inked(8, 4, 300, row), 20);
  view->insert(-1, "a moment later");
  view->paintIfDue();
  EXPECT_EQ(inked(8, 4 + row, 300, row - 4), 0) << "not yet due";
  TextView::paintAllPending();
  EXPECT_GT(inked(8, 4 + row, 300, row - 4), 20);
  view->insert(-1, "left to the timer");
  pump(80);
  EXPECT_GT(inked(8, 4 + 2 * row, 300, row - 4), 20);
}

TEST_F(TextViewTest, SelectsWithTheMouseAndOffersItAtOnce) {
  view->insert(-1, "alpha beta");
  view->insert(-1,
               "gamma \xFF"
               "delta");
  mouse(ButtonPress, Button1, atColumn(6), atRow(0));
  drag(atColumn(5), atRow(1));
  mouse(ButtonRelease, Button1, atColumn(5), atRow(1));
  EXPECT_EQ(view->selectedText(), "beta\ngamma");
  EXPECT_EQ(fetch("PRIMARY", "UTF8_STRING"), "beta\ngamma");
  click(atColumn(9), atRow(1), 2);
  EXPECT_EQ(view->selectedText(),
            "\xFF"
            "delta");
  EXPECT_EQ(fetch("PRIMARY", "UTF8_STRING"),
            "\xEF\xBF\xBD"
            "delta");
  EXPECT_EQ(fetch("PRIMARY", "STRING"), "?delta");
  click(atColumn(2), atRow(0), 1, ShiftMask);
  EXPECT_EQ(view->selectedText(),
            "alpha beta\ngamma \xFF"
            "delta")
      << "extended by words";
  click(atColumn(2), atRow(0), 3);
  EXPECT_EQ(view->selectedText(), "alpha beta\n");
  // Lines that arrive above push the selection along.
  view->insert(0, "first");
  EXPECT_EQ(view->selectedText(), "alpha beta\n");
  click(atColumn(3), atRow(0));
  EXPECT_FALSE(view->hasSelection());
  EXPECT_EQ(fetch("PRIMARY", "UTF8_STRING"), std::nullopt);
}

TEST_F(TextViewTest, SelectsWithTheKeyboardAndFollows) {
  fill(100);
  click(atColumn(5), atRow(1));
  key(XK_Right, ShiftMask);
  EXPECT_EQ(view->selectedText(), "1");
  key(XK_Left, ShiftMask | ControlMask);
  EXPECT_EQ(view->selectedText(), "") << "back to the word's begin";
  key(XK_Down, ShiftMask);
  EXPECT_EQ(view->selectedText(), "1\nline ");
  key(XK_Home, ShiftMask);
  EXPECT_EQ(view->selectedText(), "1\n");
  key(XK_End, ShiftMask | ControlMask);
  EXPECT_EQ(view->originLine(), 100 - view->viewLines()) << "the selection's end is in view";
  EXPECT_EQ(view->selectedText().substr(0, 9), "1\nline 2\n");
  EXPECT_EQ(view->selectedText().substr(view->selectedText().size() - 7), "line 99");
  key(XK_a, ControlMask);
  key(XK_c, ControlMask);
  view->clear();
  EXPECT_FALSE(view->hasSelection());
  const auto copied = fetch("CLIPBOARD", "UTF8_STRING");
  ASSERT_TRUE(copied);
  EXPECT_EQ(copied->substr(0, 14), "line 0\nline 1\n") << "what was copied outlives the text";
}

TEST_F(TextViewTest, DraggingBeyondTheEdgeScrollsOn) {
  fill(200);
  mouse(ButtonPress, Button1, atColumn(0), atRow(2));
  drag(atColumn(0), 260);
  pump(400);
  EXPECT_GT(view->originLine(), 5);
  const long reached = view->originLine();
  EXPECT_EQ(toldLine, reached);
  drag(atColumn(0), -10);
  pump(200);
  EXPECT_LT(view->originLine(), reached);
  mouse(ButtonRelease, Button1, atColumn(0), -10);
  const long stopped = view->originLine();
  pump(150);
  EXPECT_EQ(view->originLine(), stopped);
}

TEST_F(TextViewTest, TabsControlBytesAndWideCharactersKeepTheirPlaces) {
  view->insert(-1,
               "a\tb\x01\xE2\x82\xAC"
               "c");
  EXPECT_EQ(view->textWidth(view->line(0)), view->textWidth("a       b.xc"));
  mouse(ButtonPress, Button1, atColumn(8), atRow(0));
  drag(atColumn(11), atRow(0));
  mouse(ButtonRelease, Button1, atColumn(11), atRow(0));
  EXPECT_EQ(view->selectedText(), "b\x01\xE2\x82\xAC");
  EXPECT_EQ(fetch("PRIMARY", "STRING"), "b\x01?");
}

TEST_F(TextViewTest, AnswersTheSelectionProtocolWhole) {
  const std::string accented = "\xC3\xA6r\xC3\xB8";
  view->insert(-1, accented);
  serverTime();
  view->selectAll();
  EXPECT_TRUE(view->copy());
  EXPECT_EQ(fetch("CLIPBOARD", "STRING"), "\xE6r\xF8");
  EXPECT_EQ(fetch("CLIPBOARD", "TEXT"), accented);
  EXPECT_TRUE(fetch("CLIPBOARD", "COMPOUND_TEXT"));
  EXPECT_EQ(fetch("CLIPBOARD", "PIXMAP"), std::nullopt);
  const auto targets = fetch("CLIPBOARD", "TARGETS");
  ASSERT_TRUE(targets);
  std::vector<Atom> atoms(targets->size() / sizeof(Atom));
  std::copy_n(targets->data(), targets->size(), reinterpret_cast<char*>(atoms.data()));
  for (const char* name : {"UTF8_STRING", "STRING", "TARGETS", "TIMESTAMP", "MULTIPLE"})
    EXPECT_NE(std::find(atoms.begin(), atoms.end(), XInternAtom(app.display, name, False)), atoms.end()) << name;
}

TEST_F(TextViewTest, MegabytesArriveInIncrements) {
  std::string all;
  for (int number = 0; number < 60000; ++number) {
    const std::string line = "block " + std::to_string(number) + std::string(80, static_cast<char>('a' + number % 26));
    view->insert(-1, line);
    all += (number == 0 ? "" : "\n") + line;
  }
  key(XK_a, ControlMask);
  key(XK_Insert, ControlMask);
  const auto fetched = fetch("CLIPBOARD", "UTF8_STRING");
  ASSERT_TRUE(fetched);
  EXPECT_TRUE(*fetched == all) << fetched->size() << " bytes of " << all.size();
}

TEST_F(TextViewTest, TakesTheKeyboardByClickAndTab) {
  const auto focus = [&] { return XmGetFocusWidget(app.shell); };
  XmProcessTraversal(app.field, XmTRAVERSE_CURRENT);
  ASSERT_EQ(focus(), app.field);
  click(50, 50);
  EXPECT_EQ(focus(), view->widget());
  key(XK_Tab);
  EXPECT_EQ(focus(), app.field);
  XmProcessTraversal(view->widget(), XmTRAVERSE_CURRENT);
  EXPECT_EQ(focus(), view->widget());
}

TEST_F(TextViewTest, OutlivesItsWidgetAndGoesInItsOwnCallback) {
  fill(100);
  view->selectAll();
  XtDestroyWidget(view->widget());
  pump(50);
  EXPECT_EQ(view->widget(), nullptr);
  view->insert(-1, "into the void");
  view->setGeometry(0, 0, 10, 10);
  view->scrollTo(3, 0);
  view->selectAll();
  EXPECT_FALSE(view->copy());
  TextView::paintAllPending();
  EXPECT_EQ(view->count(), 101);
}

// A walk through everything in no order at all; the sanitizers and the invariants watch.
TEST_F(TextViewTest, StandsAnyOrderOfThings) {
  std::mt19937 random(11);
  std::vector<std::string> expected;
  const KeySym keys[] = {XK_Up, XK_Down, XK_Page_Up, XK_Page_Down, XK_Home, XK_End, XK_Left, XK_Right, XK_a, XK_c};
  const auto any = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
  const auto insert = [&] {
    std::string line(static_cast<std::size_t>(any(any(20) == 0 ? 5000 : 120)), ' ');
    for (char& byte : line) byte = static_cast<char>(any(4) == 0 ? any(256) : 'a' + any(26));
    const int at = any(3) == 0 ? any(static_cast<int>(expected.size()) + 1) : static_cast<int>(expected.size());
    view->insert(at, line);
    expected.insert(expected.begin() + at, line);
  };
  const auto clear = [&] {
    if (any(20) != 0) return;
    view->clear();
    expected.clear();
  };
  const auto button = [&] {
    mouse(any(2) == 0 ? ButtonPress : ButtonRelease, static_cast<unsigned>(1 + any(7)), any(900) - 50, any(400) - 50,
          any(2) == 0 ? ShiftMask : 0);
  };
  const auto press = [&] { key(keys[any(10)], static_cast<unsigned>((any(2) * ShiftMask) | (any(2) * ControlMask))); };
  const auto events = [&] {
    if (any(10) == 0) pump(1);
  };
  const auto paint = [&] { view->paintNow(); };
  const auto resize = [&] { view->setGeometry(any(20), any(20), any(900), any(400)); };
  const auto scroll = [&] { view->scrollTo(any(500) - 100, any(3000) - 500); };
  const auto pull = [&] { drag(any(1000) - 100, any(500) - 100); };
  const std::function<void()> steps[] = {insert, insert, insert, insert, clear,  button,
                                         press,  events, paint,  resize, scroll, pull};
  for (int step = 0; step < 6000; ++step) {
    steps[any(static_cast<int>(std::size(steps)))]();
    ASSERT_EQ(view->count(), static_cast<long>(expected.size()));
    ASSERT_LE(view->originLine(), std::max(0L, view->count() - view->viewLines()));
    ASSERT_LE(view->offset(), std::max(0, view->widestLine() - view->viewWidth()));
  }
  expected.emplace_back(3'000'000, 'w');
  view->insert(-1, expected.back());
  for (std::size_t number = 0; number < expected.size(); ++number) {
    const std::string_view line = view->line(static_cast<long>(number));
    ASSERT_EQ(line, expected[number]);
    ASSERT_EQ(line.data()[line.size()], '\0');
  }
  EXPECT_EQ(view->line(view->count()), "");
  view->selectedText();
}

}  // namespace
