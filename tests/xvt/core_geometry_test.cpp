// Layout and placement: no display is needed.
#include <gtest/gtest.h>

#include "xvt/layout/layout.h"
#include "xvt/layout/placement.h"

namespace {

using namespace xvt;

const Spacing kSpacing(16);
constexpr int kBar = 12;

Cell leaf(ITEM_KIND kind, int width, int height, int baseline, Growth wide = Growth::none) {
  Cell cell;
  cell.kind = kind;
  cell.natural = {width, height};
  cell.baseline = baseline;
  cell.wide = wide;
  return cell;
}

Cell container(ITEM_KIND kind, std::vector<Cell> children, int columns = 1) {
  Cell cell;
  cell.kind = kind;
  cell.columns = columns;
  cell.children = std::move(children);
  return cell;
}

int width(const Cell& cell) { return cell.place.right - cell.place.left; }
int height(const Cell& cell) { return cell.place.bottom - cell.place.top; }

TEST(Layout, LabelsAndFieldsOfARowStandOnOneBaseline) {
  Cell row = container(IK_ROW, {leaf(IK_LABEL, 40, 16, 12), leaf(IK_EDIT, 100, 30, 19)});
  measure(row, kSpacing);
  EXPECT_EQ(row.natural.height, 30);
  arrange(row, RCT{0, 0, 30, row.natural.width}, kSpacing);
  EXPECT_EQ(row.children[0].place.top + 12, row.children[1].place.top + 19);
  EXPECT_EQ(row.children[1].place.left, 40 + kSpacing.beside);
}

TEST(Layout, ColumnsOfAGridAlignAndTheEagerOneTakesTheRoom) {
  Cell grid = container(IK_GRID,
                        {leaf(IK_LABEL, 40, 16, 12), leaf(IK_EDIT, 100, 30, 19, Growth::eager),
                         leaf(IK_LABEL, 90, 16, 12), leaf(IK_EDIT, 60, 30, 19)},
                        2);
  measure(grid, kSpacing);
  EXPECT_EQ(grid.natural.width, 90 + kSpacing.beside + 100);
  arrange(grid, RCT{0, 0, grid.natural.height, grid.natural.width + 55}, kSpacing);
  EXPECT_EQ(grid.children[1].place.left, grid.children[3].place.left);
  EXPECT_EQ(width(grid.children[1]), 155);
  EXPECT_EQ(width(grid.children[3]), 155);
  EXPECT_EQ(width(grid.children[0]), 90);
}

TEST(Layout, ASpanningCellWidensTheColumnThatGrows) {
  Cell wide = leaf(IK_EDIT, 300, 30, 19, Growth::eager);
  wide.span = 2;
  Cell grid = container(IK_GRID, {leaf(IK_LABEL, 40, 16, 12), leaf(IK_EDIT, 100, 30, 19, Growth::eager), wide}, 2);
  measure(grid, kSpacing);
  arrange(grid, RCT{0, 0, grid.natural.height, grid.natural.width}, kSpacing);
  EXPECT_EQ(grid.natural.width, 300);
  EXPECT_EQ(width(grid.children[0]), 40);
  EXPECT_EQ(width(grid.children[2]), 300);
}

TEST(Layout, CardsSideBySideAreEquallyTallAndHoldTheirContents) {
  const auto card = [](int lines) {
    std::vector<Cell> contents{leaf(IK_LABEL, 50, 16, 12)};
    for (int line = 0; line < lines; ++line) contents.push_back(leaf(IK_CHECK, 120, 24, 16));
    Cell cell = container(IK_CARD, std::move(contents));
    cell.headed = true;
    return cell;
  };
  Cell row = container(IK_ROW, {card(2), card(5)});
  measure(row, kSpacing);
  arrange(row, RCT{0, 0, row.natural.height, row.natural.width + 100}, kSpacing);
  EXPECT_EQ(height(row.children[0]), height(row.children[1]));
  EXPECT_EQ(row.children[1].place.right, row.natural.width + 100);
  for (const Cell& one : row.children)
    for (std::size_t at = 1; at < one.children.size(); ++at) {
      EXPECT_GE(one.children[at].place.top, one.place.top + kSpacing.card_height);
      EXPECT_LE(one.children[at].place.bottom, one.place.bottom - kSpacing.card_height);
      EXPECT_GE(one.children[at].place.left, one.place.left + kSpacing.card_width);
    }
}

Cell dialog() {
  Cell list = leaf(IK_LIST, 200, 150, 14, Growth::eager);
  list.tall = Growth::eager;
  list.least = {200, 60};
  Cell buttons = container(IK_BUTTONS, {leaf(IK_PUSH, 40, 30, 19), leaf(IK_PUSH, 110, 30, 19)});
  return container(IK_COLUMN, {list, buttons, leaf(IK_STATUS, 120, 28, 18)});
}

TEST(Layout, TheStatusLineRunsAlongTheEdgeAndButtonsAreEqual) {
  Cell root = dialog();
  measureDialog(root, kSpacing);
  arrangeDialog(root, root.natural, kSpacing, kBar);
  const Cell& status = root.children[2];
  EXPECT_EQ(status.place.left, 0);
  EXPECT_EQ(status.place.bottom, root.natural.height);
  EXPECT_EQ(width(status), root.natural.width);
  const Cell& buttons = root.children[1];
  EXPECT_EQ(width(buttons.children[0]), width(buttons.children[1]));
  EXPECT_EQ(buttons.children[1].place.right, root.natural.width - kSpacing.margin);
}

TEST(Layout, AListTakesMoreRoomAndGivesItBack) {
  Cell root = dialog();
  measureDialog(root, kSpacing);
  arrangeDialog(root, {root.natural.width + 50, root.natural.height + 70}, kSpacing, kBar);
  EXPECT_EQ(height(root.children[0]), 220);
  EXPECT_EQ(width(root.children[0]), root.natural.width + 50 - 2 * kSpacing.margin);
  arrangeDialog(root, root.least, kSpacing, kBar);
  EXPECT_EQ(height(root.children[0]), 60);
  EXPECT_EQ(root.natural.height - root.least.height, 90);
}

TEST(Layout, InALowWindowAllButTheButtonsAndTheStatusLineScrolls) {
  Cell root = dialog();
  measureDialog(root, kSpacing);
  const ScrolledPart whole = arrangeDialog(root, root.least, kSpacing, kBar);
  EXPECT_EQ(whole.view.height, whole.contents.height);
  const ScrolledPart part = arrangeDialog(root, {root.least.width + kBar, root.least.height - 40}, kSpacing, kBar);
  EXPECT_EQ(part.contents.height, whole.contents.height);
  EXPECT_EQ(part.contents.width, part.view.width - kBar);
  EXPECT_EQ(part.view.height, whole.view.height - 40);
  EXPECT_EQ(height(root.children[0]), 60);
  EXPECT_GT(root.children[1].place.top, part.view.height);
  EXPECT_LT(root.children[1].place.bottom, root.children[2].place.top);
  EXPECT_EQ(root.children[2].place.bottom, root.least.height - 40);
  for (const int less : {0, 40}) {
    const ScrolledPart narrow = arrangeDialog(root, {root.least.width - 50, root.least.height - less}, kSpacing, kBar);
    EXPECT_EQ(narrow.contents.width, root.least.width);
    EXPECT_EQ(narrow.view.width, root.least.width - 50);
    EXPECT_EQ(narrow.contents.height, whole.contents.height);
    EXPECT_EQ(narrow.view.height, whole.view.height - less);
    EXPECT_GE(root.children[1].place.top, narrow.view.height);
    EXPECT_LE(root.children[1].place.right, root.least.width - 50);
  }
}

constexpr int kStep = 8;
constexpr Extent kConsole{714, 470};
constexpr Extent kTask{430, 104};

RCT placed(Extent screen, std::vector<Standing>& standing, const WindowWish& wish) {
  const RCT now = placeWindow(screen, standing, wish, kStep);
  standing.push_back({now});
  return now;
}

WindowWish fixed(Extent screen, Extent size) {
  return {size, size, belowConsole(screen, size, kStep), RCT{0, 0, screen.height, screen.width}};
}

struct Desk {
  explicit Desk(Extent size) : screen(size) {
    placed(screen, standing, {kTask, kTask, PNT{8, 8}, RCT{0, 0, screen.height, screen.width}});
    placed(screen, standing, {kConsole, {270, 140}, PNT{30, 10}, upperLeft(screen)});
    placed(screen, standing, fixed(screen, {172, 430}));
  }
  RCT add(const WindowWish& wish) {
    for (Standing& one : standing) one.opener = &one == &standing.back();
    return placed(screen, standing, wish);
  }
  RCT addDump() { return add({{694, 690}, {270, 140}, PNT{30, 375}, RCT{0, 0, screen.height, screen.width}}); }
  int coveredPairs() const {
    int pairs = 0;
    for (std::size_t at = 0; at < standing.size(); ++at)
      for (std::size_t other = 0; other < at; ++other) pairs += overlap(standing[at].place, standing[other].place) > 0;
    return pairs;
  }
  Extent screen;
  std::vector<Standing> standing;
};

TEST(Placement, NothingIsCoveredAndWhatCanShrinkDoes) {
  for (const Extent screen : {Extent{1920, 1080}, {1600, 1000}, {1280, 800}, {1024, 768}}) {
    Desk desk(screen);
    desk.add(fixed(screen, {545, 430}));
    const RCT dump = desk.addDump();
    EXPECT_EQ(desk.coveredPairs(), 0) << screen.width;
    EXPECT_EQ(dump.right - dump.left == 694 && dump.bottom - dump.top == 690, screen.width >= 1600) << screen.width;
    for (const Standing& one : desk.standing) {
      EXPECT_GE(std::min(one.place.top, one.place.left), 0);
      EXPECT_LE(one.place.bottom, screen.height);
      EXPECT_LE(one.place.right, screen.width);
    }
    const RCT& console = desk.standing[1].place;
    EXPECT_LT(console.left, 2 * kStep);
    EXPECT_GE(desk.standing[2].place.top, console.bottom);
    EXPECT_GT(dump.left, kTask.width);
  }
}

TEST(Placement, TheOpenerIsCoveredLastAndNoWindowStandsOnAnothersCorner) {
  const Extent screen{800, 600};
  Desk desk(screen);
  for (int window = 0; window < 4; ++window) {
    const Standing opener = desk.standing.back();
    const RCT now = desk.add(fixed(screen, {380, 300}));
    EXPECT_FALSE(window < 2 && overlap(now, opener.place) > 0) << window;
    for (std::size_t at = 0; at + 1 < desk.standing.size(); ++at)
      EXPECT_FALSE(desk.standing[at].place.top == now.top && desk.standing[at].place.left == now.left);
    EXPECT_LE(now.bottom, 600);
    EXPECT_LE(now.right, 800);
  }
  const RCT opener = desk.standing.back().place;
  EXPECT_EQ(overlap(desk.addDump(), opener), 0);
}

}  // namespace
