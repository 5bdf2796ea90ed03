#include "quarlo/tapelib/dialogs/errorlines.h"

#include <optional>

#include "quarlo/tapelib/jobstate.h"

namespace {

struct Mark {
  std::string_view text;
  LineKind kind;
};

/// The marks that jobs give their lines; the first that a line has counts.
constexpr Mark kMarks[] = {
    {"***", LineKind::error},
    {"Error", LineKind::error},
    {"Failed", LineKind::error},
    {"**", LineKind::warning},
};

std::string_view lineOf(TXEDIT text, T_LNUM number) {
  std::size_t length = 0;
  const char* bytes = xvt_tx_get_par(text, number, &length);
  return {bytes, length};
}

std::optional<T_LNUM> firstOfKind(TXEDIT text, LineKind kind, T_LNUM from, T_LNUM to) {
  for (T_LNUM line = from; line < to; ++line)
    if (kindOfLine(lineOf(text, line)) == kind) return line;
  return std::nullopt;
}

/// Behind the line that is selected first, then from the job's first line on.
std::optional<T_LNUM> nextOfKind(const DocView& view, LineKind kind) {
  const T_LNUM first = view.doc->jobLine;
  const T_LNUM count = xvt_tx_get_num_pars(view.text);
  std::size_t begin = 0;
  std::size_t end = 0;
  const T_LNUM selected = xvt_tx_get_selection(view.text, &begin, &end);
  if (begin == end || selected < first) return firstOfKind(view.text, kind, first, count);
  const auto behind = firstOfKind(view.text, kind, selected + 1, count);
  return behind ? behind : firstOfKind(view.text, kind, first, selected + 1);
}

}  // namespace

LineKind kindOfLine(std::string_view line) {
  for (const Mark& mark : kMarks)
    if (line.find(mark.text) != std::string_view::npos) return mark.kind;
  return LineKind::ordinary;
}

void goToError(const DocView& view) {
  for (const LineKind kind : {LineKind::error, LineKind::warning})
    if (const auto line = nextOfKind(view, kind)) return docSelect(view, *line, 0, lineOf(view.text, *line).size());
  tellUser("No line of the last job tells of an error or is a warning.");
}
