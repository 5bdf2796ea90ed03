#include "quarlo/tapelib/dialogs/segyfields_dlg.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "libkyr/text.h"
#include "quarlo/tapelib/dialogs/controls.h"

namespace {

struct Verb {
  const char* noun;  // ending of the plural
  const char* verb;  // ending of the singular
};

constexpr Verb endings(unsigned count) { return count == 1 ? Verb{"", "s"} : Verb{"s", ""}; }

std::string overlapLine(unsigned count) {
  const Verb end = endings(count);
  return count == 0 ? ""
                    : formatText("%u byte position overlap%s exist%s between fields.\n", count, end.noun, end.verb);
}

std::string outsideLine(unsigned count) {
  const Verb end = endings(count);
  return count == 0 ? ""
                    : formatText("%u byte position%s exceed%s specified header size.\n", count, end.noun, end.verb);
}

void setBackground(WINDOW dialog, int list, int color) {
  const WINDOW control = xvt_win_get_ctl(dialog, list);
  if (control == NULL_WIN) return;
  const auto part = [color](unsigned shift) {
    return static_cast<unsigned char>(static_cast<unsigned>(color) >> shift);
  };
  xvt_ctl_set_color(control, {part(16), part(8), part(0)});
}

/// A field of a header that is not written cannot be wrong there.
bool isMarked(const SegyFormat& format, const SegyField& field, int list) {
  return list != kSegyMappingList && (field.itIsBinaryField == 0 || format.itHasBinaryHeader != 0);
}

/// The sum of both counts, each of which stays at its end.
unsigned addFlags(unsigned sum, unsigned flags) {
  constexpr unsigned kMost = 0xFFFFU;
  const unsigned low = std::min((sum & kMost) + (flags & kMost), kMost);
  const unsigned high = std::min((sum >> 16) + (flags >> 16), kMost);
  return high << 16 | low;
}

std::string rowOf(const SegyField& field, bool marked) {
  std::string row = marked ? "* " : "";
  row += fieldText(field.itsDescription);
  if (field.itIsRequired != 0) row += " (required)";
  return row;
}

}  // namespace

void boundsError(WINDOW theWindow, int theList, unsigned int boundsFlags, int* color) {
  const unsigned overlaps = overlapsIn(boundsFlags);
  const unsigned outside = outsideIn(boundsFlags);
  const int before = std::exchange(*color, overlaps == 0 && outside == 0 ? kFieldsSoundColor : kFieldsBadColor);
  setBackground(theWindow, theList, *color);
  if (*color == kFieldsBadColor && before == kFieldsSoundColor)
    xvt_dm_post_note("WARNING:\n%s%sProblem field(s) will be marked ( * ) in the %s.", overlapLine(overlaps).c_str(),
                     outsideLine(outside).c_str(),
                     theList == kSegyMappingList ? "Kyr Mapping List" : "SEG Y Header List");
}

unsigned int doFieldList(const SegyFormat* theFormat, const SegyField* theFields, WINDOW theDialog, int theDlgList) {
  const int dlgType = theFormat->itIsInputFmt != 0 ? BOUNDS_INPUT : BOUNDS_ALL;
  unsigned sum = 0;
  std::vector<std::string> rows;
  for (const SegyField* field = theFields; field != nullptr; field = field->nextField) {
    unsigned flags = 0;
    boundsCheck(theFormat, theFields, field, &flags, dlgType);
    sum = addFlags(sum, flags);
    if (theDlgList == kSegyMappingList && field->itIsMapped != 0) continue;
    rows.push_back(rowOf(*field, flags != 0 && isMarked(*theFormat, *field, theDlgList)));
  }
  std::vector<const char*> texts;
  texts.reserve(rows.size());
  for (const std::string& row : rows) texts.push_back(row.c_str());
  const bool isBinary = theFields != nullptr && theFields->itIsBinaryField != 0;
  const int current = isBinary ? theFormat->itsCurrentBField : theFormat->itsCurrentTField;
  fillList(theDialog, theDlgList, texts, current < static_cast<int>(rows.size()) ? current : -1);
  return sum;
}
