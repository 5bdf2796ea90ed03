/// A window with one text field that keeps every line: what the console and the dump windows have in common.
#pragma once

#include <string_view>

#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "xvt/xvt.h"

/// Where a text field stands in its text. Pixels, but for nLines.
struct DOC {
  int nLines = 0;      ///< lines appended so far
  PNT orig;            ///< the view's top-left in the whole text
  int maxOrig = 0;     ///< the largest orig.v: nLines * lineHeight - page, never below 0
  int maxWidth = 0;    ///< width of the widest line so far
  int lineHeight = 1;  ///< leading + ascent + descent of the font
  int page = 0;        ///< view height rounded down to whole lines
  int jobs = 0;        ///< jobs that had been begun (jobsBegun) when the newest line came
  int jobLine = 0;     ///< the first line of the newest of them
};

/// A text window and its bookkeeping.
struct DocView {
  WINDOW window;
  TXEDIT text;
  XVT_FNTID* font;  ///< the window's own, which another size takes the place of
  DOC* doc;
};

/// The font of all text windows: "courier", plain. Its size of 12 counts in pixels of the screens that the windows were
/// first drawn for (some 86 to the inch); the toolkit counts in points, and 10 of them are as large.
/// Once the user has chosen another size, that is the size of the windows made later in the run.
XVT_FNTID docFont();

/// The events of a text window: creation, size, the two scroll bars and the commands of such windows (find, save, first
/// error, size of the text), which all treat alike, then what this one does,
/// then, while it stands, those of its field. @return 0, for the handler to return
long docEvents(const DocView& view, EVENT* xdEvent, const DialogEvents& does);

/// Appends a text, one line for each of its newline-separated parts, and counts `counter` up for each.
///
/// The paragraph counter is narrow and may be shared with another window: where its number would fall before lines that
/// are there already (it wrapped round, or clearing the other window reset it), the line is still put at the end.
/// A view that showed the end goes on showing it; one that was scrolled back stays where it is.
void docAppend(const DocView& view, short* counter, std::string_view text);

/// Empties the field and its bookkeeping.
void docClear(const DocView& view);

/// Selects a part of a line and scrolls to it.
void docSelect(const DocView& view, T_LNUM line, std::size_t begin, std::size_t end);

/// Shows the text larger for 1, smaller for -1, in its usual size for 0. The first visible line stays the first.
void docResizeFont(const DocView& view, int direction);

/// Takes over what the field did by itself.
void docFollow(const DocView& view, T_LNUM origLine, T_CPOS origOffset);

/// A window definition's rectangle at a place, large enough for a text of `columns` by `lines`.
RCT docRectangle(XVT_FNTID font, PNT place, int columns, int lines);

/// Sets the scroll bars from the bookkeeping: the vertical one unless height (of the view) is 0, the horizontal one
/// unless width is 0.
void scrollSync(WINDOW theWin, const DOC* theDoc, int height, int width);

/// Carries out what was done to a scroll bar; `position` is the thumb's, in pixels.
void doScroll(TXEDIT theText, DOC* theDoc, XVT_FNTID theFont, SCROLL_TYPE theType, SCROLL_CONTROL what, int position);
