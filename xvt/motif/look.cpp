#include "xvt/motif/look.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <vector>

#include "xvt/base/utf8.h"

namespace xvt {

namespace {

constexpr int kTextSize = 10;     // points
constexpr int kHeadingSize = 12;  // points

XftFont* openFont(Display* display, const char* family, int points, bool bold) {
  return XftFontOpen(display, DefaultScreen(display), XFT_FAMILY, XftTypeString, family, XFT_SIZE, XftTypeDouble,
                     static_cast<double>(points), XFT_WEIGHT, XftTypeInteger,
                     bold ? XFT_WEIGHT_BOLD : XFT_WEIGHT_MEDIUM, nullptr);
}

int widthIn(Display* display, XftFont* font, std::string_view text) {
  XGlyphInfo glyphs{};
  XftTextExtentsUtf8(display, font, reinterpret_cast<const FcChar8*>(text.data()), static_cast<int>(text.size()),
                     &glyphs);
  return glyphs.xOff;
}

/// Fontconfig answers every question with some font: only its widths tell whether it really is a monospaced one.
bool isMonospaced(Display* display, const char* family) {
  XftFont* font = openFont(display, family, kTextSize, false);
  if (font == nullptr) return false;
  const bool same = widthIn(display, font, "i") == widthIn(display, font, "W");
  XftFontClose(display, font);
  return same;
}

const char* findMonospaced(Display* display) {
  for (const char* family : {"monospace", "DejaVu Sans Mono", "Liberation Mono", "Courier New"})
    if (isMonospaced(display, family)) return family;
  std::fputs("xvt: no monospaced font found; columns will not line up (install fonts-dejavu-core)\n", stderr);
  return "monospace";
}

/// Render tables stay to the end of the process: Motif still holds them in the caches of its display.
void keep(XmRenderTable table) {
  static auto& kept = *new std::vector<XmRenderTable>;
  kept.push_back(table);
}

/// A copy of a text to the end of the process: Motif keeps the addresses of a rendition's texts, and looks there again
/// when it makes another one.
char* lasting(const char* text) {
  static auto& texts = *new std::deque<std::string>;
  return texts.emplace_back(text).data();
}

constexpr const char* kUnderlined = "underlined";

XmRendition makeRendition(Widget shell, const char* tag, const char* family, int points, bool bold) {
  std::vector<Arg> args(bold ? 5 : 4);
  XtSetArg(args[0], const_cast<char*>(XmNfontName), lasting(family));
  XtSetArg(args[1], const_cast<char*>(XmNfontType), XmFONT_IS_XFT);
  XtSetArg(args[2], const_cast<char*>(XmNfontSize), points);
  XtSetArg(args[3], const_cast<char*>(XmNunderlineType), tag == kUnderlined ? XmSINGLE_LINE : XmNO_LINE);
  if (bold) XtSetArg(args[4], const_cast<char*>(XmNfontStyle), lasting("Bold"));
  return XmRenditionCreate(shell, lasting(tag), args.data(), static_cast<Cardinal>(args.size()));
}

XmRenderTable makeTable(Widget shell, const char* family, int points, bool bold) {
  std::array<XmRendition, 2> renditions{makeRendition(shell, XmFONTLIST_DEFAULT_TAG, family, points, bold),
                                        makeRendition(shell, kUnderlined, family, points, bold)};
  XmRenderTable table = XmRenderTableAddRenditions(nullptr, renditions.data(), renditions.size(), XmMERGE_REPLACE);
  for (XmRendition rendition : renditions) XmRenditionFree(rendition);
  keep(table);
  return table;
}

/// The palette in use: Motif asks for its colours without saying whose they are.
Palette& paletteInUse() {
  static Palette inUse;
  return inUse;
}

/// Flat: no colour is derived from the background except the ones named in the resources.
void flatColors(XColor* background, XColor* foreground, XColor* select, XColor* top, XColor* bottom) {
  const auto dye = [](XColor* one, color::Tone tone) {
    const auto value = std::strtoul(paletteInUse().name(tone) + 1, nullptr, 16);
    const auto channel = [value](unsigned shift) {
      return static_cast<unsigned short>((value >> shift & 0xff) * 0x101);
    };
    one->red = channel(16);
    one->green = channel(8);
    one->blue = channel(0);
  };
  dye(foreground, color::kInk);
  for (XColor* same : {top, bottom}) {
    same->red = background->red;
    same->green = background->green;
    same->blue = background->blue;
  }
  // Of menu titles and lines under the pointer: as the selected rows of lists.
  dye(select, color::kChosen);
}

// Lines with "@N" hold a distance of N pixels at a line height of 16, to be scaled with the font; "$NAME" is a colour
// of the palette.
constexpr const char* kResources[] = {
    "*enableButtonTab: True",
    "*enableEtchedInMenu: True",
    "*background: $ground",
    "*foreground: $ink",
    "*topShadowColor: $ground",
    "*bottomShadowColor: $faint",
    "*topShadowPixmap: unspecified_pixmap",
    "*bottomShadowPixmap: unspecified_pixmap",
    "*borderColor: $border",
    "*highlightColor: $focus",
    "*armColor: $pressed",
    "*selectColor: $primary",
    "*shadowThickness: 0",
    "*highlightThickness: @1",
    "*borderWidth: 0",
    "*keyboardFocusPolicy: explicit",
    "*dragInitiatorProtocolStyle: drag_none",
    "*dragReceiverProtocolStyle: drag_none",
    "*XmBulletinBoard.marginWidth: 0",
    "*XmBulletinBoard.marginHeight: 0",
    "*XmLabel.marginHeight: 0",
    "*XmLabel.marginWidth: 0",
    "*XmLabel.alignment: alignment_beginning",
    "*XmLabel.highlightThickness: 0",
    "*XmPushButton.borderWidth: @1",
    "*XmPushButton.background: $paper",
    "*XmPushButton.topShadowColor: $paper",
    "*XmPushButton.marginWidth: @14",
    "*XmPushButton.marginHeight: @5",
    "*XmPushButton.alignment: alignment_center",
    "*XmDrawnButton.borderWidth: @1",
    "*XmDrawnButton.background: $paper",
    "*XmDrawnButton.topShadowColor: $paper",
    "*XmDrawnButton.marginWidth: @7",
    "*XmDrawnButton.marginHeight: @5",
    "*XmDrawnButton.alignment: alignment_beginning",
    "*XmTextField.borderWidth: @1",
    "*XmTextField.background: $paper",
    "*XmTextField.marginHeight: @5",
    "*XmTextField.marginWidth: @7",
    "*XmToggleButton.marginHeight: @3",
    "*XmToggleButton.marginWidth: @3",
    "*XmToggleButton.alignment: alignment_beginning",
    "*XmSeparator.separatorType: single_line",
    "*XmSeparator.foreground: $line",
    "*XmSeparator.margin: 0",
    "*XmList.background: $paper",
    "*XmList.selectColor: $chosen",
    "*XmList.highlightThickness: 0",
    "*XmList.listMarginWidth: @6",
    "*XmList.listMarginHeight: @4",
    "*XmList.listSpacing: @2",
    "*toolTipEnable: True",
    "*toolTipPostDelay: 700",
    "*toolTipPostDuration: 20000",
    "*TipShell.borderWidth: @1",
    "*TipShell.borderColor: $faint",
    "*TipLabel.background: $paper",
    "*TipLabel.marginWidth: @7",
    "*TipLabel.marginHeight: @4",
    "*XmScrolledWindow.spacing: 0",
    "*XmScrolledWindow.borderWidth: @1",
    "*XmScrolledWindow.background: $paper",
    "*XmScrollBar.showArrows: none",
    "*XmScrollBar.sliderVisual: foreground",
    "*XmScrollBar.foreground: $thumb",
    "*XmScrollBar.background: $thumb",
    "*XmScrollBar.topShadowColor: $thumb",
    "*XmScrollBar.troughColor: $trough",
    "*XmScrollBar.width: @12",
    "*XmScrollBar.height: @12",
    "*XmScrollBar.highlightThickness: 0",
    "*XmScrollBar.traversalOn: False",  // the keys of what it scrolls scroll it, and it shows no focus
    "*menuBar.background: $paper",
    "*menuBar*background: $paper",
    "*menuBar*topShadowColor: $paper",
    "*menuBar.marginHeight: @3",
    "*menuBar.marginWidth: @6",
    "*menuBar.XmCascadeButton.marginWidth: @9",
    "*menuBar.XmCascadeButton.marginHeight: @5",
    "*XmMenuShell*background: $paper",
    "*XmMenuShell*topShadowColor: $paper",
    "*XmMenuShell.XmRowColumn.shadowThickness: @1",
    "*XmMenuShell.XmRowColumn.topShadowColor: $border",
    "*XmMenuShell.XmRowColumn.bottomShadowColor: $border",
    "*XmMenuShell.XmRowColumn.marginHeight: @4",
    "*XmMenuShell.XmRowColumn.marginWidth: @1",
    "*XmMenuShell*XmPushButton.borderWidth: 0",
    "*XmMenuShell*XmPushButton.shadowThickness: @1",
    "*XmMenuShell*XmPushButton.armColor: $chosen",
    "*XmMenuShell*XmPushButton.marginWidth: @14",
    "*XmMenuShell*XmPushButton.marginHeight: @5",
    "*XmMenuShell*XmPushButton.alignment: alignment_beginning",
    "*XmMenuShell*XmToggleButton.indicatorOn: indicator_check",
    "*XmMenuShell*XmToggleButton.indicatorSize: @14",
    "*XmMenuShell*XmToggleButton.shadowThickness: @1",
    "*XmMenuShell*XmToggleButton.marginHeight: @5",
    "*XmMenuShell*XmToggleButton.marginWidth: @4",
    "*XmMenuShell*XmToggleButton.spacing: @6",
    "*XmMenuShell*XmSeparator.height: @9",
};

std::string resourceLine(const std::string& line, int lineHeight) {
  const std::size_t at = line.find_first_of("@$");
  if (at == std::string::npos) return line;
  const std::string what = line.substr(at + 1);
  const bool colored = line[at] == '$';
  return line.substr(0, at) +
         (colored ? paletteInUse().name(Palette::tone(what)) : std::to_string(scaled(std::stoi(what), lineHeight)));
}

/// Fonts are told in points, distances follow the fonts: all grows with the dots that an inch is said to have.
void scaleInch(Display* display, XrmDatabase database, int percent) {
  const int screen = DefaultScreen(display);
  const char* said = XGetDefault(display, "Xft", "dpi");
  double dots = said != nullptr ? std::strtod(said, nullptr) : 0;
  if (dots <= 0) dots = DisplayHeight(display, screen) * 25.4 / std::max(1, DisplayHeightMM(display, screen));
  XrmPutStringResource(&database, "Xft.dpi", std::to_string(dots * percent / 100).c_str());
}

/// Byte offsets at which the text may be cut.
std::vector<std::size_t> cuts(const std::string& text) {
  std::vector<std::size_t> offsets{0};
  while (offsets.back() < text.size()) {
    const std::size_t length = utf8SequenceLength(std::string_view(text).substr(offsets.back()));
    offsets.push_back(offsets.back() + std::max<std::size_t>(1, length));
  }
  return offsets;
}

}  // namespace

MotifString::MotifString(const std::string& text)
    : string_(XmStringGenerate(const_cast<char*>(text.c_str()), nullptr, XmCHARSET_TEXT, nullptr)) {}

MotifString::MotifString(const std::string& text, KeySym mnemonic) : MotifString(text) {
  const std::size_t at = mnemonic == 0 ? std::string::npos : text.find(static_cast<char>(mnemonic));
  if (at == std::string::npos) return;
  const auto part = [&](std::size_t from, std::size_t length, const char* rendition) {
    return XmStringGenerate(text.substr(from, length).data(), nullptr, XmCHARSET_TEXT, const_cast<char*>(rendition));
  };
  XmStringFree(string_);
  string_ = XmStringConcatAndFree(
      part(0, at, nullptr), XmStringConcatAndFree(part(at, 1, kUnderlined), part(at + 1, std::string::npos, nullptr)));
}

void Look::installResources(Display* display, const LookWishes& wishes) {
  paletteInUse() = Palette(wishes.dark);
  XrmDatabase theirs = XtScreenDatabase(DefaultScreenOfDisplay(display));
  if (wishes.percent != 100) scaleInch(display, theirs, wishes.percent);
  XftFont* font = openFont(display, "sans", kTextSize, false);
  const int lineHeight = font != nullptr ? font->ascent + font->descent : 16;
  if (font != nullptr) XftFontClose(display, font);
  XrmDatabase ours = nullptr;
  for (const char* line : kResources) XrmPutLineResource(&ours, resourceLine(line, lineHeight).c_str());
  XrmCombineDatabase(ours, &theirs, False);
  XmSetColorCalculation(flatColors);
}

Look::Look(Widget shell)
    : display_(XtDisplay(shell)),
      screen_(XtScreen(shell)),
      palette_(paletteInUse()),
      monoFamily_(findMonospaced(display_)),
      fonts_{openFont(display_, "sans", kTextSize, false), openFont(display_, "sans", kTextSize, true),
             openFont(display_, "sans", kHeadingSize, true), openFont(display_, monoFamily_, kTextSize, false)},
      tables_{makeTable(shell, "sans", kTextSize, false), makeTable(shell, "sans", kTextSize, true),
              makeTable(shell, "sans", kHeadingSize, true), makeTable(shell, monoFamily_, kTextSize, false)},
      lineHeight_(fonts_[0]->ascent + fonts_[0]->descent),
      spacing_(lineHeight_) {}

Look::~Look() {
  for (XftFont* font : fonts_) XftFontClose(display_, font);
}

int Look::textWidth(Face face, std::string_view text) const { return widthIn(display_, font(face), text); }

Extent Look::textSize(Face face, const std::string& text) const {
  Extent size;
  std::size_t from = 0;
  while (true) {
    const std::size_t end = text.find('\n', from);
    size.width = std::max(size.width, textWidth(face, std::string_view(text).substr(from, end - from)));
    size.height += lineHeight(face);
    if (end == std::string::npos) return size;
    from = end + 1;
  }
}

std::string Look::fitted(Face face, const std::string& text, int width) const {
  if (textWidth(face, text) <= width) return text;
  const std::vector<std::size_t> offsets = cuts(text);
  const bool path = text.find('/') != std::string::npos;
  const std::size_t count = offsets.size() - 1;
  const auto shortened = [&](std::size_t keep) {
    const std::size_t tail = path ? keep * 2 / 3 : 0;
    return text.substr(0, offsets[keep - tail]) + "\xE2\x80\xA6" + text.substr(offsets[count - tail]);
  };
  std::size_t low = 0;
  std::size_t high = count;
  while (low < high) {
    const std::size_t middle = (low + high + 1) / 2;
    if (textWidth(face, shortened(middle)) <= width)
      low = middle;
    else
      high = middle - 1;
  }
  return shortened(low);
}

Pixel Look::pixel(const std::string& name) const {
  const auto known = pixels_.find(name);
  if (known != pixels_.end()) return known->second;
  XColor exact{};
  XColor screenColor{};
  const Colormap map = DefaultColormapOfScreen(screen_);
  const bool found = XAllocNamedColor(display_, map, name.c_str(), &screenColor, &exact) != 0;
  return pixels_[name] = found ? screenColor.pixel : BlackPixelOfScreen(screen_);
}

Pixel Look::pixel(XVT_COLOR given) const {
  const XVT_COLOR color = palette_.shown(given);
  std::array<char, 8> name{};
  std::snprintf(name.data(), name.size(), "#%02x%02x%02x", color.red, color.green, color.blue);
  return pixel(std::string(name.data()));
}

void Look::dress(Widget shell) const {
  XtVaSetValues(shell, XmNlabelRenderTable, table(Face::plain), XmNbuttonRenderTable, table(Face::plain),
                XmNtextRenderTable, table(Face::plain), nullptr);
}

}  // namespace xvt
