#include "xvt/layout/layout.h"

#include <algorithm>
#include <numeric>
#include <span>

namespace xvt {

namespace {

int scaled(int lineHeight, int pixels) { return std::max(1, (pixels * lineHeight + 8) / 16); }

int widthOf(const RCT& rectangle) { return rectangle.right - rectangle.left; }
int heightOf(const RCT& rectangle) { return rectangle.bottom - rectangle.top; }

RCT place(int left, int top, int width, int height) { return RCT{top, left, top + height, left + width}; }

bool isMark(const Cell& cell) { return cell.kind == IK_CHECK || cell.kind == IK_RADIO; }

bool isGroup(const Cell& cell) {
  return cell.kind == IK_CARD || cell.kind == IK_GRID || cell.kind == IK_COLUMN || cell.kind == IK_STACK ||
         std::any_of(cell.children.begin(), cell.children.end(), isGroup);
}

bool isTall(const Cell& cell) { return isGroup(cell) || cell.tall != Growth::none; }

/// The heads of a list's columns stand on the list.
bool isHeads(const Cell& cell) { return !cell.children.empty() && cell.children.back().kind == IK_HEAD; }

/// The distance between a cell of a column and the one below it.
int gapBelow(const Cell& above, const Cell& below, const Spacing& spacing) {
  if (below.kind == IK_BUTTONS) return spacing.foot;
  if (isHeads(above)) return 0;
  if (isMark(above) && isMark(below)) return spacing.mark;
  if (isGroup(above) || isGroup(below) || above.kind == IK_HEADING) return spacing.group;
  return spacing.line;
}

/// Glue that gives no room still parts what stands before it from what stands behind.
int gapBeside(const Cell& left, const Cell& right, const Spacing& spacing) {
  if (left.kind == IK_GLUE || (left.kind == IK_HEAD && right.kind == IK_HEAD)) return 0;
  return isGroup(left) && isGroup(right) ? spacing.cards : spacing.beside;
}

Growth most(Growth one, Growth other) { return std::max(one, other); }

/// Shares `extra` pixels among the most eager of the given; what does not divide goes to the first of them.
template <typename Sizes>
void share(int extra, const std::vector<Growth>& growth, Sizes&& add) {
  if (extra <= 0 || growth.empty()) return;
  const Growth eager = *std::max_element(growth.begin(), growth.end());
  if (eager == Growth::none) return;
  int takers = static_cast<int>(std::count(growth.begin(), growth.end(), eager));
  for (std::size_t at = 0; at < growth.size(); ++at) {
    if (growth[at] != eager) continue;
    const int part = (extra + takers - 1) / takers;
    add(at, part);
    extra -= part;
    --takers;
  }
}

// ---- measuring --------------------------------------------------------------------------------------------------

void growWithContents(Cell& cell) {
  cell.wide = most(cell.wide, cell.wish);
  for (const Cell& child : cell.children) {
    cell.wide = most(cell.wide, child.wide);
    cell.tall = most(cell.tall, child.tall);
  }
}

/// Sizes of a column from child `first` on.
void measureColumn(Cell& cell, std::size_t first, const Spacing& spacing) {
  int buttons = 0;
  for (std::size_t at = first; at < cell.children.size(); ++at) {
    const Cell& child = cell.children[at];
    if (at > first) {
      const int gap = gapBelow(cell.children[at - 1], child, spacing);
      cell.natural.height += gap;
      cell.least.height += gap;
    }
    cell.natural.height += child.natural.height;
    cell.least.height += child.least.height;
    cell.natural.width = std::max(cell.natural.width, child.natural.width);
    cell.least.width = std::max(cell.least.width, child.least.width);
    if (child.kind == IK_PUSH) buttons = std::max(buttons, child.natural.width);
  }
  for (Cell& child : cell.children)
    if (child.kind == IK_PUSH) child.natural.width = buttons;
  if (cell.children.size() > first && cell.baseline < 0) cell.baseline = cell.children[first].baseline;
  growWithContents(cell);
}

void measureCard(Cell& cell, const Spacing& spacing) {
  measureColumn(cell, cell.headed ? 1 : 0, spacing);
  const int above = cell.headed ? cell.children[0].natural.height + spacing.heading : 0;
  for (Extent* size : {&cell.natural, &cell.least}) {
    size->width += 2 * spacing.card_width;
    size->height += above + 2 * spacing.card_height;
  }
  if (cell.headed) cell.natural.width = std::max(cell.natural.width, cell.children[0].natural.width);
  cell.baseline = -1;
  cell.wide = most(cell.wide, Growth::willing);
}

/// The buttons of a group are equally wide.
void equalButtons(Cell& cell, int widest) {
  for (const Cell& child : cell.children)
    if (child.kind == IK_PUSH) widest = std::max(widest, child.natural.width);
  for (Cell& child : cell.children)
    if (child.kind == IK_PUSH) child.natural.width = child.least.width = widest;
}

int offsetInRow(const Cell& row, const Cell& child) {
  return child.baseline < 0 || row.baseline < 0 ? 0 : row.baseline - child.baseline;
}

void measureRow(Cell& cell, const Spacing& spacing) {
  equalButtons(cell, cell.kind == IK_BUTTONS ? spacing.button : 0);
  if (cell.kind == IK_BUTTONS) cell.wide = Growth::willing;
  for (const Cell& child : cell.children) cell.baseline = std::max(cell.baseline, child.baseline);
  for (std::size_t at = 0; at < cell.children.size(); ++at) {
    const Cell& child = cell.children[at];
    const int gap = at > 0 ? gapBeside(cell.children[at - 1], child, spacing) : 0;
    cell.natural.width += gap + child.natural.width;
    cell.least.width += gap + child.least.width;
    const int offset = offsetInRow(cell, child);
    cell.natural.height = std::max(cell.natural.height, offset + child.natural.height);
    cell.least.height = std::max(cell.least.height, offset + child.least.height);
  }
  growWithContents(cell);
}

void measureStack(Cell& cell) {
  for (const Cell& child : cell.children) {
    cell.natural.width = std::max(cell.natural.width, child.natural.width);
    cell.natural.height = std::max(cell.natural.height, child.natural.height);
    cell.least.width = std::max(cell.least.width, child.least.width);
    cell.least.height = std::max(cell.least.height, child.least.height);
    cell.baseline = std::max(cell.baseline, child.baseline);
  }
  growWithContents(cell);
}

/// A grid's cells line by line: calls visit(first child, one past the last) for each.
template <typename Visitor>
void forEachLine(const Cell& grid, Visitor&& visit) {
  std::size_t from = 0;
  while (from < grid.children.size()) {
    std::size_t to = from;
    int used = 0;
    do {
      used += std::clamp(grid.children[to].span, 1, grid.columns);
      ++to;
    } while (to < grid.children.size() && used + std::clamp(grid.children[to].span, 1, grid.columns) <= grid.columns);
    visit(from, to);
    from = to;
  }
}

/// Calls visit(child, its first column, number of columns) for every cell of one line.
template <typename Cells, typename Visitor>
void forEachInLine(Cells&& line, int columns, Visitor&& visit) {
  std::size_t column = 0;
  for (auto& child : line) {
    const auto span = static_cast<std::size_t>(std::clamp(child.span, 1, columns));
    visit(child, column, span);
    column += span;
  }
}

int spanWidth(const std::vector<int>& widths, std::size_t from, std::size_t span, const Spacing& spacing) {
  const auto first = widths.begin() + static_cast<std::ptrdiff_t>(from);
  return std::accumulate(first, first + static_cast<std::ptrdiff_t>(span), 0) +
         static_cast<int>(span - 1) * spacing.beside;
}

Extent lineSize(std::span<Cell> line, bool least) {
  int baseline = -1;
  for (const Cell& child : line) baseline = std::max(baseline, child.baseline);
  int height = 0;
  for (const Cell& child : line) {
    const int offset = child.baseline < 0 || baseline < 0 ? 0 : baseline - child.baseline;
    height = std::max(height, offset + (least ? child.least.height : child.natural.height));
  }
  return {baseline, height};
}

/// Widens the last columns under a cell that spans several and is wider than they are together.
void fitSpan(Cell& grid, std::vector<int>& widths, const Cell& child, std::size_t column, std::size_t span, int wanted,
             const Spacing& spacing) {
  const int missing = wanted - spanWidth(widths, column, span, spacing);
  if (missing <= 0 || child.span <= 1) return;
  std::size_t widened = column + span - 1;
  for (std::size_t at = column; at < column + span; ++at)
    if (grid.column_growth[at] > grid.column_growth[widened]) widened = at;
  widths[widened] += missing;
}

void measureGrid(Cell& cell, const Spacing& spacing) {
  cell.columns = std::max(1, cell.columns);
  const auto columns = static_cast<std::size_t>(cell.columns);
  cell.column_widths.assign(columns, 0);
  cell.column_growth.assign(columns, Growth::none);
  std::vector<int> least(columns, 0);
  equalButtons(cell, 0);
  for (const bool spanning : {false, true})
    forEachLine(cell, [&](std::size_t from, std::size_t to) {
      forEachInLine(std::span(cell.children).subspan(from, to - from), cell.columns,
                    [&](Cell& child, std::size_t column, std::size_t span) {
                      if ((span > 1) != spanning) return;
                      if (span == 1) {
                        int& width = cell.column_widths[column];
                        width = std::max(width, child.natural.width);
                        least[column] = std::max(least[column], child.least.width);
                        cell.column_growth[column] = most(cell.column_growth[column], child.wide);
                      } else {
                        cell.column_growth[column + span - 1] = most(cell.column_growth[column + span - 1], child.wide);
                        fitSpan(cell, cell.column_widths, child, column, span, child.natural.width, spacing);
                        fitSpan(cell, least, child, column, span, child.least.width, spacing);
                      }
                    });
    });
  cell.natural.width = spanWidth(cell.column_widths, 0, columns, spacing);
  cell.least.width = spanWidth(least, 0, columns, spacing);
  forEachLine(cell, [&](std::size_t from, std::size_t to) {
    const auto line = std::span(cell.children).subspan(from, to - from);
    const int gap = from > 0 ? gapBelow(cell.children[from - 1], line.front(), spacing) : 0;
    if (from == 0) cell.baseline = lineSize(line, false).width;
    cell.natural.height += gap + lineSize(line, false).height;
    cell.least.height += gap + lineSize(line, true).height;
  });
  growWithContents(cell);
}

// ---- arranging --------------------------------------------------------------------------------------------------

void arrangeColumn(Cell& cell, std::size_t first, const RCT& room, const Spacing& spacing) {
  std::vector<int> heights;
  std::vector<Growth> growth;
  int used = 0;
  for (std::size_t at = first; at < cell.children.size(); ++at) {
    const Cell& child = cell.children[at];
    heights.push_back(child.natural.height);
    growth.push_back(child.tall);
    used += child.natural.height + (at > first ? gapBelow(cell.children[at - 1], child, spacing) : 0);
  }
  int left = heightOf(room) - used;
  share(left, growth, [&](std::size_t at, int part) { heights[at] += part; });
  // A window made smaller than it wants to be: what can grow can also shrink.
  for (std::size_t at = 0; left < 0 && at < heights.size(); ++at) {
    const int give = std::min(-left, heights[at] - cell.children[first + at].least.height);
    if (growth[at] == Growth::none || give <= 0) continue;
    heights[at] -= give;
    left += give;
  }
  const bool grows = std::any_of(growth.begin(), growth.end(), [](Growth one) { return one != Growth::none; });
  int top = room.top;
  for (std::size_t at = first; at < cell.children.size(); ++at) {
    Cell& child = cell.children[at];
    if (at > first) top += gapBelow(cell.children[at - 1], child, spacing);
    if (child.kind == IK_BUTTONS && !grows && left > 0) top += left;  // the buttons stay at the foot
    const bool whole =
        child.fills && child.kind != IK_PUSH &&
        (child.wide != Growth::none || !child.children.empty() || child.kind == IK_EDIT || child.kind == IK_OPTION);
    const int width = whole || child.kind == IK_LABEL || child.kind == IK_HINT
                          ? widthOf(room)
                          : std::min(child.natural.width, widthOf(room));
    arrange(child, place(room.left, top, width, heights[at - first]), spacing);
    top += heights[at - first];
  }
}

void arrangeCard(Cell& cell, const RCT& room, const Spacing& spacing) {
  int top = room.top;
  if (cell.headed) {
    Cell& heading = cell.children[0];
    arrange(heading, place(room.left, top, widthOf(room), heading.natural.height), spacing);
    top += heading.natural.height + spacing.heading;
  }
  cell.place = RCT{top, room.left, room.bottom, room.right};
  arrangeColumn(cell, cell.headed ? 1 : 0,
                RCT{top + spacing.card_height, room.left + spacing.card_width, room.bottom - spacing.card_height,
                    room.right - spacing.card_width},
                spacing);
}

void arrangeRow(Cell& cell, const RCT& room, const Spacing& spacing) {
  std::vector<int> widths;
  std::vector<Growth> growth;
  int used = 0;
  for (std::size_t at = 0; at < cell.children.size(); ++at) {
    const Cell& child = cell.children[at];
    widths.push_back(child.natural.width);
    growth.push_back(child.wide);
    used += child.natural.width + (at > 0 ? gapBeside(cell.children[at - 1], child, spacing) : 0);
  }
  const int leftOver = widthOf(room) - used;
  share(leftOver, growth, [&](std::size_t at, int part) { widths[at] += part; });
  int shrink = std::max(0, -leftOver);
  for (std::size_t at = 0; at < widths.size(); ++at) {
    const int give = std::min(shrink, std::max(0, widths[at] - cell.children[at].least.width));
    widths[at] -= give;
    shrink -= give;
  }
  const bool hasGlue = std::any_of(cell.children.begin(), cell.children.end(),
                                   [](const Cell& child) { return child.wide == Growth::eager; });
  int left = room.left + (cell.kind == IK_BUTTONS && !hasGlue ? std::max(0, leftOver) : 0);
  for (std::size_t at = 0; at < cell.children.size(); ++at) {
    Cell& child = cell.children[at];
    if (at > 0) left += gapBeside(cell.children[at - 1], child, spacing);
    const int offset = offsetInRow(cell, child);
    const int height = isTall(child) ? heightOf(room) - offset : child.natural.height;
    arrange(child, place(left, room.top + offset, widths[at], height), spacing);
    left += widths[at];
  }
}

void arrangeLine(Cell& grid, std::span<Cell> line, const std::vector<int>& widths, const RCT& room,
                 const Spacing& spacing) {
  const int baseline = lineSize(line, false).width;
  forEachInLine(line, grid.columns, [&](Cell& child, std::size_t column, std::size_t span) {
    const int left = room.left + (column > 0 ? spanWidth(widths, 0, column, spacing) + spacing.beside : 0);
    const int offset = child.baseline < 0 || baseline < 0 ? 0 : baseline - child.baseline;
    const int whole = spanWidth(widths, column, span, spacing);
    const int width = child.fills ? whole : std::min(whole, child.natural.width);
    const int height = isTall(child) ? heightOf(room) - offset : child.natural.height;
    arrange(child, place(left, room.top + offset, width, height), spacing);
  });
}

void arrangeGrid(Cell& cell, const RCT& room, const Spacing& spacing) {
  std::vector<int> widths = cell.column_widths;
  int extra = widthOf(room) - spanWidth(widths, 0, widths.size(), spacing);
  share(extra, cell.column_growth, [&](std::size_t at, int part) { widths[at] += part; });
  for (std::size_t at = widths.size(); extra < 0 && at-- > 0;) {
    if (cell.column_growth[at] == Growth::none) continue;
    const int give = std::min(-extra, widths[at] / 2);
    widths[at] -= give;
    extra += give;
  }
  std::vector<Growth> growth;
  forEachLine(cell, [&](std::size_t from, std::size_t to) {
    Growth line = Growth::none;
    for (std::size_t at = from; at < to; ++at) line = most(line, cell.children[at].tall);
    growth.push_back(line);
  });
  std::vector<int> more(growth.size(), 0);
  share(heightOf(room) - cell.natural.height, growth, [&](std::size_t at, int part) { more[at] = part; });
  int top = room.top;
  std::size_t number = 0;
  forEachLine(cell, [&](std::size_t from, std::size_t to) {
    const auto line = std::span(cell.children).subspan(from, to - from);
    if (from > 0) top += gapBelow(cell.children[from - 1], line.front(), spacing);
    const int height = lineSize(line, false).height + more[number++];
    arrangeLine(cell, line, widths, place(room.left, top, widthOf(room), height), spacing);
    top += height;
  });
}

Cell* statusOf(Cell& root) {
  const auto found = std::find_if(root.children.begin(), root.children.end(),
                                  [](const Cell& child) { return child.kind == IK_STATUS; });
  return found == root.children.end() ? nullptr : &*found;
}

/// The dialog's column without its status line: that one is set to no height and given its strip afterwards.
struct WithoutStatus {
  explicit WithoutStatus(Cell& tree) : root(tree), at(-1) {
    if (Cell* status = statusOf(root)) {
      at = status - root.children.data();
      held = std::move(*status);
      root.children.erase(root.children.begin() + at);
    }
  }
  ~WithoutStatus() {
    if (at >= 0) root.children.insert(root.children.begin() + at, std::move(held));
  }
  WithoutStatus(const WithoutStatus&) = delete;
  WithoutStatus& operator=(const WithoutStatus&) = delete;
  Cell& root;
  std::ptrdiff_t at;
  Cell held;
};

}  // namespace

Spacing::Spacing(int lineHeight)
    : margin(scaled(lineHeight, 16)),
      group(scaled(lineHeight, 14)),
      line(scaled(lineHeight, 8)),
      mark(scaled(lineHeight, 3)),
      foot(scaled(lineHeight, 20)),
      beside(scaled(lineHeight, 10)),
      cards(scaled(lineHeight, 16)),
      heading(scaled(lineHeight, 6)),
      card_width(scaled(lineHeight, 12)),
      card_height(scaled(lineHeight, 10)),
      button(scaled(lineHeight, 76)) {}

void measure(Cell& cell, const Spacing& spacing) {
  if (cell.children.empty()) {
    if (cell.least.width == 0) cell.least.width = cell.natural.width;
    if (cell.least.height == 0) cell.least.height = cell.natural.height;
    return;
  }
  cell.natural = cell.least = Extent{};
  cell.baseline = -1;
  cell.wide = cell.tall = Growth::none;
  for (Cell& child : cell.children) measure(child, spacing);
  switch (cell.kind) {
    case IK_ROW:
    case IK_BUTTONS:
      return measureRow(cell, spacing);
    case IK_GRID:
      return measureGrid(cell, spacing);
    case IK_CARD:
      return measureCard(cell, spacing);
    case IK_STACK:
      return measureStack(cell);
    default:
      return measureColumn(cell, 0, spacing);
  }
}

void arrange(Cell& cell, const RCT& room, const Spacing& spacing) {
  cell.place = room;
  if (cell.children.empty()) return;
  switch (cell.kind) {
    case IK_ROW:
    case IK_BUTTONS:
      return arrangeRow(cell, room, spacing);
    case IK_GRID:
      return arrangeGrid(cell, room, spacing);
    case IK_CARD:
      return arrangeCard(cell, room, spacing);
    case IK_STACK:
      for (Cell& child : cell.children) {
        const bool whole = child.wide != Growth::none || !child.children.empty();
        arrange(child,
                place(room.left, room.top, whole ? widthOf(room) : child.natural.width,
                      isTall(child) ? heightOf(room) : child.natural.height),
                spacing);
      }
      return;
    default:
      return arrangeColumn(cell, 0, room, spacing);
  }
}

void measureDialog(Cell& root, const Spacing& spacing) {
  if (Cell* status = statusOf(root)) measure(*status, spacing);
  Extent strip;
  {
    WithoutStatus rest(root);
    measure(root, spacing);
    if (rest.at >= 0) strip = rest.held.natural;
  }
  for (Extent* size : {&root.natural, &root.least}) {
    size->width = std::max(size->width + 2 * spacing.margin, std::min(strip.width, 40 * spacing.margin));
    size->height += 2 * spacing.margin + strip.height;
  }
}

ScrolledPart arrangeDialog(Cell& root, Extent window, const Spacing& spacing, int bar) {
  Cell* status = statusOf(root);
  const int strip = status != nullptr ? status->natural.height : 0;
  if (status != nullptr) status->place = place(0, window.height - strip, window.width, strip);
  // A bar takes room that may then be missing the other way.
  const auto lacks = [](int wanted, int room) { return std::max(0, wanted - room); };
  const auto room = [&](int missing) { return missing == 0 ? window.width : window.width - bar; };
  int missing = lacks(root.least.height, window.height);
  const int across = lacks(root.least.width, room(missing)) == 0 ? 0 : bar;
  missing = lacks(root.least.height + across, window.height);
  const int width = std::max(root.least.width, room(missing));
  const int height = window.height + missing - strip - across;
  WithoutStatus rest(root);
  arrangeColumn(root, 0, RCT{spacing.margin, spacing.margin, height - spacing.margin, width - spacing.margin}, spacing);
  int end = height;
  if (!root.children.empty() && root.children.back().kind == IK_BUTTONS) {
    Cell& buttons = root.children.back();
    end = buttons.place.top - spacing.foot / 2;
    const int top = buttons.place.top - missing + across;
    arrange(buttons, RCT{top, spacing.margin, top + heightOf(buttons.place), window.width - spacing.margin}, spacing);
  }
  return {{window.width, end - missing + across}, {width, end}};
}

}  // namespace xvt
