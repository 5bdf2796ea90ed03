// Colours and sizes: what stands out from what, and what the user can say about them.
#include <X11/Xatom.h>

#include <cmath>
#include <cstdlib>
#include <iterator>
#include <memory>

#include "tests/xvt/core_app.h"
#include "xvt/motif/dialog.h"
#include "xvt/motif/palette.h"
#include "xvt/motif/wishes.h"

namespace {

using namespace core;
using namespace xvt;

/// Relative luminance as WCAG 2 defines it.
double luminance(unsigned long rgb) {
  const auto part = [rgb](unsigned shift) {
    const double value = static_cast<double>(rgb >> shift & 0xff) / 255;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * part(16) + 0.7152 * part(8) + 0.0722 * part(0);
}

double contrast(unsigned long one, unsigned long other) {
  const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
  return (light + 0.05) / (dark + 0.05);
}

TEST(Look, WhatIsToBeSeenStandsOutInBothPalettes) {
  using namespace color;
  struct Pair {
    std::vector<Tone> over, under;
    double least;
  };
  const Pair pairs[] = {{{kInk}, {kGround, kPaper, kChosen, kPressed, kStrip}, 4.5},
                        {{kQuiet, kSection}, {kGround, kPaper, kStrip}, 4.5},
                        {{kOnPrimary}, {kPrimary, kPrimaryDown}, 4.5},
                        {{kFaint, kBorder}, {kGround, kPaper, kStrip}, 3},
                        {{kFocus}, {kGround, kPaper, kBorder, kPrimary, kChosen}, 3},
                        {{kPrimary}, {kGround, kPaper, kMeterTrough}, 3},
                        {{kThumb}, {kTrough, kPaper}, 3}};
  for (const Palette palette : {Palette(false), Palette(true)}) {
    const auto rgb = [&](Tone tone) { return std::strtoul(palette.name(tone) + 1, nullptr, 16); };
    for (const Pair& pair : pairs)
      for (const Tone over : pair.over)
        for (const Tone under : pair.under)
          EXPECT_GE(contrast(rgb(over), rgb(under)), pair.least) << palette.name(over) << " on " << palette.name(under);
    // A row on a ground that the program colours, and its meter.
    for (const XVT_COLOR given : {XVT_COLOR{255, 170, 170}, {255, 255, 170}, {255, 255, 255}, {170, 255, 170}}) {
      const XVT_COLOR shown = palette.shown(given);
      EXPECT_GE(contrast(rgb(kInk), shown.red * 65536UL + shown.green * 256UL + shown.blue), 4.5);
      EXPECT_EQ(shown.red > shown.blue, given.red > given.blue) << "another hue";
    }
    const XVT_COLOR bar = palette.shown({95, 95, 138});
    EXPECT_GE(contrast(rgb(kMeterTrough), bar.red * 65536UL + bar.green * 256UL + bar.blue), 3);
  }
}

/// What an XSETTINGS manager publishes: a number, a colour and the theme.
std::string published(const std::string& theme, bool bigEndian) {
  const auto number = [bigEndian](std::size_t value, int size) {
    std::string bytes;
    for (int at = 0; at < size; ++at) bytes.insert(bigEndian ? 0 : bytes.size(), 1, static_cast<char>(value >> 8 * at));
    return bytes;
  };
  const auto text = [&](const std::string& value, int size) {
    return number(value.size(), size) + value + std::string((4 - value.size() % 4) % 4, '\0');
  };
  const auto head = [&](char type, const std::string& name) {
    return std::string{type, '\0'} + text(name, 2) + number(7, 4);
  };
  return std::string{bigEndian ? '\1' : '\0', '\0', '\0', '\0'} + number(1, 4) + number(3, 4) +
         head(0, "Net/CursorBlink") + number(1, 4) + head(2, "Some/Color") + std::string(8, 'c') +
         head(1, "Net/ThemeName") + text(theme, 4);
}

TEST(Look, SettingsOfTheDesktopMayBeCutAnywhere) {
  for (const bool bigEndian : {false, true}) {
    const std::string all = published("Some-dark", bigEndian);
    EXPECT_EQ(settingIn(all, "Net/ThemeName"), "Some-dark");
    EXPECT_EQ(settingIn(all, "Net/CursorBlink"), "");
    for (std::size_t length = 0; length < all.size() - 4; ++length) {
      const auto exact = std::make_unique<char[]>(length);  // so that a byte too many is seen
      std::copy_n(all.begin(), length, exact.get());
      EXPECT_EQ(settingIn({exact.get(), length}, "Net/ThemeName"), "") << length;
    }
  }
}

/// A connection of another program: the resources of the display, and a desktop with a theme.
class Desktop {
 public:
  Desktop(const std::string& resources, const std::string& theme) : display_(XOpenDisplay(nullptr)) {
    put(DefaultRootWindow(display_), "RESOURCE_MANAGER", XA_STRING, resources);
    if (theme.empty()) return;
    const ::Window window = XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, 1, 1, 0, 0, 0);
    const Atom settings = XInternAtom(display_, "_XSETTINGS_SETTINGS", False);
    put(window, "_XSETTINGS_SETTINGS", settings, published(theme, false));
    XSetSelectionOwner(display_, XInternAtom(display_, "_XSETTINGS_S0", False), window, CurrentTime);
    XSync(display_, False);
  }
  ~Desktop() {
    XDeleteProperty(display_, DefaultRootWindow(display_), XA_RESOURCE_MANAGER);
    XCloseDisplay(display_);
  }
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

 private:
  void put(::Window window, const char* name, Atom type, const std::string& value) {
    XChangeProperty(display_, window, XInternAtom(display_, name, False), type, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(value.data()), static_cast<int>(value.size()));
    XSync(display_, False);
  }
  Display* display_;
};

constexpr DLG_ITEM kTabItems[] = {
    ui::edit(1, "field", 10),        ui::option(2, "option", 10),    ui::list(3, "list", 10, 4),
    ui::check(4, "check", "Check"),  ui::radio(5, "radio", "Radio"), ui::push(6, "ok", "~OK", IF_DEFAULT),
    ui::push(7, "cancel", "Cancel"),
};
constexpr DLG_RES kTabTable = {1, "stops", "Stops", kTabItems, std::size(kTabItems)};
constexpr RESOURCES kTabResources = {nullptr, 0, &kTabTable, 1};

TEST(Look, TheUserChoosesByEnvironmentThenResourceThenDesktop) {
  struct Case {
    const char *palette, *scale, *resources, *theme;
    bool dark;
    int percent;
    const char* complaint;
  };
  const Case cases[] = {
      {"", "", "", "", false, 100, ""},
      {"", "", "", "Some-Dark", true, 100, ""},
      {"light", "", "core-test*palette: dark\n", "Some-dark", false, 100, ""},
      {"", "", "core-test*palette: dark\ncore-test*scale: 150\n", "", true, 150, ""},
      {"desktop", "200%", "core-test*palette: dark\ncore-test*scale: 150\n", "Plain", false, 200, ""},
      {"blue", "", "", "Some-dark", false, 100,
       "core-test: CORE_TEST_PALETTE is \"blue\", not light, dark or desktop: light is taken\n"},
      {"dark", "", "core-test*scale: 201\n", "", true, 100,
       "core-test: core-test*scale is \"201\", not a percentage from 100 to 200: 100 is taken\n"},
  };
  for (const Case& one : cases) {
    setenv("CORE_TEST_PALETTE", one.palette, 1);
    setenv("CORE_TEST_SCALE", one.scale, 1);
    setenv("XDG_CONFIG_HOME", "/nowhere", 1);
    const Desktop desktop(std::string("Xft.dpi: 96\n") + one.resources, one.theme);
    testing::internal::CaptureStderr();
    run(kTabResources, [&] {
      EXPECT_EQ(app().look().palette().isDark(), one.dark);
      EXPECT_NEAR(app().look().lineHeight(), 16 * one.percent / 100, 2);
      const WINDOW window = open(WD_MODELESS, kTabTable);
      const Item& mark = *Registry::instance().find<Item>(ctl(window, 4));
      EXPECT_NEAR(mark.cell().natural.height, 24 * one.percent / 100, 3) << "to be hit";
    });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), one.complaint);
  }
}

/// Pixels of this colour in what the control covers.
long pixelsOf(const Item& item, Pixel wanted) {
  Display* display = XtDisplay(item.widget());
  XWindowAttributes place{};
  ::Window window = XtWindow(item.outer());
  XGetWindowAttributes(display, window, &place);
  const int wide = place.width + 2 * place.border_width;
  const int tall = place.height + 2 * place.border_width;
  int x = 0, y = 0;
  XTranslateCoordinates(display, window, place.root, -place.border_width, -place.border_width, &x, &y, &window);
  XImage* image = XGetImage(display, place.root, x, y, static_cast<unsigned>(wide), static_cast<unsigned>(tall),
                            AllPlanes, ZPixmap);
  long count = 0;
  for (int at = 0; at < wide * tall; ++at) count += XGetPixel(image, at % wide, at / wide) == wanted;
  XDestroyImage(image);
  return count;
}

TEST(Look, OneStopOfTheTabKeyHasARingAround) {
  setenv("CORE_TEST_PALETTE", "dark", 1);  // where nothing else is white
  run(kTabResources, [] {
    const WINDOW window = open(WD_MODELESS, kTabTable);
    for (int stop = 0; stop < 2 * static_cast<int>(std::size(kTabItems)); ++stop) {
      pump(40);
      const Widget shell = Registry::instance().find<Dialog>(window)->shell();
      for (int id = 1; id <= static_cast<int>(std::size(kTabItems)); ++id) {
        const Item& item = *Registry::instance().find<Item>(ctl(window, id));
        const RCT place = item.outerRect();
        const bool has = XmGetFocusWidget(shell) == item.widget();
        const long ring = pixelsOf(item, app().look().pixel(color::kFocus));
        EXPECT_TRUE(has ? ring > place.right - place.left : ring == 0) << "control " << id << ": " << ring;
      }
      EXPECT_EQ(probe::key(window, "Tab"), std::nullopt);
    }
  });
  unsetenv("CORE_TEST_PALETTE");
}

}  // namespace
