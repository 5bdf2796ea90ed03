#include "quarlo/tapelib/dialogs/docscroll.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <iterator>
#include <string>

#include "quarlo/tapelib/dialogs/errorlines.h"
#include "quarlo/tapelib/dialogs/findbox.h"
#include "quarlo/tapelib/dialogs/savetext.h"
#include "quarlo/tapelib/jobstate.h"
#include "resources/ids.h"

namespace {

constexpr int kPoints[] = {6, 7, 8, 9, 10, 11, 12, 14, 16, 18, 20, 24, 28, 32};
constexpr int kUsualPoints = 4;
int pointsChosen = kUsualPoints;

/// Pixels from the first line's top to line `lines`; a text of a hundred million lines still counts right.
int linesToPixels(const DOC& doc, long lines) {
  return static_cast<int>(std::min<long>(lines * doc.lineHeight, INT_MAX - INT_MAX % doc.lineHeight));
}

struct ViewSize {
  int height;
  int width;
};

ViewSize viewSize(TXEDIT text) {
  RCT view;
  xvt_tx_get_view_rect(text, &view);
  return {view.bottom - view.top, view.right - view.left};
}

int wholeLines(const DOC& doc, int pixels) { return pixels / doc.lineHeight * doc.lineHeight; }

/// What the vertical bar takes for the view's height: whole lines, so that the thumb's end is the largest origin.
int barHeight(const DOC& doc) { return std::max(1, doc.page); }

void measureLimits(DOC* doc) { doc->maxOrig = std::max(0, linesToPixels(*doc, doc->nLines) - doc->page); }

/// Brings the field to where the bookkeeping says it is.
void moveField(TXEDIT text, const DOC& doc) {
  T_CPOS offset = 0;
  const T_LNUM line = xvt_tx_get_origin(text, &offset);
  if (const T_LNUM lines = doc.orig.v / doc.lineHeight - line; lines != 0) xvt_tx_scroll_vert(text, lines);
  if (const COORD pixels = doc.orig.h - offset; pixels != 0) xvt_tx_scroll_hor(text, pixels);
}

int lineHeightOf(XVT_FNTID font) {
  int leading = 0;
  int ascent = 0;
  int descent = 0;
  xvt_font_get_metrics(font, &leading, &ascent, &descent);
  return std::max(1, leading + ascent + descent);
}

void docCreated(const DocView& view) {
  *view.doc = DOC{};
  view.doc->lineHeight = lineHeightOf(*view.font);
  view.doc->page = wholeLines(*view.doc, viewSize(view.text).height);
}

/// The view or its lines have another size. A view that showed the end of its text still does; no empty space shows
/// behind the text.
void measureAnew(const DocView& view, bool atEnd) {
  DOC& doc = *view.doc;
  const ViewSize size = viewSize(view.text);
  doc.page = wholeLines(doc, size.height);
  measureLimits(&doc);
  doc.orig.v = atEnd ? doc.maxOrig : std::min(doc.orig.v, doc.maxOrig);
  doc.orig.h = std::clamp(doc.orig.h, 0, std::max(0, doc.maxWidth - size.width));
  moveField(view.text, doc);
  scrollSync(view.window, &doc, barHeight(doc), size.width);
}

void docResized(const DocView& view, int height, int width) {
  const RCT area{0, 0, std::max(1, height), std::max(1, width)};
  xvt_tx_move(view.text, &area);
  measureAnew(view, view.doc->orig.v >= view.doc->maxOrig);
}

/// The thumb stands on whole lines, and at the end when it is nearly there.
int thumbLine(const DOC& doc, int position) {
  if (doc.maxOrig - position < doc.lineHeight / 7 * 6) return doc.maxOrig;
  return wholeLines(doc, position);
}

int stepped(SCROLL_CONTROL what, int now, int line, int page, int thumb) {
  switch (what) {
    case SC_LINE_UP:
      return now - line;
    case SC_LINE_DOWN:
      return now + line;
    case SC_PAGE_UP:
      return now - page;
    case SC_PAGE_DOWN:
      return now + page;
    case SC_THUMB:
    case SC_THUMBTRACK:
      return thumb;
    default:
      return now;
  }
}

/// The number at which a line goes to the end: the counter's, or, where that would fall among the lines that are
/// there, any below 0.
T_PNUM appendingNumber(const DOC& doc, short counter) { return counter < doc.nLines ? -1 : counter; }

void appendLine(const DocView& view, short* counter, const std::string& line) {
  DOC& doc = *view.doc;
  if (!xvt_tx_add_par(view.text, appendingNumber(doc, *counter), line.c_str())) return;
  *counter = static_cast<short>(*counter + 1);
  doc.nLines++;
  measureLimits(&doc);
  doc.maxWidth =
      std::max(doc.maxWidth, xvt_font_get_text_width(*view.font, line.data(), static_cast<int>(line.size())));
}

/// Line by line, for the text may be large.
bool writeLines(TXEDIT text, std::FILE* file) {
  const T_LNUM lines = xvt_tx_get_num_pars(text);
  for (T_LNUM line = 0; line < lines; ++line) {
    std::size_t length = 0;
    const char* bytes = xvt_tx_get_par(text, line, &length);
    if (std::fwrite(bytes, 1, length, file) != length || std::fputc('\n', file) == EOF) return false;
  }
  return true;
}

void saveLines(const DocView& view) {
  static FILE_SPEC file{};
  saveTextAs(&file, "txt", "Save the text as:", nullptr, [&](std::FILE* to) { return writeLines(view.text, to); });
}

void closeWindow(const DocView& view) {
  EVENT close;
  close.type = E_CLOSE;
  xvt_win_dispatch_event(view.window, &close);
}

struct TextCommand {
  int command;
  void (*act)(const DocView& view);
};

constexpr TextCommand kCommands[] = {
    {CMD_TEXT_FIND, [](const DocView& view) { openFindBox(view); }},
    {CMD_TEXT_FIND_NEXT, [](const DocView& view) { findAgain(view, FindDirection::forward); }},
    {CMD_TEXT_FIND_PREVIOUS, [](const DocView& view) { findAgain(view, FindDirection::backward); }},
    {CMD_TEXT_ERROR, goToError},
    {CMD_TEXT_SAVE, saveLines},
    {CMD_TEXT_LARGER, [](const DocView& view) { docResizeFont(view, 1); }},
    {CMD_TEXT_SMALLER, [](const DocView& view) { docResizeFont(view, -1); }},
    {CMD_TEXT_USUAL_SIZE, [](const DocView& view) { docResizeFont(view, 0); }},
    {CMD_TEXT_CLOSE, closeWindow},
};

void carryOut(const DocView& view, int command) {
  const auto* found = std::ranges::find(kCommands, command, &TextCommand::command);
  if (found != std::end(kCommands)) found->act(view);
}

void followEvent(const DocView& view, const EVENT* xdEvent) {
  switch (xdEvent->type) {
    case E_COMMAND:
      carryOut(view, xdEvent->cmd.tag);
      break;
    case E_CLOSE:
    case E_DESTROY:
      closeFindBox(view.window);
      break;
    case E_CREATE:
      docCreated(view);
      break;
    case E_SIZE:
      docResized(view, xdEvent->size.height, xdEvent->size.width);
      break;
    case E_VSCROLL:
      doScroll(view.text, view.doc, *view.font, VSCROLL, xdEvent->scroll.what, xdEvent->scroll.position);
      break;
    case E_HSCROLL:
      doScroll(view.text, view.doc, *view.font, HSCROLL, xdEvent->scroll.what, xdEvent->scroll.position);
      break;
    default:
      break;
  }
}

}  // namespace

XVT_FNTID docFont() { return xvt_font_create("courier", kPoints[pointsChosen], FS_PLAIN); }

long docEvents(const DocView& view, EVENT* xdEvent, const DialogEvents& does) {
  followEvent(view, xdEvent);
  dialogEvents(view.window, *xdEvent, does);
  if (xdEvent->type != E_DESTROY) xvt_tx_process_event(view.window, xdEvent);
  return 0;
}

void docAppend(const DocView& view, short* counter, std::string_view text) {
  DOC& doc = *view.doc;
  if (doc.jobs != jobsBegun()) {
    doc.jobs = jobsBegun();
    doc.jobLine = doc.nLines;
  }
  const ViewSize size = viewSize(view.text);
  const auto isTaller = [&] { return linesToPixels(doc, doc.nLines) > size.height; };
  for (;;) {
    const std::size_t end = text.find('\n');
    appendLine(view, counter, std::string(text.substr(0, end)));
    if (isTaller() && doc.orig.v >= doc.maxOrig - doc.lineHeight) doc.orig.v = doc.maxOrig;
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  if (isTaller()) moveField(view.text, doc);
  scrollSync(view.window, &doc, isTaller() ? barHeight(doc) : 0, size.width);
}

void docClear(const DocView& view) {
  DOC& doc = *view.doc;
  xvt_tx_clear(view.text);
  doc.nLines = doc.jobLine = 0;
  doc.orig = PNT{};
  doc.maxOrig = doc.maxWidth = 0;
  scrollSync(view.window, &doc, barHeight(doc), viewSize(view.text).width);
}

void docSelect(const DocView& view, T_LNUM line, std::size_t begin, std::size_t end) {
  xvt_tx_select(view.text, line, begin, end);
  T_CPOS offset = 0;
  const T_LNUM first = xvt_tx_get_origin(view.text, &offset);
  docFollow(view, first, offset);
  EVENT update;
  update.type = E_UPDATE;
  xvt_tx_process_event(view.window, &update);
}

void docResizeFont(const DocView& view, int direction) {
  const int wanted = direction == 0 ? kUsualPoints : pointsChosen + direction;
  pointsChosen = std::clamp(wanted, 0, static_cast<int>(std::size(kPoints)) - 1);
  const XVT_FNTID font = docFont();
  if (font == NULL_FNTID) return;
  DOC& doc = *view.doc;
  const bool atEnd = doc.orig.v >= doc.maxOrig;
  const int first = doc.orig.v / doc.lineHeight;
  xvt_tx_set_font(view.text, font);
  xvt_font_destroy(*view.font);
  *view.font = font;
  doc.lineHeight = lineHeightOf(font);
  doc.orig.v = linesToPixels(doc, first);
  doc.maxWidth = xvt_tx_get_text_width(view.text);
  measureAnew(view, atEnd);
}

void docFollow(const DocView& view, T_LNUM origLine, T_CPOS origOffset) {
  view.doc->orig = PNT{linesToPixels(*view.doc, origLine), origOffset};
  xvt_sbar_set_pos(view.window, VSCROLL, view.doc->orig.v);
  xvt_sbar_set_pos(view.window, HSCROLL, view.doc->orig.h);
}

RCT docRectangle(XVT_FNTID font, PNT place, int columns, int lines) {
  const int lineHeight = lineHeightOf(font);
  const int width = xvt_font_get_text_width(font, std::string(static_cast<std::size_t>(columns), 'm').c_str(), columns);
  // Margins and a scroll bar.
  const int extra = 2 * lineHeight;
  return {place.v, place.h, place.v + lines * lineHeight + extra, place.h + width + extra};
}

void scrollSync(WINDOW theWin, const DOC* theDoc, int height, int width) {
  if (height != 0) {
    const int whole = linesToPixels(*theDoc, theDoc->nLines);
    xvt_sbar_set_range(theWin, VSCROLL, 0, whole);
    xvt_sbar_set_proportion(theWin, VSCROLL, std::min(whole, height));
    xvt_sbar_set_pos(theWin, VSCROLL, theDoc->orig.v);
  }
  if (width != 0) {
    xvt_sbar_set_range(theWin, HSCROLL, 0, theDoc->maxWidth);
    xvt_sbar_set_proportion(theWin, HSCROLL, std::min(width, theDoc->maxWidth));
    xvt_sbar_set_pos(theWin, HSCROLL, theDoc->orig.h);
  }
}

void doScroll(TXEDIT theText, DOC* theDoc, XVT_FNTID theFont, SCROLL_TYPE theType, SCROLL_CONTROL what, int position) {
  const ViewSize size = viewSize(theText);
  PNT& orig = theDoc->orig;
  if (theType == VSCROLL) {
    const int wanted = stepped(what, orig.v, theDoc->lineHeight, theDoc->page, thumbLine(*theDoc, position));
    orig.v = std::clamp(wanted, 0, theDoc->maxOrig);
  } else {
    const int step = xvt_font_get_text_width(theFont, "--", 2);
    const int wanted = stepped(what, orig.h, step, size.width, position);
    orig.h = std::clamp(wanted, 0, std::max(0, theDoc->maxWidth - size.width));
  }
  moveField(theText, *theDoc);
  const WINDOW window = xvt_tx_get_window(theText);
  xvt_sbar_set_pos(window, VSCROLL, orig.v);
  xvt_sbar_set_pos(window, HSCROLL, orig.h);
}
